// What the occlusion grid lets the painter leave out: never anything that
// could show a pixel (checked against rays cast through every pixel), and
// what a sphere in front does hide.
#include "display/occlusion.h"

#include <cmath>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "display/projection.h"

namespace zentol {
namespace {

constexpr int kWidth = 200, kHeight = 150;

ScreenCamera camera() {
    const Matrix4 p = perspective_matrix(double(kWidth) / kHeight);
    ScreenCamera c;
    c.width = kWidth, c.height = kHeight, c.kx = static_cast<float>(p[0]), c.ky = static_cast<float>(p[5]);
    return c;
}

struct Ball { float c[3], r; };

// Eye distance of the ray through pixel (x, y)'s centre to the sphere's
// front, or infinity.
double front(const Ball& b, int x, int y) {
    const ScreenCamera cam = camera();
    const double tx = ((x + 0.5) / kWidth * 2 - 1) / cam.kx, ty = ((y + 0.5) / kHeight * 2 - 1) / cam.ky;
    const double dd = tx * tx + ty * ty + 1, dc = tx * b.c[0] + ty * b.c[1] - b.c[2];
    const double cc = double(b.c[0]) * b.c[0] + double(b.c[1]) * b.c[1] + double(b.c[2]) * b.c[2] - double(b.r) * b.r;
    const double disc = dc * dc - dd * cc;
    return disc < 0 ? INFINITY : (dc - std::sqrt(disc)) / dd;
}

TEST(OcclusionGrid, ASphereInFrontHidesOnlyWhatIsWhollyBehindIt) {
    OcclusionGrid grid;
    grid.start(camera());
    // Spheres beside or in front of it showing pixels: the random crowds below.
    const float big[3] = {0, 0, -16}, behind[3] = {0.05f, 0, -17};
    grid.add_sphere(big, 0.3f);
    EXPECT_TRUE(grid.sphere_hidden(behind, 0.1f));
    // A stick behind it, and one that reaches out beside it.
    const float a[3] = {-0.05f, 0, -17}, b[3] = {0.05f, 0.05f, -17.2f}, out[3] = {0.6f, 0, -17};
    EXPECT_TRUE(grid.stick_hidden(a, b, 0.02f));
    EXPECT_FALSE(grid.stick_hidden(a, out, 0.02f));
    // Outside the picture is hidden; partly inside or reaching the eye is not.
    const float far_left[3] = {-5, 0, -16}, above[3] = {0, 4, -16}, edge[3] = {-1.6f, 0, -16}, at_eye[3] = {0, 0, -0.05f};
    EXPECT_TRUE(grid.sphere_hidden(far_left, 0.2f));
    EXPECT_TRUE(grid.sphere_hidden(above, 0.2f));
    EXPECT_FALSE(grid.sphere_hidden(edge, 0.2f));
    EXPECT_FALSE(grid.sphere_hidden(at_eye, 0.1f));
    // A sphere the near plane cuts open hides nothing.
    grid.start(camera());
    const float near_cut[3] = {0, 0, -1.1f};
    grid.add_sphere(near_cut, 0.3f);
    EXPECT_FALSE(grid.sphere_hidden(big, 0.01f));
}

// Random crowds of spheres added nearest first, as the painter draws them:
// a sphere the grid calls hidden must have no pixel whose ray meets it
// before every sphere already drawn. A good part of the crowd is found
// hidden.
TEST(OcclusionGrid, NothingThatShowsAPixelIsEverCalledHidden) {
    std::mt19937 rng(7);
    std::uniform_real_distribution<float> pos(-0.9f, 0.9f), depth(-17.5f, -15.5f), size(0.05f, 0.25f);
    int hidden = 0, total = 0;
    for (int round = 0; round < 6; ++round) {
        std::vector<Ball> balls(150);
        for (Ball& b : balls) b = {{pos(rng), pos(rng) * 0.75f, depth(rng)}, size(rng)};
        std::sort(balls.begin(), balls.end(), [](const Ball& a, const Ball& b) { return a.c[2] + a.r > b.c[2] + b.r; });
        OcclusionGrid grid;
        grid.start(camera());
        std::vector<Ball> drawn;
        for (const Ball& b : balls) {
            ++total;
            if (!grid.sphere_hidden(b.c, b.r)) {
                grid.add_sphere(b.c, b.r);
                drawn.push_back(b);
                continue;
            }
            ++hidden;
            for (int y = 0; y < kHeight; ++y)
                for (int x = 0; x < kWidth; ++x) {
                    const double mine = front(b, x, y);
                    if (!std::isfinite(mine)) continue;
                    double nearest = INFINITY;
                    for (const Ball& d : drawn) nearest = std::min(nearest, front(d, x, y));
                    ASSERT_LT(nearest, mine) << "round " << round << " pixel " << x << "," << y;
                }
        }
    }
    EXPECT_GT(hidden, total / 8);
}

}  // namespace
}  // namespace zentol
