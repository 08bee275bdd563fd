#include "spectra/frame_alignment.h"

#include <cmath>

#include "analysis/jacobi.h"

namespace zentol {

namespace {

using Matrix4 = std::array<std::array<double, 4>, 4>;

Point3 mean(const std::vector<Point3>& p) {
    Point3 m{0, 0, 0};
    for (const Point3& q : p)
        for (int c = 0; c < 3; ++c) m[c] += q[c];
    for (double& v : m) v /= static_cast<double>(p.size());
    return m;
}

// Cyclic Jacobi rotations on a symmetric 4x4 matrix: its eigenvalues end
// on the diagonal, the eigenvectors in the columns of v.
void jacobi(Matrix4& a, Matrix4& v) {
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j) v[i][j] = i == j ? 1.0 : 0.0;
    for (int sweep = 0; sweep < 50; ++sweep) {
        double off = 0;
        for (int p = 0; p < 4; ++p)
            for (int q = p + 1; q < 4; ++q) off += a[p][q] * a[p][q];
        if (off < 1e-24) return;
        for (int p = 0; p < 4; ++p)
            for (int q = p + 1; q < 4; ++q)
                if (std::fabs(a[p][q]) >= 1e-300) jacobi_rotate(a, v, p, q);
    }
}

}  // namespace

Matrix3 best_rotation(const std::vector<Point3>& from, const std::vector<Point3>& to) {
    Matrix3 r{{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
    if (from.size() < 2 || from.size() != to.size()) return r;
    const Point3 mf = mean(from), mt = mean(to);
    double s[3][3] = {};
    for (std::size_t i = 0; i < from.size(); ++i)
        for (int a = 0; a < 3; ++a)
            for (int b = 0; b < 3; ++b) s[a][b] += (from[i][a] - mf[a]) * (to[i][b] - mt[b]);
    Matrix4 n{{{s[0][0] + s[1][1] + s[2][2], s[1][2] - s[2][1], s[2][0] - s[0][2], s[0][1] - s[1][0]},
               {s[1][2] - s[2][1], s[0][0] - s[1][1] - s[2][2], s[0][1] + s[1][0], s[2][0] + s[0][2]},
               {s[2][0] - s[0][2], s[0][1] + s[1][0], -s[0][0] + s[1][1] - s[2][2], s[1][2] + s[2][1]},
               {s[0][1] - s[1][0], s[2][0] + s[0][2], s[1][2] + s[2][1], -s[0][0] - s[1][1] + s[2][2]}}};
    Matrix4 v{};
    jacobi(n, v);
    int best = 0;
    for (int k = 1; k < 4; ++k)
        if (n[k][k] > n[best][best]) best = k;
    const double q0 = v[0][best], q1 = v[1][best], q2 = v[2][best], q3 = v[3][best];
    r = {{{q0 * q0 + q1 * q1 - q2 * q2 - q3 * q3, 2 * (q1 * q2 - q0 * q3), 2 * (q1 * q3 + q0 * q2)},
          {2 * (q1 * q2 + q0 * q3), q0 * q0 - q1 * q1 + q2 * q2 - q3 * q3, 2 * (q2 * q3 - q0 * q1)},
          {2 * (q1 * q3 - q0 * q2), 2 * (q2 * q3 + q0 * q1), q0 * q0 - q1 * q1 - q2 * q2 + q3 * q3}}};
    return r;
}

Point3 rotate(const Matrix3& r, const Point3& p) {
    return {r[0][0] * p[0] + r[0][1] * p[1] + r[0][2] * p[2], r[1][0] * p[0] + r[1][1] * p[1] + r[1][2] * p[2],
            r[2][0] * p[0] + r[2][1] * p[1] + r[2][2] * p[2]};
}

}  // namespace zentol
