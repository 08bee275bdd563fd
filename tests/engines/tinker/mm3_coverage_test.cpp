// Every shipped molecule finds each bond, angle, torsion and out-of-plane
// parameter in stock Tinker 26.2's own mm3.prm. The lookup is written out
// here apart from the program's, so that it shares no fault with it.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sstream>

#include <gtest/gtest.h>

#include "building/library.h"
#include "support/test_support.h"

using zentol::testing::test_data;

namespace {

namespace fs = std::filesystem;
using Key = std::vector<int>;
using Found = std::vector<std::string>;

// The parameter rows by keyword ("bond", "angle5", "opbend" ...) as class
// tuples. MM3 gives no class column, so an atom type is its own class.
struct Mm3 {
    std::map<std::string, std::set<Key>> rows;

    explicit Mm3(const std::string& path) {
        static const std::map<std::string, int> width = {
            {"bond", 2},    {"bond3", 2},  {"bond4", 2},  {"bond5", 2},   {"angle", 3},    {"anglep", 3},
            {"angle3", 3},  {"angle4", 3}, {"angle5", 3}, {"torsion", 4}, {"torsion4", 4}, {"torsion5", 4},
            {"opbend", 4}};
        std::ifstream in(path);
        for (std::string line, keyword; std::getline(in, line);) {
            std::istringstream words(line);
            words >> keyword;
            auto w = width.find(keyword);
            if (w == width.end()) continue;
            Key k(static_cast<std::size_t>(w->second));
            for (int& c : k) words >> c;
            if (words) rows[keyword].insert(k);
        }
    }
    bool has(const std::string& keyword, const Key& k) const {
        auto r = rows.find(keyword);
        return r != rows.end() && (r->second.count(k) || r->second.count(Key(k.rbegin(), k.rend())));
    }
    // Classes with out-of-plane rows of their own.
    bool opbend_centre(int c) const {
        return std::any_of(rows.at("opbend").begin(), rows.at("opbend").end(), [&](const Key& k) { return k[1] == c; });
    }
};

struct Molecule {
    std::map<int, int> type;
    std::map<int, std::vector<int>> nbr;
    bool bonded(int a, int b) const { return std::count(nbr.at(a).begin(), nbr.at(a).end(), b) > 0; }
};

// A Tinker XYZ file: count on line 1, then number, label, x, y, z, type and
// neighbours on each atom line.
Molecule read_xyz(const std::string& path) {
    Molecule m;
    std::ifstream in(path);
    std::string line, label;
    std::getline(in, line);
    for (int i = 0, n = std::stoi(line.substr(0, 6)); i < n && std::getline(in, line); ++i) {
        std::istringstream words(line);
        int number = 0;
        double x, y, z;
        words >> number >> label >> x >> y >> z >> m.type[number];
        m.nbr[number];
        for (int b; words >> b;)
            if (b > 0) m.nbr[number].push_back(b);
    }
    return m;
}

// The size of the smallest ring of at most 5 atoms that holds the chain
// of atoms in this order; 0 for none.
int ring_size(const Molecule& m, std::vector<int> chain) {
    const int n = static_cast<int>(chain.size());
    if (n >= 3 && m.bonded(chain.back(), chain.front())) return n;
    int best = 0;
    for (int x : m.nbr.at(chain.back())) {
        if (n == 5 || std::count(chain.begin(), chain.end(), x)) continue;
        chain.push_back(x);
        if (const int r = ring_size(m, chain); r && (!best || r < best)) best = r;
        chain.pop_back();
    }
    return best;
}

// "angle 2 26 56": the keyword and the classes in the lower of their two orders.
std::string show(std::string s, const Key& k) {
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
Found undefined(const Mm3& prm, const Molecule& m) {
    std::set<std::string> missing;
    auto t = [&](int atom) { return m.type.at(atom); };
    auto ring_kw = [&](const char* kw, const std::vector<int>& chain, int smallest) {
        const int r = ring_size(m, chain);
        return kw + (r >= smallest ? std::to_string(r) : "");
    };
    for (const auto& [a, list] : m.nbr)
        for (int b : list) {
            const std::string kw = ring_kw("bond", {a, b}, 3);
            if (a < b && !prm.has(kw, {t(a), t(b)})) missing.insert(show(kw, {t(a), t(b)}));
        }
    for (const auto& [b, list] : m.nbr)
        for (std::size_t i = 0; i < list.size(); ++i)
            for (std::size_t j = i + 1; j < list.size(); ++j) {
                const std::string kw = ring_kw("angle", {list[i], b, list[j]}, 3);
                const Key k = {t(list[i]), t(b), t(list[j])};
                if (!prm.has(kw, k) && (kw != "angle" || !prm.has("anglep", k))) missing.insert(show(kw, k));
            }
    for (const auto& [b, list] : m.nbr)
        for (int c : list)
            for (int a : list)
                for (int d : m.nbr.at(c)) {
                    if (b > c || a == c || d == b || d == a) continue;
                    const std::string kw = ring_kw("torsion", {a, b, c, d}, 4);
                    const int A = t(a), B = t(b), C = t(c), D = t(d);
                    if (!prm.has(kw, {A, B, C, D}) && !prm.has(kw, {0, B, C, D}) && !prm.has(kw, {A, B, C, 0}) &&
                        !prm.has(kw, {0, B, C, 0}))
                        missing.insert(show(kw, {A, B, C, D}));
                }
    for (const auto& [b, list] : m.nbr) {
        if (list.size() != 3 || !prm.opbend_centre(t(b))) continue;
        for (int d : list) {
            Key others;
            for (int o : list)
                if (o != d) others.push_back(t(o));
            const int D = t(d), B = t(b), A = std::min(others[0], others[1]), C = std::max(others[0], others[1]);
            const auto& rows = prm.rows.at("opbend");
            const std::vector<Key> tried = {{D, B, A, C}, {D, B, C, A}, {D, B, 0, A}, {D, B, A, 0},
                                            {D, B, 0, C}, {D, B, C, 0}, {D, B, 0, 0}};
            if (std::none_of(tried.begin(), tried.end(), [&](const Key& k) { return rows.count(k); }))
                missing.insert("opbend " + std::to_string(D) + " " + std::to_string(B) + " " + std::to_string(A) +
                               " " + std::to_string(C));
        }
    }
    return {missing.begin(), missing.end()};
}

// A substituent joined to a methyl group, as Build mode joins it: its last
// atom, the hydrogen it is joined by, becomes the methyl carbon.
Molecule joined_to_methyl(Molecule m) {
    const int joint = static_cast<int>(m.type.size());
    m.type[joint] = 1;
    for (int h = joint + 1; h <= joint + 3; ++h) {
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
    const Found ivboret = undefined(prm, read_xyz(test_data("tinker/undef_analyze_E/ivboret.xyz")));
    for (const char* seen : {"bond4 26 56", "angle 2 26 56", "angle4 56 26 56", "opbend 56 26 2 56",
                             "opbend 14 2 2 5", "torsion4 56 26 56 56"})
        EXPECT_NE(std::find(ivboret.begin(), ivboret.end(), seen), ivboret.end()) << seen;
    const Found mborol = undefined(prm, read_xyz(test_data("tinker/undef5ring_analyze_E/mborol.xyz")));
    EXPECT_NE(std::find(mborol.begin(), mborol.end(), "bond5 1 26"), mborol.end());
}

// A metal MM3 has no atom type for is left out altogether; Build mode's
// substituents are also checked as it joins them, on a methyl group (the
// nitro group's hydrogen only marks where it is joined).
TEST(Mm3Coverage, EveryShippedMoleculeHasAllItsParameters) {
    const Mm3 prm(test_data("tinker/mm3.prm"));
    ASSERT_GT(prm.rows.at("torsion").size(), 1000u);
    const std::string root = std::string(ZENTOL_TEST_DATA) + "/../../";
    int molecules = 0;
    for (const char* dir : {"examples", "data/library"})
        for (const auto& e : fs::recursive_directory_iterator(root + dir)) {
            const std::string leaf = e.path().filename().string();
            if (e.path().extension() != ".xyz" || leaf == "chromium-carbonyl.xyz" || leaf == "cr_co6.xyz" ||
                leaf == "nitro.xyz")
                continue;
            ++molecules;
            EXPECT_EQ(undefined(prm, read_xyz(e.path().string())), Found{}) << e.path();
        }
    EXPECT_GE(molecules, 18);
    for (int code = 1; code <= 9; ++code) {
        const std::string path = zentol::library_path(root + "data/library", code, "");
        EXPECT_EQ(undefined(prm, joined_to_methyl(read_xyz(path))), Found{}) << path << " on a methyl group";
    }
}
