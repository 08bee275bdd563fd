// Molecules appended from files, and the charges and key lines they bring.
#include "building/library.h"

#include <algorithm>
#include <filesystem>

#include <gtest/gtest.h>

#include "building/connectivity.h"
#include "session/store_ops.h"
#include "support/test_support.h"
#include "toolkit/files.h"

using namespace zentol;
using namespace zentol::testing;

namespace {

const char* const kWater =
    "     3  water\n"
    "     1  O1     0.000000    0.000000    0.000000     6     2     3\n"
    "     2  H2     0.957000    0.000000    0.000000    21     1\n"
    "     3  H3    -0.240000    0.927000    0.000000    21     1\n";

struct Append : ::testing::Test {
    Append() {
        std::filesystem::current_path(t.scratch());
        t.s.job.name = "job";
        t.s.job.library_dir = t.dir / "lib";
        element_lookup(t.s.store, nullptr, "", kLookupConfirmAll);
        write_file(t.dir / "lib/alcohols/methanol.xyz", kWater);   // any file under a code's name
        write_file(t.dir / "add/water.xyz", kWater);
    }
    TestSession t;
};

}  // namespace

TEST_F(Append, AnEmptyMoleculeStartsAndALaterOneIsShiftedAndRenumbered) {
    Store& st = t.s.store;
    EXPECT_EQ(append_library_file(t.s, 4), kAppendStarted);
    ASSERT_EQ(st.natoms, 3);
    EXPECT_FLOAT_EQ(st.atom_rec[3][kX], 0.5f);   // the lowest x moved to 0.5
    EXPECT_EQ(label_text(st.atom_label[2]), "H2  ");
    EXPECT_EQ(st.conn_type(2), 21);
    EXPECT_EQ(st.conn[kConnMark2][1], 2);
    EXPECT_TRUE(files::exists("job.xyz"));   // the job files are written

    EXPECT_EQ(append_molecule_file(t.s, t.dir / "add/water.xyz"), kAppendJoined);
    ASSERT_EQ(st.natoms, 6);
    EXPECT_EQ(st.nbr(4, 1), 5);
    EXPECT_EQ(st.nbr(4, 2), 6);
    EXPECT_EQ(st.conn_count(4), 2);
    // Past 1.05 times the largest x there was, plus 0.5.
    EXPECT_NEAR(st.atom_rec[6][kX], (0.957f + 0.74f) * 1.05f + 0.5f, 1e-5);
    EXPECT_EQ(st.nbonds, 4);

    EXPECT_EQ(append_molecule_file(t.s, t.dir / "add/none.xyz"), kAppendFailed);
    write_file(t.dir / "add/bad.xyz", "     2  bad\n     1  C1    x\n");
    EXPECT_EQ(append_molecule_file(t.s, t.dir / "add/bad.xyz"), kAppendFailed);
    EXPECT_EQ(st.natoms, 6);
    EXPECT_EQ(library_path("/lib", 1, ""), "/lib/aromatics/benzene.xyz");
    EXPECT_EQ(library_path("/lib", 99, "/x/own.xyz"), "/x/own.xyz");
}

TEST_F(Append, KeyLinesAndChargesOfTheAddedMoleculeJoinTheJobs) {
    const std::vector<std::string> added = {"parameters /somewhere/mm3", "CHARGE    -3    0.2500", "charge 2 -0.5",
                                            "  polarizable  "};
    EXPECT_EQ(shifted_key_lines(added, 10),
              (std::vector<std::string>{"CHARGE   -13    0.2500", "CHARGE    12   -0.5000", "polarizable"}));

    // Tinker reads keywords behind blanks too: such a parameters line is
    // dropped and such a charge renumbered. An atom number beyond reach
    // stays as it stands.
    EXPECT_EQ(shifted_key_lines({"   parameters /elsewhere/mm3", "  CHARGE    -3    0.2500", "CHARGE -1e300 0.5"}, 10),
              (std::vector<std::string>{"CHARGE   -13    0.2500", "CHARGE -1e300 0.5"}));

    write_file("job_chg.log", "# job\nO1   -0.8\nH2    0.4\nH3    0.4\n");
    write_file(t.dir / "add/water_chg.log", "# water\nO1   -0.7\nH2    0.35\nH3    0.35\n");
    write_file(t.dir / "add/water.key", "parameters mm3\nCHARGE    -1   -0.7000\n");
    append_molecule_file(t.s, t.dir / "add/water.xyz");
    append_molecule_file(t.s, t.dir / "add/water.xyz");
    merge_added_molecule(t.s, t.dir / "add/water.xyz", 3);
    auto charges = files::read_lines("job_chg.log");
    ASSERT_TRUE(charges);
    ASSERT_EQ(charges->size(), 7u);
    EXPECT_EQ((*charges)[4], "O1   -0.7");
    auto key = files::read_lines("job.key");
    ASSERT_TRUE(key);
    EXPECT_EQ(key->back(), "CHARGE    -4   -0.7000");
    EXPECT_EQ(std::count(key->begin(), key->end(), "#verbose"), 1);
}
