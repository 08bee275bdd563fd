#include "display/projection.h"

#include <algorithm>
#include <cmath>

namespace zentol {

namespace {

Matrix4 multiply(const Matrix4& a, const Matrix4& b) {
    Matrix4 r{};
    for (int col = 0; col < 4; ++col)
        for (int row = 0; row < 4; ++row) {
            double sum = 0;
            for (int k = 0; k < 4; ++k) sum += a[k * 4 + row] * b[col * 4 + k];
            r[col * 4 + row] = sum;
        }
    return r;
}

}  // namespace

Matrix4 perspective_matrix(double aspect) {
    double f = 1.0 / std::tan(kFieldOfView * M_PI / 360.0);
    if (!(aspect > 0) || !std::isfinite(aspect)) aspect = 1.0;
    Matrix4 m{};
    m[0] = aspect >= 1 ? f / aspect : f;
    m[5] = aspect >= 1 ? f : f * aspect;
    m[10] = (kFar + kNear) / (kNear - kFar);
    m[11] = -1.0;
    m[14] = 2.0 * kFar * kNear / (kNear - kFar);
    return m;
}

Matrix4 look_at_matrix() {
    // Forward (0,0,-1); side = forward x up(0,1,1) = (1,0,0); true up = (0,1,0).
    const double eye[3] = {0, 0, kEyeDistance};
    double f[3] = {0, 0, -1};
    double up[3] = {0, 1, 1};
    double s[3] = {f[1] * up[2] - f[2] * up[1], f[2] * up[0] - f[0] * up[2], f[0] * up[1] - f[1] * up[0]};
    double sl = std::sqrt(s[0] * s[0] + s[1] * s[1] + s[2] * s[2]);
    for (double& v : s) v /= sl;
    double u[3] = {s[1] * f[2] - s[2] * f[1], s[2] * f[0] - s[0] * f[2], s[0] * f[1] - s[1] * f[0]};
    Matrix4 m{};
    m[0] = s[0], m[4] = s[1], m[8] = s[2];
    m[1] = u[0], m[5] = u[1], m[9] = u[2];
    m[2] = -f[0], m[6] = -f[1], m[10] = -f[2];
    m[15] = 1;
    Matrix4 t{};
    t[0] = t[5] = t[10] = t[15] = 1;
    t[12] = -eye[0], t[13] = -eye[1], t[14] = -eye[2];
    return multiply(m, t);
}

Matrix4 camera_matrix(const Viewport& vp) {
    const double aspect = static_cast<double>(std::max(vp.width, 1)) / std::max(vp.height, 1);
    return multiply(perspective_matrix(aspect), look_at_matrix());
}

std::pair<float, float> project_point(double x, double y, double z, const Matrix4& mvp) {
    double in[4] = {x, y, z, 1};
    double out[4] = {0, 0, 0, 0};
    for (int row = 0; row < 4; ++row)
        for (int k = 0; k < 4; ++k) out[row] += mvp[k * 4 + row] * in[k];
    if (out[3] == 0) return {0.5f, 0.5f};
    // Normalised device coordinates to fractions of the viewport.
    return {static_cast<float>((out[0] / out[3] + 1) / 2), static_cast<float>((out[1] / out[3] + 1) / 2)};
}

std::pair<float, float> project_point(double x, double y, double z, const Viewport& vp) {
    return project_point(x, y, z, camera_matrix(vp));
}

}  // namespace zentol
