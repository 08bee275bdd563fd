#include <gtest/gtest.h>

#include <cmath>

#include "display/projection.h"
#include "session/molecule_store.h"
#include "session/session.h"
#include "session/store_ops.h"
#include "support/test_support.h"

using namespace zentol;
using namespace zentol::testing;

TEST(Store, ElementLookupModes) {
    Store st;
    element_lookup(st, nullptr, "", kLookupConfirmAll);
    EXPECT_FLOAT_EQ(element_lookup(st, nullptr, "Cl", kLookupRadius), 1.02f);
    EXPECT_FLOAT_EQ(element_lookup(st, nullptr, "CL", kLookupRadius), 1.02f);   // second letter lowered
    EXPECT_FLOAT_EQ(element_lookup(st, nullptr, "C1", kLookupRadius), 0.76f);   // digit: one letter
    EXPECT_FLOAT_EQ(element_lookup(st, nullptr, "In", kLookupRadius), 2.42f);
    EXPECT_FLOAT_EQ(element_lookup(st, nullptr, "D1", kLookupAtomicNumber), 93.0f);
    EXPECT_FLOAT_EQ(element_lookup(st, nullptr, "Fe", -8), 26.0f);
    EXPECT_FLOAT_EQ(element_lookup(st, nullptr, "Lu", kLookupElectronegativity), 1.09f);
    EXPECT_FLOAT_EQ(element_lookup(st, nullptr, "Xx", kLookupElectronegativity), 0.74f);   // falls to radius
    EXPECT_FLOAT_EQ(element_lookup(st, nullptr, "Q1", kLookupRadius), 0.77f);
    EXPECT_FLOAT_EQ(element_lookup(st, nullptr, "CEN1", kLookupRadius), 0.0f);
    EXPECT_TRUE(label_is_one_letter("C1  "));
    EXPECT_TRUE(label_is_one_letter("H   "));
    EXPECT_FALSE(label_is_one_letter("Cl1 "));
    EXPECT_EQ(st.elements[93].mm3_type, 5);
    EXPECT_FLOAT_EQ(st.elements[56].radius, 1.15f);   // Ba stands as listed
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
    EXPECT_EQ(st.bond_a[1], 1);
    EXPECT_EQ(st.bond_b[1], 2);
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
    prepare_display(t.s);   // empty: nothing to centre
    EXPECT_EQ(st.disp_natoms, 0);

    st.natoms = 1;
    st.atom_label[1] = make_label("C1");
    st.atom_rec[1] = {3, 4, 5, 0.76f, 0, 0};
    prepare_display(t.s);
    EXPECT_FLOAT_EQ(st.disp_scale, 1.0f);
    EXPECT_FLOAT_EQ(st.disp_x[1], 0.0f);

    st.natoms = 2;
    st.atom_label[2] = make_label("O2");
    st.atom_rec[1] = {-4, 0, 0, 0.76f, 0, 0};
    st.atom_rec[2] = {4, 2, 0, 0.66f, 0, 0};
    prepare_display(t.s);
    EXPECT_FLOAT_EQ(st.disp_scale, 0.25f);
    EXPECT_FLOAT_EQ(st.disp_x[2], 1.0f);
    EXPECT_FLOAT_EQ(st.disp_y[2], 0.25f);
    EXPECT_FLOAT_EQ(st.atom_colour[2], 6.0f);   // oxygen's entry of the shipped colours

    // Write-back: the view becomes the coordinates, centred; the radius is
    // divided as well.
    st.disp_x[2] = 0.5f;
    t.s.flags.view_action = 10;
    prepare_display(t.s);
    EXPECT_EQ(t.s.flags.view_action, 0);
    EXPECT_FLOAT_EQ(st.atom_rec[2][kX], 2.0f);
    EXPECT_FLOAT_EQ(st.atom_rec[1][kX], -4.0f);
    EXPECT_FLOAT_EQ(st.atom_rec[2][kRadius], 0.66f * 4);
}

TEST(Store, ProjectionPutsTheCentreMidViewAndFollowsTheAxes) {
    Viewport vp{800, 600};
    auto c = project_point(0, 0, 0, vp);
    EXPECT_NEAR(c.first, 0.5, 1e-6);
    EXPECT_NEAR(c.second, 0.5, 1e-6);
    auto right = project_point(1, 0, 0, vp);
    auto up = project_point(0, 1, 0, vp);
    EXPECT_GT(right.first, 0.5);
    EXPECT_NEAR(right.second, 0.5, 1e-6);
    EXPECT_GT(up.second, 0.5);
    // The field of view holds a unit coordinate well inside the view.
    EXPECT_LT(right.first, 1.0);
    EXPECT_LT(up.second, 1.0);
    auto near = project_point(1, 0, 1, vp);   // nearer the eye looks larger
    EXPECT_GT(near.first, right.first);
}

TEST(Store, SaveAndReloadRoundTripsThroughTheFiles) {
    TestSession t;
    t.s.job.name = "rt";
    Store& st = t.s.store;
    st.natoms = 2;
    st.atom_label[1] = make_label("C1");
    st.atom_label[2] = make_label("C2");
    st.atom_rec[1] = {0, 0, 0, 0.76f, 0, 0};
    st.atom_rec[2] = {1.54f, 0, 0, 0.76f, 0, 0};
    st.conn_type(1) = st.conn_type(2) = 1;
    st.nbr(1, 1) = 2, st.conn_count(1) = 1;
    st.nbr(2, 1) = 1, st.conn_count(2) = 1;
    t.s.flags.total_charge = -1;
    save_and_reload(t.s);
    EXPECT_EQ(st.nbonds, 1);
    EXPECT_EQ(t.s.flags.total_charge, -1);
    EXPECT_EQ(read_file("rt.xyz").substr(0, 30), "     2 rt chamul  -1   1\n     ");
    EXPECT_EQ(t.renderer.frames, 1);
    EXPECT_NEAR(st.screen_x[1] + st.screen_x[2], 1.0, 1e-5);   // symmetric about the centre
}
