// Lewis structures, oxidation states, donor bonds and the metal report, on
// molecules built by hand and read from tests/data/lewis; no result may
// depend on the order of the atoms.
#include "analysis/lewis.h"

#include <algorithm>
#include <array>
#include <map>
#include <memory>
#include <numeric>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "session/store_ops.h"
#include "structure_files/xyz_file.h"
#include "support/test_support.h"

using namespace zentol;
using zentol::testing::test_data_lines;

namespace {

// Atoms and bonds go into a store the way the program holds them; the bond
// list is then rebuilt from the connectivity rows.
class Molecule {
public:
    Molecule() : st_(std::make_unique<Store>()) { element_lookup(*st_, nullptr, "", kLookupConfirmAll); }

    int atom(const std::string& label, float x = 0, float y = 0, float z = 0) {
        const int i = ++st_->natoms;
        st_->atom_label[i] = make_label(label);
        st_->atom_rec[i] = {x, y, z, 0, 0, 0};
        return i;
    }
    void bond(int a, int b) {
        st_->nbr(a, ++st_->conn_count(a)) = b;
        st_->nbr(b, ++st_->conn_count(b)) = a;
    }
    int bonded(const std::string& label, int to) {
        const int i = atom(label);
        bond(to, i);
        return i;
    }
    void ligands(int to, const std::string& label, int n) { for (int k = 0; k < n; ++k) bonded(label, to); }
    void hydrogens(int to, int n) { ligands(to, "H", n); }
    void methyls(int to, int n = 1) { for (int k = 0; k < n; ++k) hydrogens(bonded("C", to), 3); }
    LewisInput input(int charge) {
        rebuild_bond_list(*st_);
        LewisInput in = lewis_input_from(*st_, charge);
        in.anion_atom = anion;
        return in;
    }
    int anion = 0;   // the atom marked to take a negative charge

private:
    std::unique_ptr<Store> st_;
};

// Oxidation states, charges (ionic plus formal, zeros left out) and bond
// orders, each per element; bonds keyed by the lower atomic number. Each
// distinct value comes with its count: "C -2x2 -1x8; H 1x10".
using Fingerprint = std::array<std::string, 3>;

// The only dummies of these molecules are ring centroids.
std::string key_text(int atn) { return atn ? lewis_element_symbol(atn) : "Cn"; }
const std::string& key_text(const std::string& bond) { return bond; }

template <typename Key>
std::string counted(const std::map<Key, std::map<int, int>>& groups) {
    std::string out;
    for (const auto& [key, values] : groups) {
        out += (out.empty() ? "" : "; ") + key_text(key);
        for (const auto& [value, count] : values)
            out += " " + std::to_string(value) + (count > 1 ? "x" + std::to_string(count) : "");
    }
    return out;
}

Fingerprint fingerprint(const LewisInput& in, const LewisResult& r) {
    std::map<int, std::map<int, int>> os, q;
    for (int i = 1; i <= r.natoms(); ++i) {
        ++os[r.atn[i]][r.os[i]];
        if (r.chg[i] + r.fc[i]) ++q[r.atn[i]][r.chg[i] + r.fc[i]];
    }
    std::map<std::string, std::map<int, int>> orders;
    for (std::size_t k = 0; k < in.bonds.size(); ++k) {
        int p = r.atn[in.bonds[k][0]], q2 = r.atn[in.bonds[k][1]];
        if (p > q2) std::swap(p, q2);
        ++orders[key_text(p) + "-" + key_text(q2)][r.order[k + 1]];
    }
    return {counted(os), counted(q), counted(orders)};
}

// No odd electrons and no bond of order 0; every main-group atom with a
// full shell (more when hypervalent) and no negative lone electrons;
// charges adding up to the job's; a metal's oxidation state equal to the
// one of its classification line.
void expect_sound(const LewisInput& in, const LewisResult& r) {
    EXPECT_TRUE(r.radicals.empty());
    int charge = 0;
    for (int i = 1; i <= r.natoms(); ++i) {
        charge += r.chg[i] + r.fc[i];
        EXPECT_GE(r.lone_electrons(i), 0) << i;
        if (lewis_is_metal(r.atn[i])) {
            const LigandCounts c = classify_ligands(in, r, i);
            EXPECT_EQ(r.os[i], c.x + c.z) << "metal " << i;
        } else if (r.atn[i] != 0) {
            EXPECT_GE(r.tec[i], r.atn[i] == 1 ? 2 : 8) << in.atoms[i - 1].label << i;
        }
    }
    EXPECT_EQ(charge, in.total_charge);
    for (std::size_t k = 1; k < r.order.size(); ++k) EXPECT_GE(r.order[k], 1) << "bond " << k;
}

// A sound result with the fingerprint and metal lines given (each after
// "Covalent Bond Classification").
void expect_reads(const LewisInput& in, const LewisResult& r, const Fingerprint& want,
                  const std::vector<std::string>& cbc_tails) {
    expect_sound(in, r);
    EXPECT_EQ(fingerprint(in, r), want);
    std::vector<std::string> cbc;
    for (const std::string& tail : cbc_tails) cbc.push_back("Covalent Bond Classification " + tail);
    EXPECT_EQ(cbc_lines(in, r), cbc);
}

LewisInput molecule(const std::string& name) {
    auto st = std::make_unique<Store>();
    element_lookup(*st, nullptr, "", kLookupConfirmAll);
    int charge = 0, multiplicity = 1;
    EXPECT_EQ(parse_xyz(test_data_lines("lewis/" + name + ".xyz"), *st, nullptr, charge, multiplicity), kXyzRead);
    return lewis_input_from(*st, charge);
}

LewisResult analysed(const LewisInput& in) {
    EXPECT_EQ(lewis_refusal(in), "");
    LewisResult r = lewis_analysis(in);
    EXPECT_EQ(r.ierr, 0);
    return r;
}

// The molecule with its atoms reversed, then shuffled three times: no
// result may depend on the order of the atoms.
std::vector<LewisInput> reorderings(const LewisInput& in) {
    std::vector<int> old(in.atoms.size());   // atom old[n] becomes atom n + 1
    std::iota(old.begin(), old.end(), 1);
    std::reverse(old.begin(), old.end());
    std::mt19937 shuffle_with(14);
    std::vector<LewisInput> out;
    for (int round = 0; round < 4; ++round) {
        if (round > 0) std::shuffle(old.begin(), old.end(), shuffle_with);
        LewisInput o = in;
        std::vector<int> now(old.size() + 1);
        for (std::size_t n = 0; n < old.size(); ++n) {
            o.atoms[n] = in.atoms[old[n] - 1];
            now[old[n]] = static_cast<int>(n) + 1;
        }
        for (auto& bd : o.bonds) bd = {std::min(now[bd[0]], now[bd[1]]), std::max(now[bd[0]], now[bd[1]])};
        std::sort(o.bonds.begin(), o.bonds.end());
        out.push_back(o);
    }
    return out;
}

}  // namespace

// Water with one deuterium, which counts as a hydrogen of hydrogen's
// electronegativity.
TEST(Lewis, HeavyWaterInTheBrtFile) {
    Molecule m;
    const int o = m.atom("O1", 0, 0, 0.12f);
    m.bond(o, m.atom("H1", 0, 0.76f, -0.48f));
    m.bond(o, m.atom("D2", 0, -0.76f, -0.48f));
    const LewisInput in = m.input(0);
    const LewisResult r = analysed(in);
    const std::vector<std::string> want_brt = {
        "TITL  LEWIS   3   2", "CELL  0.71069 1. 1. 1. 90. 90. 90.", "LATT -1", "FVAR",
        "O1   1    0.00000   0.00000   0.12000 11. .05",
        "H1   1    0.00000   0.76000  -0.48000 11. .05",
        "D2   1    0.00000  -0.76000  -0.48000 11. .05",
        "BM   1    0.00000   0.38000  -0.18000 11. .05",
        "BM   1    0.00000  -0.38000  -0.18000 11. .05",
        "HKLF 4", "ATOM   3", "Name.  no.  LPe  chg  OS  Atno  coor",
        "O1     1   4   0  -2   8   2",
        "H1     2   0   0   1   1   1",
        "D2     3   0   0   1   1   1",
        "ENDATOM", "BOND   2", "        atom        atom           bond order", "   1   2   1", "   1   3   1", "ENDBOND",
        "ALLEN   3", "   1   3.610", "   2   2.300", "   3   2.300", "ENDALLEN", "DONORBOND   0", "ENDDONOR",
    };
    EXPECT_EQ(lewis_brt_lines(in, r), want_brt);
}

// Each molecule by its oxidation states, charges and bond orders per
// element, its metal lines (after "Covalent Bond Classification") and, for
// an octet-rule exception, the message (nullptr: no exception).
TEST(Lewis, HandBuiltMolecules) {
    const struct {   // tec1: the total electrons of atom 1, when checked
        const char* name; int charge; void (*build)(Molecule&); Fingerprint want; std::vector<std::string> cbc;
        const char* exception = nullptr; int tec1 = 0;
    } cases[] = {
        // No N-H on Me4N+ (a data file), but here the N-H rule places it.
        {"methylammonium", 1, [](Molecule& m) { const int n = m.atom("N1"); m.methyls(n); m.hydrogens(n, 3); },
         {"H 1x6; C -2; N -3", "N 1", "C-N 1; H-C 1x3; H-N 1x3"}, {}},
        {"AsMe5", 0, [](Molecule& m) { m.methyls(m.atom("As1"), 5); },
         {"H 1x15; C -4x5; As 5", "", "C-As 1x5; H-C 1x15"}, {}, "Octet rule exception AsMe5", 10},
        // The arsonium ylide Me3As=CH2: an exception without a message that
        // keeps the double bond which would else become As+ C-.
        {"Me3As=CH2", 0,
         [](Molecule& m) { const int as = m.atom("As1"); m.methyls(as, 3); m.hydrogens(m.bonded("C9", as), 2); },
         {"H 1x11; C -4x4; As 5", "", "C-As 1x3 2; H-C 1x11"}, {}, "", 10},
        // Chlorides count one electron each; lanthanum, without an Allen
        // value, is less electronegative than chlorine.
        {"LaCl3", 0, [](Molecule& m) { m.ligands(m.atom("La1"), "Cl", 3); },
         {"Cl -1x3; La 3", "", "Cl-La 1x3"}, {"LaX3  OS  3"}},
        // Each oxo O shares two electrons, a double bond.
        {"permanganate", -1, [](Molecule& m) { m.ligands(m.atom("Mn1"), "O", 4); },
         {"O -2x4; Mn 7", "Mn -1", "O-Mn 2x4"}, {" [MnX8]1-  OS  7"}},
        // A bridging chloride is X to one aluminium and L to the other, and
        // both come out alike.
        {"Al2Cl6", 0,
         [](Molecule& m) {
             const int a1 = m.atom("Al1"), a2 = m.atom("Al2");
             for (int k = 0; k < 2; ++k) {   // one bridge and two terminal chlorides per turn
                 m.bond(m.bonded("Cl", a1), a2);
                 m.bonded("Cl", a1);
                 m.bonded("Cl", a2);
             }
         },
         {"Al 3x2; Cl -1x6", "Al -1x2; Cl 1x2", "Al-Cl 1x8"}, {"AlL1X3  OS  3", "AlL1X3  OS  3"}},
        // Zeise's anion [PtCl3(C2H4)]-: ethylene side-on is one L; its two
        // contacts are drawn single, its C=C stays double.
        {"Zeise's anion", -1,
         [](Molecule& z) {
             const int pt = z.atom("Pt1");
             z.ligands(pt, "Cl", 3);
             const int c1 = z.bonded("C1", pt), c2 = z.bonded("C2", pt);
             z.bond(c1, c2);
             z.hydrogens(c1, 2);
             z.hydrogens(c2, 2);
         }, {"H 1x4; C -2x2; Cl -1x3; Pt 2", "Pt -1", "C-C 2; C-Pt 1x2; Cl-Pt 1x3; H-C 1x4"},
         {" [PtL1X3]1-  OS  2"}, nullptr, 16},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        Molecule m;
        c.build(m);
        const LewisInput in = m.input(c.charge);
        const LewisResult r = analysed(in);
        expect_reads(in, r, c.want, c.cbc);
        const std::vector<std::string> brt = lewis_brt_lines(in, r);
        EXPECT_EQ(brt[0] == "IEXCPT", c.exception != nullptr);
        EXPECT_EQ(brt[c.exception ? 1 : 0].substr(0, 11), "TITL  LEWIS");
        EXPECT_EQ(r.messages, c.exception && *c.exception ? std::vector<std::string>{c.exception}
                                                           : std::vector<std::string>{});
        if (c.tec1) {
            EXPECT_EQ(r.tec[1], c.tec1);
        }
    }
}

TEST(Lewis, WhereChargesGo) {
    // Ionic charges, not formal ones, on hydroxide and sulfate.
    Molecule h, s;
    h.hydrogens(h.atom("O1"), 1);   // nothing marked: the first atom with a bond to spare
    // Sulfate with an oxygen marked: two terminal oxygens take the charges,
    // then the hypervalent sulfur gives up its double bonds for charges.
    s.ligands(s.atom("S1"), "O", 4);
    s.anion = 5;
    EXPECT_EQ(lewis_analysis(h.input(-1)).chg[1], -1);
    const LewisResult rs = lewis_analysis(s.input(-2));
    EXPECT_EQ(rs.chg[1], 2);
    for (int o = 2; o <= 5; ++o) EXPECT_EQ(rs.chg[o], -1) << o;

    // Methane cannot carry a charge: ierr 1, and the log says only that.
    Molecule c;
    c.methyls(c.atom("H"));
    const LewisInput in = c.input(1);
    const LewisResult r = lewis_analysis(in);
    EXPECT_EQ(r.ierr, 1);
    EXPECT_EQ(lewis_log_lines(in, r), std::vector<std::string>{" Lewis IERR =           1"});
    EXPECT_TRUE(cbc_lines(in, r).empty());
    // With -2 and nothing marked: no terminal atoms of an anion element to
    // take both charges.
    EXPECT_EQ(lewis_analysis(c.input(-2)).ierr, 2);

    // A boron next to the nitrogen (an amine-borane) stops the ammonium
    // charge.
    Molecule b;
    b.hydrogens(b.bonded("N2", b.atom("B1")), 3);
    EXPECT_EQ(lewis_analysis(b.input(0)).chg[2], 0);
}

TEST(LewisMolecules, OrganicSetKeepsItsResults) {
    for (const char* name : {"dimethyl-sulfoxide", "sulfuric-acid", "sulfur-hexafluoride", "nitromethane",
                             "glycine-zwitterion", "tetramethylammonium", "pentamethylarsenic"}) {
        SCOPED_TRACE(name);
        const LewisInput in = molecule(name);
        const LewisResult r = analysed(in);
        EXPECT_EQ(lewis_log_lines(in, r), test_data_lines(std::string("lewis/expected/") + name + ".log"));
        int round = 0;
        for (const LewisInput& o : reorderings(in)) {
            EXPECT_EQ(fingerprint(o, analysed(o)), fingerprint(in, r)) << "order " << round++;
        }
    }
}

// The donor bond as the file and the viewer's table show it.
TEST(LewisMolecules, NitromethaneDonorBondInTheBrtFileAndTheTable) {
    const LewisInput in = molecule("nitromethane");
    const LewisResult r = analysed(in);
    const std::vector<std::string> brt = lewis_brt_lines(in, r);
    EXPECT_EQ(brt[brt.size() - 3], "DONORBOND   1");
    EXPECT_EQ(brt[brt.size() - 2], "   4   2");
    EXPECT_EQ(lewis_table_text(in, r).back(), "O4       4  N2       2");
}

// Each molecule by what a chemist reads off the tables: oxidation states,
// charges and bond orders per element, and the metal lines (after
// "Covalent Bond Classification").
TEST(LewisMolecules, ComplexesAnionsAndClosedShells) {
    const struct { const char* file; Fingerprint want; std::vector<std::string> cbc; } cases[] = {
        {"nickel-tetracarbonyl", {"C 2x4; O -2x4; Ni 0", "O 1x4; Ni -4", "C-Ni 1x4; C-O 3x4"}, {"NiL4  OS  0"}},
        {"ferrocene", {"H 1x10; C -2x2 -1x8; Fe 2", "", "C-C 1x6 2x4; C-Fe 1x10; H-C 1x10"}, {"FeL4X2  OS  2"}},
        {"ferrocene-cp-tool",
         {"Cn 0x2; H 1x10; C -2x2 -1x8; Fe 2", "", "C-C 1x6 2x4; Cn-Fe 1x2; H-C 1x10"}, {"FeL4X2  OS  2"}},
        {"hexaamminecobalt", {"H 1x18; N -3x6; Co 3", "N 1x6; Co -3", "H-N 1x18; N-Co 1x6"}, {" [CoL6]3+  OS  3"}},
        {"tetrachloroplatinate", {"Cl -1x4; Pt 2", "Pt -2", "Cl-Pt 1x4"}, {" [PtX4]2-  OS  2"}},
        {"methylmagnesium-bromide", {"H 1x3; C -4; Mg 2; Br -1", "", "C-Mg 1; H-C 1x3; Mg-Br 1"}, {"MgX2  OS  2"}},
        {"sulfate", {"O -2x4; S 6", "O -1x4; S 2", "O-S 1x4"}, {}},
        {"nitrate", {"N 5; O -2x3", "N 1; O -1x2", "N-O 1x2 2"}, {}},
        {"acetate-methyl-first", {"H 1x3; C -3 3; O -2x2", "O -1", "C-C 1; C-O 1 2; H-C 1x3"}, {}},
        {"ozone", {"O -1 0 1", "O -1 1", "O-O 1 2"}, {}},
        {"fullerene", {"C 0x60", "", "C-C 1x60 2x30"}, {}},
        {"triphenylphosphine-oxide",
         {"H 1x15; C -1x18; O -2; P 5", "O -1; P 1", "C-C 1x9 2x9; C-P 1x3; H-C 1x15; O-P 1"}, {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.file);
        const LewisInput in = molecule(c.file);
        expect_reads(in, analysed(in), c.want, c.cbc);
        int round = 0;
        for (const LewisInput& o : reorderings(in)) {
            SCOPED_TRACE(round++);
            expect_reads(o, analysed(o), c.want, c.cbc);
        }
    }
}

TEST(LewisMolecules, UpTo300AtomsAndBonds) {
    LewisInput big;
    big.atoms.assign(kLewisMaxAtoms, LewisAtom{"C", 6, 2.544f});
    for (int i = 1; i < kLewisMaxAtoms; ++i) big.bonds.push_back({i, i + 1});
    EXPECT_EQ(lewis_refusal(big), "");
    big.bonds.push_back({1, kLewisMaxAtoms});
    big.bonds.push_back({1, kLewisMaxAtoms - 1});
    EXPECT_EQ(lewis_refusal(big), "Lewis analysis takes at most 300 bonds");
    big.bonds.pop_back();
    EXPECT_EQ(lewis_analysis(big).ierr, 0);   // a ring of 300 carbons
    big.atoms.push_back(LewisAtom{"H", 1, 2.3f});
    big.bonds.back() = {1, kLewisMaxAtoms + 1};
    EXPECT_EQ(lewis_refusal(big), "Lewis analysis needs one molecule of at most 300 atoms");
}
