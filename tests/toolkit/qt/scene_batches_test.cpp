// The vertex data the painter draws from.
#include "toolkit/qt/scene_batches.h"

#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>

#include "display/scene.h"

namespace zentol {
namespace {

const Matrix4 kLook = look_at_matrix();

// The two halves of the bond p-q as the scene makes them.
void add_bond(Scene& scene, std::array<float, 3> p, std::array<float, 3> q, int ca, int cb) {
    const float mx = (p[0] + q[0]) / 2, my = (p[1] + q[1]) / 2, mz = (p[2] + q[2]) / 2;
    scene.sticks.push_back({p[0], p[1], p[2], mx, my, mz, ca, 1});
    scene.sticks.push_back({mx, my, mz, q[0], q[1], q[2], cb, 1});
}

// Primitive k's attributes, checking that all its vertices carry the same.
std::vector<float> primitive(const std::vector<float>& vertices, int k, int floats, int corners) {
    const auto at = vertices.begin() + static_cast<std::ptrdiff_t>(k) * corners * floats;
    std::vector<float> first(at, at + floats);
    for (int c = 1; c < corners; ++c)
        EXPECT_TRUE(std::equal(first.begin(), first.end(), at + c * floats)) << "primitive " << k << " corner " << c;
    return first;
}
std::vector<float> sphere(const SceneBatches& b, int k) {
    return primitive(b.sphere_vertices(), k, kSphereFloats, kSphereCorners);
}

// Sticks that only touch do not join: a bent chain in fast drawing (one
// stick a bond, ending where the next begins) and halves of unequal alpha.
TEST(SceneBatches, TheHalvesOfABondAreOneStickButSticksThatOnlyTouchStaySeparate) {
    Scene scene;
    add_bond(scene, {0.1f, 0.2f, 0.3f}, {0.7f, -0.3f, 0.35f}, 3, 5);
    add_bond(scene, {0.7f, -0.3f, 0.35f}, {0.9f, 0.4f, -0.2f}, 5, 7);
    SceneBatches b;
    b.build(scene, kLook);
    EXPECT_EQ(b.stick_count(), 2);
    scene.sticks = {{0, 0, 0, 1, 0, 0, 2, 1}, {1, 0, 0, 1, 1, 0, 2, 1},
                    {0, 0, 1, 0.5f, 0, 1, 3, 1}, {0.5f, 0, 1, 1, 0, 1, 3, 0.5f}};
    b.build(scene, kLook);
    EXPECT_EQ(b.stick_count(), 4);
}

// Opaque spheres go nearest first (the culling below needs that); with one
// translucent sphere the scene's order stands, as its blending depends on
// what went before.
TEST(SceneBatches, TranslucentSpheresKeepTheScenesOrder) {
    Scene scene;
    scene.spheres.push_back({0, 0, 0.0f, 0.1f, 3, 1});
    scene.spheres.push_back({0, 0, 0.2f, 0.1f, 5, 0});
    scene.spheres.push_back({0, 0, -0.5f, 0.1f, 3, 1});
    SceneBatches b;
    b.build(scene, kLook);
    ASSERT_EQ(b.sphere_count(), 3);
    EXPECT_FALSE(b.spheres_opaque());
    EXPECT_EQ((std::vector{sphere(b, 0)[2], sphere(b, 1)[2], sphere(b, 2)[2]}), (std::vector{0.0f, 0.2f, -0.5f}));
}

TEST(SceneBatches, SticksSkipWhatTheirAtomsSpheresHide) {
    Scene scene;
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
    for (int k = 0; k < 5; ++k) got.push_back(primitive(b.stick_vertices(), k, kStickFloats, kQuadCorners));
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

// Small atoms in a row along the line of sight hide nothing and the batches
// stop looking for a while; grown large (by Setup) they must hide at once.
TEST(SceneBatches, AtomsGrownLargeHideWhatIsBehindThemAtOnce) {
    Scene scene;
    for (int k = 0; k < 20; ++k) scene.spheres.push_back({0, 0, 0.25f * float(k) - 2.5f, 0.02f, 3, 1});
    const Matrix4 p = perspective_matrix(800.0 / 600.0);
    const ScreenCamera camera{800, 600, static_cast<float>(p[0]), static_cast<float>(p[5])};
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
