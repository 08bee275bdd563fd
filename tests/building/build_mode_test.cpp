// Build mode in whole headless sessions: the empty job, growing from
// hydrogens, the editing commands and leaving.
#include "building/build_mode.h"

#include <algorithm>
#include <filesystem>

#include <gtest/gtest.h>

#include "building/connectivity.h"
#include "building/vec3.h"
#include "session/startup.h"
#include "support/test_support.h"
#include "toolkit/files.h"

using namespace zentol;
using namespace zentol::testing;

namespace {

// A session on the empty job ptest, running the script to its end.
void run_ptest(TestSession& t, const std::string& script) {
    std::filesystem::current_path(t.dir.path());
    t.tk.load_script(script);
    run_program(t.s, {"zentol"});
}

int count_dialogs(const TestSession& t, int id) { return static_cast<int>(std::ranges::count(t.tk.dialogs_shown(), id)); }

bool transcript_has(const TestSession& t, const std::string& text) {
    return std::ranges::any_of(t.tk.transcript(), [&](const std::string& l) { return l.find(text) != std::string::npos; });
}

// Methane from the dialog, then a tetrahedral carbon on hydrogen 2.
const char* const kEthane = "key B\ndialog 102 ok 1021=C 1048=1\npress atom 2\ndialog 102 ok 1021=C 1048=1\n";

}  // namespace

TEST(BuildMode, AnEmptyJobAsksForTheFirstAtomAgainAfterCancel) {
    TestSession t;
    // A redraw is no reason to ask again; a key is.
    run_ptest(t, "key B\ndialog 102 cancel\nexpose\nkey x\ndialog 102 cancel\nmenu 40056\nclose\n");
    EXPECT_EQ(count_dialogs(t, 102), 2);
    EXPECT_EQ(t.s.store.natoms, 0);
}

TEST(BuildMode, ChoicesCarryOverAndReturnToDisplayEndsBuild) {
    TestSession t;
    // Nitrogen, pyramidal; then the dialog on one of its hydrogens is preset
    // with the last element and geometry and returns to Display.
    run_ptest(t, "key B\ndialog 102 ok 1021=n 1055=1 1101=1\npress atom 2\ndialog 102 ok 1016=1\nclose\n");
    EXPECT_EQ(t.s.store.natoms, 4);
    EXPECT_EQ(label_text(t.s.store.atom_label[1]), "N   ");
    EXPECT_EQ(t.s.flags.total_charge, 1);
    EXPECT_FLOAT_EQ(t.s.build.last_geometry, 5.0f);
    EXPECT_EQ(label_text(t.s.build.current_element), "N   ");
    EXPECT_TRUE(transcript_has(t, "menu 30001"));
}

TEST(BuildMode, EditingCommandsOnEthane) {
    TestSession t;
    run_ptest(t, std::string(kEthane) +
                     "press atom 1\n"                                 // a carbon: selected, no dialog
                     "menu 40005\npress atom 8\n"                     // Rm.H: 7 atoms
                     "menu 40024\npress atom 4\npress atom 6\n"       // Mk.Conn H-H
                     "menu 40025\n"                                   // Rm.CONN
                     "menu 40042\npress atom 1\npress atom 2\n"       // Del.Bond C-C: +2 H
                     "menu 40044\npress atom 2\n"                     // Del.Mol: the second carbon's molecule
                     "menu 40056\nclose\n");
    EXPECT_EQ(count_dialogs(t, 102), 2);
    EXPECT_TRUE(transcript_has(t, "C Selected"));
    const Store& st = t.s.store;
    // The first carbon is left with its three hydrogens and the cap of the cut.
    EXPECT_EQ(st.natoms, 5);
    EXPECT_EQ(st.conn_count(1), 4);
    EXPECT_EQ(t.s.build.extra_conn_count, 0);
    for (int i = 2; i <= 5; ++i) EXPECT_TRUE(is_hydrogen(st.atom_label[i]));
    EXPECT_TRUE(messages_but_ptest_question(t).empty());
}

TEST(BuildMode, DeleteModeRepeatsUntilTheRightButtonAndPurgeEmptiesPtest) {
    TestSession t;
    run_ptest(t, std::string(kEthane) +
                     "menu 40007\npress atom 2\npress3 0.5 0.5\n"   // methyl deleted, mode left
                     "menu 40015\n"                                   // Purge: no question in ptest
                     "dialog 102 ok 1021=O 1053=1\nmenu 40056\nclose\n");   // a new start: bent water
    EXPECT_EQ(t.s.store.natoms, 3);
    EXPECT_EQ(messages_but_ptest_question(t).size(), 0u);
    auto geo = files::read_lines(t.scratch() + "/ptest.geo");
    ASSERT_TRUE(geo);
    EXPECT_NE(std::find(geo->begin(), geo->end(), "Purge Used"), geo->end());
}

TEST(BuildMode, AnIsolatedAtomAndACutBetweenStrangers) {
    TestSession t;
    run_ptest(t, "key B\ndialog 102 ok 1021=C 1048=1\n"
                 "press atom 2\ndialog 102 ok 1021=Ne 1060=1\n"   // an isolated neon, atom 6
                 "menu 40042\npress atom 1\npress atom 6\n"
                 "menu 40056\nclose\n");
    EXPECT_EQ(t.s.store.natoms, 6);
    EXPECT_EQ(t.s.store.conn_count(6), 0);
    EXPECT_GT(t.s.store.atom_rec[6][kX], t.s.store.atom_rec[1][kX] + 2.0f);
    ASSERT_EQ(messages_but_ptest_question(t).size(), 1u);
    EXPECT_NE(t.tk.message_boxes()[0].find("Atoms not Adjacent"), std::string::npos);
}

TEST(BuildMode, SubstituentsComeFromTheInstalledLibrary) {
    TestSession t;
    // Phenyl on a hydrogen of ethane: 8 - 1 + 12 - 1 atoms, one new C-C bond.
    run_ptest(t, std::string(kEthane) + "press atom 4\ndialog 102 ok 1061=1\nmenu 40056\nclose\n");
    const Store& st = t.s.store;
    ASSERT_EQ(st.natoms, 18);
    EXPECT_EQ(st.nbonds, 18);   // 17 tree bonds and the ring's closure
    int aromatic = 0;   // MM3 type 2: the sp2 carbon MM3 has every benzene parameter for
    for (int i = 1; i <= st.natoms; ++i) aromatic += st.conn_type(i) == 2;
    EXPECT_EQ(aromatic, 6);
    // The ring carbon now on the carbon hydrogen 4 was on sits a C-C bond
    // away, and the ring is turned into place: no two unbonded atoms on top
    // of each other.
    auto d = [&](int i, int j) { return (atom_position(st.atom_rec[i]) - atom_position(st.atom_rec[j])).length(); };
    int joined = 0;
    for (int k = 1; k <= st.conn_count(1); ++k) {
        if (st.conn_type(st.nbr(1, k)) == 2) {
            ++joined;
            EXPECT_NEAR(d(1, st.nbr(1, k)), 1.52f, 1e-3);
        }
    }
    EXPECT_EQ(joined, 1);
    for (int i = 1; i <= st.natoms; ++i)
        for (int j = i + 1; j <= st.natoms; ++j)
            if (!has_neighbour(st, i, j)) {
                EXPECT_GT(d(i, j), 1.4f) << i << " " << j;
            }
}
