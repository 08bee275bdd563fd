// Every molecule shipped with the program runs on the MM3 force field of a
// stock Tinker 26.2 (tests/data/tinker/mm3.prm is that release's own file):
// each bond, angle, torsion and out-of-plane bend of the molecule finds its
// parameter the way Tinker looks it up. The lookup is written out here on
// its own, from the parameter file and the molecule's topology, so that it
// does not share a fault with the program.
#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sstream>

#include <gtest/gtest.h>

#include "support/test_support.h"

using zentol::testing::test_data;

namespace {

namespace fs = std::filesystem;
using Key = std::vector<int>;

// The parameter rows by keyword ("bond", "angle5", "opbend" ...) as class
// tuples. MM3 gives no class column, so an atom type is its own class.
struct Mm3 {
    std::map<std::string, std::set<Key>> rows;
    std::set<int> opbend_centres;   // classes with out-of-plane rows of their own

    explicit Mm3(const std::string& path) {
        static const std::map<std::string, int> width = {
            {"bond", 2},    {"bond3", 2},  {"bond4", 2},  {"bond5", 2},   {"angle", 3},    {"anglep", 3},
            {"angle3", 3},  {"angle4", 3}, {"angle5", 3}, {"torsion", 4}, {"torsion4", 4}, {"torsion5", 4},
            {"opbend", 4}};
        std::ifstream in(path);
        std::string line;
        while (std::getline(in, line)) {
            std::istringstream words(line);
            std::string keyword;
            words >> keyword;
            auto w = width.find(keyword);
            if (w == width.end()) continue;
            Key k(static_cast<std::size_t>(w->second));
            for (int& c : k) words >> c;
            if (!words) continue;
            rows[keyword].insert(k);
            if (keyword == "opbend") opbend_centres.insert(k[1]);
        }
    }
    bool has(const std::string& keyword, const Key& k) const {
        auto r = rows.find(keyword);
        if (r == rows.end()) return false;
        Key back(k.rbegin(), k.rend());
        return r->second.count(k) || r->second.count(back);
    }
};

struct Molecule {
    std::string name;
    std::map<int, int> type;
    std::map<int, std::vector<int>> nbr;
};

// A Tinker XYZ file: count on line 1, then number, label, x, y, z, type and
// neighbours on each atom line.
Molecule read_xyz(const std::string& path) {
    Molecule m{fs::path(path).filename().string(), {}, {}};
    std::ifstream in(path);
    std::string line, label;
    std::getline(in, line);
    for (int i = 0, n = std::stoi(line.substr(0, 6)); i < n && std::getline(in, line); ++i) {
        std::istringstream words(line);
        int number = 0, type = 0;
        double x, y, z;
        words >> number >> label >> x >> y >> z >> type;
        m.type[number] = type;
        for (int b; words >> b;)
            if (b > 0) m.nbr[number].push_back(b);
    }
    return m;
}

bool bonded(const Molecule& m, int a, int b) {
    auto it = m.nbr.find(a);
    return it != m.nbr.end() && std::count(it->second.begin(), it->second.end(), b) > 0;
}

// The size of the smallest ring of at most 5 atoms that holds the chain
// of atoms in this order; 0 for none.
int ring_size(const Molecule& m, const std::vector<int>& chain) {
    const int n = static_cast<int>(chain.size());
    if (n >= 3 && bonded(m, chain.back(), chain.front())) return n;
    // Breadth first from the chain's last atom, outside the chain, back to its first.
    std::set<int> seen(chain.begin(), chain.end());
    std::vector<int> layer = {chain.back()};
    for (int extra = 1; n + extra <= 5; ++extra) {
        std::vector<int> next;
        for (int at : layer)
            for (int x : m.nbr.at(at)) {
                if (!seen.insert(x).second) continue;
                if (bonded(m, x, chain.front())) return n + extra;
                next.push_back(x);
            }
        layer = next;
    }
    return 0;
}

std::string ring_suffix(int ring) { return ring >= 3 && ring <= 5 ? std::to_string(ring) : ""; }

// "angle 2 26 56": the keyword and the classes in the lower of their two orders.
std::string show(const std::string& what, const Key& k) {
    std::string s = what;
    const Key back(k.rbegin(), k.rend());
    for (int c : std::min(k, back)) s += " " + std::to_string(c);
    return s;
}

// What Tinker would report undefined for the molecule: bonds and angles in
// three-, four- and five-membered rings take the ring rows only, others the
// plain rows (angles also the in-plane ones); torsions in four- and
// five-membered rings the ring rows, with wildcard 0 for either or both end
// classes; out-of-plane bends at three-connected atoms whose class has
// out-of-plane rows, exact or with wildcard 0 for the two in-plane atoms.
std::vector<std::string> undefined(const Mm3& prm, const Molecule& m) {
    std::set<std::string> missing;
    auto t = [&](int atom) { return m.type.at(atom); };
    for (const auto& [a, list] : m.nbr)
        for (int b : list) {
            if (a > b) continue;
            const std::string kw = "bond" + ring_suffix(ring_size(m, {a, b}));
            if (!prm.has(kw, {t(a), t(b)})) missing.insert(show(kw, {t(a), t(b)}));
        }
    for (const auto& [b, list] : m.nbr)
        for (std::size_t i = 0; i < list.size(); ++i)
            for (std::size_t j = i + 1; j < list.size(); ++j) {
                const int a = list[i], c = list[j];
                const std::string ring = ring_suffix(ring_size(m, {a, b, c}));
                const Key k = {t(a), t(b), t(c)};
                const bool found = ring.empty() ? prm.has("angle", k) || prm.has("anglep", k) : prm.has("angle" + ring, k);
                if (!found) missing.insert(show("angle" + ring, k));
            }
    for (const auto& [b, list] : m.nbr)
        for (int c : list) {
            if (b > c) continue;
            for (int a : list)
                for (int d : m.nbr.at(c)) {
                    if (a == c || d == b || d == a) continue;
                    const int ring = ring_size(m, {a, b, c, d});
                    const std::string kw = "torsion" + (ring == 4 || ring == 5 ? std::to_string(ring) : "");
                    const int A = t(a), B = t(b), C = t(c), D = t(d);
                    if (!prm.has(kw, {A, B, C, D}) && !prm.has(kw, {0, B, C, D}) && !prm.has(kw, {A, B, C, 0}) &&
                        !prm.has(kw, {0, B, C, 0}))
                        missing.insert(show(kw, {A, B, C, D}));
                }
        }
    for (const auto& [b, list] : m.nbr) {
        if (list.size() != 3 || !prm.opbend_centres.count(t(b))) continue;
        for (int d : list) {
            std::vector<int> others;
            for (int o : list)
                if (o != d) others.push_back(t(o));
            const int D = t(d), B = t(b), A = others[0], C = others[1];
            const auto& rows = prm.rows.at("opbend");
            const std::vector<Key> tried = {{D, B, A, C}, {D, B, C, A}, {D, B, 0, A}, {D, B, A, 0},
                                            {D, B, 0, C}, {D, B, C, 0}, {D, B, 0, 0}};
            if (std::none_of(tried.begin(), tried.end(), [&](const Key& k) { return rows.count(k); }))
                missing.insert("opbend " + std::to_string(D) + " " + std::to_string(B) + " " +
                                       std::to_string(std::min(A, C)) + " " + std::to_string(std::max(A, C)));
        }
    }
    return {missing.begin(), missing.end()};
}

std::string source_dir(const std::string& below) { return std::string(ZENTOL_TEST_DATA) + "/../../" + below; }

// The molecules of the examples and the library, less those outside MM3
// altogether: a metal MM3 has no atom type for.
std::vector<std::string> shipped_molecules() {
    std::vector<std::string> paths;
    for (const char* dir : {"examples", "data/library"})
        for (const auto& e : fs::recursive_directory_iterator(source_dir(dir))) {
            const std::string leaf = e.path().filename().string();
            if (e.path().extension() == ".xyz" && leaf != "chromium-carbonyl.xyz" && leaf != "cr_co6.xyz")
                paths.push_back(e.path().string());
        }
    std::sort(paths.begin(), paths.end());
    return paths;
}

// A substituent joined to a methyl group, as Build mode joins it: its last
// atom, the hydrogen it is joined by, becomes the methyl carbon.
Molecule joined_to_methyl(Molecule m) {
    const int joint = static_cast<int>(m.type.size());
    m.type[joint] = 1;
    for (int k = 1; k <= 3; ++k) {
        const int h = joint + k;
        m.type[h] = 5;
        m.nbr[h] = {joint};
        m.nbr[joint].push_back(h);
    }
    return m;
}

}  // namespace

TEST(Mm3Coverage, TheLookupFindsWhatTinkerReportsUndefined) {
    // The molecules of the recorded runs: Tinker 26.2 listed these as undefined.
    const Mm3 prm(test_data("tinker/mm3.prm"));
    const auto ivboret = undefined(prm, read_xyz(test_data("tinker/undef_analyze_E/ivboret.xyz")));
    for (const char* seen : {"bond4 26 56", "angle 2 26 56", "angle4 56 26 56", "opbend 56 26 2 56",
                             "opbend 14 2 2 5", "torsion4 56 26 56 56"})
        EXPECT_NE(std::find(ivboret.begin(), ivboret.end(), seen), ivboret.end()) << seen;
    const auto mborol = undefined(prm, read_xyz(test_data("tinker/undef5ring_analyze_E/mborol.xyz")));
    EXPECT_NE(std::find(mborol.begin(), mborol.end(), "bond5 1 26"), mborol.end());
    for (const std::string& u : mborol) EXPECT_NE(u.rfind("opbend", 0), 0u) << u;   // MM3 has opbend 1 26
    // Butane ran through: nothing is missing.
    EXPECT_EQ(undefined(prm, read_xyz(test_data("tinker/butane.xyz"))), std::vector<std::string>{});
}

// The library's substituents are also checked as Build mode joins them, on
// a methyl group; the nitro group's hydrogen only marks where it is joined.
TEST(Mm3Coverage, EveryShippedMoleculeHasAllItsParameters) {
    const Mm3 prm(test_data("tinker/mm3.prm"));
    ASSERT_GT(prm.rows.at("torsion").size(), 1000u);
    const auto paths = shipped_molecules();
    ASSERT_GE(paths.size(), 19u);
    const std::set<std::string> substituents = {
        "aromatics/benzene.xyz", "alkanes/c_hexane.xyz",  "alkanes/i_butane.xyz", "alcohols/methanol.xyz",
        "alkanes/c_pentane.xyz", "carboxylic_acids/formic_acid.xyz", "groups/nitro.xyz", "groups/acetyl.xyz",
        "alkanes/neo-pentane.xyz"};
    int joined = 0;
    for (const std::string& path : paths) {
        const Molecule m = read_xyz(path);
        if (m.name != "nitro.xyz") {
            EXPECT_EQ(undefined(prm, m), std::vector<std::string>{}) << path;
        }
        if (!substituents.count((fs::path(path).parent_path().filename() / m.name).string())) continue;
        EXPECT_EQ(undefined(prm, joined_to_methyl(m)), std::vector<std::string>{}) << path << " on a methyl group";
        ++joined;
    }
    EXPECT_EQ(joined, static_cast<int>(substituents.size()));
}
