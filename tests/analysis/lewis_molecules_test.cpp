// The analysis on real molecules read from job files (tests/data/lewis):
// the organic set keeps its results, metal complexes, anions and large
// closed shells come out chemically right, and no result depends on the
// order of the atoms.
#include <algorithm>
#include <memory>
#include <numeric>
#include <random>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "analysis/lewis.h"
#include "lewis_fingerprint.h"
#include "session/store_ops.h"
#include "structure_files/xyz_file.h"
#include "support/test_support.h"

using namespace zentol;
using namespace zentol::testing;

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

// The donor bond and the total of ionic and formal charge as the files and
// the viewer's table show them.
TEST(LewisMolecules, NitromethaneInTheBrtFileAndTheTable) {
    const LewisInput in = molecule("nitromethane");
    const LewisResult r = analysed(in);
    const std::vector<std::string> brt = lewis_brt_lines(in, r);
    EXPECT_EQ(brt[brt.size() - 3], "DONORBOND   1");
    EXPECT_EQ(brt[brt.size() - 2], "   4   2");
    EXPECT_NE(std::find(brt.begin(), brt.end(), "N2     2   0   1   3   7   3"), brt.end());
    const std::vector<std::string> text = lewis_table_text(in, r);
    EXPECT_EQ(text[0], "Lewis structure: 7 atoms, 6 bonds, charge 0");
    EXPECT_NE(std::find(text.begin(), text.end(), "N2       2    0    1    3    7    3"), text.end());
    EXPECT_NE(std::find(text.begin(), text.end(), "N2       2  O3       3     2"), text.end());
    EXPECT_EQ(text.back(), "O4       4  N2       2");
}

// Each molecule by what a chemist reads off the tables: oxidation states,
// charges and bond orders per element, and the metal lines (after
// "Covalent Bond Classification").
TEST(LewisMolecules, ComplexesAnionsAndClosedShells) {
    const struct {
        const char* file;
        Fingerprint want;
        std::vector<std::string> cbc;
    } cases[] = {
        {kCarbonylExample, {"C 2x6; O -2x6; Cr 0", "O 1x6; Cr -6", "C-Cr 1x6; C-O 3x6"}, {"CrL6  OS  0"}},
        {"iron-pentacarbonyl", {"C 2x5; O -2x5; Fe 0", "O 1x5; Fe -5", "C-Fe 1x5; C-O 3x5"}, {"FeL5  OS  0"}},
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
        {"acetate-oxygen-first", {"H 1x3; C -3 3; O -2x2", "O -1", "C-C 1; C-O 1 2; H-C 1x3"}, {}},
        {"ozone", {"O -1 0 1", "O -1 1", "O-O 1 2"}, {}},
        {"fullerene", {"C 0x60", "", "C-C 1x60 2x30"}, {}},
        {"triphenylphosphine-oxide",
         {"H 1x15; C -1x18; O -2; P 5", "O -1; P 1", "C-C 1x9 2x9; C-P 1x3; H-C 1x15; O-P 1"}, {}},
        {"pentacontane", {"H 1x102; C -3x2 -2x48", "", "C-C 1x49; H-C 1x102"}, {}},   // 152 atoms
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.file);
        const LewisInput in = c.file == kCarbonylExample ? read_job(c.file) : molecule(c.file);
        const LewisResult r = analysed(in);
        expect_sound(in, r);
        EXPECT_EQ(fingerprint(in, r), c.want);
        std::vector<std::string> cbc;
        for (const std::string& line : c.cbc) cbc.push_back("Covalent Bond Classification " + line);
        EXPECT_EQ(cbc_lines(in, r), cbc);
    }
}

TEST(LewisMolecules, MoleculesUpTo300AtomsAndBonds) {
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
