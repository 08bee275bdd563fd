// The shipped molecule library: every file must read back as written and
// carry exactly the bonds that distance perception would find, and the
// substituents of the Build menu must end in the hydrogen they join by.
#include <algorithm>
#include <cmath>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "building/connectivity.h"
#include "building/library.h"
#include "session/store_ops.h"
#include "structure_files/xyz_file.h"
#include "toolkit/files.h"

using namespace zentol;
namespace fs = std::filesystem;

namespace {

const std::string kLibrary = std::string(ZENTOL_DATA_DIR) + "/library";

struct Loaded {
    std::vector<std::string> lines;
    Store st;
};

// Reads and parses one file; fails the current test when it does not read.
std::unique_ptr<Loaded> load(const std::string& path) {
    auto m = std::make_unique<Loaded>();
    auto lines = files::read_lines(path);
    EXPECT_TRUE(lines.has_value()) << path;
    if (!lines) return nullptr;
    m->lines = *lines;
    element_lookup(m->st, nullptr, "", kLookupConfirmAll);
    int charge = 0, multiplicity = 1;
    EXPECT_EQ(parse_xyz(m->lines, m->st, nullptr, charge, multiplicity), kXyzRead) << path;
    return m;
}

float distance(const Store& st, int i, int j) {
    const auto& a = st.atom_rec[i];
    const auto& b = st.atom_rec[j];
    return std::hypot(a[kX] - b[kX], a[kY] - b[kY], a[kZ] - b[kZ]);
}

std::string element_of(const Store& st, int atom) {
    std::string s = element_symbol(label_text(st.atom_label[atom]));
    s.erase(s.find_last_not_of(' ') + 1);
    return s;
}

}  // namespace

TEST(LibraryData, EveryFileReadsBackAndItsBondsAreThoseOfItsDistances) {
    std::vector<std::string> paths;
    for (const auto& e : fs::recursive_directory_iterator(kLibrary))
        if (e.is_regular_file() && e.path().extension() == ".xyz") paths.push_back(e.path().string());
    std::sort(paths.begin(), paths.end());
    ASSERT_GE(paths.size(), 9u);

    for (const std::string& path : paths) {
        SCOPED_TRACE(path);
        auto m = load(path);
        if (!m) continue;
        Store& st = m->st;
        ASSERT_GT(st.natoms, 0);
        EXPECT_EQ(st.natoms, st.natoms_file);
        ASSERT_EQ(m->lines.size(), static_cast<std::size_t>(st.natoms) + 1);

        // Columns: the program writes the atoms back exactly as shipped.
        auto written = format_xyz(st, "x", 0, 1);
        written.erase(0, written.find('\n') + 1);
        std::string shipped;
        for (std::size_t k = 1; k < m->lines.size(); ++k) shipped += m->lines[k] + "\n";
        EXPECT_EQ(written, shipped);

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
        auto m = load(path);
        if (!m) continue;
        const Store& st = m->st;
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
