// The painter: the vertex batches it draws from, and its pictures in an
// off-screen frame buffer.
#include "toolkit/qt/scene_painter.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <random>
#include <vector>

#include <QImage>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLExtraFunctions>
#include <QOpenGLFramebufferObject>
#include <gtest/gtest.h>

#include "display/projection.h"
#include "display/scene.h"
#include "toolkit/qt/scene_batches.h"

namespace zentol {
namespace {

const Matrix4 kLook = look_at_matrix();

// The two halves of the bond p-q as the scene makes them.
void add_bond(Scene& scene, std::array<float, 3> p, std::array<float, 3> q, int ca = 3, int cb = 5) {
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
    add_bond(scene, {0.1f, 0.2f, 0.3f}, {0.7f, -0.3f, 0.35f});
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
    add_bond(scene, {0, 0, 0}, {1, 0, 0});   // between the first two
    add_bond(scene, {0, 0, 0}, {0, 2, 0});
    add_bond(scene, {0, 0, 16}, {0, 0, 15});
    add_bond(scene, {3, 0, 0}, {3, 1, 0});
    add_bond(scene, {0, 0, 0}, {0.2f, 0, 0});   // between the first sphere and no atom
    scene.sticks.push_back({1, 0, 0, 1.1f, 0, 0, 3, 1});   // short, wholly inside the second sphere
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

constexpr int kWidth = 400, kHeight = 300;

class ScenePainterTest : public ::testing::Test {
protected:
    void SetUp() override {
        if (!context.create()) GTEST_SKIP() << "no OpenGL on this display (run under xvfb-run)";
        surface.setFormat(context.format());
        surface.create();
        ASSERT_TRUE(context.makeCurrent(&surface));
        ASSERT_TRUE(painter.initialize()) << painter.error().toStdString();
        fbo = std::make_unique<QOpenGLFramebufferObject>(kWidth, kHeight, QOpenGLFramebufferObject::Depth);
        fbo->bind();
        scene.palette[1] = {1, 1, 1};
        scene.background = scene.palette[1];
        scene.palette[3] = {1, 0, 0};
        scene.palette[5] = {0, 0, 1};
    }
    void TearDown() override {
        if (!context.isValid()) return;
        context.makeCurrent(&surface);
        fbo.reset();
        painter.release();
        context.doneCurrent();
    }

    // Which pixels the drawing covered (depth written), rows from the bottom.
    std::vector<bool> covered() {
        painter.paint(scene, kWidth, kHeight);
        std::vector<float> depth(std::size_t(kWidth) * kHeight);
        context.extraFunctions()->glReadPixels(0, 0, kWidth, kHeight, GL_DEPTH_COMPONENT, GL_FLOAT, depth.data());
        std::vector<bool> out(depth.size());
        for (std::size_t k = 0; k < depth.size(); ++k) out[k] = depth[k] < 1.0f;
        return out;
    }
    QRgb colour_at(double x, double y) {
        const QImage image = fbo->toImage();   // rows from the top
        return image.pixel(static_cast<int>(x), kHeight - 1 - static_cast<int>(y));
    }

    // The pixels whose ray through the centre meets the sphere in front of
    // the eye and between near and far plane, by the camera of projection.h.
    static std::vector<bool> cast(const SceneSphere& s) {
        const Matrix4 p = perspective_matrix(double(kWidth) / kHeight), v = look_at_matrix();
        const double c[3] = {v[0] * s.x + v[4] * s.y + v[8] * s.z + v[12], v[1] * s.x + v[5] * s.y + v[9] * s.z + v[13],
                             v[2] * s.x + v[6] * s.y + v[10] * s.z + v[14]};
        std::vector<bool> out(std::size_t(kWidth) * kHeight);
        for (int y = 0; y < kHeight; ++y)
            for (int x = 0; x < kWidth; ++x) {
                double d[3] = {((x + 0.5) / kWidth * 2 - 1) / p[0], ((y + 0.5) / kHeight * 2 - 1) / p[5], -1};
                const double len = std::sqrt(d[0] * d[0] + d[1] * d[1] + 1);
                for (double& e : d) e /= len;
                const double b = d[0] * c[0] + d[1] * c[1] + d[2] * c[2];
                const double cc = c[0] * c[0] + c[1] * c[1] + c[2] * c[2];
                const double h = b * b - cc + double(s.radius) * s.radius;
                if (h < 0) continue;
                const double z = (b - std::sqrt(h)) * d[2];   // eye z of the nearer hit
                out[std::size_t(y) * kWidth + x] = -z >= kNear && -z <= kFar;
            }
        return out;
    }

    QOpenGLContext context;
    QOffscreenSurface surface;
    ScenePainter painter;
    std::unique_ptr<QOpenGLFramebufferObject> fbo;
    Scene scene;
};

TEST_F(ScenePainterTest, SpheresShowWholeWhereverTheyStand) {
    const SceneSphere spheres[] = {
        {0.9f, 0.6f, -1, 0.2f, 3, 1},       // off to a corner, stretched by the perspective
        {-0.12f, 0.08f, 14.5f, 0.1f, 3, 1}, // close to the eye: large and oblique
        {1.4f, -0.2f, 2, 0.5f, 3, 1},       // partly out of the view
        {0.4f, 0, 15.4f, 0.3f, 3, 1},       // its front cut off by the near plane
    };
    for (const SceneSphere& s : spheres) {
        SCOPED_TRACE("sphere at " + std::to_string(s.x) + ", " + std::to_string(s.y) + ", " + std::to_string(s.z));
        scene.spheres = {s};
        const std::vector<bool> got = covered(), want = cast(s);
        int inside = 0, differ = 0;
        for (std::size_t k = 0; k < got.size(); ++k) {
            inside += want[k];
            differ += got[k] != want[k];
        }
        EXPECT_GT(inside, 200);
        EXPECT_LE(differ, 2 + inside / 500);   // a pixel centre right on the rim may go either way
    }
}

TEST_F(ScenePainterTest, ABondKeepsItsAtomsColoursOnEitherHalf) {
    const std::array<float, 3> p{-0.8f, 0.1f, 0.2f}, q{0.8f, -0.1f, -0.2f};
    scene.stick_radius = 0.05f;
    add_bond(scene, p, q);   // red, then blue
    covered();
    for (float f : {0.05f, 0.25f, 0.45f, 0.55f, 0.75f, 0.95f}) {
        const auto w = project_point(p[0] + f * (q[0] - p[0]), p[1] + f * (q[1] - p[1]), p[2] + f * (q[2] - p[2]),
                                     Viewport{kWidth, kHeight});
        const QRgb c = colour_at(w.first * kWidth, w.second * kHeight);
        EXPECT_GT(f < 0.5f ? qRed(c) : qBlue(c), 100) << f;
        EXPECT_LT(f < 0.5f ? qBlue(c) : qRed(c), 60) << f;
    }
}

// Stick ends hidden in opaque spheres are left undrawn; spheres a shade
// translucent hide nothing, and the picture must be the same.
TEST_F(ScenePainterTest, SticksOutOfTheirAtomsLookTheSameWhetherDrawnWholeOrNot) {
    scene.palette[7] = {0, 1, 0};
    scene.stick_radius = 0.06f;
    const float atoms[4][4] = {{-0.3f, 0, 0, 0.2f}, {0.2f, 0.1f, 0.6f, 0.15f}, {0.5f, -0.3f, -0.2f, 0.1f},
                               {-0.4f, 0.4f, 0.5f, 0.12f}};
    auto picture = [&](float alpha) {
        scene.spheres.clear();
        scene.sticks.clear();
        for (const auto& a : atoms) scene.spheres.push_back({a[0], a[1], a[2], a[3], 7, alpha});
        for (auto [i, j] : {std::pair{0, 1}, {1, 2}, {0, 3}, {3, 1}})
            add_bond(scene, {atoms[i][0], atoms[i][1], atoms[i][2]}, {atoms[j][0], atoms[j][1], atoms[j][2]});
        covered();
        return fbo->toImage();
    };
    const QImage whole = picture(0.9999f), trimmed = picture(1);
    int differ = 0;
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x) {
            const QRgb a = whole.pixel(x, y), b = trimmed.pixel(x, y);
            differ += std::abs(qRed(a) - qRed(b)) > 3 || std::abs(qGreen(a) - qGreen(b)) > 3 ||
                      std::abs(qBlue(a) - qBlue(b)) > 3;
        }
    EXPECT_LE(differ, 3);
}

// A crowd of large overlapping atoms with their bonds, seen from three sides.
TEST_F(ScenePainterTest, LeavingOutWhatIsHiddenChangesNoPixel) {
    scene.palette[7] = {0, 1, 0};
    scene.stick_radius = 0.03f;
    std::mt19937 rng(11);
    std::uniform_real_distribution<float> pos(-0.6f, 0.6f), size(0.12f, 0.25f);
    std::vector<SceneSphere> crowd;   // one in ten well outside the picture
    for (int k = 0; k < 300; ++k)
        crowd.push_back({pos(rng) + (k % 10 == 0 ? 3.0f : 0.0f), pos(rng), pos(rng), size(rng), k % 2 ? 3 : 5, 1});
    for (const double turn : {0.0, 2.1, 4.2}) {
        const float c = static_cast<float>(std::cos(turn)), s = static_cast<float>(std::sin(turn));
        scene.spheres.clear();
        scene.sticks.clear();
        for (const SceneSphere& a : crowd) {
            scene.spheres.push_back({c * a.x + s * a.z, a.y, c * a.z - s * a.x, a.radius, a.colour, 1});
            if (scene.spheres.size() < 2) continue;
            const SceneSphere& p = scene.spheres[scene.spheres.size() - 2];
            const SceneSphere& q = scene.spheres.back();
            scene.sticks.push_back({p.x, p.y, p.z, q.x, q.y, q.z, 7, 1});
        }
        painter.set_culling(false);
        covered();
        const QImage all = fbo->toImage();
        painter.set_culling(true);
        covered();
        EXPECT_LT(painter.spheres_drawn(), 180) << turn;
        EXPECT_LT(painter.sticks_drawn(), 200) << turn;
        EXPECT_TRUE(all == fbo->toImage()) << turn;
    }
}

}  // namespace
}  // namespace zentol
