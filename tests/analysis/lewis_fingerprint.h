// What a chemist reads off a Lewis result, per element, and the checks
// every closed-shell result must pass.
#pragma once

#include <map>
#include <ostream>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "analysis/lewis.h"

namespace zentol::testing {

// The only dummies of these molecules are ring centroids.
inline std::string lewis_symbol(int atn) { return atn ? lewis_element_symbol(atn) : "Cn"; }

// Oxidation states, charges (ionic plus formal, zeros left out) and bond
// orders, each per element; bonds keyed by the lower atomic number. Each
// distinct value comes with its count: "C -2x2 -1x8; H 1x10".
struct Fingerprint {
    std::string os, charges, orders;
    bool operator==(const Fingerprint&) const = default;
};

inline std::ostream& operator<<(std::ostream& o, const Fingerprint& f) {
    return o << "{" << f.os << " | " << f.charges << " | " << f.orders << "}";
}

template <typename Key>
std::string counted(const std::map<Key, std::map<int, int>>& groups) {
    std::string out;
    for (const auto& [key, values] : groups) {
        if constexpr (std::is_same_v<Key, int>) out += (out.empty() ? "" : "; ") + lewis_symbol(key);
        else out += (out.empty() ? "" : "; ") + key;
        for (const auto& [value, count] : values)
            out += " " + std::to_string(value) + (count > 1 ? "x" + std::to_string(count) : "");
    }
    return out;
}

inline Fingerprint fingerprint(const LewisInput& in, const LewisResult& r) {
    std::map<int, std::map<int, int>> os, q;
    for (int i = 1; i <= r.natoms(); ++i) {
        ++os[r.atn[i]][r.os[i]];
        if (r.chg[i] + r.fc[i]) ++q[r.atn[i]][r.chg[i] + r.fc[i]];
    }
    std::map<std::string, std::map<int, int>> orders;
    for (std::size_t k = 0; k < in.bonds.size(); ++k) {
        int p = r.atn[in.bonds[k][0]], q2 = r.atn[in.bonds[k][1]];
        if (p > q2) std::swap(p, q2);
        ++orders[lewis_symbol(p) + "-" + lewis_symbol(q2)][r.order[k + 1]];
    }
    return {counted(os), counted(q), counted(orders)};
}

// No odd electrons and no bond of order 0; every main-group atom with a
// full shell (more when hypervalent) and no negative lone electrons;
// charges adding up to the job's; a metal's oxidation state equal to the
// one of its classification line.
inline void expect_sound(const LewisInput& in, const LewisResult& r) {
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

}  // namespace zentol::testing
