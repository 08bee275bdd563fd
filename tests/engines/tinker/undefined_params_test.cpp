// Undefined parameters from real Tinker 26.2 logs into the key file.
#include "engines/tinker/undefined_params.h"

#include <filesystem>

#include <gtest/gtest.h>

#include "session/startup.h"
#include "support/test_support.h"
#include "toolkit/files.h"

using namespace zentol;
using namespace zentol::testing;

namespace {

using Lines = std::vector<std::string>;

Lines log_of(const std::string& name, bool shift = true) {
    Lines l = files::read_lines(test_data("tinker/undefined/" + name)).value_or(Lines{});
    if (!shift)
        for (auto& line : l) line = line.empty() ? line : line.substr(1);
    return l;
}

}  // namespace

TEST(Undefined, BlocksRowsAndDuplicatesInBothLogForms) {
    for (bool shift : {true, false}) {
        const auto blocks = scan_undefined(log_of("ivboret.log", shift));
        ASSERT_EQ(blocks.size(), 4u);
        EXPECT_EQ(blocks[0].kind, UndefinedKind::Bond);
        ASSERT_EQ(blocks[0].rows.size(), 2u);
        EXPECT_EQ(blocks[0].rows[0].atoms[1], 2);
        EXPECT_EQ(blocks[0].rows[0].classes[1], 56);
        EXPECT_EQ(distinct_rows(blocks[0].rows, 2).size(), 1u);   // two 26-56 ring bonds, one question
        EXPECT_EQ(blocks[2].kind, UndefinedKind::OutOfPlane);
        EXPECT_EQ(blocks[3].kind, UndefinedKind::Torsion);
        EXPECT_EQ(blocks[3].rows.size(), 20u);                    // 23 rows: the last ones overwrite row 20
        EXPECT_EQ(blocks[3].rows[19].atoms[3], 7);
    }
    UndefinedRow a{"Torsion", {4, 3, 2, 1}, {5, 56, 56, 26}, 4, 4};
    UndefinedRow b{"Torsion", {9, 8, 7, 6}, {26, 56, 56, 5}, 4, 4};
    const auto one = distinct_rows({a, b}, 4);
    ASSERT_EQ(one.size(), 1u);
    EXPECT_EQ(one[0].atoms[0], 4);   // the first of the combination stands
    EXPECT_EQ(torsion_key_line(2, one[0].classes),
              "torsion4     5   56   56   26      0.000 0.0 1    0.000 180.0 2    0.000 0.0");
    EXPECT_EQ(bond_key_line(2, 26, 56, 10.0f, 1.6f), "bond4        26   56        10.0000     1.6000");
    const int types[3] = {56, 26, 56};
    EXPECT_EQ(angle_key_line(1, types, 1.0f, 109.5f), "angle        56   26   56     1.000    109.500");
    const int classes[4] = {56, 26, 56, 2};
    EXPECT_EQ(opbend_key_line(classes, 0.5f), "opbend      56   26   56    2  0.50");
    EXPECT_EQ(scan_undefined(log_of("badtype.log"))[0].kind, UndefinedKind::Atom);
    EXPECT_EQ(scan_undefined(log_of("mborol.log")).size(), 3u);
}

TEST(Undefined, TheCommandAsksForBondsAndAnglesAndWritesTheKey) {
    TestSession t;
    write_file(t.s.inst.cfgset + "/dir1.def", t.scratch() + "\n");
    std::filesystem::copy_file(test_data("tinker/undefined/ivboret.xyz"), t.scratch() + "/ivboret.xyz");
    // The command is reached from Tinker mode; here it runs on the job as loaded.
    t.tk.load_script("");
    run_program(t.s, {"zentol", "ivboret", "1"});
    std::filesystem::current_path(t.scratch());
    std::filesystem::copy_file(test_data("tinker/undefined/ivboret.log"), t.scratch() + "/ZENTOL.LOG");
    // The bond, then five angle combinations (one cancelled), then the out-of-plane bend.
    t.tk.load_script("dialog 118 ok 1071=1.60 1008=4.0\ndialog 118 ok\ndialog 118 cancel\ndialog 118 ok\n"
                     "dialog 118 ok\ndialog 118 ok\ndialog 118 ok 1008=0.1\nmsgbox ok\n");
    undefined_parameters_command(t.s);
    const Lines key = files::read_lines(t.scratch() + "/ivboret.key").value_or(Lines{});
    auto has = [&](const std::string& start) {
        return std::count_if(key.begin(), key.end(), [&](const std::string& l) { return l.rfind(start, 0) == 0; });
    };
    EXPECT_EQ(has("bond4 "), 1);
    EXPECT_EQ(has("angle"), 4);
    EXPECT_EQ(has("opbend"), 1);
    EXPECT_GE(has("torsion"), 5);
    EXPECT_NE(std::find(key.begin(), key.end(), "bond4        26   56         4.0000     1.6000"), key.end());
    ASSERT_FALSE(t.tk.message_boxes().empty());
    EXPECT_NE(t.tk.message_boxes().back().find("All Undefined Torsions set to 0"), std::string::npos);
}
