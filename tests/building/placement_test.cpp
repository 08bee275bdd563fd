// Growing and cutting molecules on the bare store.
#include "building/placement.h"

#include <cmath>

#include <gtest/gtest.h>

#include "building/build_commands.h"
#include "building/connectivity.h"
#include "session/store_ops.h"

using namespace zentol;

namespace {

struct Grow : ::testing::Test {
    Grow() { element_lookup(st, nullptr, "", kLookupConfirmAll); }

    float distance(int a, int b) const {
        return (atom_position(st.atom_rec[a]) - atom_position(st.atom_rec[b])).length();
    }
    // The first atom, by the dialog's tetrahedron; by default methane.
    void start(const char* element = "C") {
        BuildSite first;
        ASSERT_TRUE(place_atom(st, nullptr, first, {make_label(element), 6}));
    }
    // A new atom on hydrogen h by the given choice.
    void grow(int h, const char* element, int choice) {
        BuildSite site;
        site.hydrogen = h;
        site.parent = st.nbr(h, 1);
        site.parent_type = st.conn_type(site.parent);
        ASSERT_TRUE(place_atom(st, nullptr, site, {make_label(element), choice}));
        rebuild_bond_list(st);
    }
    void expect_symmetric_rows() const {
        for (int i = 1; i <= st.natoms; ++i)
            for (int k = 1; k <= kMaxNeighbours; ++k) {
                if (const int j = st.nbr(i, k)) {
                    EXPECT_TRUE(has_neighbour(st, j, i)) << i << "-" << j;
                }
            }
    }

    Store st;
};

}  // namespace

TEST_F(Grow, MethaneThenATetrahedralCarbonOnAHydrogenMakesEthane) {
    start();
    ASSERT_EQ(st.natoms, 5);
    EXPECT_EQ(st.conn_count(1), 4);
    EXPECT_EQ(st.conn_type(1), 1);
    for (int h = 2; h <= 5; ++h) {
        EXPECT_EQ(st.conn_type(h), 5);
        EXPECT_NEAR(distance(1, h), 1.086, 1e-3);   // about 1.096 stretched by (0.32 - 1.09) + 0.76
    }
    const Vec3 parent = atom_position(st.atom_rec[1]), old_h = atom_position(st.atom_rec[3]);
    grow(3, "C", 6);
    ASSERT_EQ(st.natoms, 8);
    // Along the old C-H line at the sum of the radii, give or take what the
    // templates' 1.096 makes of it.
    EXPECT_NEAR(distance(1, 3), 1.52, 0.015);
    const Vec3 along = (atom_position(st.atom_rec[3]) - parent).unit();
    EXPECT_NEAR(along.dot((old_h - parent).unit()), 1.0, 1e-5);
    EXPECT_EQ(st.conn_count(3), 4);
    for (int h = 6; h <= 8; ++h) {
        EXPECT_NEAR(distance(3, h), 1.086, 1e-3);
        EXPECT_NEAR(distance(1, h), 2.16, 0.05);   // staggered about the new bond
    }
    expect_symmetric_rows();
}

TEST_F(Grow, TypeRulesForCarbonylAlkeneAndAmine) {
    start();
    st.conn_type(1) = 2;
    grow(2, "O", 1);   // a bare oxygen: C=O
    EXPECT_EQ(st.conn_type(2), 7);
    EXPECT_EQ(st.conn_type(1), 3);
    EXPECT_NEAR(distance(1, 2), 1.086 + 0.66 - 0.31, 1e-4);

    grow(3, "C", 4);   // a trigonal carbon is an alkene carbon
    EXPECT_EQ(st.conn_type(3), 2);
    grow(4, "N", 6);   // an amine nitrogen brings type 23 hydrogens
    EXPECT_EQ(st.conn_type(4), 8);
    const int nh = st.nbr(4, 2);
    EXPECT_EQ(st.conn_type(nh), 23);
    grow(nh, "C", 6);  // a carbon on the nitrogen leaves the nitrogen alone
    EXPECT_EQ(st.conn_type(4), 8);
    expect_symmetric_rows();
}

TEST_F(Grow, AnOxygenOnACarbonylCarbonIsAnAcidWithItsOwnHydrogenType) {
    start();
    st.conn_type(1) = 2;
    grow(2, "O", 3);   // an alcohol oxygen first: its hydrogen is 21
    const int oh = st.nbr(2, 2);
    EXPECT_EQ(st.conn_type(oh), 21);
    grow(3, "O", 1);   // then C=O: the hydrogen becomes a carboxyl one (24)
    EXPECT_EQ(st.conn_type(1), 3);
    EXPECT_EQ(st.conn_type(2), 6);
    EXPECT_EQ(st.conn_type(oh), 24);
    grow(4, "O", 3);   // a second OH on the carbonyl carbon: 24 at once
    EXPECT_EQ(st.conn_type(st.nbr(4, 2)), 24);
}

TEST_F(Grow, AmideAndAcetyleneHydrogensTakeTheTypesMm3HasParametersFor) {
    start();
    grow(2, "N", 3);   // a trigonal nitrogen: amide hydrogens
    EXPECT_EQ(st.conn_type(2), 9);
    for (int k = 2; k <= st.conn_count(2); ++k) EXPECT_EQ(st.conn_type(st.nbr(2, k)), 28);
    grow(3, "C", 2);   // an sp carbon: its hydrogen is an acetylene one
    EXPECT_EQ(st.conn_type(3), 4);
    EXPECT_EQ(st.conn_type(st.nbr(3, 2)), 124);
    EXPECT_EQ(st.conn_type(4), 5);   // the others stay
}

TEST_F(Grow, ACpRingSitsOnTheMetalThroughItsCentroid) {
    start("Fe");
    grow(2, "C", 13);
    ASSERT_EQ(st.natoms, 15);
    EXPECT_EQ(label_text(st.atom_label[2]), "Cn  ");
    EXPECT_EQ(st.conn_type(2), 240);
    EXPECT_EQ(st.nbr(2, 1), 1);
    for (int c = 6; c <= 10; ++c) {
        EXPECT_EQ(st.conn_type(c), 113);
        EXPECT_EQ(st.conn_count(c), 3);
        EXPECT_NEAR(distance(c, 2), 1.186, 1e-3);   // the ring keeps its size
        EXPECT_EQ(st.conn_type(st.nbr(c, 3)), 5);
    }
    expect_symmetric_rows();
}

TEST_F(Grow, DeletingAMethylAndCuttingABond) {
    start();
    grow(2, "C", 6);   // ethane, carbons 1 and 2
    const float cc = distance(1, 2);
    delete_heavy_atom(st, nullptr, 2);
    ASSERT_EQ(st.natoms, 5);
    EXPECT_EQ(st.conn_count(1), 4);
    // The cap stands where the methyl carbon was, pulled in to r + 0.32.
    const int cap = st.nbr(1, 1);
    EXPECT_NEAR(distance(1, cap), cc + 0.32 - 0.76, 1e-5);
    expect_symmetric_rows();

    grow(cap, "C", 6);   // the cap becomes the second carbon
    ASSERT_TRUE(cut_bond(st, nullptr, 1, cap));
    EXPECT_EQ(st.natoms, 10);
    EXPECT_FALSE(has_neighbour(st, 1, cap));
    EXPECT_NEAR(distance(1, 9), 0.76 + 0.32, 1e-4);
    EXPECT_NEAR(distance(cap, 10), 0.76 + 0.32, 1e-4);
    expect_symmetric_rows();
}
