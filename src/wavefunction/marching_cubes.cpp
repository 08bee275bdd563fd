#include "wavefunction/marching_cubes.h"

#include <array>
#include <cmath>
#include <tuple>
#include <utility>

namespace zentol {

namespace {

// Corner c of a cell lies at (c & 1, c >> 1 & 1, c >> 2 & 1). The six
// tetrahedra all hold the diagonal 0-7, so each face is cut along the same
// diagonal in both cells that share it.
constexpr int kTetra[6][4] = {{0, 1, 3, 7}, {0, 3, 2, 7}, {0, 2, 6, 7}, {0, 6, 4, 7}, {0, 4, 5, 7}, {0, 5, 1, 7}};

struct Corner {
    int i, j, k;
    float v;
};

class Mesher {
public:
    Mesher(const CubeGrid& g, float level) : g_(g), level_(level), sign_(level >= 0 ? 1.0f : -1.0f) {}

    void cell(int i, int j, int k) {
        std::array<Corner, 8> c;
        int inside = 0;
        for (int n = 0; n < 8; ++n) {
            c[n] = {i + (n & 1), j + (n >> 1 & 1), k + (n >> 2 & 1), 0.0f};
            c[n].v = g_.at(c[n].i, c[n].j, c[n].k);
            inside += in(c[n].v);
        }
        if (inside == 0 || inside == 8) return;
        for (const auto& t : kTetra) tetra(c[t[0]], c[t[1]], c[t[2]], c[t[3]]);
    }

    IsoMesh mesh;

private:
    bool in(float v) const { return sign_ > 0 ? v > level_ : v < level_; }

    // Central differences, one-sided at the border.
    std::array<float, 3> gradient(int i, int j, int k) const {
        const std::array<int, 3> p{i, j, k};
        std::array<float, 3> d{};
        for (int a = 0; a < 3; ++a) {
            std::array<int, 3> lo = p, hi = p;
            lo[a] = std::max(p[a] - 1, 0);
            hi[a] = std::min(p[a] + 1, g_.n[a] - 1);
            d[a] = (g_.at(hi[0], hi[1], hi[2]) - g_.at(lo[0], lo[1], lo[2])) / float(std::max(hi[a] - lo[a], 1));
        }
        return d;
    }

    // Both cells of a shared edge must make the very same vertex: the edge
    // is always walked from its lower corner.
    void vertex(const Corner& from, const Corner& to) {
        const bool swap = std::tie(to.i, to.j, to.k) < std::tie(from.i, from.j, from.k);
        const Corner& a = swap ? to : from;
        const Corner& b = swap ? from : to;
        const float t = std::abs(b.v - a.v) > 1e-30f ? (level_ - a.v) / (b.v - a.v) : 0.5f;
        const auto p = g_.point(a.i + t * (b.i - a.i), a.j + t * (b.j - a.j), a.k + t * (b.k - a.k));
        const auto ga = gradient(a.i, a.j, a.k), gb = gradient(b.i, b.j, b.k);
        // Out of the region: down the field for a positive lobe, up it for a
        // negative one. The grid axes are taken as orthogonal for the normal.
        std::array<float, 3> n{};
        float len = 0;
        for (int c = 0; c < 3; ++c) {
            n[c] = -sign_ * (ga[c] + t * (gb[c] - ga[c])) / float(g_.axes[c][c] != 0 ? g_.axes[c][c] : 1.0);
            len += n[c] * n[c];
        }
        len = len > 0 ? 1.0f / std::sqrt(len) : 0.0f;
        for (int c = 0; c < 3; ++c) {
            mesh.vertices.push_back(static_cast<float>(p[c]));
            mesh.normals.push_back(n[c] * len);
        }
    }

    void triangle(const Corner& a1, const Corner& b1, const Corner& a2, const Corner& b2, const Corner& a3,
                  const Corner& b3) {
        const std::size_t first = mesh.vertices.size();
        vertex(a1, b1);
        vertex(a2, b2);
        vertex(a3, b3);
        // Counter-clockwise seen from outside: the face normal agrees with
        // the vertex normals, so a viewer can leave out the back faces.
        const float* v = mesh.vertices.data() + first;
        const float* n = mesh.normals.data() + first;
        const float e1[3] = {v[3] - v[0], v[4] - v[1], v[5] - v[2]}, e2[3] = {v[6] - v[0], v[7] - v[1], v[8] - v[2]};
        const float face[3] = {e1[1] * e2[2] - e1[2] * e2[1], e1[2] * e2[0] - e1[0] * e2[2], e1[0] * e2[1] - e1[1] * e2[0]};
        float agree = 0;
        for (int c = 0; c < 3; ++c) agree += face[c] * (n[c] + n[3 + c] + n[6 + c]);
        if (agree < 0) {
            for (int c = 0; c < 3; ++c) {
                std::swap(mesh.vertices[first + 3 + c], mesh.vertices[first + 6 + c]);
                std::swap(mesh.normals[first + 3 + c], mesh.normals[first + 6 + c]);
            }
        }
    }

    void tetra(const Corner& p0, const Corner& p1, const Corner& p2, const Corner& p3) {
        const Corner* q[4] = {&p0, &p1, &p2, &p3};
        const Corner* ins[4];
        const Corner* outs[4];
        int ni = 0, no = 0;
        for (const Corner* c : q) (in(c->v) ? ins[ni++] : outs[no++]) = c;
        if (ni == 0 || ni == 4) return;
        if (ni == 1) return triangle(*ins[0], *outs[0], *ins[0], *outs[1], *ins[0], *outs[2]);
        if (ni == 3) return triangle(*outs[0], *ins[0], *outs[0], *ins[1], *outs[0], *ins[2]);
        // Two in, two out: a quad of the four crossing edges.
        triangle(*ins[0], *outs[0], *ins[0], *outs[1], *ins[1], *outs[1]);
        triangle(*ins[0], *outs[0], *ins[1], *outs[1], *ins[1], *outs[0]);
    }

    const CubeGrid& g_;
    float level_;
    float sign_;
};

}  // namespace

IsoMesh isosurface(const CubeGrid& g, float level) {
    Mesher m(g, level);
    if (g.values.size() != static_cast<std::size_t>(g.n[0]) * g.n[1] * g.n[2]) return {};
    for (int i = 0; i + 1 < g.n[0]; ++i)
        for (int j = 0; j + 1 < g.n[1]; ++j)
            for (int k = 0; k + 1 < g.n[2]; ++k) m.cell(i, j, k);
    return std::move(m.mesh);
}

}  // namespace zentol
