// Isosurfaces of fields whose surfaces are known exactly.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>

#include "wavefunction/marching_cubes.h"

namespace zentol {
namespace {

CubeGrid field(int n, double h, const std::function<double(double, double, double)>& f) {
    CubeGrid g;
    g.n = {n, n, n};
    g.origin = {-h * (n - 1) / 2, -h * (n - 1) / 2, -h * (n - 1) / 2};
    for (int a = 0; a < 3; ++a) g.axes[a][a] = h;
    g.values.resize(static_cast<std::size_t>(n) * n * n);
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < n; ++j)
            for (int k = 0; k < n; ++k) {
                const auto p = g.point(i, j, k);
                g.values[g.index(i, j, k)] = static_cast<float>(f(p[0], p[1], p[2]));
            }
    return g;
}

struct Measure {
    double area = 0, volume = 0, worst_radius = 0, worst_normal = 1;
    int turned = 0;   // triangles whose winding disagrees with their normals
};

using V = std::array<double, 3>;
V sub(const V& a, const V& b) { return {a[0] - b[0], a[1] - b[1], a[2] - b[2]}; }
double dot(const V& a, const V& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }
V cross(const V& a, const V& b) { return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]}; }

// Area, enclosed volume (each triangle turned to agree with its normals)
// and how far vertices and normals stray from a sphere of radius r at c.
Measure measure(const IsoMesh& m, double r, const V& c) {
    Measure out;
    auto get = [](const std::vector<float>& v, std::size_t at) { return V{v[at], v[at + 1], v[at + 2]}; };
    for (std::size_t t = 0; t < m.triangles(); ++t) {
        V p[3], nsum{};
        for (int v = 0; v < 3; ++v) {
            p[v] = get(m.vertices, 9 * t + 3 * v);
            const V n = get(m.normals, 9 * t + 3 * v), d = sub(p[v], c);
            const double dist = std::sqrt(dot(d, d));
            for (int a = 0; a < 3; ++a) nsum[a] += n[a];
            out.worst_radius = std::max(out.worst_radius, std::abs(dist - r));
            out.worst_normal = std::min(out.worst_normal, dot(n, d) / dist);
        }
        const V x = cross(sub(p[1], p[0]), sub(p[2], p[0]));
        out.area += std::sqrt(dot(x, x)) / 2;
        const double turn = dot(x, nsum) < 0 ? -1 : 1;
        out.turned += turn < 0;
        out.volume += turn * dot(sub(p[0], c), x) / 6;   // the tetrahedron of the triangle and the centre
    }
    return out;
}

// Of a negative field too: the normals point away from the inside, where
// the field is beyond the level, as they do for a negative lobe.
TEST(MarchingCubes, SphereHasTheRightAreaVolumeAndOutwardNormals) {
    const double r = 1.6;
    for (double sign : {1.0, -1.0}) {
        SCOPED_TRACE(sign);
        const CubeGrid g = field(40, 0.1, [sign](double x, double y, double z) {
            return sign * std::exp(-std::sqrt(x * x + y * y + z * z));
        });
        const IsoMesh m = isosurface(g, static_cast<float>(sign * std::exp(-r)));
        ASSERT_EQ(m.normals.size(), m.vertices.size());
        const Measure s = measure(m, r, {0, 0, 0});
        EXPECT_LT(s.worst_radius, 0.01);
        EXPECT_GT(s.worst_normal, 0.98);
        // Counter-clockwise seen from outside, for a viewer that culls back faces.
        EXPECT_EQ(s.turned, 0);
        EXPECT_NEAR(s.area, 4 * M_PI * r * r, 0.02 * 4 * M_PI * r * r);
        EXPECT_NEAR(s.volume, 4 * M_PI * r * r * r / 3, 0.01 * 4 * M_PI * r * r * r / 3);
    }
}

TEST(MarchingCubes, ABrokenGridGivesNoTriangles) {
    CubeGrid broken = field(8, 0.5, [](double x, double, double) { return x; });
    broken.values.pop_back();
    EXPECT_EQ(isosurface(broken, 0.05f).triangles(), 0u);
}

}  // namespace
}  // namespace zentol
