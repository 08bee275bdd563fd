#include "building/connectivity.h"

#include <cmath>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "session/store_ops.h"
#include "support/test_support.h"

using namespace zentol;
using zentol::testing::two_carbons;

namespace {

Store confirmed_store() {
    Store st;
    element_lookup(st, nullptr, "", kLookupConfirmAll);
    return st;
}

// Bonds as the plain rule finds them, pair by pair in order.
void perceive_pairwise(Store& st, float tolerance) {
    for (int c = kConnFirstNbr; c <= kConnMark; ++c)
        for (int i = 1; i <= st.natoms; ++i) st.conn[c][i] = 0;
    for (int i = 1; i <= st.natoms; ++i)
        for (int j = i + 1; j <= st.natoms; ++j) {
            const auto &p = st.atom_rec[i], &q = st.atom_rec[j];
            if (std::hypot(p[kX] - q[kX], p[kY] - q[kY], p[kZ] - q[kZ]) >=
                covalent_radius(st, nullptr, i) + covalent_radius(st, nullptr, j) + tolerance)
                continue;
            for (auto [a, b] : {std::pair{i, j}, std::pair{j, i}}) {
                const int n = ++st.conn_count(a);
                if (n <= kMaxNeighbours) st.nbr(a, n) = b;
            }
        }
}

// Every row's slots through its last filled one, through atom `last`, and
// the count when it differs: "1: 2 | 2: 1 3 | 3: | 4: 0 2 (count 2)".
std::string neighbour_rows(const Store& st, int last) {
    std::string out;
    for (int i = 1; i <= last; ++i) {
        int filled = kMaxNeighbours;
        while (filled > 0 && st.nbr(i, filled) == 0) --filled;
        out += (i > 1 ? " | " : "") + std::to_string(i) + ":";
        for (int k = 1; k <= filled; ++k) out += " " + std::to_string(st.nbr(i, k));
        if (st.conn_count(i) != filled) out += " (count " + std::to_string(st.conn_count(i)) + ")";
    }
    return out;
}

// A chain a-b-c-d plus a ring of three (5,6,7) and a lone atom 8.
Store small_graph() {
    Store st = confirmed_store();
    st.natoms = 8;
    const std::pair<int, int> links[] = {{1, 2}, {2, 3}, {3, 4}, {5, 6}, {6, 7}, {7, 5}};
    for (auto [a, b] : links) {
        add_neighbour(st, a, b);
        add_neighbour(st, b, a);
    }
    return st;
}

}  // namespace

TEST(Connectivity, SymbolsRadiiAndTypes) {
    Store st = confirmed_store();
    // Q is a dummy, Zz an element nobody knows: both still get a radius.
    EXPECT_FLOAT_EQ(element_lookup(st, nullptr, "Q   ", kLookupRadius), 0.77f);
    EXPECT_FLOAT_EQ(element_lookup(st, nullptr, "Zz  ", kLookupRadius), 0.74f);
    EXPECT_FLOAT_EQ(element_lookup(st, nullptr, "Cl  ", kLookupRadius), element_lookup(st, nullptr, "CL", 0));
    EXPECT_NE(element_lookup(st, nullptr, "Cl  ", kLookupRadius), element_lookup(st, nullptr, "C12 ", kLookupRadius));
    EXPECT_EQ(atom_type_of(st, "Cn  "), 240);
    EXPECT_EQ(atom_type_of(st, "Zz  "), 1);
    const std::pair<const char*, const char*> symbols[] = {
        {"CL1", "Cl1 "}, {"fe", "Fe  "}, {"BX1", "BX1 "}, {"CEN1", "CEN1"}};
    for (auto [in, out] : symbols)
        EXPECT_EQ(label_text(normalise_symbol(in)), out) << in;
    EXPECT_TRUE(is_hydrogen(make_label("D2")));
}

TEST(Connectivity, DistanceRuleAtItsEdge) {
    Store st = confirmed_store();
    two_carbons(st, 1.76f);   // 0.76 + 0.76 + 0.25 = 1.77
    perceive_bonds(st, nullptr, 0.25f);
    EXPECT_EQ(st.nbonds, 1);
    two_carbons(st, 1.77f);
    perceive_bonds(st, nullptr, 0.25f);
    EXPECT_EQ(st.nbonds, 0);
}

TEST(Connectivity, TheGridFindsWhatEveryPairWouldFind) {
    std::mt19937 rng(7);
    const char* symbols[] = {"C", "H", "O", "N", "Fe", "Cl"};
    for (int round = 0; round < 20; ++round) {
        Store grid = confirmed_store();
        const int n = 50 + round * 40;
        // Dense clumps (atoms with more than eight neighbours) and one far
        // outlier make uneven cells.
        std::uniform_real_distribution<float> pos(0.0f, 4.0f + round);
        for (int i = 1; i <= n; ++i) {
            grid.atom_label[i] = make_label(symbols[rng() % 6]);
            grid.atom_rec[i] = {pos(rng), pos(rng), pos(rng), 0, 0, 0};
        }
        if (round % 2) grid.atom_rec[n] = {500.0f, -300.0f, 2.0f, 0, 0, 0};
        grid.natoms = n;
        Store pairs = grid;
        perceive_bonds(grid, nullptr, 0.25f);
        perceive_pairwise(pairs, 0.25f);
        ASSERT_EQ(neighbour_rows(grid, n), neighbour_rows(pairs, n)) << "round " << round;
    }
}

TEST(Connectivity, MoleculesAreNumberedAndATestedBondComesBack) {
    Store st = small_graph();
    const std::string rows = neighbour_rows(st, 8);
    number_molecules(st);
    const float expected[] = {0, 1, 1, 1, 1, 2, 2, 2, 3};
    for (int i = 1; i <= 8; ++i) EXPECT_EQ(st.atom_rec[i][kMolecule], expected[i]) << i;
    number_molecules(st);   // atom 1 numbered already: numbering goes on above the largest
    EXPECT_EQ(st.atom_rec[1][kMolecule], 4.0f);
    EXPECT_EQ(st.atom_rec[8][kMolecule], 6.0f);

    // (What the bond test answers, and which side it marks, the bond
    // rotation tests see.)
    EXPECT_EQ(test_bond(st, 2, 3), kChainBond);
    EXPECT_EQ(neighbour_rows(st, 8), rows);   // the cut bond comes back
}

TEST(Connectivity, RemovingAnAtomRenumbersAndPacksTheRows) {
    Store st = small_graph();
    for (int i = 1; i <= 8; ++i) st.atom_label[i] = make_label("A" + std::to_string(i));
    remove_atom(st, 2);   // the chain breaks: 1 | 2-3 (were 3-4); the ring moves down one
    EXPECT_EQ(st.natoms, 7);
    EXPECT_EQ(label_text(st.atom_label[2]), "A3  ");
    EXPECT_EQ(neighbour_rows(st, 8), "1: | 2: 3 | 3: 2 | 4: 5 6 | 5: 4 6 | 6: 5 4 | 7: | 8:");
}
