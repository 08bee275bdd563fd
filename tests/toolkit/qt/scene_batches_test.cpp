// The vertex data the painter draws from: joined bond halves, the order
// primitives go in, and four whole vertices a quad.
#include "toolkit/qt/scene_batches.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <random>

#include <gtest/gtest.h>

#include "display/scene.h"

namespace zentol {
namespace {

const Matrix4 kLook = look_at_matrix();

// A scene with palette entry 3 red, 5 blue, 7 green.
Scene coloured_scene() {
    Scene scene;
    scene.palette[3] = {1, 0, 0};
    scene.palette[5] = {0, 0, 1};
    scene.palette[7] = {0, 1, 0};
    scene.stick_radius = 0.05f;
    return scene;
}

// The two halves of the bond p-q as the scene makes them.
void add_bond(Scene& scene, std::array<float, 3> p, std::array<float, 3> q, int ca, int cb, float alpha = 1) {
    const float mx = (p[0] + q[0]) / 2, my = (p[1] + q[1]) / 2, mz = (p[2] + q[2]) / 2;
    scene.sticks.push_back({p[0], p[1], p[2], mx, my, mz, ca, alpha});
    scene.sticks.push_back({mx, my, mz, q[0], q[1], q[2], cb, alpha});
}

// Primitive k's attributes, checking that its four vertices carry the same.
std::vector<float> primitive(const std::vector<float>& vertices, int k, int floats, int corners) {
    const auto at = vertices.begin() + static_cast<std::ptrdiff_t>(k) * corners * floats;
    std::vector<float> first(at, at + floats);
    for (int c = 1; c < corners; ++c)
        EXPECT_TRUE(std::equal(first.begin(), first.end(), at + c * floats)) << "primitive " << k << " corner " << c;
    return first;
}

std::vector<float> stick(const SceneBatches& b, int k) {
    return primitive(b.stick_vertices(), k, kStickFloats, kQuadCorners);
}
std::vector<float> sphere(const SceneBatches& b, int k) {
    return primitive(b.sphere_vertices(), k, kSphereFloats, kSphereCorners);
}

TEST(SceneBatches, TheHalvesOfABondAreOneStickColouredByHalves) {
    Scene scene = coloured_scene();
    add_bond(scene, {0.1f, 0.2f, 0.3f}, {0.7f, -0.3f, 0.35f}, 3, 5);
    add_bond(scene, {0.7f, -0.3f, 0.35f}, {0.9f, 0.4f, -0.2f}, 5, 7);
    SceneBatches b;
    b.build(scene, kLook);
    ASSERT_EQ(b.stick_count(), 2);
    // Both bonds, whichever is drawn first: from its first atom to its
    // second, the first half's colour and alpha, then the second half's.
    std::vector<std::vector<float>> got = {stick(b, 0), stick(b, 1)};
    std::sort(got.begin(), got.end());
    // No spheres: all of each stick shows.
    EXPECT_EQ(got[0], (std::vector<float>{0.1f, 0.2f, 0.3f, 0.7f, -0.3f, 0.35f, 1, 0, 0, 1, 0, 0, 1, 0, 0}));
    EXPECT_EQ(got[1], (std::vector<float>{0.7f, -0.3f, 0.35f, 0.9f, 0.4f, -0.2f, 0, 0, 1, 1, 0, 1, 0, 0, 0}));
}

TEST(SceneBatches, SticksThatOnlyTouchStaySeparate) {
    Scene scene = coloured_scene();
    // A bent chain in fast drawing: one stick a bond, each ending where the
    // next begins, which is no midpoint.
    scene.sticks.push_back({0, 0, 0, 1, 0, 0, 2, 1});
    scene.sticks.push_back({1, 0, 0, 1, 1, 0, 2, 1});
    // Two halves that would join but for their alpha.
    scene.sticks.push_back({0, 0, 1, 0.5f, 0, 1, 3, 1});
    scene.sticks.push_back({0.5f, 0, 1, 1, 0, 1, 3, 0.5f});
    SceneBatches b;
    b.build(scene, kLook);
    EXPECT_EQ(b.stick_count(), 4);
    // A stick on its own has one colour throughout.
    const std::vector<float> s = stick(b, 0);
    EXPECT_EQ(std::vector<float>(s.begin() + 6, s.begin() + 9), std::vector<float>(s.begin() + 10, s.begin() + 13));
}

TEST(SceneBatches, OpaquePrimitivesGoNearestFirst) {
    Scene scene = coloured_scene();
    // The eye looks down -z: larger z is nearer. What counts is how near
    // the sphere's front comes: the big one behind (index 3) reaches
    // furthest forward; 1 and 2 come equally near, and keep their order.
    scene.spheres.push_back({0, 0, 0.0f, 0.1f, 3, 1});    // front at 0.1
    scene.spheres.push_back({0, 0, 0.2f, 0.1f, 5, 1});    // front at 0.3
    scene.spheres.push_back({0.3f, 0, 0.2f, 0.1f, 7, 1}); // front at 0.3
    scene.spheres.push_back({0, 0, -0.5f, 1.0f, 3, 1});   // front at 0.5
    SceneBatches b;
    b.build(scene, kLook);
    ASSERT_EQ(b.sphere_count(), 4);
    EXPECT_TRUE(b.spheres_opaque());
    EXPECT_EQ(sphere(b, 0)[2], -0.5f);
    EXPECT_EQ(sphere(b, 1), (std::vector<float>{0, 0, 0.2f, 0.1f, 0, 0, 1, 1}));
    EXPECT_EQ(sphere(b, 2), (std::vector<float>{0.3f, 0, 0.2f, 0.1f, 0, 1, 0, 1}));
    EXPECT_EQ(sphere(b, 3)[2], 0.0f);

    // One translucent sphere: its blending depends on what was drawn
    // before, so the scene's order stands.
    scene.spheres[2].alpha = 0;
    b.build(scene, kLook);
    EXPECT_FALSE(b.spheres_opaque());
    for (int k = 0; k < 4; ++k) {
        EXPECT_EQ(sphere(b, k)[0], scene.spheres[static_cast<std::size_t>(k)].x) << k;
        EXPECT_EQ(sphere(b, k)[2], scene.spheres[static_cast<std::size_t>(k)].z) << k;
    }

    // Sticks go by their nearer end.
    scene = coloured_scene();
    add_bond(scene, {0, 0, -1}, {0, 0, 0}, 3, 3);        // nearer end at 0
    add_bond(scene, {1, 0, 0.5f}, {1, 1, -2}, 5, 5);     // at 0.5
    add_bond(scene, {2, 0, -0.2f}, {2, 1, -0.3f}, 7, 7); // at -0.2
    b.build(scene, kLook);
    ASSERT_EQ(b.stick_count(), 3);
    EXPECT_TRUE(b.sticks_opaque());
    EXPECT_EQ(std::vector<float>({stick(b, 0)[0], stick(b, 1)[0], stick(b, 2)[0]}), std::vector<float>({1, 0, 2}));
}

TEST(SceneBatches, SticksSkipWhatTheirAtomsSpheresHide) {
    Scene scene = coloured_scene();
    scene.stick_radius = 0.06f;
    scene.spheres.push_back({0, 0, 0, 0.1f, 3, 1});
    scene.spheres.push_back({1, 0, 0, 0.3f, 3, 1});
    scene.spheres.push_back({0, 2, 0, 0.5f, 3, 0.5f});   // translucent: hides nothing
    scene.spheres.push_back({0, 0, 16, 0.5f, 3, 1});     // cut open by the near plane
    scene.spheres.push_back({3, 0, 0, 0.05f, 3, 1});     // thinner than the stick
    add_bond(scene, {0, 0, 0}, {1, 0, 0}, 3, 5);         // between the first two
    add_bond(scene, {0, 0, 0}, {0, 2, 0}, 3, 5);
    add_bond(scene, {0, 0, 16}, {0, 0, 15}, 3, 5);
    add_bond(scene, {3, 0, 0}, {3, 1, 0}, 3, 5);
    add_bond(scene, {0, 0, 0}, {0.2f, 0, 0}, 3, 5);      // between the first sphere and no atom
    scene.sticks.push_back({1, 0, 0, 1.1f, 0, 0, 3, 1}); // short, wholly inside the second sphere
    SceneBatches b;
    b.build(scene, kLook);
    ASSERT_EQ(b.stick_count(), 5);
    std::vector<std::vector<float>> got;
    for (int k = 0; k < 5; ++k) got.push_back(stick(b, k));
    auto hidden = [&got](float x1, float y1, float z1) {
        for (const auto& s : got)
            if (s[3] == x1 && s[4] == y1 && s[5] == z1) return std::pair{s[13], s[14]};
        ADD_FAILURE() << "no stick ends at " << x1 << "," << y1 << "," << z1;
        return std::pair{0.0f, 0.0f};
    };
    const float r2 = 0.06f * 0.06f;
    EXPECT_NEAR(hidden(1, 0, 0).first, std::sqrt(0.01f - r2), 2e-3);
    EXPECT_NEAR(hidden(1, 0, 0).second, std::sqrt(0.09f - r2), 2e-3);
    EXPECT_NEAR(hidden(0, 2, 0).first, std::sqrt(0.01f - r2) / 2, 2e-3);
    EXPECT_EQ(hidden(0, 2, 0).second, 0);
    EXPECT_EQ(hidden(0, 0, 15), std::pair(0.0f, 0.0f));
    EXPECT_EQ(hidden(3, 1, 0), std::pair(0.0f, 0.0f));
    EXPECT_NEAR(hidden(0.2f, 0, 0).first, std::sqrt(0.01f - r2) / 0.2f, 2e-3);
    EXPECT_EQ(hidden(0.2f, 0, 0).second, 0);
}

// The order after each frame is the one a full sort gives, whether the keys
// barely moved, were turned upside down, or changed in number.
TEST(SceneBatches, TheDepthOrderStaysRightFromFrameToFrame) {
    std::mt19937 random(7);
    std::uniform_real_distribution<float> uniform(-1, 1);
    std::vector<float> keys(3000);
    for (float& k : keys) k = uniform(random);
    keys[10] = keys[20] = keys[30];   // ties go by index
    auto expected = [&keys](int n) {
        std::vector<std::uint32_t> o(static_cast<std::size_t>(n));
        std::iota(o.begin(), o.end(), 0u);
        std::stable_sort(o.begin(), o.end(), [&keys](std::uint32_t a, std::uint32_t b) { return keys[a] > keys[b]; });
        return o;
    };
    auto got = [](const DepthOrder& d) {
        return std::vector<std::uint32_t>(d.order().begin(), d.order().begin() + d.size());
    };
    DepthOrder order;
    order.sort(keys, 2500);
    EXPECT_EQ(got(order), expected(2500));
    for (int frame = 0; frame < 3; ++frame) {   // small turns
        for (float& k : keys) k += 0.01f * uniform(random);
        order.sort(keys, 2500);
        EXPECT_EQ(got(order), expected(2500)) << "frame " << frame;
    }
    for (float& k : keys) k = -k;   // everything the other way round
    order.sort(keys, 2500);
    EXPECT_EQ(got(order), expected(2500));
    order.sort(keys, 3000);
    EXPECT_EQ(got(order), expected(3000));
}

// A row of atoms one behind the other along the line of sight. Small, they
// hide nothing and the batches stop looking for a while; grown large (as
// Setup's atom size does), the very next frame leaves the hidden ones out,
// and keeps doing so.
TEST(SceneBatches, AtomsGrownLargeHideWhatIsBehindThemAtOnce) {
    Scene scene = coloured_scene();
    for (int k = 0; k < 20; ++k) scene.spheres.push_back({0, 0, 0.25f * float(k) - 2.5f, 0.02f, 3, 1});
    const Matrix4 p = perspective_matrix(800.0 / 600.0);
    ScreenCamera camera;
    camera.width = 800;
    camera.height = 600;
    camera.kx = static_cast<float>(p[0]);
    camera.ky = static_cast<float>(p[5]);
    SceneBatches b;
    for (int frame = 0; frame < 3; ++frame) {
        b.build(scene, kLook, &camera);
        EXPECT_EQ(b.sphere_count(), 20) << frame;
    }
    for (SceneSphere& s : scene.spheres) s.radius = 0.3f;
    for (int frame = 0; frame < 3; ++frame) {
        b.build(scene, kLook, &camera);
        EXPECT_LT(b.sphere_count(), 10) << frame;
    }
}

}  // namespace
}  // namespace zentol
