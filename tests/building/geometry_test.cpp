// Distances, angles, dihedrals and bond estimates, and the Geom. command.
#include "building/geometry.h"

#include <cmath>

#include <gtest/gtest.h>

#include "building/carbon_job.h"

using namespace zentol;
using zentol::testing::read_file;
using zentol::testing::TestSession;

namespace {

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

}  // namespace

TEST(Geometry, DistanceAndAngleKeepTheOldValueWhenASideVanishes) {
    EXPECT_DOUBLE_EQ(distance({1, 2, 3}, {4, 6, 3}), 5.0);
    EXPECT_NEAR(angle({1, 0, 0}, kOrigin, {0, 2, 0}, -1), 90.0, 1e-4);
    EXPECT_NEAR(angle({1, 0, 0}, kOrigin, {-3, 0, 0}, -1), 180.0, 1e-4);   // no NaN on a straight line
    EXPECT_EQ(angle(kOrigin, kOrigin, {0, 2, 0}, 42.5), 42.5);
    EXPECT_EQ(angle({1, 0, 0}, kOrigin, {1, 0, 0}, 42.5), 42.5);
}

TEST(Geometry, DihedralSignRangeAndDegenerateCases) {
    EXPECT_NEAR(dihedral(kNear, kOrigin, kAxisEnd, far_atom(60), 0), 60.0, 1e-3);
    EXPECT_NEAR(dihedral(kNear, kOrigin, kAxisEnd, far_atom(-60), 0), -60.0, 1e-3);
    EXPECT_NEAR(dihedral(kNear, kOrigin, kAxisEnd, far_atom(181), 0), -179.0, 1e-3);
    // The same four points reversed give the same dihedral.
    EXPECT_NEAR(dihedral(far_atom(60), kAxisEnd, kOrigin, kNear, 0), 60.0, 1e-3);
    // Three points on a line, or two on top of each other: the old value.
    EXPECT_EQ(dihedral({-1, 0, 0}, kOrigin, kAxisEnd, far_atom(60), 33.0), 33.0);
    EXPECT_EQ(dihedral(kNear, kOrigin, kOrigin, far_atom(60), 33.0), 33.0);
    EXPECT_EQ(dihedral(kNear, kOrigin, kAxisEnd, kAxisEnd, 33.0), 33.0);

    Store st;
    st.natoms = 4;
    const Vec3 p[4] = {kNear, kOrigin, kAxisEnd, far_atom(60)};
    for (int i = 0; i < 4; ++i) set_position(st.atom_rec[i + 1], p[i]);
    const int chain[4] = {1, 2, 3, 4}, twice[4] = {1, 2, 3, 1};
    EXPECT_NEAR(dihedral_of_atoms(st, chain, 0), 60.0, 1e-3);
    EXPECT_EQ(dihedral_of_atoms(st, twice, -12.0), -12.0);
}

TEST(Geometry, PeriodicGroups) {
    const std::pair<int, int> cases[] = {{1, 1},  {2, 2},  {3, 1},  {6, 4},  {10, 8}, {11, 1},
                                         {18, 8}, {19, 1}, {20, 2}, {21, 99}, {30, 99}, {31, 3},
                                         {36, 8}, {37, 1}, {38, 2}, {39, 99}, {49, 3}, {54, 8},
                                         {55, 99}, {0, 99}, {93, 99}};
    for (auto [z, group] : cases) EXPECT_EQ(periodic_group(z), group) << "Z " << z;
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

    // A double bond: the difference of electronegativities only, and for
    // two atoms of one element not even that.
    EXPECT_EQ(bond_length_report(c3, o1, 1.21).log,
              std::vector<std::string>{"     O2  -C1    1.21000  1.42000 -0.21000 dEn   1.06600"});
    EXPECT_EQ(bond_length_report(c3, atom("C2", 6, 0.76, 2.544, 3), 1.34).log,
              std::vector<std::string>{"     C1  -C2    1.34000  1.52000 -0.18000"});

    // Six neighbours on sulfur: hypervalent, and its neighbours count as valence.
    BondReport sf = bond_length_report(atom("F2", 9, 0.57, 4.193, 1), atom("S1", 16, 1.05, 2.589, 6), 1.56);
    ASSERT_EQ(sf.log.size(), 4u);
    EXPECT_EQ(sf.log[0], "S1   is hypervalent");
    EXPECT_EQ(sf.log[3].substr(0, 14), "     S1  -F2  ");
}

TEST(Geometry, RecordLayouts) {
    EXPECT_EQ(distance_lines(make_label("C1"), kOrigin, make_label("O2"), {1.43f, 0, 0}, 1.43),
              (std::vector<std::string>{"     C1     0.00000  0.00000  0.00000", "     O2     1.43000  0.00000  0.00000",
                                        "     Distance  C1  -O2    1.43000"}));
    const Label l[4] = {make_label("C1"), make_label("C2"), make_label("C3"), make_label("Cl14")};
    EXPECT_EQ(angle_line(l, 109.4712), "     Angle     C1  -C2  -C3   109.471");
    EXPECT_EQ(dihedral_line(l, -179.0), "     Dihedral  C1  -C2  -C3  -Cl14-179.000");
}

TEST(Geometry, CommandPicksInRoundsOfFour) {
    TestSession t;
    zentol::testing::carbon_job(t, {kNear, kOrigin, kAxisEnd, far_atom(60)}, "geo");
    // Four picks, then a fifth that starts over and repeats atom 3 as the
    // fourth; the right button forgets the picks; S ends.
    t.tk.load_script("press atom 1\npress atom 2\npress atom 3\npress atom 4\n"
                     "press atom 1\npress atom 2\npress atom 3\npress atom 3\n"
                     "press atom 1\npress3 0.5 0.5\nkey S\n");
    const Event end = geometry_command(t.s);
    EXPECT_EQ(end.key, 'S');
    EXPECT_FLOAT_EQ(end.x, 12.6f);
    EXPECT_EQ(t.s.view.pick_count, 0);

    const std::string log = read_file("geo.geo");
    EXPECT_NE(log.find("\n     Distance  C1  -C2    1.53708\n     C1  -C2    1.53708  1.52000  0.01708\n"),
              std::string::npos);
    EXPECT_NE(log.find("Angle Calculation\n     Angle     C1  -C2  -C3   109.378\n"), std::string::npos);
    EXPECT_NE(log.find("Dihedral Calculation\n     Dihedral  C1  -C2  -C3  -C4    60.000\n"), std::string::npos);
    // Atom 3 twice: the dihedral stands as it was.
    EXPECT_NE(log.find("     Dihedral  C1  -C2  -C3  -C3    60.000\n"), std::string::npos);
    int picked = 0;
    for (std::size_t at = log.find(" Atom Picked C1"); at != std::string::npos; at = log.find(" Atom Picked C1", at + 1))
        ++picked;
    EXPECT_EQ(picked, 3);
    int prompts = 0;
    for (const auto& [field, text] : t.tk.status_writes()) prompts += field == 9 && text == "Pick  Atoms";
    EXPECT_EQ(prompts, 2);   // at the start and after the right button
    EXPECT_EQ(t.tk.status(10), "Geom.");
}
