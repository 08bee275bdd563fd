// The point-group program: the groups of known molecules, symmetrisation of
// a distorted one, and the files it reads and writes.
#include "analysis/point_group.h"

#include <cmath>
#include <numbers>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "session/molecule_store.h"
#include "structure_files/ins_file.h"
#include "text/fixed_format.h"
#include "toolkit/files.h"

using namespace zentol;
using symmetry::Vec;

namespace {

constexpr double kPi = std::numbers::pi;

struct Molecule {
    std::vector<SymAtom> atoms;
    void add(const std::string& label, double x, double y, double z) {
        atoms.push_back({label, element_of_label(label), {x, y, z}});
    }
    // A ring of atoms round z at radius r and height z, starting at angle a0.
    void ring(const std::string& element, int n, double r, double z, double a0 = 0) {
        for (int k = 0; k < n; ++k) {
            const double a = a0 + 2 * kPi * k / n;
            add(element + std::to_string(atoms.size() + 1), r * std::cos(a), r * std::sin(a), z);
        }
    }
};

// Every molecule is turned and moved off the origin first, so that nothing
// rests on the input axes.
std::vector<SymAtom> placed(Molecule m) {
    const symmetry::Mat turn = symmetry::multiply(symmetry::rotation({0.3, -0.5, 0.8}, 0.9),
                                                  symmetry::rotation({1, 0.2, 0}, 0.4));
    for (SymAtom& a : m.atoms) a.pos = symmetry::add(symmetry::apply(turn, a.pos), {1.7, -0.4, 2.3});
    return m.atoms;
}

Molecule benzene() {
    Molecule m;
    m.ring("C", 6, 1.39, 0);
    m.ring("H", 6, 2.47, 0);
    return m;
}

Molecule ethane(bool staggered) {
    Molecule m;
    m.add("C1", 0, 0, 0.765);
    m.add("C2", 0, 0, -0.765);
    m.ring("H", 3, 1.02, 1.16);
    m.ring("H", 3, 1.02, -1.16, staggered ? kPi / 3 : 0);
    return m;
}

Molecule from_rows(const std::vector<std::pair<std::string, Vec>>& rows) {
    Molecule m;
    for (const auto& [label, p] : rows) m.add(label, p[0], p[1], p[2]);
    return m;
}

Molecule water() { return from_rows({{"O1", {0, 0, 0.117}}, {"H2", {0, 0.757, -0.469}}, {"H3", {0, -0.757, -0.469}}}); }
Molecule co2() { return from_rows({{"O1", {-1.16, 0, 0}}, {"C2", {0, 0, 0}}, {"O3", {1.16, 0, 0}}}); }

Molecule ammonia(double a0) {
    Molecule m;
    m.add("N1", 0, 0, 0.11);
    m.ring("H", 3, 0.94, -0.27, a0);
    return m;
}

// Truncated icosahedron, edge 1.40: the cyclic permutations of
// (0, +-1, +-3p), (+-1, +-(2+p), +-2p), (+-p, +-2, +-(2p+1)) for edge 2.
Molecule c60() {
    const double p = (1 + std::sqrt(5.0)) / 2, s = 0.70;
    const Vec seeds[] = {{0, 1, 3 * p}, {1, 2 + p, 2 * p}, {p, 2, 2 * p + 1}};
    Molecule m;
    for (const Vec& seed : seeds)
        for (int sx = -1; sx <= 1; sx += 2)
            for (int sy = -1; sy <= 1; sy += 2)
                for (int sz = -1; sz <= 1; sz += 2) {
                    const Vec v = {sx * seed[0], sy * seed[1], sz * seed[2]};
                    if ((seed[0] == 0 && sx < 0)) continue;   // +0 and -0 are one atom
                    for (int c = 0; c < 3; ++c) m.add("C", s * v[c], s * v[(c + 1) % 3], s * v[(c + 2) % 3]);
                }
    return m;
}

// Deterministic noise in [-amplitude, amplitude] on every coordinate.
Molecule shaken(Molecule m, double amplitude) {
    unsigned long long state = 12345;
    for (SymAtom& a : m.atoms)
        for (double& c : a.pos) {
            state = state * 6364136223846793005ULL + 1442695040888963407ULL;
            c += amplitude * (static_cast<double>(state >> 11) / 9007199254740992.0 * 2 - 1);
        }
    return m;
}

double distance(const Vec& a, const Vec& b) { return symmetry::norm(symmetry::sub(a, b)); }

}  // namespace

TEST(PointGroupSearch, KnownMoleculesGetTheirGroups) {
    const double t = 1.0 / std::sqrt(3.0) * 1.09;
    struct Case {
        const char* name;
        Molecule m;
        const char* group;
        int order;
    };
    const Case cases[] = {
        {"benzene", benzene(), "D6h", 24},
        {"water", water(), "C2v", 4},
        {"ammonia", ammonia(0), "C3v", 6},
        {"methane", from_rows({{"C1", {0, 0, 0}}, {"H2", {t, t, t}}, {"H3", {-t, -t, t}}, {"H4", {-t, t, -t}},
                               {"H5", {t, -t, -t}}}), "Td", 24},
        {"SF6", from_rows({{"S1", {0, 0, 0}}, {"F2", {1.56, 0, 0}}, {"F3", {-1.56, 0, 0}}, {"F4", {0, 1.56, 0}},
                           {"F5", {0, -1.56, 0}}, {"F6", {0, 0, 1.56}}, {"F7", {0, 0, -1.56}}}), "Oh", 48},
        {"ethane staggered", ethane(true), "D3d", 12},
        {"ethane eclipsed", ethane(false), "D3h", 12},
        {"allene", from_rows({{"C1", {0, 0, 0}}, {"C2", {0, 0, 1.31}}, {"C3", {0, 0, -1.31}}, {"H4", {0.93, 0, 1.87}},
                              {"H5", {-0.93, 0, 1.87}}, {"H6", {0, 0.93, -1.87}}, {"H7", {0, -0.93, -1.87}}}), "D2d", 8},
        {"trans-dichloroethene", from_rows({{"C1", {0.67, 0, 0}}, {"C2", {-0.67, 0, 0}}, {"Cl3", {1.5, 1.42, 0}},
                                            {"Cl4", {-1.5, -1.42, 0}}, {"H5", {1.2, -0.94, 0}}, {"H6", {-1.2, 0.94, 0}}}),
         "C2h", 4},
        {"CHFClBr", from_rows({{"C1", {0, 0, 0}}, {"H2", {0.63, 0.63, 0.63}}, {"F3", {-0.78, -0.78, 0.78}},
                               {"Cl4", {-1.02, 1.02, -1.02}}, {"Br5", {1.11, -1.11, -1.11}}}), "C1", 1},
        {"hydrogen peroxide", from_rows({{"O1", {0.7, 0, 0}}, {"O2", {-0.7, 0, 0}}, {"H3", {0.9, 0.8, 0.4}},
                                         {"H4", {-0.9, -0.8, 0.4}}}), "C2", 2},
        {"CO2", co2(), "D*h", 0},
        {"HCN", from_rows({{"H1", {-1.06, 0, 0}}, {"C2", {0, 0, 0}}, {"N3", {1.15, 0, 0}}}), "C*v", 0},
        {"C60", c60(), "Ih", 120},
        {"staggered ring pair (S8 axis)", [] { Molecule m; m.ring("C", 4, 1.5, 0.8, 0.3); m.ring("C", 4, 1.5, -0.8, 0.3 + kPi / 4);
                                              m.ring("H", 4, 2.4, 1.3, 0.5); m.ring("H", 4, 2.4, -1.3, 0.5 + kPi / 4);
                                              m.ring("N", 4, 2.2, 0.3, 1.3); m.ring("N", 4, 2.2, -0.3, 1.3 + kPi / 4); return m; }(),
         "S8", 8},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const PointGroupResult r = find_point_group(placed(c.m));
        EXPECT_EQ(r.group, c.group);
        EXPECT_EQ(r.order, c.order);
        EXPECT_LT(r.deviation, 1e-3);
        EXPECT_TRUE(r.aligned);
    }
}

// The group generated by the matrices, applied to a few points of general
// position: the molecule has exactly that symmetry.
Molecule orbits_of(const std::vector<symmetry::Mat>& generators, const std::vector<Vec>& seeds) {
    std::vector<symmetry::Mat> group{symmetry::identity()};
    for (std::size_t k = 0; k < group.size(); ++k)
        for (const auto& g : generators) {
            const symmetry::Mat p = symmetry::multiply(g, group[k]);
            bool known = false;
            for (const auto& h : group)
                known = known || distance(symmetry::apply(p, {1, 2, 3}), symmetry::apply(h, {1, 2, 3})) < 1e-6;
            if (!known) group.push_back(p);
        }
    Molecule m;
    const char* elements[] = {"C", "H", "N"};
    for (std::size_t s = 0; s < seeds.size(); ++s)
        for (const auto& g : group) {
            const Vec p = symmetry::apply(g, seeds[s]);
            m.add(elements[s % 3] + std::to_string(m.atoms.size() + 1), p[0], p[1], p[2]);
        }
    return m;
}

TEST(PointGroupSearch, GroupsBuiltFromGeneratorsAreRecognised) {
    using symmetry::improper_rotation;
    using symmetry::reflection;
    using symmetry::rotation;
    const Vec z{0, 0, 1}, x{1, 0, 0}, body{1, 1, 1};
    const double phi = (1 + std::sqrt(5.0)) / 2;
    const symmetry::Mat c3_body = rotation(body, 2 * kPi / 3), c2z = rotation(z, kPi);
    const symmetry::Mat minus = symmetry::multiply(reflection(z), c2z);
    struct Case {
        const char* group;
        std::vector<symmetry::Mat> generators;
    };
    const Case cases[] = {
        {"Cs", {reflection(z)}},
        {"Ci", {minus}},
        {"C5", {rotation(z, 2 * kPi / 5)}},
        {"C3h", {rotation(z, 2 * kPi / 3), reflection(z)}},
        {"S4", {improper_rotation(z, kPi / 2)}},
        {"S6", {improper_rotation(z, kPi / 3)}},
        {"D5", {rotation(z, 2 * kPi / 5), rotation(x, kPi)}},
        {"D4d", {improper_rotation(z, kPi / 4), rotation(x, kPi)}},
        {"T", {c3_body, c2z}},
        {"Th", {c3_body, c2z, minus}},
        {"O", {rotation(z, kPi / 2), c3_body}},
        {"I", {rotation({0, 1, phi}, 2 * kPi / 5), c2z, c3_body}},
    };
    const std::vector<Vec> seeds = {{1.9, 0.7, 0.9}, {0.8, 3.1, 1.7}, {3.4, 1.2, -2.2}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.group);
        const Molecule m = orbits_of(c.generators, seeds);
        EXPECT_EQ(find_point_group(placed(m)).group, c.group);
        const PointGroupResult noisy = find_point_group(placed(shaken(m, 0.02)));
        EXPECT_EQ(noisy.group, c.group);
        EXPECT_LT(noisy.deviation, kDefaultSymmetryTolerance);
    }
}

TEST(PointGroupSearch, AlignmentPutsTheMainAxisOnZ) {
    const PointGroupResult r = find_point_group(placed(ammonia(0.2)));
    ASSERT_EQ(r.symmetrised.size(), 4u);
    EXPECT_NEAR(r.symmetrised[0][0], 0, 1e-9);   // nitrogen on the C3 axis
    EXPECT_NEAR(r.symmetrised[0][1], 0, 1e-9);
    for (std::size_t k = 1; k < 4; ++k) {
        EXPECT_NEAR(std::fabs(r.symmetrised[k][2] - r.symmetrised[0][2]), 0.38, 1e-6);
        EXPECT_NEAR(std::hypot(r.symmetrised[k][0], r.symmetrised[k][1]), 0.94, 1e-6);
    }
    ASSERT_GE(r.elements.size(), 2u);
    EXPECT_EQ(r.elements[1].kind, SymmetryElement::Kind::rotation);
    EXPECT_EQ(r.elements[1].order, 3);
    EXPECT_NEAR(std::fabs(r.elements[1].direction[2]), 1, 1e-9);
    // Centre of mass back in the input frame, and the frame is a rotation.
    EXPECT_NEAR(r.centre[0], 1.7, 0.5);
    EXPECT_NEAR(symmetry::determinant(r.axes), 1, 1e-9);
    ASSERT_EQ(r.equivalent_sets.size(), 2u);
    EXPECT_EQ(r.equivalent_sets[1], (std::vector<int>{1, 2, 3}));
}

TEST(PointGroupSearch, ADistortedBenzeneIsSymmetrisedBack) {
    const std::vector<SymAtom> atoms = placed(shaken(benzene(), 0.02));
    const PointGroupResult r = find_point_group(atoms);
    EXPECT_EQ(r.group, "D6h");
    EXPECT_GT(r.deviation, 0.005);
    EXPECT_LT(r.deviation, 0.1);
    ASSERT_EQ(r.symmetrised.size(), 12u);
    for (int k = 0; k < 6; ++k) {
        const auto a = static_cast<std::size_t>(k), b = static_cast<std::size_t>((k + 1) % 6);
        EXPECT_NEAR(distance(r.symmetrised[a], r.symmetrised[b]), distance(r.symmetrised[0], r.symmetrised[1]), 1e-6);
        EXPECT_NEAR(distance(r.symmetrised[a], r.symmetrised[a + 6]), distance(r.symmetrised[0], r.symmetrised[6]), 1e-6);
        EXPECT_NEAR(r.symmetrised[a][2], 0, 1e-6);   // flat, in the xy plane
        EXPECT_NEAR(r.symmetrised[a + 6][2], 0, 1e-6);
    }
    EXPECT_NEAR(distance(r.symmetrised[0], r.symmetrised[1]), 1.39, 0.02);
    // Held to a tolerance below the distortion it is no longer D6h.
    EXPECT_NE(find_point_group(atoms, 0.01).group, "D6h");
}

TEST(PointGroupSearch, LinearMoleculesAreSymmetrisedAlongZ) {
    const PointGroupResult r = find_point_group(placed(shaken(co2(), 0.01)));
    EXPECT_EQ(r.group, "D*h");
    EXPECT_GT(r.deviation, 0.001);
    ASSERT_EQ(r.symmetrised.size(), 3u);
    EXPECT_NEAR(r.symmetrised[0][2], -r.symmetrised[2][2], 1e-9);
    EXPECT_NEAR(r.symmetrised[1][2], 0, 1e-9);
    EXPECT_NEAR(std::fabs(r.symmetrised[0][2]), 1.16, 0.02);
    EXPECT_EQ(r.symmetrised[0][0], 0);
    EXPECT_EQ(find_point_group({}).aligned, false);
}

TEST(PointGroupFiles, InputsAreReadByColumnsAndByWords) {
    const auto atoms = parse_symmol_inp({"  2.  1.  1.  90.  90.  90.", " 1 1 .300000 .300000",
                                         "Cl1  1  0.50000-10.25000  1.00000", "", "C12  1 0.1 0.2 0.3"});
    ASSERT_EQ(atoms.size(), 2u);
    EXPECT_EQ(atoms[0].label, "Cl1");
    EXPECT_EQ(atoms[0].element, "Cl");
    EXPECT_NEAR(atoms[0].pos[0], 1.0, 1e-12);   // fractions of the cell's a = 2
    EXPECT_DOUBLE_EQ(atoms[0].pos[1], -10.25);
    EXPECT_EQ(atoms[1].element, "C");
    EXPECT_DOUBLE_EQ(atoms[1].pos[2], 0.3);

    const auto listed = parse_mol_al_list({"O1      0.0000    0.0000    0.1170", "H2      0.0000    0.7570   -0.4690",
                                           "A1      1.0000    0.0000    0.0000", "B1      0.0000    1.0000    0.0000",
                                           "C1      0.0000    0.0000    1.0000"});
    ASSERT_EQ(listed.size(), 2u);   // the closing axis rows are not atoms
    EXPECT_DOUBLE_EQ(listed[1].pos[1], 0.757);
    EXPECT_EQ(atomic_mass("Xx"), 12.0);
    EXPECT_NEAR(atomic_mass("Cl"), 35.45, 1e-9);
}

TEST(PointGroupFiles, RoundTripFromTheJobFiles) {
    Store st;
    const std::vector<SymAtom> h2o = placed(water());
    st.natoms = 3;
    for (int i = 1; i <= 3; ++i) {
        const SymAtom& a = h2o[static_cast<std::size_t>(i - 1)];
        st.atom_label[i] = make_label(a.label);
        st.atom_rec[i] = {float(a.pos[0]), float(a.pos[1]), float(a.pos[2]), 0.7f, 0, 0};
    }
    const std::vector<SymAtom> atoms = parse_symmol_inp(files::split_lines(format_symmol_inp(st)));
    ASSERT_EQ(atoms.size(), 3u);
    EXPECT_EQ(parse_mol_al_list(files::split_lines(format_mol_al(st))).size(), 3u);
    const PointGroupResult r = find_point_group(atoms);

    const std::string first = files::split_lines(format_symmol_out(r))[0];
    EXPECT_EQ(first.substr(0, 7), "C2v    ");
    auto dev = text::read_reals(first.substr(7), 2);
    ASSERT_TRUE(dev && dev->size() == 1);
    EXPECT_LT((*dev)[0], 1e-3);
    EXPECT_EQ(format_mol_al_txt(r).rfind("  The molecule", 0), 0u);
    EXPECT_NE(format_mol_al_txt(PointGroupResult{}).rfind("  The molecule", 0), 0u);
    EXPECT_NE(format_symmol_lst(atoms, r).find("C2v"), std::string::npos);

    const auto rows = files::split_lines(format_symmetrz_out(atoms, r));
    ASSERT_EQ(rows.size(), 3u);
    const char* labels[] = {"O1    ", "H2    ", "H3    "};
    std::vector<Vec> back;
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(rows[i].substr(0, 6), labels[i]);
        auto xyz = text::read_reals(rows[i].substr(6), 3);
        ASSERT_TRUE(xyz && xyz->size() == 3);
        back.push_back({(*xyz)[0], (*xyz)[1], (*xyz)[2]});
    }
    EXPECT_NEAR(back[0][0], 0, 1e-6);   // oxygen on the z axis
    EXPECT_NEAR(back[0][1], 0, 1e-6);
    EXPECT_NEAR(distance(back[0], back[1]), distance(h2o[0].pos, h2o[1].pos), 1e-4);
    EXPECT_NEAR(back[1][2], back[2][2], 1e-6);
}
