// A Tinker run from the outside: answer files, energies of real Tinker 26.2
// logs, result names, the restart file and the judgement of the log.
#include <filesystem>

#include <gtest/gtest.h>

#include "engines/tinker/tinker_decks.h"
#include "engines/tinker/tinker_job.h"
#include "engines/tinker/tinker_log.h"
#include "engines/tinker/tinker_outcome.h"
#include "engines/tinker/tinker_runs.h"
#include "tinker_test_util.h"

using namespace zentol;
using namespace zentol::testing;

TEST(TinkerDecks, AnswerFilesInTheProgramsOrder) {
    // Tinker asks for the atoms to list after any A, P or C of the line, in
    // either case, the job name's letters too.
    EXPECT_EQ(analyze_answers("ptest.xyz", 'G').lines(), (Lines{"ptest.xyz", "Gtest.xyz"}));
    EXPECT_EQ(analyze_answers("ptest.xyz", 'p').lines(), (Lines{"ptest.xyz", "ptest.xyz", "ALL"}));
    EXPECT_EQ(analyze_answers("butane.xyz", 'D').lines(), (Lines{"butane.xyz", "Dutane.xyz", "ALL"}));

    TinkerSettings t;
    t.tk_dyn_type = 2;
    EXPECT_EQ(dynamic_answers("b.xyz", t).lines().back(), "300.000000");
    t.tk_dyn_type = 3;
    t.tk_curve = 2.5f;   // the pressure shares the cooling curve's cell
    EXPECT_EQ(dynamic_answers("b.xyz", t).lines().back(), "2.50000000");

    TinkerSettings a;
    a.tk_anneal_cool = 400;
    EXPECT_EQ(anneal_answers("butane.xyz", a).lines(),
              (Lines{"butane.xyz", "1000.00000       0.00000000", "0", "400", "L", "1.0000", "0.1000", "0.0000"}));
    // The second test wins: E is never given.
    for (auto [curve, letter] : {std::pair{1.0f, 'L'}, {2.0f, 'S'}, {3.0f, 'S'}}) EXPECT_EQ(curve_letter(curve), letter);

    EXPECT_EQ(vibrate_answers("butane.xyz", 7.0f).lines(), (Lines{"butane.xyz", "7", "0"}));
    EXPECT_EQ(spacefill_answers("butane.xyz", 1, 1.4f).lines(), (Lines{"butane.xyz", "1", "Y", "N"}));
}

TEST(TinkerLog, EnergiesReadTheSameWithAndWithoutTheLeadingBlank) {
    for (bool shift : {true, false}) {
        SCOPED_TRACE(shift ? "shifted" : "unshifted");
        auto log_of = [&](const std::string& program) {
            const Lines log = tinker_lines(program + "/ZENTOL.LOG");
            return shift ? log : unshifted(log);
        };
        EXPECT_DOUBLE_EQ(final_function_value(log_of("minimize")), 3.0866);
        EXPECT_DOUBLE_EQ(total_potential_energy(log_of("analyze")).value_or(0), 7.0517);
    }
    EXPECT_DOUBLE_EQ(final_function_value(Lines{"", "", " #"}), kNoTinkerEnergy);
    EXPECT_EQ(energy_status_text(3.0866), "           3.09 kcal/mol");
}

TEST(TinkerRuns, AnArchiveIsCutIntoAtMost99FrameFiles) {
    TempDir dir;
    std::filesystem::current_path(dir.path());
    std::string archive;
    for (int f = 1; f <= 120; ++f)
        archive += "     1  frame " + std::to_string(f) + "\n     1  C      " + std::to_string(f) +
                   ".000000    0.000000    0.000000     1\n";
    write_file("job.arc", archive);
    EXPECT_EQ(cut_archive("job.arc", "job", 1), 120);
    EXPECT_EQ(frame_files("job").size(), 99u);
    EXPECT_EQ(read_file("job.099").substr(0, 17), "     1  frame 120");
}

// Tinker writes ETHANOL.xyz beside a told ETHANOL.XYZ (TinkerMode's upper
// case job); when that name stood there before the run, the highest version.
TEST(TinkerJob, TheResultIsFoundUnderTheNameTinkerGaveIt) {
    TempDir dir;
    std::filesystem::current_path(dir.path());
    write_file("ETHANOL.xyz", "x\n");
    const TinkerNames told{"ETHANOL.XYZ", "ETHANOL", true};
    EXPECT_EQ(tinker_result_file(told), "");
    write_file("ETHANOL.xyz_2", "new\n");
    write_file("ETHANOL.xyz_10", "newer\n");
    write_file("ethanol.xyz_11", "another spelling\n");
    EXPECT_EQ(tinker_result_file(told), "ETHANOL.xyz_10");
}

// Turned and shifted as a whole it is still the same molecule: TinkerMode's
// restart session, whose display centres it between the runs.
TEST(TinkerJob, TheRestartFileFitsOnlyTheStructureItEndedWith) {
    const Lines dyn = tinker_lines("dynamic/JOB.dyn");
    const auto positions = restart_positions(dyn);
    ASSERT_EQ(positions.size(), 14u);
    const Lines arc = tinker_lines("dynamic/JOB.arc");
    const auto st = store_of(Lines(arc.end() - 15, arc.end()));   // the trajectory's last frame
    EXPECT_TRUE(same_geometry(positions, *st));
    st->atom_rec[5][kZ] += 0.05f;   // one hydrogen moved: a new structure
    EXPECT_FALSE(same_geometry(positions, *st));

    Lines cut(dyn.begin(), dyn.begin() + 12);   // positions broken off
    EXPECT_TRUE(restart_positions(cut).empty());
}

// Undefined parameters, crashes and runtime errors: see their messages in
// TinkerMode (the crash: an empty log) and below.
TEST(TinkerOutcome, EachKindOfFailureIsNamed) {
    auto problem = [](const Lines& log, const Lines& keys) { return judge_tinker_log(log, keys).problem; };
    EXPECT_EQ(problem(tinker_lines("analyze/ZENTOL.LOG"), kMinimizeResult), TinkerProblem::NoResult);
    EXPECT_EQ(problem(tinker_lines("badtype_analyze_E/ZENTOL.LOG"), kEnergyResult), TinkerProblem::UndefinedAtom);
    Lines no_force_field = tinker_lines("minimize/ZENTOL.LOG");
    no_force_field.resize(16);
    no_force_field.insert(no_force_field.end(), {" Enter Potential Parameter File Name :  ",
                                                 "Fortran runtime error: End of file"});
    EXPECT_EQ(problem(no_force_field, kMinimizeResult), TinkerProblem::NoParameterFile);
}

// The log with the standard error after it, as the command file puts them.
TEST(TinkerOutcome, TheMessageNamesTheProgramTheProblemAndTheLogsLastLines) {
    Lines log = tinker_lines("analyze_atoms_eof/ZENTOL.LOG");
    const Lines err = tinker_lines("analyze_atoms_eof/ZENTOL.ERR");
    log.insert(log.end(), err.begin(), err.end());
    const std::string text = tinker_failure_text("analyze", judge_tinker_log(log, kEnergyResult), log);
    EXPECT_EQ(text,
              "Tinker's analyze stopped with an error: Fortran runtime error: End of file\r"
              "It asked a question that its answer file does not hold.\r\rZENTOL.LOG ends:\r"
              " Internal Virial & Instantaneous Pressure [V]\r"
              " Connectivity Lists for Each of the Atoms [C]\r"
              " Enter the Desired Analysis Types [G,P,E,A,L,D,M,V,C] :\r"
              " List Atoms for which Output is Desired [ALL] :\r"
              "    >\r"
              "At line 142 of file analyze.f (unit = 5, file = 'stdin')\r"
              "Fortran runtime error: End of file\r"
              "Error termination. Backtrace:");   // blanks and backtrace frames left out
}
