// Marking bonds and dihedrals, and turning a molecule about a bond.
#include "building/bond_rotation.h"

#include <cmath>

#include <gtest/gtest.h>

#include "building/carbon_job.h"
#include "building/geometry.h"

using namespace zentol;
using zentol::testing::read_file;
using zentol::testing::TestSession;

namespace {

// Carbons 1-4, a chain with the dihedral 1-2-3-4 at 60 degrees, and 5-8,
// a four-membered ring beside it.
void chain_and_ring(TestSession& t) {
    const float c = 0.5f, s = 0.8660254f;
    zentol::testing::carbon_job(t, {{-0.51f, 1.45f, 0}, {0, 0, 0}, {1.54f, 0, 0}, {2.05f, c * 1.45f, s * 1.45f},
                                    {0, 4, 0}, {1.5f, 4, 0}, {1.5f, 5.5f, 0}, {0, 5.5f, 0}},
                                "rot");
}

Vec3 at(const Store& st, int atom) { return atom_position(st.atom_rec[atom]); }

double chain_dihedral(const Store& st) {
    const int atoms[4] = {1, 2, 3, 4};
    return dihedral_of_atoms(st, atoms, 999);
}

bool told(const TestSession& t, const std::string& text) {
    for (const auto& m : t.tk.message_boxes())
        if (m == text) return true;
    return false;
}

}  // namespace

TEST(BondRotation, MarksABondAndADihedral) {
    TestSession t;
    chain_and_ring(t);
    // The bond picked from its higher end: stored low first, the files as picked.
    t.tk.load_script("dialog 124 ok 1051=1\npress atom 3\npress atom 2\n");
    mark_bond_command(t.s);
    EXPECT_EQ(read_file("ICONA.DAT"), "           3\n");
    EXPECT_EQ(read_file("ICONV.DAT"), "           3           2\n");
    EXPECT_EQ(read_file("IDHED.DAT"), "");
    const BondMarks& m = t.s.view.marks;
    EXPECT_EQ(m.count, 1);
    EXPECT_EQ(m.kind, 1);
    EXPECT_EQ(m.first_low, 2);
    EXPECT_EQ(m.first_high, 3);
    EXPECT_EQ(t.s.store.atom_rec[3][kMark], 0.0f);

    t.tk.load_script("dialog 124 ok 1052=1\npress atom 1\npress atom 2\npress atom 3\npress atom 4\n");
    mark_bond_command(t.s);
    EXPECT_EQ(read_file("IDHED.DAT"), "           1           2           3           4\n");
    EXPECT_EQ(read_file("ICONV.DAT"), "           1           2\n");
    EXPECT_EQ(m.count, 2);
    EXPECT_EQ(m.kind, 2);
    EXPECT_EQ(m.first_high, 2);
    EXPECT_EQ(m.second_low, 2);
    EXPECT_EQ(m.second_high, 3);
    EXPECT_EQ(t.s.store.atom_rec[1][kMark], 1.0f);   // the first atom stays marked

    // A dihedral about a ring bond is refused; the files start afresh.
    t.tk.load_script("dialog 124 ok 1052=1\npress atom 5\npress atom 6\npress atom 7\npress atom 8\n");
    mark_bond_command(t.s);
    EXPECT_TRUE(told(t, "Atoms in Ring"));
    EXPECT_EQ(read_file("IDHED.DAT"), "");
    EXPECT_EQ(m.kind, 1);

    t.tk.load_script("dialog 124 ok 1053=1\n");
    mark_bond_command(t.s);
    EXPECT_EQ(m.count, 0);
    EXPECT_EQ(m.kind, 0);
    EXPECT_EQ(t.s.store.atom_rec[1][kMark], 0.0f);

    t.tk.load_script("dialog 124 cancel 1052=1\npress atom 1\n");   // Cancel: no picking
    mark_bond_command(t.s);
    EXPECT_EQ(t.tk.pending_messages(), 1u);
}

TEST(BondRotation, RefusesARingBondAndAtomsNotBonded) {
    TestSession t;
    chain_and_ring(t);
    t.tk.load_script("press atom 5\npress atom 6\npress atom 7\npress atom 8\n");
    bond_rotate(t.s, kRotateBond);
    EXPECT_TRUE(told(t, "Atoms in Ring"));
    t.tk.load_script("press atom 1\npress atom 2\npress atom 4\npress atom 3\n");
    bond_rotate(t.s, kRotateBond);
    EXPECT_TRUE(told(t, "Atoms not Adjacent"));
    EXPECT_NEAR(chain_dihedral(t.s.store), 60.0, 1e-3);

    // Esc after the first pick: field 9 blank, no picks left.
    t.tk.load_script("press atom 1\nkey 27\n");
    bond_rotate(t.s, kRotateBond);
    EXPECT_EQ(t.tk.status(9), " ");
    EXPECT_EQ(t.s.view.pick_count, 0);
    EXPECT_FALSE(zentol::testing::file_present("ICONA.DAT"));
}

TEST(BondRotation, KeysTurnTheFarSideAboutTheBond) {
    TestSession t;
    chain_and_ring(t);
    t.s.opt.bond_rot_step = 20;
    const Store& st = t.s.store;
    const double d34 = distance(at(st, 3), at(st, 4)), d14 = distance(at(st, 1), at(st, 4));
    // Two steps forward, one back by another key, then the right button ends.
    t.tk.load_script("press atom 1\npress atom 2\npress atom 3\npress atom 4\n"
                     "key 261\nkey 261\nkey 65\npress3 0.5 0.5\nkey 261\n");
    bond_rotate(t.s, kRotateBond);
    EXPECT_EQ(t.tk.pending_messages(), 1u);
    EXPECT_NEAR(chain_dihedral(st), 80.0, 1e-3);
    EXPECT_EQ(t.tk.status(9), "C1-C2-C3-C4   80.000");
    // Atom 4 turned on its circle about the axis: its bond kept, its
    // distance to atom 1 changed; the near side and the ring stayed.
    EXPECT_NEAR(distance(at(st, 3), at(st, 4)), d34, 1e-4);
    EXPECT_GT(std::fabs(distance(at(st, 1), at(st, 4)) - d14), 0.05);
    EXPECT_NEAR(distance(at(st, 1), at(st, 2)), 1.53708, 1e-4);
    EXPECT_NEAR(distance(at(st, 1), at(st, 5)), distance({-0.51f, 1.45f, 0}, {0, 4, 0}), 1e-4);
    EXPECT_EQ(t.s.view.pick_count, 0);
}
