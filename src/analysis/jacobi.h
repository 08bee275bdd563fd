// One Jacobi rotation of a small symmetric matrix, shared by the
// eigen-solvers of the inertia tensor and of the best-rotation quaternion.
#pragma once

#include <array>
#include <cmath>
#include <cstddef>

namespace zentol {

// Zeroes a[p][q] (a[p][q] != 0) by rotating rows and columns p and q; v
// collects the rotations, so its columns end as the eigenvectors.
template <std::size_t N>
void jacobi_rotate(std::array<std::array<double, N>, N>& a, std::array<std::array<double, N>, N>& v, int p, int q) {
    const double theta = (a[q][q] - a[p][p]) / (2 * a[p][q]);
    const double t = (theta >= 0 ? 1.0 : -1.0) / (std::fabs(theta) + std::sqrt(theta * theta + 1));
    const double c = 1 / std::sqrt(t * t + 1), s = t * c;
    for (std::size_t k = 0; k < N; ++k) {
        const double kp = a[k][p], kq = a[k][q];
        a[k][p] = c * kp - s * kq;
        a[k][q] = s * kp + c * kq;
    }
    for (std::size_t k = 0; k < N; ++k) {
        const double pk = a[p][k], qk = a[q][k];
        a[p][k] = c * pk - s * qk;
        a[q][k] = s * pk + c * qk;
    }
    for (std::size_t k = 0; k < N; ++k) {
        const double kp = v[k][p], kq = v[k][q];
        v[k][p] = c * kp - s * kq;
        v[k][q] = s * kp + c * kq;
    }
}

}  // namespace zentol
