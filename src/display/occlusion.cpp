#include "display/occlusion.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "display/projection.h"

namespace zentol {

namespace {

constexpr float kNone = std::numeric_limits<float>::infinity();
// A primitive counts as hidden only this far (relatively) behind what
// hides it: far more than the depth buffer's and the shaders' rounding.
constexpr float kMargin = 1e-4f;
// Nearer than this a primitive reaches the eye and is drawn over the whole
// view.
constexpr float kAtEye = 1e-3f;

// How far in t the projection of anything within r of a point at eye
// distance d strays from the point's own projection t, for any part of it
// no nearer than `nearest`: |Δt| <= r (1 + |t|) / nearest.
float spread(float r, float t_length, float nearest) { return r * (1.0f + t_length) / nearest; }

// Squared distance from (x, y) to the box [x0, x1] x [y0, y1].
float box_distance2(float x, float y, float x0, float x1, float y0, float y1) {
    const float dx = std::max({x0 - x, 0.0f, x - x1}), dy = std::max({y0 - y, 0.0f, y - y1});
    return dx * dx + dy * dy;
}

// Squared distance from (x, y) to the segment a-b.
float segment_distance2(float x, float y, float ax, float ay, float bx, float by) {
    const float ux = bx - ax, uy = by - ay, len2 = ux * ux + uy * uy;
    float f = len2 > 0 ? ((x - ax) * ux + (y - ay) * uy) / len2 : 0.0f;
    f = std::clamp(f, 0.0f, 1.0f);
    const float dx = x - (ax + f * ux), dy = y - (ay + f * uy);
    return dx * dx + dy * dy;
}

}  // namespace

void OcclusionGrid::start(const ScreenCamera& camera) {
    occluders_ = false;
    const bool same = camera.width == camera_.width && camera.height == camera_.height && camera.kx == camera_.kx &&
                      camera.ky == camera_.ky && camera.ox == camera_.ox && camera.oy == camera_.oy;
    camera_ = camera;
    cols_ = std::max(0, (camera.width + kCell - 1) / kCell);
    rows_ = std::max(0, (camera.height + kCell - 1) / kCell);
    far_.assign(static_cast<std::size_t>(cols_) * rows_, kNone);
    if (same && !corner_tx_.empty()) return;
    corner_tx_.resize(static_cast<std::size_t>(cols_) + 1);
    corner_ty_.resize(static_cast<std::size_t>(rows_) + 1);
    // A pixel position p (not a centre) is at ndc 2 p / size - 1.
    for (int x = 0; x <= cols_; ++x) {
        const float ndc = 2.0f * static_cast<float>(std::min(x * kCell, camera.width)) / camera.width - 1.0f;
        corner_tx_[static_cast<std::size_t>(x)] = (ndc - camera.ox) / camera.kx;
    }
    for (int y = 0; y <= rows_; ++y) {
        const float ndc = 2.0f * static_cast<float>(std::min(y * kCell, camera.height)) / camera.height - 1.0f;
        corner_ty_[static_cast<std::size_t>(y)] = (ndc - camera.oy) / camera.ky;
    }
    inverse_length_.resize(corner_tx_.size() * corner_ty_.size());
    for (std::size_t y = 0; y < corner_ty_.size(); ++y)
        for (std::size_t x = 0; x < corner_tx_.size(); ++x)
            inverse_length_[y * corner_tx_.size() + x] =
                1.0f / std::sqrt(corner_tx_[x] * corner_tx_[x] + corner_ty_[y] * corner_ty_[y] + 1.0f);
    front_.resize(inverse_length_.size());
}

OcclusionGrid::Cells OcclusionGrid::cells_of(float tx0, float ty0, float tx1, float ty1) const {
    Cells c;
    if (cols_ == 0 || rows_ == 0) return c;
    const float px0 = (camera_.kx * tx0 + camera_.ox + 1.0f) * 0.5f * camera_.width;
    const float px1 = (camera_.kx * tx1 + camera_.ox + 1.0f) * 0.5f * camera_.width;
    const float py0 = (camera_.ky * ty0 + camera_.oy + 1.0f) * 0.5f * camera_.height;
    const float py1 = (camera_.ky * ty1 + camera_.oy + 1.0f) * 0.5f * camera_.height;
    if (!(px0 <= px1 && py0 <= py1)) return {0, 0, cols_ - 1, rows_ - 1};   // not a number: everything
    if (px1 < 0 || py1 < 0 || px0 > camera_.width || py0 > camera_.height) return c;
    auto cell = [](float p, int n) { return std::clamp(static_cast<int>(std::floor(p / kCell)), 0, n - 1); };
    return {cell(px0, cols_), cell(py0, rows_), cell(px1, cols_), cell(py1, rows_)};
}

bool OcclusionGrid::cell_hidden(int x, int y, float nearest) const {
    const float far = far_[static_cast<std::size_t>(y) * cols_ + x];
    return far + kMargin * far < nearest;
}

bool OcclusionGrid::sphere_hidden(const float c[3], float r) const {
    const float nearest = -c[2] - r;
    if (!(nearest > kAtEye)) return false;
    const float tx = c[0] / -c[2], ty = c[1] / -c[2];
    const float rho = spread(r, std::hypot(tx, ty), nearest);
    const Cells cells = cells_of(tx - rho, ty - rho, tx + rho, ty + rho);
    if (!occluders_ || cells.empty()) return cells.empty();
    for (int y = cells.y0; y <= cells.y1; ++y)
        for (int x = cells.x0; x <= cells.x1; ++x) {
            if (box_distance2(tx, ty, corner_tx(x), corner_tx(x + 1), corner_ty(y), corner_ty(y + 1)) > rho * rho)
                continue;   // the sphere's outline does not reach this cell
            if (!cell_hidden(x, y, nearest)) return false;
        }
    return true;
}

bool OcclusionGrid::stick_hidden(const float a[3], const float b[3], float r) const {
    const float nearest = std::min(-a[2], -b[2]) - r;
    if (!(nearest > kAtEye)) return false;
    const float ax = a[0] / -a[2], ay = a[1] / -a[2], bx = b[0] / -b[2], by = b[1] / -b[2];
    const float rho = spread(r, std::max(std::hypot(ax, ay), std::hypot(bx, by)), nearest);
    const Cells cells =
        cells_of(std::min(ax, bx) - rho, std::min(ay, by) - rho, std::max(ax, bx) + rho, std::max(ay, by) + rho);
    if (!occluders_ || cells.empty()) return cells.empty();
    for (int y = cells.y0; y <= cells.y1; ++y)
        for (int x = cells.x0; x <= cells.x1; ++x) {
            // A cell whose centre is farther from the axis than rho plus its
            // half diagonal lies wholly outside the stick's outline.
            const float x0 = corner_tx(x), x1 = corner_tx(x + 1), y0 = corner_ty(y), y1 = corner_ty(y + 1);
            const float reach = rho + 0.5f * std::hypot(x1 - x0, y1 - y0);
            if (segment_distance2(0.5f * (x0 + x1), 0.5f * (y0 + y1), ax, ay, bx, by) > reach * reach) continue;
            if (!cell_hidden(x, y, nearest)) return false;
        }
    return true;
}

// A cell is hidden behind the sphere when all four of its corners' rays
// meet the sphere: its outline is convex, so then every ray through the
// cell does. How far the front lies is largest at a corner too: in the
// coordinates (t, 1 / distance) the sphere stays a convex body (the map is
// projective and the sphere lies wholly in front of the eye), so 1 / the
// front's distance is concave over the outline and least at a corner.
void OcclusionGrid::add_sphere(const float c[3], float r) {
    const float d = -c[2];
    if (!(d - r > kNear * (1 + kMargin) && d + r < kFar * (1 - kMargin))) return;
    // A sphere of less than four cells across the picture covers few whole
    // cells: not worth the rays.
    if (r / d * camera_.kx * camera_.width < 4 * kCell) return;
    const float tx = c[0] / d, ty = c[1] / d;
    const float rho = spread(r, std::hypot(tx, ty), d - r);
    if (!std::isfinite(tx + ty + rho)) return;
    const Cells cells = cells_of(tx - rho, ty - rho, tx + rho, ty + rho);
    if (cells.empty()) return;
    occluders_ = true;
    const int width = cells.x1 - cells.x0 + 2;
    for (int y = cells.y0; y <= cells.y1 + 1; ++y)
        for (int x = cells.x0; x <= cells.x1 + 1; ++x) {
            // The ray s (t, -1) (s the eye distance) passes the centre
            // nearest at s0, q from the centre; it meets the sphere
            // sqrt(r^2 - q^2) (in length) before that. Small differences,
            // as the shaders take them.
            const float dx = corner_tx(x), dy = corner_ty(y);
            const float il = inverse_length_[static_cast<std::size_t>(y) * corner_tx_.size() + x];
            const float s0 = (dx * c[0] + dy * c[1] - c[2]) * il * il;
            const float qx = s0 * dx - c[0], qy = s0 * dy - c[1], qz = -s0 - c[2];
            const float h = r * r - (qx * qx + qy * qy + qz * qz);
            front_[static_cast<std::size_t>(y - cells.y0) * width + (x - cells.x0)] =
                h < 0 ? kNone : s0 - std::sqrt(h) * il;
        }
    for (int y = cells.y0; y <= cells.y1; ++y)
        for (int x = cells.x0; x <= cells.x1; ++x) {
            const float* row = front_.data() + static_cast<std::size_t>(y - cells.y0) * width + (x - cells.x0);
            const float deepest = std::max({row[0], row[1], row[width], row[width + 1]});
            float& far = far_[static_cast<std::size_t>(y) * cols_ + x];
            far = std::min(far, deepest);
        }
}

}  // namespace zentol
