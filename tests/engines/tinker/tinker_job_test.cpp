// What a Tinker run left behind: the structure under the name Tinker gave
// it, whether its restart file still fits the molecule, and the judgement
// of its log (recorded Tinker 26.2 logs, standard error appended as the
// command file puts it there).
#include "engines/tinker/tinker_job.h"

#include <filesystem>

#include <gtest/gtest.h>

#include "engines/tinker/tinker_outcome.h"
#include "session/session.h"
#include "tinker_test_util.h"
#include "toolkit/files.h"

using namespace zentol;
using namespace zentol::testing;

namespace {

// A case's log with its standard error, if any, after it.
Lines log_and_errors(const std::string& folder) {
    Lines log = tinker_lines(folder + "/ZENTOL.LOG");
    const Lines err = files::read_lines(test_data("tinker/" + folder + "/ZENTOL.ERR")).value_or(Lines{});
    log.insert(log.end(), err.begin(), err.end());
    return log;
}

}  // namespace

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

TEST(TinkerJob, TheRestartFileFitsOnlyTheStructureItEndedWith) {
    const Lines dyn = tinker_lines("dynamic/JOB.dyn");
    const auto positions = restart_positions(dyn);
    ASSERT_EQ(positions.size(), 14u);
    EXPECT_DOUBLE_EQ(positions[13][2], -0.1268407873229223e1);

    // The trajectory's last frame, as the replay leaves it in the store.
    const Lines arc = tinker_lines("dynamic/JOB.arc");
    const auto st = store_of(Lines(arc.end() - 15, arc.end()));
    EXPECT_TRUE(same_geometry(positions, *st));
    // Turned and shifted as a whole it is the same molecule.
    for (int i = 1; i <= st->natoms; ++i) {
        const float x = st->atom_rec[i][kX], y = st->atom_rec[i][kY];
        st->atom_rec[i][kX] = -y + 3.0f;
        st->atom_rec[i][kY] = x;
    }
    EXPECT_TRUE(same_geometry(positions, *st));
    st->atom_rec[5][kZ] += 0.05f;   // one hydrogen moved: a new structure
    EXPECT_FALSE(same_geometry(positions, *st));

    Lines cut(dyn.begin(), dyn.begin() + 12);   // positions broken off
    EXPECT_TRUE(restart_positions(cut).empty());
}

// Undefined parameters, crashes and runtime errors: see their messages in
// TinkerMode and below.
TEST(TinkerOutcome, EachKindOfFailureIsNamed) {
    struct Case {
        const char* folder;
        Lines keys;
        TinkerProblem problem;
        const char* detail;
    };
    const Case cases[] = {
        {"spacefill", kSpacefillResult, TinkerProblem::None, ""},
        {"analyze", kMinimizeResult, TinkerProblem::NoResult, "Final Function Value"},
        {"badtype_analyze_E", kEnergyResult, TinkerProblem::UndefinedAtom, "Undefined Atom Types or Classes"},
    };
    for (const Case& c : cases) {
        const TinkerOutcome o = judge_tinker_log(log_and_errors(c.folder), c.keys);
        EXPECT_EQ(o.problem, c.problem) << c.folder;
        EXPECT_EQ(o.detail, c.detail) << c.folder;
    }
    EXPECT_EQ(judge_tinker_log(tinker_lines("badtype0_analyze_E/ZENTOL.LOG"), {}).problem, TinkerProblem::EmptyLog);
    Lines no_force_field = tinker_lines("minimize/ZENTOL.LOG");
    no_force_field.resize(16);
    no_force_field.insert(no_force_field.end(), {" Enter Potential Parameter File Name :  ",
                                                 "Fortran runtime error: End of file"});
    EXPECT_EQ(judge_tinker_log(no_force_field, kMinimizeResult).problem, TinkerProblem::NoParameterFile);
}

TEST(TinkerOutcome, TheMessageNamesTheProgramTheProblemAndTheLogsLastLines) {
    const Lines log = log_and_errors("analyze_atoms_eof");
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
