// The painter in an off-screen frame buffer.
#include "toolkit/qt/scene_painter.h"

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

namespace zentol {
namespace {

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
    // The two halves of the bond p-q, red then blue, as the scene makes them.
    void add_bond(const float* p, const float* q) {
        const float m[3] = {(p[0] + q[0]) / 2, (p[1] + q[1]) / 2, (p[2] + q[2]) / 2};
        scene.sticks.push_back({p[0], p[1], p[2], m[0], m[1], m[2], 3, 1});
        scene.sticks.push_back({m[0], m[1], m[2], q[0], q[1], q[2], 5, 1});
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
    const float p[3] = {-0.8f, 0.1f, 0.2f}, q[3] = {0.8f, -0.1f, -0.2f};
    scene.stick_radius = 0.05f;
    add_bond(p, q);
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
        for (auto [i, j] : {std::pair{0, 1}, {1, 2}, {0, 3}, {3, 1}}) add_bond(atoms[i], atoms[j]);
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
