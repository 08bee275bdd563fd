#include <gtest/gtest.h>

#include <algorithm>

#include "session/molecule_store.h"
#include "session/session.h"
#include "session/store_ops.h"
#include "support/test_support.h"

using namespace zentol;
using namespace zentol::testing;

// Labels name their element by one letter or two.
TEST(Store, ElementLookupReadsOneOrTwoLetters) {
    Store st;
    element_lookup(st, nullptr, "", kLookupConfirmAll);
    EXPECT_FLOAT_EQ(element_lookup(st, nullptr, "CL", kLookupRadius), 1.02f);   // second letter lowered
    EXPECT_FLOAT_EQ(element_lookup(st, nullptr, "C1", kLookupRadius), 0.76f);   // digit: one letter
}

TEST(Store, UnconfirmedRadiusIsAskedOnceWithDialog103) {
    TestSession t;
    t.tk.load_script("dialog 103 ok 1071=0.8\n");
    element_lookup(t.s.store, &t.tk, "", kLookupClearConfirm);
    EXPECT_FLOAT_EQ(element_lookup(t.s.store, &t.tk, "C1", kLookupRadius), 0.8f);
    EXPECT_FLOAT_EQ(element_lookup(t.s.store, &t.tk, "C2", kLookupRadius), 0.8f);   // confirmed now
    EXPECT_EQ(t.tk.dialogs_shown(), std::vector<int>{103});
    // A refused value keeps the table's radius.
    t.tk.load_script("dialog 103 ok 1071=9.0\n");
    EXPECT_FLOAT_EQ(element_lookup(t.s.store, &t.tk, "N1", kLookupRadius), 0.71f);
}

TEST(Store, BondListSeesEverySlotAndStopsAt4000) {
    Store st;
    EXPECT_EQ((rebuild_bond_list(st), st.nbonds), 0);
    st.natoms = 3;
    st.nbr(1, 1) = 2, st.nbr(1, 2) = 0, st.nbr(1, 3) = 3;   // a bond behind a hole is drawn
    st.nbr(1, 4) = 7;                                        // a phantom beyond the atoms is not
    st.conn_count(1) = 2;
    st.nbr(2, 1) = 1, st.conn_count(2) = 1;
    st.nbr(3, 1) = 1, st.conn_count(3) = 12;
    rebuild_bond_list(st);
    EXPECT_EQ(st.nbonds, 2);
    EXPECT_EQ(st.bond_b[2], 3);

    st.natoms = kMaxAtoms;
    for (int i = 1; i <= kMaxAtoms; ++i) {
        st.conn_count(i) = 8;
        for (int k = 1; k <= 8; ++k) st.nbr(i, k) = std::min(kMaxAtoms, i + k);
    }
    rebuild_bond_list(st);
    EXPECT_EQ(st.nbonds, kMaxBonds);
}

TEST(Store, PrepareDisplayCentresScalesAndPullsBack) {
    TestSession t;
    Store& st = t.s.store;
    st.natoms = 2;
    st.atom_label[1] = make_label("C1");
    st.atom_label[2] = make_label("O2");
    st.atom_rec[1] = {-4, 0, 0, 0.76f, 0, 0};
    st.atom_rec[2] = {4, 2, 0, 0.66f, 0, 0};
    prepare_display(t.s);
    EXPECT_FLOAT_EQ(st.disp_x[2], 1.0f);
    EXPECT_FLOAT_EQ(st.disp_y[2], 0.25f);

    // Write-back: the view becomes the coordinates, centred, at their own scale.
    st.disp_x[2] = 0.5f;
    t.s.flags.view_action = 10;
    prepare_display(t.s);
    EXPECT_FLOAT_EQ(st.atom_rec[2][kX], 2.0f);
    EXPECT_FLOAT_EQ(st.atom_rec[1][kX], -4.0f);
}
