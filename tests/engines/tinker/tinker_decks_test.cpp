// What the Tinker programs are told, and what is read from their logs:
// answer files line by line, and the real Tinker 26.2 logs in both forms.
// The answers that whole sessions also send (tinker_mode_test) are not
// repeated here.
#include "engines/tinker/tinker_decks.h"

#include <filesystem>

#include <gtest/gtest.h>

#include "engines/tinker/tinker_log.h"
#include "engines/tinker/tinker_runs.h"
#include "tinker_test_util.h"

using namespace zentol;
using namespace zentol::testing;

TEST(TinkerDecks, AnswerFilesInTheProgramsOrder) {
    // Tinker asks for the atoms to list after any A, P or C of the line, in
    // either case.
    EXPECT_EQ(analyze_answers("ptest.xyz", 'G').lines(), (Lines{"ptest.xyz", "Gtest.xyz"}));
    EXPECT_EQ(analyze_answers("ptest.xyz", 'p').lines(), (Lines{"ptest.xyz", "ptest.xyz", "ALL"}));

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
        EXPECT_EQ(log_shift(log_of("minimize")), shift);
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
    const Lines frames = frame_files("job");
    ASSERT_EQ(frames.size(), 99u);
    EXPECT_EQ(frames[6], "job.007");
    EXPECT_EQ(read_file("job.007").substr(0, 15), "     1  frame 7");
    EXPECT_EQ(read_file("job.099").substr(0, 17), "     1  frame 120");
}
