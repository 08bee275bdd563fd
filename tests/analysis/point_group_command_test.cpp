// The Point Group and Align commands: against a stand-in point-group program
// that answers with fixed files, and with the built one.
#include "analysis/point_group_command.h"

#include <cmath>
#include <filesystem>
#include <memory>

#include <gtest/gtest.h>

#include "structure_files/xyz_file.h"
#include "support/test_support.h"

using namespace zentol;
using namespace zentol::testing;

namespace {

const char* const kWaterRows = "O1      0.0 0.0 0.1\\nH2      0.0 0.8 -0.5\\nH3      0.0 -0.8 -0.5\\n";

// Writes the answer files the way the real program does, in the job
// directory it is run in.
void install_fake_program(TestSession& t, const std::string& group_line, const std::string& rows = kWaterRows) {
    const std::string fake = t.dir / "fake_symmol";
    write_file(fake, "#!/bin/sh\n"
                     "test -f SYMMOL.INP || exit 1\n"
                     "printf '  The molecule is aligned\\n' > MOL_AL.TXT\n"
                     "printf ' \\n" + group_line + "\\nmore\\n' > SYMMOL.OUT\n"
                     "printf 'listing\\n' > SYMMOL.LST\n"
                     "printf '" + rows + "' > SYMMETRZ.OUT\n");
    std::filesystem::permissions(fake, std::filesystem::perms::owner_all);
    t.s.engines.values["symmol"] = fake;
}

float dist(const Store& st, int a, int b) {
    const auto &p = st.atom_rec[a], &q = st.atom_rec[b];
    return std::hypot(p[0] - q[0], p[1] - q[1], p[2] - q[2]);
}

}  // namespace

TEST(PointGroup, TheAnswerLineGivesGroupAndDeviation) {
    auto a = read_point_group_answer({"", "  ", "D6h     -0.0123  extra", "C2v 1"});
    ASSERT_TRUE(a);
    EXPECT_EQ(point_group_text(*a), "Point Group = D6h      0.0123");
    EXPECT_DOUBLE_EQ(read_point_group_answer({"C*v     0.95"})->deviation, 0.9);
    EXPECT_FALSE(read_point_group_answer({"one", ""}));
}

TEST(PointGroup, C1LeavesAlignOffAndAMissingProgramIsTold) {
    TestSession t;
    install_fake_program(t, "C1      0.0000");
    run_on_water(t, "menu 40031\nmenu 40029\n");
    EXPECT_FALSE(t.s.flags.symmetry_found);
    EXPECT_NE(t.s.store.atom_rec[2][1], 0.0f);   // untouched by Align

    TestSession none;
    none.s.engines.values["symmol"] = none.dir / "absent";
    run_on_water(none, "menu 40031\n");
    ASSERT_EQ(none.tk.message_boxes().size(), 1u);
    EXPECT_NE(none.tk.message_boxes()[0].find("point-group program"), std::string::npos);
}

// A coordinate of the aligned frame too wide for its column (a molecule
// spread over 10000 A) leaves a row the command cannot read: the atoms
// before it used to be aligned and the rest left where they were.
TEST(PointGroup, AlignTakesEveryAtomOrNone) {
    TestSession t;
    install_fake_program(t, "C2v     0.0300", "O1      0.0 0.0 0.1\\nH2    ************  0.8 -0.5\\nH3      0.0 -0.8 -0.5\\n");
    run_on_water(t, "menu 40031\nmenu 40029\n");
    const auto boxes = messages_but_ptest_question(t);
    EXPECT_EQ(boxes.size(), 1u);
    EXPECT_NE(boxes.empty() ? std::string::npos : boxes[0].find("SYMMETRZ.OUT gives coordinates for 1 of the 3 atoms"),
              std::string::npos);
    EXPECT_NE(t.tk.status(9), "View down principal axis/symm op");
    // The exit keeps the molecule as seen: compare its shape with the file's.
    auto water = std::make_unique<Store>();
    int charge = 0, multiplicity = 1;
    ASSERT_EQ(parse_xyz(test_data_lines("water.xyz"), *water, nullptr, charge, multiplicity), kXyzRead);
    for (auto [a, b] : {std::pair{1, 2}, std::pair{1, 3}, std::pair{2, 3}})
        EXPECT_NEAR(dist(t.s.store, a, b), dist(*water, a, b), 1e-4) << a << "-" << b;
}

TEST(PointGroup, BenzeneIsD6hWithTheRealProgram) {
    TestSession t;
    t.s.engines.values["symmol"] = ZENTOL_SYMMOL_PROGRAM;
    run_on_molecule(t, "../../examples/benzene.xyz", "menu 40031\nmenu 40029\n");
    const std::string geo = read_file(t.scratch() + "/benzene.geo");
    EXPECT_NE(geo.find("Point Group = D6h    "), std::string::npos) << geo;
    for (const char* gone : {"/MOL_AL.TXT", "/SYMMOL.LST", "/SYMMOL.OUT", "/SYMMOL.INP"})
        EXPECT_FALSE(file_present(t.scratch() + gone)) << gone;
    EXPECT_TRUE(t.s.flags.symmetry_found);
    EXPECT_EQ(t.tk.status(9), "View down principal axis/symm op");
    // Aligned: the ring lies in a plane turned 2 degrees from xy about x.
    for (int i = 1; i <= 6; ++i)
        EXPECT_NEAR(t.s.store.atom_rec[i][2] * 0.99939084f - t.s.store.atom_rec[i][1] * 0.0348995f, 0.0f, 1e-3) << i;
}
