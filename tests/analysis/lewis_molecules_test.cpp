// The analysis on real molecules read from job files (tests/data/lewis):
// the organic set keeps its results, metal complexes, anions and large
// closed shells come out chemically right, and no result depends on the
// order of the atoms.
#include <algorithm>
#include <map>
#include <memory>
#include <ostream>
#include <numeric>
#include <random>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "analysis/lewis.h"
#include "session/store_ops.h"
#include "structure_files/xyz_file.h"
#include "support/test_support.h"

using namespace zentol;
using zentol::testing::test_data_lines;

namespace {

const char* const kCarbonylExample = "../../examples/chromium-carbonyl.xyz";

LewisInput read_job(const std::string& data_file) {
    auto st = std::make_unique<Store>();
    element_lookup(*st, nullptr, "", kLookupConfirmAll);
    int charge = 0, multiplicity = 1;
    EXPECT_EQ(parse_xyz(test_data_lines(data_file), *st, nullptr, charge, multiplicity), kXyzRead) << data_file;
    return lewis_input_from(*st, charge);
}

LewisInput molecule(const std::string& name) { return read_job("lewis/" + name + ".xyz"); }

LewisResult analysed(const LewisInput& in) {
    EXPECT_EQ(lewis_refusal(in), "");
    LewisResult r = lewis_analysis(in);
    EXPECT_EQ(r.ierr, 0);
    return r;
}

// The only dummies of these molecules are ring centroids.
std::string symbol(int atn) { return atn ? lewis_element_symbol(atn) : "Cn"; }

// Values per element in order of atomic number, each distinct value with
// its count: "C -2x2 -1x8; H 1x10". Atoms whose value is 0 are left out
// when `skip_zero` (for charges).
std::string per_element(const LewisResult& r, const std::vector<std::pair<int, int>>& atn_value, bool skip_zero) {
    std::map<int, std::map<int, int>> groups;
    for (const auto& [atn, value] : atn_value)
        if (!skip_zero || value != 0) ++groups[atn][value];
    std::string out;
    for (const auto& [atn, values] : groups) {
        out += (out.empty() ? "" : "; ") + symbol(atn);
        for (const auto& [value, count] : values)
            out += " " + std::to_string(value) + (count > 1 ? "x" + std::to_string(count) : "");
    }
    (void)r;
    return out;
}

// Oxidation states, charges (ionic plus formal, zeros left out) and bond
// orders, each per element; bonds keyed by the lower atomic number.
struct Fingerprint {
    std::string os, charges, orders;
    bool operator==(const Fingerprint&) const = default;
};

std::ostream& operator<<(std::ostream& o, const Fingerprint& f) {
    return o << "{" << f.os << " | " << f.charges << " | " << f.orders << "}";
}

Fingerprint fingerprint(const LewisInput& in, const LewisResult& r) {
    std::vector<std::pair<int, int>> os, q, bonds;
    for (int i = 1; i <= r.natoms(); ++i) {
        os.push_back({r.atn[i], r.os[i]});
        q.push_back({r.atn[i], r.chg[i] + r.fc[i]});
    }
    std::map<std::string, std::map<int, int>> orders;
    for (std::size_t k = 0; k < in.bonds.size(); ++k) {
        int p = r.atn[in.bonds[k][0]], q2 = r.atn[in.bonds[k][1]];
        if (p > q2) std::swap(p, q2);
        ++orders[symbol(p) + "-" + symbol(q2)][r.order[k + 1]];
    }
    std::string ord;
    for (const auto& [pair, values] : orders) {
        ord += (ord.empty() ? "" : "; ") + pair;
        for (const auto& [value, count] : values)
            ord += " " + std::to_string(value) + (count > 1 ? "x" + std::to_string(count) : "");
    }
    return {per_element(r, os, false), per_element(r, q, true), ord};
}

// What every closed-shell result must show: no odd electrons and no bond
// of order 0; every main-group atom with a full shell (more when hyper-
// valent) and no negative lone electrons; charges adding up to the job's; a
// metal's oxidation state equal to the one of its classification line.
void expect_sound(const LewisInput& in, const LewisResult& r) {
    EXPECT_TRUE(r.radicals.empty());
    int charge = 0;
    for (int i = 1; i <= r.natoms(); ++i) {
        charge += r.chg[i] + r.fc[i];
        EXPECT_GE(r.lone_electrons(i), 0) << i;
        if (r.atn[i] == 0 || lewis_is_metal(r.atn[i])) continue;
        EXPECT_GE(r.tec[i], r.atn[i] == 1 ? 2 : 8) << in.atoms[i - 1].label << i;
    }
    EXPECT_EQ(charge, in.total_charge);
    for (std::size_t k = 1; k < r.order.size(); ++k) EXPECT_GE(r.order[k], 1) << "bond " << k;
    for (int i = 1; i <= r.natoms(); ++i)
        if (lewis_is_metal(r.atn[i])) {
            const LigandCounts c = classify_ligands(in, r, i);
            EXPECT_EQ(r.os[i], c.x + c.z) << "metal " << i;
        }
}

}  // namespace

TEST(LewisMolecules, OrganicSetKeepsItsResults) {
    for (const char* name : {"dimethyl-sulfoxide", "sulfuric-acid", "sulfur-hexafluoride", "nitromethane",
                             "glycine-zwitterion", "tetramethylammonium", "pentamethylarsenic"}) {
        SCOPED_TRACE(name);
        const LewisInput in = molecule(name);
        const LewisResult r = analysed(in);
        EXPECT_EQ(lewis_log_lines(in, r), test_data_lines(std::string("lewis/expected/") + name + ".log"));
        expect_sound(in, r);
    }
}

// Each molecule by what a chemist reads off the tables: oxidation states,
// charges and bond orders per element, and the metal lines.
TEST(LewisMolecules, ComplexesAnionsAndClosedShells) {
    const struct {
        const char* file;
        Fingerprint want;
        std::vector<std::string> cbc;
    } cases[] = {
        {kCarbonylExample,
         {"C 2x6; O -2x6; Cr 0", "O 1x6; Cr -6", "C-Cr 1x6; C-O 3x6"},
         {"Covalent Bond Classification CrL6  OS  0"}},
        {"iron-pentacarbonyl",
         {"C 2x5; O -2x5; Fe 0", "O 1x5; Fe -5", "C-Fe 1x5; C-O 3x5"},
         {"Covalent Bond Classification FeL5  OS  0"}},
        {"nickel-tetracarbonyl",
         {"C 2x4; O -2x4; Ni 0", "O 1x4; Ni -4", "C-Ni 1x4; C-O 3x4"},
         {"Covalent Bond Classification NiL4  OS  0"}},
        {"ferrocene",
         {"H 1x10; C -2x2 -1x8; Fe 2", "", "C-C 1x6 2x4; C-Fe 1x10; H-C 1x10"},
         {"Covalent Bond Classification FeL4X2  OS  2"}},
        {"ferrocene-cp-tool",
         {"Cn 0x2; H 1x10; C -2x2 -1x8; Fe 2", "", "C-C 1x6 2x4; Cn-Fe 1x2; H-C 1x10"},
         {"Covalent Bond Classification FeL4X2  OS  2"}},
        {"hexaamminecobalt",
         {"H 1x18; N -3x6; Co 3", "N 1x6; Co -3", "H-N 1x18; N-Co 1x6"},
         {"Covalent Bond Classification  [CoL6]3+  OS  3"}},
        {"tetrachloroplatinate",
         {"Cl -1x4; Pt 2", "Pt -2", "Cl-Pt 1x4"},
         {"Covalent Bond Classification  [PtX4]2-  OS  2"}},
        {"methylmagnesium-bromide",
         {"H 1x3; C -4; Mg 2; Br -1", "", "C-Mg 1; H-C 1x3; Mg-Br 1"},
         {"Covalent Bond Classification MgX2  OS  2"}},
        {"sulfate",
         {"O -2x4; S 6", "O -1x4; S 2", "O-S 1x4"},
         {}},
        {"nitrate",
         {"N 5; O -2x3", "N 1; O -1x2", "N-O 1x2 2"},
         {}},
        {"acetate-methyl-first",
         {"H 1x3; C -3 3; O -2x2", "O -1", "C-C 1; C-O 1 2; H-C 1x3"},
         {}},
        {"acetate-oxygen-first",
         {"H 1x3; C -3 3; O -2x2", "O -1", "C-C 1; C-O 1 2; H-C 1x3"},
         {}},
        {"ozone",
         {"O -1 0 1", "O -1 1", "O-O 1 2"},
         {}},
        {"fullerene",
         {"C 0x60", "", "C-C 1x60 2x30"},
         {}},
        {"triphenylphosphine-oxide",
         {"H 1x15; C -1x18; O -2; P 5", "O -1; P 1", "C-C 1x9 2x9; C-P 1x3; H-C 1x15; O-P 1"},
         {}},
        {"pentacontane",
         {"H 1x102; C -3x2 -2x48", "", "C-C 1x49; H-C 1x102"},
         {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.file);
        const LewisInput in = c.file == kCarbonylExample ? read_job(c.file) : molecule(c.file);
        const LewisResult r = analysed(in);
        expect_sound(in, r);
        EXPECT_EQ(fingerprint(in, r), c.want);
        EXPECT_EQ(cbc_lines(in, r), c.cbc);
    }
}

TEST(LewisMolecules, MoleculesUpTo300AtomsAndBonds) {
    const LewisInput alkane = molecule("pentacontane");
    ASSERT_EQ(alkane.atoms.size(), 152u);
    const LewisResult r = analysed(alkane);
    expect_sound(alkane, r);
    EXPECT_EQ(r.os[1], -3);
    EXPECT_EQ(r.os[2], -2);

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

TEST(LewisMolecules, ResultsDoNotDependOnAtomOrder) {
    // Per atom its element, oxidation state, charge, lone and total
    // electrons; per bond its elements and order; and the metal lines.
    auto summary = [](const LewisInput& in) {
        const LewisResult r = lewis_analysis(in);
        std::multiset<std::string> out;
        for (int i = 1; i <= r.natoms(); ++i)
            out.insert(std::to_string(r.atn[i]) + " os " + std::to_string(r.os[i]) + " q " +
                       std::to_string(r.chg[i] + r.fc[i]) + " lp " + std::to_string(r.lone_electrons(i)) + " tec " +
                       std::to_string(r.tec[i]));
        for (std::size_t k = 0; k < in.bonds.size(); ++k) {
            const int p = r.atn[in.bonds[k][0]], q = r.atn[in.bonds[k][1]];
            out.insert(std::to_string(std::min(p, q)) + "-" + std::to_string(std::max(p, q)) + " " +
                       std::to_string(r.order[k + 1]));
        }
        for (const std::string& line : cbc_lines(in, r)) out.insert(line);
        return out;
    };
    // The same molecule with atom old[n] as atom n + 1.
    auto reordered = [](const LewisInput& in, const std::vector<int>& old) {
        LewisInput out = in;
        std::vector<int> now(old.size() + 1);
        for (std::size_t n = 0; n < old.size(); ++n) {
            out.atoms[n] = in.atoms[old[n] - 1];
            now[old[n]] = static_cast<int>(n) + 1;
        }
        for (auto& bd : out.bonds) bd = {std::min(now[bd[0]], now[bd[1]]), std::max(now[bd[0]], now[bd[1]])};
        std::sort(out.bonds.begin(), out.bonds.end());
        return out;
    };
    for (const char* name : {"acetate-methyl-first", "ozone", "nitrate", "sulfate", "tetrachloroplatinate",
                             "iron-pentacarbonyl", "ferrocene", "ferrocene-cp-tool", "hexaamminecobalt",
                             "methylmagnesium-bromide", "fullerene", "triphenylphosphine-oxide", "sulfuric-acid",
                             "dimethyl-sulfoxide", "nitromethane", "glycine-zwitterion"}) {
        SCOPED_TRACE(name);
        const LewisInput in = molecule(name);
        const auto want = summary(in);
        std::vector<int> old(in.atoms.size());
        std::iota(old.begin(), old.end(), 1);
        std::reverse(old.begin(), old.end());
        EXPECT_EQ(summary(reordered(in, old)), want) << "reversed";
        std::mt19937 shuffle_with(14);
        for (int round = 0; round < 3; ++round) {
            std::shuffle(old.begin(), old.end(), shuffle_with);
            EXPECT_EQ(summary(reordered(in, old)), want) << "shuffle " << round;
        }
    }
}
