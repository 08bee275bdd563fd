// The shipped molecule library (bonds as distance perception finds them,
// substituents ending in the hydrogen they join by), and molecules appended
// from files with the charges and key lines they bring.
#include "building/library.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "building/connectivity.h"
#include "session/store_ops.h"
#include "structure_files/xyz_file.h"
#include "support/test_support.h"
#include "toolkit/files.h"

using namespace zentol;
using namespace zentol::testing;
namespace fs = std::filesystem;

namespace {

const std::string kLibrary = std::string(ZENTOL_DATA_DIR) + "/library";

// Reads and parses one file; fails the current test when it does not read.
std::unique_ptr<Store> load(const std::string& path) {
    auto st = std::make_unique<Store>();
    element_lookup(*st, nullptr, "", kLookupConfirmAll);
    int charge = 0, multiplicity = 1;
    const auto lines = files::read_lines(path);
    EXPECT_TRUE(lines && parse_xyz(*lines, *st, nullptr, charge, multiplicity) == kXyzRead) << path;
    return st;
}

float distance(const Store& st, int i, int j) {
    const auto &a = st.atom_rec[i], &b = st.atom_rec[j];
    return std::hypot(a[kX] - b[kX], a[kY] - b[kY], a[kZ] - b[kZ]);
}

std::string element_of(const Store& st, int atom) {
    std::string s = element_symbol(label_text(st.atom_label[atom]));
    s.erase(s.find_last_not_of(' ') + 1);
    return s;
}

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

TEST(LibraryData, EveryFileReadsAndItsBondsAreThoseOfItsDistances) {
    std::vector<std::string> paths;
    for (const auto& e : fs::recursive_directory_iterator(kLibrary))
        if (e.is_regular_file() && e.path().extension() == ".xyz") paths.push_back(e.path().string());
    std::sort(paths.begin(), paths.end());
    ASSERT_GE(paths.size(), 9u);

    for (const std::string& path : paths) {
        SCOPED_TRACE(path);
        const auto loaded = load(path);
        Store& st = *loaded;
        ASSERT_GT(st.natoms, 0);
        EXPECT_EQ(st.natoms, st.natoms_file);

        // Every atom lists exactly the atoms within the radii sum plus 0.25:
        // so no bond on one end only, none twice, none to itself.
        for (int i = 1; i <= st.natoms; ++i) {
            EXPECT_GT(st.conn_type(i), 0) << "atom " << i;
            EXPECT_LE(st.conn_count(i), 7) << "atom " << i;
            int near = 0;
            for (int j = 1; j <= st.natoms; ++j) {
                if (j == i) continue;
                const float limit = covalent_radius(st, nullptr, i) + covalent_radius(st, nullptr, j) + 0.25f;
                const float d = distance(st, i, j);
                near += d < limit;
                EXPECT_EQ(has_neighbour(st, i, j, st.conn_count(i)), d < limit)
                    << i << "-" << j << " at " << d << " (bond limit " << limit << ")";
            }
            EXPECT_EQ(st.conn_count(i), near) << "atom " << i;
        }
    }
}

TEST(LibraryData, SubstituentsEndInTheHydrogenTheyJoinBy) {
    // The group each menu entry gives, seen from the joining hydrogen: the
    // atom it sits on and how many heavy atoms that one carries.
    const std::pair<const char*, int> kSites[9] = {
        {"C", 2},   // phenyl
        {"C", 2},   // cyclohexyl
        {"C", 3},   // t-butyl, not isobutyl
        {"O", 1},   // methoxy, not hydroxymethyl
        {"C", 2},   // cyclopentyl
        {"C", 2},   // carboxyl, not formate
        {"N", 2},   // nitro
        {"C", 2},   // acetyl, not formylmethyl
        {"C", 1},   // neopentyl
    };
    for (int code = 1; code <= 9; ++code) {
        const std::string path = library_path(kLibrary, code, "");
        SCOPED_TRACE(path);
        const auto loaded = load(path);
        const Store& st = *loaded;
        ASSERT_GT(st.natoms, 1);
        const int h = st.natoms;
        EXPECT_EQ(element_of(st, h), "H");
        ASSERT_EQ(st.conn_count(h), 1);
        const int parent = st.nbr(h, 1);
        EXPECT_EQ(element_of(st, parent), kSites[code - 1].first);
        int heavy = 0;
        for (int slot = 1; slot <= st.conn_count(parent); ++slot)
            heavy += element_of(st, st.nbr(parent, slot)) != "H";
        EXPECT_EQ(heavy, kSites[code - 1].second);
    }
}

TEST_F(Append, AnEmptyMoleculeStartsAndALaterOneIsShiftedAndRenumbered) {
    Store& st = t.s.store;
    EXPECT_EQ(append_library_file(t.s, 4), kAppendStarted);
    ASSERT_EQ(st.natoms, 3);
    EXPECT_FLOAT_EQ(st.atom_rec[3][kX], 0.5f);   // the lowest x moved to 0.5
    EXPECT_EQ(st.conn[kConnMark2][1], 2);
    EXPECT_TRUE(files::exists("job.xyz"));   // the job files are written

    EXPECT_EQ(append_molecule_file(t.s, t.dir / "add/water.xyz"), kAppendJoined);
    ASSERT_EQ(st.natoms, 6);
    EXPECT_EQ(st.nbr(4, 1), 5);
    EXPECT_EQ(st.nbr(4, 2), 6);
    // Past 1.05 times the largest x there was, plus 0.5.
    EXPECT_NEAR(st.atom_rec[6][kX], (0.957f + 0.74f) * 1.05f + 0.5f, 1e-5);
    EXPECT_EQ(st.nbonds, 4);

    EXPECT_EQ(append_molecule_file(t.s, t.dir / "add/none.xyz"), kAppendFailed);
    write_file(t.dir / "add/bad.xyz", "     2  bad\n     1  C1    x\n");
    EXPECT_EQ(append_molecule_file(t.s, t.dir / "add/bad.xyz"), kAppendFailed);
    EXPECT_EQ(st.natoms, 6);
    EXPECT_EQ(library_path("/lib", 99, "/x/own.xyz"), "/x/own.xyz");   // the user's own file
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
