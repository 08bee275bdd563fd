// Distances, angles, dihedrals and bond estimates; the Geom. command;
// marking bonds and dihedrals and turning a molecule about a bond.
#include "building/bond_rotation.h"
#include "building/geometry.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "building/connectivity.h"
#include "session/store_ops.h"
#include "structure_files/geo_log.h"
#include "support/test_support.h"

using namespace zentol;
using namespace zentol::testing;

namespace {

// A job of bare carbons at given points, bonds perceived and the .GEO log
// open.
void carbon_job(TestSession& t, const std::vector<Vec3>& points, const std::string& job) {
    Store& st = t.s.store;
    element_lookup(st, nullptr, "", kLookupConfirmAll);
    st.natoms = static_cast<int>(points.size());
    for (int i = 1; i <= st.natoms; ++i) {
        const Vec3& p = points[static_cast<std::size_t>(i - 1)];
        st.atom_label[i] = make_label("C" + std::to_string(i));
        st.atom_rec[i] = {p.x, p.y, p.z, 0.76f, 0, 0};
        st.conn_type(i) = 1;
    }
    perceive_bonds(st, nullptr, 0.25f);
    t.s.job.name = job;
    open_job_log(t.s, false, " Zentol " + job);
    save_and_reload(t.s);
}

// A far atom at the given dihedral about the bond (0,0,0)-(1.54,0,0) from
// a near atom in the xy plane.
Vec3 far_atom(double degrees) {
    const double r = degrees / 57.29578;
    return {2.05f, static_cast<float>(std::cos(r)), static_cast<float>(std::sin(r))};
}

const Vec3 kNear{-0.51f, 1.45f, 0}, kOrigin{0, 0, 0}, kAxisEnd{1.54f, 0, 0};

BondAtom atom(const char* label, int z, double radius, double en, int neighbours) {
    return {make_label(label), z, radius, en, neighbours};
}

// Carbons 1-4, a chain with the dihedral 1-2-3-4 at 60 degrees, and 5-8,
// a four-membered ring beside it.
void chain_and_ring(TestSession& t) {
    const float c = 0.5f, s = 0.8660254f;
    carbon_job(t, {kNear, kOrigin, kAxisEnd, {2.05f, c * 1.45f, s * 1.45f}, {0, 4, 0}, {1.5f, 4, 0}, {1.5f, 5.5f, 0},
                   {0, 5.5f, 0}},
               "rot");
}

Vec3 at(const Store& st, int atom) { return atom_position(st.atom_rec[atom]); }

double chain_dihedral(const Store& st) {
    const int atoms[4] = {1, 2, 3, 4};
    return dihedral_of_atoms(st, atoms, 999);
}

bool told(const TestSession& t, const std::string& text) { return std::ranges::count(t.tk.message_boxes(), text) > 0; }

}  // namespace

TEST(Geometry, MeasuresKeepTheOldValueWhenUndefined) {
    EXPECT_NEAR(angle({1, 0, 0}, kOrigin, {-3, 0, 0}, -1), 180.0, 1e-4);   // no NaN on a straight line
    EXPECT_EQ(angle(kOrigin, kOrigin, {0, 2, 0}, 42.5), 42.5);

    EXPECT_NEAR(dihedral(kNear, kOrigin, kAxisEnd, far_atom(181), 0), -179.0, 1e-3);
    // The same four points reversed give the same dihedral.
    EXPECT_NEAR(dihedral(far_atom(60), kAxisEnd, kOrigin, kNear, 0), 60.0, 1e-3);
    // Three points on a line, or two on top of each other: the old value.
    EXPECT_EQ(dihedral({-1, 0, 0}, kOrigin, kAxisEnd, far_atom(60), 33.0), 33.0);
    EXPECT_EQ(dihedral(kNear, kOrigin, kAxisEnd, kAxisEnd, 33.0), 33.0);
}

TEST(Geometry, BondEstimateByValenceAndElectronegativity) {
    const BondAtom c4 = atom("C1", 6, 0.76, 2.544, 4), c3 = atom("C1", 6, 0.76, 2.544, 3);
    const BondAtom o2 = atom("O2", 8, 0.66, 3.61, 2), o1 = atom("O2", 8, 0.66, 3.61, 1);

    // A hydrogen: no correction, and the status says so.
    BondReport ch = bond_length_report(atom("H2", 1, 0.31, 2.3, 1), c4, 1.09);
    EXPECT_EQ(ch.log, std::vector<std::string>{"     C1  -H2    1.09000  1.07000  0.02000"});
    EXPECT_EQ(ch.status.substr(0, 10), " C1  -H2  ");
    EXPECT_EQ(ch.status.substr(ch.status.size() - 4), " End");

    // Both single-bonded by valence: the Blom-Haaland correction, heavier first.
    BondReport co = bond_length_report(c4, o2, 1.43);
    EXPECT_EQ(co.log, (std::vector<std::string>{"Updated version of Blom Haaland J.Mol.Struct.128(1985)21-27",
                                                 "pc = -1.*0.085(ABS(X(1)-X(2)))**1.36",
                                                 "     O2  -C1    1.43000  1.42000  0.01000 dEn   1.06600 pc  -0.09272"}));
    EXPECT_NE(co.status.find(" pc "), std::string::npos);

    // A double bond: the difference of electronegativities only (for two
    // atoms of one element not even that: the C-C line of the command's test).
    EXPECT_EQ(bond_length_report(c3, o1, 1.21).log,
              std::vector<std::string>{"     O2  -C1    1.21000  1.42000 -0.21000 dEn   1.06600"});

    // Six neighbours on sulfur: hypervalent, and its neighbours count as valence.
    BondReport sf = bond_length_report(atom("F2", 9, 0.57, 4.193, 1), atom("S1", 16, 1.05, 2.589, 6), 1.56);
    ASSERT_EQ(sf.log.size(), 4u);
    EXPECT_EQ(sf.log[0], "S1   is hypervalent");
    EXPECT_EQ(sf.log[3].substr(0, 14), "     S1  -F2  ");
}

TEST(Geometry, CommandPicksInRoundsOfFour) {
    TestSession t;
    carbon_job(t, {kNear, kOrigin, kAxisEnd, far_atom(60)}, "geo");
    // Four picks, then a fifth that starts over and repeats atom 3 as the
    // fourth; the right button forgets the picks; S ends.
    t.tk.load_script("press atom 1\npress atom 2\npress atom 3\npress atom 4\n"
                     "press atom 1\npress atom 2\npress atom 3\npress atom 3\n"
                     "press atom 1\npress3 0.5 0.5\nkey S\n");
    const Event end = geometry_command(t.s);
    EXPECT_EQ(end.key, 'S');
    EXPECT_EQ(t.s.view.pick_count, 0);

    const std::string log = read_file("geo.geo");
    EXPECT_NE(log.find("Distance Calculation\n     C1    -1.28000  0.96250 -0.21651\n"
                       "     C2    -0.77000 -0.48750 -0.21651\n     Distance  C1  -C2    1.53708\n"
                       "     C1  -C2    1.53708  1.52000  0.01708\n"),
              std::string::npos) << log;
    EXPECT_NE(log.find("Angle Calculation\n     Angle     C1  -C2  -C3   109.378\n"), std::string::npos);
    EXPECT_NE(log.find("Dihedral Calculation\n     Dihedral  C1  -C2  -C3  -C4    60.000\n"), std::string::npos);
    // Atom 3 twice: the dihedral stands as it was.
    EXPECT_NE(log.find("     Dihedral  C1  -C2  -C3  -C3    60.000\n"), std::string::npos);
    int picked = 0;
    for (std::size_t at = log.find(" Atom Picked C1"); at != std::string::npos; at = log.find(" Atom Picked C1", at + 1))
        ++picked;
    EXPECT_EQ(picked, 3);
    const std::pair<int, std::string> prompt{9, "Pick  Atoms"};
    EXPECT_EQ(std::ranges::count(t.tk.status_writes(), prompt), 2);   // at the start and after the right button
    EXPECT_EQ(t.tk.status(10), "Geom.");
}

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
    EXPECT_EQ(std::tie(m.kind, m.first_low, m.first_high), std::tuple(1, 2, 3));
    EXPECT_EQ(t.s.store.atom_rec[3][kMark], 0.0f);

    t.tk.load_script("dialog 124 ok 1052=1\npress atom 1\npress atom 2\npress atom 3\npress atom 4\n");
    mark_bond_command(t.s);
    EXPECT_EQ(read_file("IDHED.DAT"), "           1           2           3           4\n");
    EXPECT_EQ(read_file("ICONV.DAT"), "           1           2\n");
    EXPECT_EQ(std::tie(m.kind, m.second_low, m.second_high), std::tuple(2, 2, 3));
    EXPECT_EQ(t.s.store.atom_rec[1][kMark], 1.0f);   // the first atom stays marked

    // A dihedral about a ring bond is refused; the files start afresh.
    t.tk.load_script("dialog 124 ok 1052=1\npress atom 5\npress atom 6\npress atom 7\npress atom 8\n");
    mark_bond_command(t.s);
    EXPECT_TRUE(told(t, "Atoms in Ring"));
    EXPECT_EQ(read_file("IDHED.DAT"), "");
    EXPECT_EQ(m.kind, 1);

    t.tk.load_script("dialog 124 ok 1053=1\n");
    mark_bond_command(t.s);
    EXPECT_EQ(m.kind, 0);
    EXPECT_EQ(t.s.store.atom_rec[1][kMark], 0.0f);
}

// (A ring bond is refused as in marking a dihedral.)
TEST(BondRotation, RefusesAtomsNotBondedAndKeysTurnTheFarSide) {
    TestSession t;
    chain_and_ring(t);
    t.tk.load_script("press atom 1\npress atom 2\npress atom 4\npress atom 3\n");
    bond_rotate(t.s, kRotateBond);
    EXPECT_TRUE(told(t, "Atoms not Adjacent"));
    EXPECT_NEAR(chain_dihedral(t.s.store), 60.0, 1e-3);

    // Esc after the first pick: field 9 blank, no picks left.
    t.tk.load_script("press atom 1\nkey 27\n");
    bond_rotate(t.s, kRotateBond);
    EXPECT_EQ(t.tk.status(9), " ");
    EXPECT_EQ(t.s.view.pick_count, 0);
    EXPECT_FALSE(file_present("ICONA.DAT"));

    t.s.opt.bond_rot_step = 20;
    const Store& st = t.s.store;
    const double d34 = distance(at(st, 3), at(st, 4));
    // Two steps forward, one back by another key, then the right button ends.
    t.tk.load_script("press atom 1\npress atom 2\npress atom 3\npress atom 4\n"
                     "key 261\nkey 261\nkey 65\npress3 0.5 0.5\nkey 261\n");
    bond_rotate(t.s, kRotateBond);
    EXPECT_EQ(t.tk.pending_messages(), 1u);
    EXPECT_NEAR(chain_dihedral(st), 80.0, 1e-3);
    EXPECT_EQ(t.tk.status(9), "C1-C2-C3-C4   80.000");
    // Atom 4 turned on its circle about the axis, its bond kept; the near
    // side and the ring stayed.
    EXPECT_NEAR(distance(at(st, 3), at(st, 4)), d34, 1e-4);
    EXPECT_NEAR(distance(at(st, 1), at(st, 5)), distance(kNear, {0, 4, 0}), 1e-4);
    EXPECT_EQ(t.s.view.pick_count, 0);
}
