#include "analysis/symmetry_ops.h"

#include "analysis/jacobi.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <numeric>

namespace zentol::symmetry {

double norm(const Vec& a) { return std::sqrt(dot(a, a)); }

Vec unit(const Vec& a) {
    const double n = norm(a);
    return n > 0 ? scale(a, 1.0 / n) : a;
}

double distance_from_axis(const Vec& p, const Vec& u) { return norm(sub(p, scale(u, dot(p, u)))); }

Mat identity() { return {Vec{1, 0, 0}, Vec{0, 1, 0}, Vec{0, 0, 1}}; }

Mat transpose(const Mat& m) {
    Mat t{};
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c) t[c][r] = m[r][c];
    return t;
}

Mat multiply(const Mat& a, const Mat& b) {
    Mat p{};
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c) p[r][c] = a[r][0] * b[0][c] + a[r][1] * b[1][c] + a[r][2] * b[2][c];
    return p;
}

Vec apply(const Mat& m, const Vec& v) { return {dot(m[0], v), dot(m[1], v), dot(m[2], v)}; }

double determinant(const Mat& m) { return dot(m[0], cross(m[1], m[2])); }

Mat rotation(const Vec& axis, double angle) {
    const Vec u = unit(axis);
    const double c = std::cos(angle), s = std::sin(angle), t = 1 - c;
    return {Vec{c + t * u[0] * u[0], t * u[0] * u[1] - s * u[2], t * u[0] * u[2] + s * u[1]},
            Vec{t * u[1] * u[0] + s * u[2], c + t * u[1] * u[1], t * u[1] * u[2] - s * u[0]},
            Vec{t * u[2] * u[0] - s * u[1], t * u[2] * u[1] + s * u[0], c + t * u[2] * u[2]}};
}

Mat reflection(const Vec& normal) {
    const Vec n = unit(normal);
    Mat m = identity();
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c) m[r][c] -= 2 * n[r] * n[c];
    return m;
}

Mat improper_rotation(const Vec& axis, double angle) { return multiply(reflection(axis), rotation(axis, angle)); }

namespace {

}  // namespace

Eigen jacobi_eigen(Mat a) {
    Mat v = identity();
    const double size = std::fabs(a[0][0]) + std::fabs(a[1][1]) + std::fabs(a[2][2]);
    for (int sweep = 0; sweep < 60; ++sweep) {
        const double off = a[0][1] * a[0][1] + a[0][2] * a[0][2] + a[1][2] * a[1][2];
        if (off <= 1e-30 * (size * size) || off == 0) break;
        for (int p = 0; p < 2; ++p)
            for (int q = p + 1; q < 3; ++q)
                if (a[p][q] != 0) jacobi_rotate(a, v, p, q);
    }
    std::array<int, 3> order = {0, 1, 2};
    std::sort(order.begin(), order.end(), [&](int x, int y) { return a[x][x] < a[y][y]; });
    Eigen e;
    for (int k = 0; k < 3; ++k) {
        e.values[k] = a[order[k]][order[k]];
        for (int r = 0; r < 3; ++r) e.vectors[k][r] = v[r][order[k]];
    }
    return e;
}

Motion describe(const Mat& m) {
    Motion d;
    d.sign = determinant(m) < 0 ? -1 : 1;
    Mat q = m;
    if (d.sign < 0)
        for (auto& row : q) row = scale(row, -1);
    const double phi = std::acos(std::clamp((q[0][0] + q[1][1] + q[2][2] - 1) / 2, -1.0, 1.0));
    const Vec w = {q[2][1] - q[1][2], q[0][2] - q[2][0], q[1][0] - q[0][1]};
    if (std::sin(phi) > 1e-3) {
        d.axis = unit(w);
    } else if (phi > 1.0) {
        // A half turn: (q + 1) / 2 is the projector on the axis.
        int best = 0;
        for (int k = 1; k < 3; ++k)
            if (q[k][k] > q[best][best]) best = k;
        Vec row = q[best];
        row[best] += 1;
        d.axis = unit(row);
    }
    // -S(theta) is a proper turn by theta + pi about the same axis.
    d.angle = d.sign > 0 ? phi : std::numbers::pi - phi;
    return d;
}

int turn_order(double angle, int max_n) {
    const double turns = angle / (2 * std::numbers::pi);
    for (int n = 1; n <= max_n; ++n) {
        const double f = n * turns;
        if (std::fabs(f - std::round(f)) < 1e-3) return n;
    }
    return 0;
}

Frame make_frame(const std::vector<Vec>& pos, const std::vector<int>& kind) {
    Frame f{pos, kind, {}};
    for (std::size_t i = 0; i < kind.size(); ++i) {
        const auto k = static_cast<std::size_t>(kind[i]);
        if (f.members.size() <= k) f.members.resize(k + 1);
        f.members[k].push_back(static_cast<int>(i));
    }
    return f;
}

std::optional<Mat> fit_matrix(const std::vector<Vec>& pos, const std::vector<int>& perm, int sign) {
    // Least-squares orthogonal map x -> y from the decomposition of
    // H = sum y x^T, with the handedness forced on the weakest direction.
    Mat h{};
    for (std::size_t i = 0; i < pos.size(); ++i) {
        const Vec& x = pos[i];
        const Vec& y = pos[static_cast<std::size_t>(perm[i])];
        for (int r = 0; r < 3; ++r)
            for (int c = 0; c < 3; ++c) h[r][c] += y[r] * x[c];
    }
    const Eigen e = jacobi_eigen(multiply(transpose(h), h));
    if (!(e.values[2] > 0) || e.values[1] <= 1e-12 * e.values[2]) return std::nullopt;
    const Vec v1 = e.vectors[2], v2 = e.vectors[1], v3 = cross(v1, v2);
    const Vec u1 = unit(apply(h, v1));
    const Vec hv2 = apply(h, v2);
    const Vec u2 = unit(sub(hv2, scale(u1, dot(u1, hv2))));
    const Vec u3 = cross(u1, u2);
    Mat r{};
    for (int a = 0; a < 3; ++a)
        for (int b = 0; b < 3; ++b) r[a][b] = u1[a] * v1[b] + u2[a] * v2[b] + sign * u3[a] * v3[b];
    return r;
}

double mapping_deviation(const std::vector<Vec>& pos, const std::vector<int>& perm, const Mat& m) {
    double worst = 0;
    for (std::size_t i = 0; i < pos.size(); ++i)
        worst = std::max(worst, norm(sub(apply(m, pos[i]), pos[static_cast<std::size_t>(perm[i])])));
    return worst;
}

std::optional<Operation> test_operation(const Frame& f, const Mat& trial, double tol) {
    const std::size_t n = f.pos.size();
    Operation op;
    op.sign = determinant(trial) < 0 ? -1 : 1;
    op.perm.assign(n, -1);
    std::vector<char> used(n, 0);
    const double reach = 4 * tol * tol;   // pairing within twice the tolerance
    for (std::size_t i = 0; i < n; ++i) {
        const Vec image = apply(trial, f.pos[i]);
        int best = -1;
        double best_d2 = reach;
        for (int j : f.members[static_cast<std::size_t>(f.kind[i])]) {
            const Vec d = sub(image, f.pos[static_cast<std::size_t>(j)]);
            const double d2 = dot(d, d);
            if (d2 <= best_d2) best = j, best_d2 = d2;
        }
        if (best < 0 || used[static_cast<std::size_t>(best)]) return std::nullopt;
        used[static_cast<std::size_t>(best)] = 1;
        op.perm[i] = best;
    }
    auto m = fit_matrix(f.pos, op.perm, op.sign);
    if (!m) return std::nullopt;
    op.matrix = *m;
    op.deviation = mapping_deviation(f.pos, op.perm, op.matrix);
    if (op.deviation > tol) return std::nullopt;
    return op;
}

OperationGroup::OperationGroup(const std::vector<Vec>& pos, double tol, std::size_t max_order)
    : pos_(pos), tol_(tol), max_order_(max_order) {
    Operation e;
    e.perm.resize(pos.size());
    std::iota(e.perm.begin(), e.perm.end(), 0);
    keys_.insert({e.sign, e.perm});
    elements_.push_back(std::move(e));
}

bool OperationGroup::contains(const Operation& op) const { return keys_.count({op.sign, op.perm}) > 0; }

bool OperationGroup::extend(const Operation& op) {
    if (contains(op)) return true;
    const std::size_t old_size = elements_.size();
    auto restore = [&] {
        for (std::size_t k = old_size; k < elements_.size(); ++k) keys_.erase({elements_[k].sign, elements_[k].perm});
        elements_.resize(old_size);
        generators_.pop_back();
        return false;
    };
    generators_.push_back(op);
    std::vector<std::size_t> frontier(old_size);
    std::iota(frontier.begin(), frontier.end(), 0);
    while (!frontier.empty()) {
        std::vector<std::size_t> next;
        for (std::size_t h : frontier) {
            for (const Operation& g : generators_) {
                Operation c;
                c.sign = g.sign * elements_[h].sign;
                c.perm.resize(pos_.size());
                for (std::size_t i = 0; i < pos_.size(); ++i)
                    c.perm[i] = g.perm[static_cast<std::size_t>(elements_[h].perm[i])];
                if (contains(c)) continue;
                auto m = fit_matrix(pos_, c.perm, c.sign);
                if (!m || elements_.size() >= max_order_) return restore();
                c.matrix = *m;
                c.deviation = mapping_deviation(pos_, c.perm, c.matrix);
                if (c.deviation > tol_) return restore();
                keys_.insert({c.sign, c.perm});
                next.push_back(elements_.size());
                elements_.push_back(std::move(c));
            }
        }
        frontier = std::move(next);
    }
    return true;
}

}  // namespace zentol::symmetry
