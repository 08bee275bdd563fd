#include "building/bond_perception.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "session/store_ops.h"
#include "support/test_support.h"

using namespace zentol;
using zentol::testing::two_carbons;

TEST(BondPerception, DistanceRuleAndTheEighthSlot) {
    Store st;
    element_lookup(st, nullptr, "", kLookupConfirmAll);
    two_carbons(st, 1.70f);   // below 0.76 + 0.76 + 0.25
    perceive_bonds_by_distance(st, nullptr, 0.25f);
    EXPECT_EQ(st.nbonds, 1);
    two_carbons(st, 1.80f);
    perceive_bonds_by_distance(st, nullptr, 0.25f);
    EXPECT_EQ(st.nbonds, 0);
    // Ten hydrogens around a carbon: all counted, eight stored.
    st.natoms = 11;
    st.atom_rec[1] = {0, 0, 0, 0, 0, 0};
    for (int i = 2; i <= 11; ++i) {
        st.atom_label[i] = make_label("H" + std::to_string(i));
        float a = static_cast<float>(i) * 0.6f;
        st.atom_rec[i] = {std::cos(a), std::sin(a), static_cast<float>(i % 3) * 0.1f, 0.0f, 0.0f, 0.0f};
    }
    perceive_bonds_by_distance(st, nullptr, 0.05f);
    EXPECT_EQ(st.conn_count(1), 10);
    EXPECT_EQ(st.nbr(1, 8), 9);
}
