#include "display/scene.h"

#include <string>
#include <tuple>

#include <gtest/gtest.h>

#include "display/view.h"
#include "session/session.h"
#include "support/test_support.h"

using namespace zentol;
using namespace zentol::testing;

namespace {

std::string text_of(const SceneLabel& l) { return std::string(l.text, static_cast<std::size_t>(l.length)); }

// Three atoms straight in the display copy, C-O-H, both bonds in the xy
// plane (dz = 0). The picture they make: the GL view tests.
class SceneTest : public ::testing::Test {
protected:
    void SetUp() override {
        Store& st = s.store;
        const char* labels[] = {"C1  ", "O2  ", "H23A"};
        const float x[] = {0, 1, 1}, y[] = {0, 0, 1}, w[] = {0.77f, 0.73f, 0.37f}, colour[] = {3, 5.6f, 4};
        for (int i = 1; i <= 3; ++i) {
            st.disp_label[i] = make_label(labels[i - 1]);
            st.disp_x[i] = x[i - 1], st.disp_y[i] = y[i - 1], st.disp_z[i] = 0, st.disp_w[i] = w[i - 1];
            st.atom_colour[i] = colour[i - 1];
        }
        st.natoms = st.disp_natoms = 3, st.disp_scale = 1.0f;
        st.bond_a[1] = 1, st.bond_b[1] = 2, st.bond_a[2] = 2, st.bond_b[2] = 3, st.nbonds = 2;
    }
    Scene build(const BondMarks& marks = {}) {
        Scene scene;
        build_scene(s, marks, scene);
        return scene;
    }

    TestSession t;
    Session& s = t.s;
};

}  // namespace

TEST_F(SceneTest, AtomsAreZoomedSpheresAndBondsTwoHalvesInTheirAtomsColours) {
    s.flags.zoom = 2.0f, s.store.disp_scale = 0.5f, s.opt.atom_size = 0.4f, s.opt.bond_width = 0.5f;
    Scene scene = build();
    ASSERT_EQ(scene.spheres.size(), 3u);
    const SceneSphere& o = scene.spheres[1];
    EXPECT_FLOAT_EQ(o.x, 2.0f);   // positions times zoom; disp_scale is already in them
    EXPECT_FLOAT_EQ(o.radius, 0.73f * 1.4f * 0.5f * 0.4f * 2.0f);
    EXPECT_EQ(o.colour, 6);   // 5.6 rounds
    EXPECT_FLOAT_EQ(scene.stick_radius, 0.5f * 0.3f * 0.5f * 2.0f);
    ASSERT_EQ(scene.sticks.size(), 4u);   // both bonds lie flat (dz = 0) and are drawn
    EXPECT_FLOAT_EQ(scene.sticks[0].x1, 1.0f);   // the middle, zoomed
    EXPECT_EQ(scene.sticks[0].colour, 3);
    EXPECT_EQ(scene.sticks[1].colour, 6);
}

TEST_F(SceneTest, PickedAtomsAndPickedAndStoredBondsTakeTheirEntries) {
    // Picked atoms take the highlight entry, but only within pick_count.
    s.view.pick_list[1] = 3, s.view.pick_list[2] = 1, s.view.pick_count = 1;
    Scene scene = build();
    EXPECT_EQ(scene.spheres[2].colour, kHighlightEntry);
    EXPECT_EQ(scene.spheres[0].colour, 3);

    s.view.pick_list[1] = 1, s.view.pick_list[2] = 2, s.view.pick_count = 2;
    // Picked ends alone do not colour a bond: only while marks count.
    EXPECT_EQ(build().sticks[0].colour, 3);
    BondMarks marks;
    marks.count = 1;
    scene = build(marks);
    EXPECT_EQ(scene.sticks[0].colour, kHighlightEntry);
    EXPECT_EQ(scene.sticks[1].colour, kHighlightEntry);
    EXPECT_EQ(scene.sticks[2].colour, 6);   // O-H: H is not picked
    // The stored bond shown wins over the pick highlight.
    marks.kind = 1, marks.first_low = 1, marks.first_high = 2;
    EXPECT_EQ(build(marks).sticks[1].colour, kStoredBondEntry);
    marks.kind = 2, marks.second_low = 2, marks.second_high = 3;   // now the second stored bond is shown
    scene = build(marks);
    EXPECT_EQ(scene.sticks[0].colour, kHighlightEntry);
    EXPECT_EQ(scene.sticks[3].colour, kStoredBondEntry);
}

TEST_F(SceneTest, EmphasisShrinksAndFadesTheOtherAtomsAndTheirBonds) {
    s.opt.deemphasis_alpha = 0.25f, s.opt.atom_size = 0.5f, s.store.atom_emph[1] = 1.0f;
    EXPECT_FLOAT_EQ(build().spheres[1].alpha, 1.0f);   // no emphasis in force: atom_emph is not read
    s.store.emphasis_count = 1;
    Scene scene = build();
    EXPECT_FLOAT_EQ(scene.spheres[0].radius, 0.77f * 1.4f * 0.5f);
    EXPECT_FLOAT_EQ(scene.spheres[1].alpha, 0.25f);
    EXPECT_FLOAT_EQ(scene.spheres[1].radius, 0.73f * 1.4f * 0.1f);
    EXPECT_FLOAT_EQ(scene.sticks[1].alpha, 1.0f);    // C-O: one end emphasised
    EXPECT_FLOAT_EQ(scene.sticks[2].alpha, 0.25f);   // O-H: neither

    // Fast drawing: one whole stick a bond in the bond colour, opaque.
    s.flags.sphere_slices = s.flags.sphere_stacks = kFastSlices;
    scene = build();
    ASSERT_EQ(scene.sticks.size(), 2u);
    EXPECT_EQ(scene.sticks[1].colour, kFastBondEntry);
    EXPECT_FLOAT_EQ(scene.sticks[1].y1, 1.0f);
    EXPECT_FLOAT_EQ(scene.sticks[1].alpha, 1.0f);
}

TEST_F(SceneTest, ALargeMoleculeTurnedByTheMouseDropsToThinSticks) {
    s.flags.sphere_slices = s.flags.sphere_stacks = kFastSlices;
    const float radius = build().stick_radius;
    s.flags.mouse_rotating = true, s.opt.labels_on = true, s.store.disp_natoms = kFullPictureWhileTurning + 1;
    Scene scene = build();
    s.store.disp_natoms = 3;
    EXPECT_TRUE(scene.spheres.empty());
    EXPECT_TRUE(scene.labels.empty());
    EXPECT_EQ(scene.sticks.size(), 2u);
    EXPECT_FLOAT_EQ(scene.stick_radius, radius * 0.3f);
    // Without bonds a drag keeps the atoms on the screen.
    s.store.nbonds = 0;
    scene = build();
    EXPECT_EQ(scene.spheres.size(), 3u);
    EXPECT_TRUE(scene.sticks.empty());
}

TEST_F(SceneTest, LabelsAreCutAtTrailingBlanksAndChargesHaveThreeDecimals) {
    EXPECT_EQ(label_length(make_label("    ")), 1);
    s.opt.labels_on = true;
    Scene scene = build();
    ASSERT_EQ(scene.labels.size(), 3u);
    EXPECT_EQ(text_of(scene.labels[0]), "C1");
    EXPECT_EQ(text_of(scene.labels[2]), "H23A");

    // Stars when too wide for the field.
    s.opt.charge_labels = true, s.store.atom_charge[1] = -0.123f, s.store.atom_charge[2] = 12.5f;
    scene = build();
    EXPECT_EQ(text_of(scene.labels[0]), "-0.123");
    EXPECT_EQ(text_of(scene.labels[1]), "*****");
    EXPECT_EQ(text_of(scene.labels[2]), "0.000");
}

TEST_F(SceneTest, TheLargestMoleculeIsBuiltWithoutGrowingTheScene) {
    Store& st = s.store;
    st.natoms = st.disp_natoms = kMaxAtoms;
    for (int i = 1; i <= kMaxAtoms; ++i)
        st.disp_label[i] = make_label("C"), st.disp_x[i] = static_cast<float>(i % 50) * 0.04f - 1.0f,
        st.disp_y[i] = static_cast<float>(i / 50) * 0.04f - 1.0f, st.disp_w[i] = 0.77f, st.atom_colour[i] = 3;
    st.nbonds = kMaxBonds;
    for (int k = 1; k <= kMaxBonds; ++k) st.bond_a[k] = 1 + k % (kMaxAtoms - 1), st.bond_b[k] = st.bond_a[k] + 1;
    s.opt.labels_on = true;
    Scene scene;
    const auto storage = [&] { return std::tuple(scene.spheres.data(), scene.sticks.data(), scene.labels.data()); };
    const auto before = storage();
    build_scene(s, scene);
    build_scene(s, scene);   // a second frame replaces the first
    EXPECT_EQ(scene.spheres.size(), std::size_t(kMaxAtoms));
    EXPECT_EQ(scene.sticks.size(), std::size_t(2 * kMaxBonds));
    EXPECT_EQ(scene.labels.size(), std::size_t(kMaxAtoms));
    EXPECT_EQ(storage(), before);
}

TEST_F(SceneTest, PickCirclesFollowTheirAtoms) {
    s.flags.zoom = 2.0f;
    show_pick_circle(s, 2);
    show_pick_circle(s, 9);   // no such atom: kept, never drawn
    Scene scene = build();
    ASSERT_EQ(scene.circles.size(), 1u);   // where it is drawn: the GL view test
    // A fifth circle pushes out the oldest.
    for (int a : {1, 1, 3}) show_pick_circle(s, a);
    EXPECT_EQ(s.view.circle_count, 4);
    EXPECT_EQ(s.view.circle_list[1], 9);
    clear_pick_circles(s);
    EXPECT_TRUE(build().circles.empty());
}
