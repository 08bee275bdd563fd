#include "analysis/point_group.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <numbers>
#include <numeric>
#include <unordered_set>

namespace zentol {

using symmetry::Eigen;
using symmetry::Frame;
using symmetry::Mat;
using symmetry::Operation;
using symmetry::OperationGroup;
using symmetry::Vec;

namespace {

constexpr double kPi = std::numbers::pi;
constexpr int kLargestAxisOrder = 60;

struct Prepared {
    Frame frame;
    std::vector<double> mass;
    Vec centre{};
};

Prepared prepare(const std::vector<SymAtom>& atoms) {
    std::map<std::string, int> kinds;
    std::vector<int> kind;
    std::vector<Vec> pos;
    Prepared p;
    double total = 0;
    for (const SymAtom& a : atoms) {
        kind.push_back(kinds.emplace(a.element, static_cast<int>(kinds.size())).first->second);
        p.mass.push_back(atomic_mass(a.element));
        p.centre = symmetry::add(p.centre, symmetry::scale(a.pos, p.mass.back()));
        total += p.mass.back();
    }
    if (total > 0) p.centre = symmetry::scale(p.centre, 1 / total);
    for (const SymAtom& a : atoms) pos.push_back(symmetry::sub(a.pos, p.centre));
    p.frame = symmetry::make_frame(pos, kind);
    return p;
}

Eigen principal_axes(const std::vector<Vec>& pos, const std::vector<double>& mass) {
    Mat t{};
    for (std::size_t i = 0; i < pos.size(); ++i) {
        const Vec& r = pos[i];
        const double r2 = symmetry::dot(r, r);
        for (int a = 0; a < 3; ++a)
            for (int b = 0; b < 3; ++b) t[a][b] += mass[i] * ((a == b ? r2 : 0) - r[a] * r[b]);
    }
    return symmetry::jacobi_eigen(t);
}

// Unit directions, u and -u counted once, near-repeats dropped by a grid.
class DirectionSet {
public:
    void add(const Vec& v) {
        const double n = symmetry::norm(v);
        if (n < 1e-6) return;
        Vec u = symmetry::scale(v, 1 / n);
        for (double c : u) {
            if (std::fabs(c) < 1e-9) continue;
            if (c < 0) u = symmetry::scale(u, -1);
            break;
        }
        long long key = 0;
        for (double c : u) key = key * 4003 + std::llround(c * 2000) + 2001;
        if (seen_.insert(key).second) dirs_.push_back(u);
    }
    const std::vector<Vec>& list() const { return dirs_; }

private:
    std::vector<Vec> dirs_;
    std::unordered_set<long long> seen_;
};

// Atoms of one element at one distance from the centre: every symmetry
// operation maps such a set onto itself. Atoms at the centre are left out.
std::vector<std::vector<int>> distance_classes(const Frame& f, double tol) {
    std::vector<std::vector<int>> classes;
    for (const auto& members : f.members) {
        std::vector<std::pair<double, int>> by_distance;
        for (int i : members) {
            const double r = symmetry::norm(f.pos[static_cast<std::size_t>(i)]);
            if (r > tol / 2) by_distance.push_back({r, i});
        }
        std::sort(by_distance.begin(), by_distance.end());
        for (std::size_t k = 0; k < by_distance.size(); ++k) {
            if (k == 0 || by_distance[k].first - by_distance[k - 1].first > tol) classes.emplace_back();
            classes.back().push_back(by_distance[k].second);
        }
    }
    return classes;
}

bool collinear(const Frame& f, const std::vector<int>& cls, double tol) {
    const Vec u = symmetry::unit(f.pos[static_cast<std::size_t>(cls[0])]);
    for (int i : cls)
        if (symmetry::distance_from_axis(f.pos[static_cast<std::size_t>(i)], u) > tol / 2) return false;
    return true;
}

// With every set on a line through the centre, the elements are those lines
// and the normals to pairs of them.
void add_line_directions(const Frame& f, const std::vector<std::vector<int>>& classes, DirectionSet& out) {
    for (std::size_t a = 0; a < classes.size(); ++a) {
        const Vec& pa = f.pos[static_cast<std::size_t>(classes[a][0])];
        out.add(pa);
        for (std::size_t b = a + 1; b < classes.size(); ++b)
            out.add(symmetry::cross(pa, f.pos[static_cast<std::size_t>(classes[b][0])]));
    }
}

const std::vector<int>* smallest_class(const Frame& f, const std::vector<std::vector<int>>& classes, double tol,
                                       bool single_will_do) {
    const std::vector<int>* best = nullptr;
    for (const auto& cls : classes) {
        const bool usable = (single_will_do && cls.size() == 1) || (cls.size() > 1 && !collinear(f, cls, tol));
        if (usable && (!best || cls.size() < best->size())) best = &cls;
    }
    return best;
}

// A rotation axis of the molecule passes through an atom of the set, through
// the midpoint of two of them, along the cross product of two (a half turn
// swapping opposite atoms) or along the normal of the polygon it moves the
// first atom around.
DirectionSet axis_candidates(const Frame& f, const std::vector<std::vector<int>>& classes, double tol) {
    DirectionSet out;
    const std::vector<int>* key = smallest_class(f, classes, tol, true);
    if (!key) {
        add_line_directions(f, classes, out);
        return out;
    }
    auto at = [&](std::size_t k) { return f.pos[static_cast<std::size_t>((*key)[k])]; };
    const std::size_t n = key->size();
    for (std::size_t a = 0; a < n; ++a) {
        out.add(at(a));
        for (std::size_t b = a + 1; b < n; ++b) {
            out.add(symmetry::add(at(a), at(b)));
            out.add(symmetry::cross(at(a), at(b)));
            if (a > 0) out.add(symmetry::cross(symmetry::sub(at(a), at(0)), symmetry::sub(at(b), at(0))));
        }
    }
    return out;
}

// A mirror plane swaps two atoms of the set (normal along their difference)
// or holds them both (normal along their cross product).
void add_normal_candidates(const Frame& f, const std::vector<std::vector<int>>& classes, double tol,
                           DirectionSet& out) {
    const std::vector<int>* key = smallest_class(f, classes, tol, false);
    if (!key) return add_line_directions(f, classes, out);
    for (std::size_t a = 0; a < key->size(); ++a)
        for (std::size_t b = a + 1; b < key->size(); ++b) {
            const Vec& pa = f.pos[static_cast<std::size_t>((*key)[a])];
            const Vec& pb = f.pos[static_cast<std::size_t>((*key)[b])];
            out.add(symmetry::sub(pa, pb));
            out.add(symmetry::cross(pa, pb));
        }
}

// An n-fold axis moves the atoms off it in n-cycles, so n divides the count
// of every element's atoms off the axis.
int off_axis_gcd(const Frame& f, const Vec& u, double tol) {
    int g = 0;
    for (const auto& members : f.members) {
        int count = 0;
        for (int i : members)
            if (symmetry::distance_from_axis(f.pos[static_cast<std::size_t>(i)], u) > tol / 2) ++count;
        g = std::gcd(g, count);
    }
    return g;
}

void test_axis(const Frame& f, const Vec& u, double tol, std::vector<Operation>& found) {
    const int g = off_axis_gcd(f, u, tol);
    for (int n = std::min(g, kLargestAxisOrder); n >= 2; --n) {
        if (g % n != 0) continue;
        auto op = symmetry::test_operation(f, symmetry::rotation(u, 2 * kPi / n), tol);
        if (!op) continue;
        found.push_back(std::move(*op));
        if (auto s = symmetry::test_operation(f, symmetry::improper_rotation(u, kPi / n), tol))
            found.push_back(std::move(*s));
        return;
    }
}

std::vector<Operation> find_operations(const Frame& f, const Eigen& inertia, double tol) {
    const auto classes = distance_classes(f, tol);
    DirectionSet axes = axis_candidates(f, classes, tol);
    for (const Vec& e : inertia.vectors) axes.add(e);
    std::vector<Operation> found;
    for (const Vec& u : axes.list()) test_axis(f, u, tol, found);

    DirectionSet normals;
    for (const Vec& e : inertia.vectors) normals.add(e);
    for (const Operation& op : found) normals.add(symmetry::describe(op.matrix).axis);
    add_normal_candidates(f, classes, tol, normals);
    for (const Vec& w : normals.list())
        if (auto op = symmetry::test_operation(f, symmetry::reflection(w), tol)) found.push_back(std::move(*op));
    Mat minus = symmetry::identity();
    for (auto& row : minus) row = symmetry::scale(row, -1);
    if (auto op = symmetry::test_operation(f, minus, tol)) found.push_back(std::move(*op));

    std::stable_sort(found.begin(), found.end(),
                     [](const Operation& a, const Operation& b) { return a.deviation < b.deviation; });
    return found;
}

// Each atom averaged over where the operations bring its partners from; the
// matrices are refitted as the shape settles.
std::vector<Vec> symmetrise(const std::vector<Vec>& pos, const std::vector<Operation>& group) {
    std::vector<Vec> x = pos;
    const double share = 1.0 / static_cast<double>(group.size());
    for (int pass = 0; pass < 200; ++pass) {
        std::vector<Vec> next(x.size(), Vec{});
        for (const Operation& g : group) {
            const Mat back = symmetry::transpose(symmetry::fit_matrix(x, g.perm, g.sign).value_or(g.matrix));
            for (std::size_t i = 0; i < x.size(); ++i) {
                const Vec& partner = x[static_cast<std::size_t>(g.perm[i])];
                next[i] = symmetry::add(next[i], symmetry::scale(symmetry::apply(back, partner), share));
            }
        }
        double change = 0;
        for (std::size_t i = 0; i < x.size(); ++i) change = std::max(change, symmetry::norm(symmetry::sub(next[i], x[i])));
        x = std::move(next);
        if (change < 1e-12) break;
    }
    return x;
}

// ---- naming the group from the elements its operations show

struct AxisInfo {
    Vec dir{};
    int rotation = 1;   // highest n of Cn
    int improper = 0;   // highest n of Sn, n >= 3
    bool plane = false; // a mirror plane with this normal
    int count = 0;      // operations about this direction
};

struct Census {
    std::vector<AxisInfo> axes;
    bool inversion = false;
};

AxisInfo& axis_for(Census& c, const Vec& dir) {
    for (AxisInfo& a : c.axes)
        if (std::fabs(symmetry::dot(a.dir, dir)) > 1 - 1e-6) return a;
    c.axes.push_back(AxisInfo{symmetry::unit(dir)});
    return c.axes.back();
}

Census take_census(const std::vector<Mat>& matrices) {
    Census c;
    constexpr double eps = 1e-4;
    for (const Mat& m : matrices) {
        const symmetry::Motion d = symmetry::describe(m);
        if (d.sign > 0 && d.angle < eps) continue;   // identity
        if (d.sign < 0 && d.angle > kPi - eps) {
            c.inversion = true;
            continue;
        }
        AxisInfo& a = axis_for(c, d.axis);
        ++a.count;
        const int n = symmetry::turn_order(d.angle);
        if (d.sign > 0) a.rotation = std::max(a.rotation, n);
        else if (d.angle < eps) a.plane = true;
        else a.improper = std::max(a.improper, n);
    }
    return c;
}

bool perpendicular(const Vec& a, const Vec& b) { return std::fabs(symmetry::dot(a, b)) < 1e-3; }

// The highest axis; among equals the one most operations turn about, then
// the one nearest the axis of the largest moment.
std::size_t main_axis(const Census& c, const Vec& largest_moment_axis) {
    auto better = [&](const AxisInfo& a, const AxisInfo& b) {
        if (a.rotation != b.rotation) return a.rotation > b.rotation;
        if (a.count != b.count) return a.count > b.count;
        return std::fabs(symmetry::dot(a.dir, largest_moment_axis)) >
               std::fabs(symmetry::dot(b.dir, largest_moment_axis)) + 1e-6;
    };
    std::size_t best = 0;
    for (std::size_t k = 1; k < c.axes.size(); ++k)
        if (better(c.axes[k], c.axes[best])) best = k;
    return best;
}

const AxisInfo* perpendicular_two_fold(const Census& c, const Vec& z) {
    for (const AxisInfo& a : c.axes)
        if (a.rotation % 2 == 0 && perpendicular(a.dir, z)) return &a;
    return nullptr;
}

std::string cubic_name(const Census& c) {
    bool five = false, four = false, plane = false;
    for (const AxisInfo& a : c.axes) {
        five = five || a.rotation == 5;
        four = four || a.rotation == 4;
        plane = plane || a.plane;
    }
    if (five) return c.inversion ? "Ih" : "I";
    if (four) return c.inversion ? "Oh" : "O";
    return c.inversion ? "Th" : plane ? "Td" : "T";
}

bool is_cubic(const Census& c) {
    return std::count_if(c.axes.begin(), c.axes.end(), [](const AxisInfo& a) { return a.rotation >= 3; }) >= 2;
}

std::string group_name(const Census& c, const Vec& largest_moment_axis) {
    if (is_cubic(c)) return cubic_name(c);
    const bool any_plane = std::any_of(c.axes.begin(), c.axes.end(), [](const AxisInfo& a) { return a.plane; });
    if (c.axes.empty() || c.axes[main_axis(c, largest_moment_axis)].rotation < 2)
        return any_plane ? "Cs" : c.inversion ? "Ci" : "C1";
    const AxisInfo& main = c.axes[main_axis(c, largest_moment_axis)];
    const std::string n = std::to_string(main.rotation);
    if (perpendicular_two_fold(c, main.dir)) return "D" + n + (main.plane ? "h" : any_plane ? "d" : "");
    if (main.plane) return "C" + n + "h";
    if (any_plane) return "C" + n + "v";
    if (main.improper > 0 || c.inversion) return "S" + std::to_string(2 * main.rotation);
    return "C" + n;
}

// ---- the aligned frame: main axis along z, a two-fold axis or a mirror
// plane along x where there is one, otherwise the principal axes.

bool cubic_frame(const Census& c, const std::string& name, Vec& z, Vec& x) {
    const int order = name[0] == 'O' ? 4 : 2;
    for (const AxisInfo& a : c.axes) {
        if (a.rotation != order) continue;
        for (const AxisInfo& b : c.axes)
            if (b.rotation == order && perpendicular(a.dir, b.dir)) {
                z = a.dir, x = b.dir;
                return true;
            }
    }
    return false;
}

bool symmetry_frame(const Census& c, const Vec& largest_moment_axis, Vec& z, Vec& x) {
    if (c.axes.empty()) return false;
    const AxisInfo& main = c.axes[main_axis(c, largest_moment_axis)];
    if (main.rotation >= 2) {
        z = main.dir;
        if (const AxisInfo* c2 = perpendicular_two_fold(c, z)) {
            x = c2->dir;
            return true;
        }
        for (const AxisInfo& a : c.axes)
            if (a.plane && perpendicular(a.dir, z)) {
                x = symmetry::cross(z, a.dir);
                return true;
            }
        return false;
    }
    for (const AxisInfo& a : c.axes)
        if (a.plane) {
            z = a.dir;
            return false;
        }
    return false;
}

Mat aligned_axes(const Census& c, const std::string& name, const Eigen& inertia) {
    Vec z = inertia.vectors[2], x{};
    bool have_x = is_cubic(c) ? cubic_frame(c, name, z, x) : symmetry_frame(c, inertia.vectors[2], z, x);
    if (!have_x) {
        // The principal axis most nearly perpendicular to z.
        std::size_t pick = 0;
        for (std::size_t k = 1; k < 3; ++k)
            if (std::fabs(symmetry::dot(inertia.vectors[k], z)) < std::fabs(symmetry::dot(inertia.vectors[pick], z)) - 1e-9)
                pick = k;
        x = inertia.vectors[pick];
    }
    z = symmetry::unit(z);
    x = symmetry::unit(symmetry::sub(x, symmetry::scale(z, symmetry::dot(x, z))));
    return {x, symmetry::cross(z, x), z};
}

std::vector<SymmetryElement> list_elements(const Census& c, const Mat& axes) {
    using Kind = SymmetryElement::Kind;
    std::vector<SymmetryElement> out{{Kind::identity, 1, {}}};
    std::vector<SymmetryElement> rotations, impropers, planes;
    for (const AxisInfo& a : c.axes) {
        // Shown pointing up: z positive, else y, else x.
        Vec d = symmetry::apply(axes, a.dir);
        for (int k = 2; k >= 0; --k) {
            if (std::fabs(d[static_cast<std::size_t>(k)]) < 1e-9) continue;
            if (d[static_cast<std::size_t>(k)] < 0) d = symmetry::scale(d, -1);
            break;
        }
        if (a.rotation >= 2) rotations.push_back({Kind::rotation, a.rotation, d});
        if (a.improper >= 3) impropers.push_back({Kind::improper, a.improper, d});
        if (a.plane) planes.push_back({Kind::reflection, 1, d});
    }
    std::stable_sort(rotations.begin(), rotations.end(), [](const auto& a, const auto& b) { return a.order > b.order; });
    std::stable_sort(impropers.begin(), impropers.end(), [](const auto& a, const auto& b) { return a.order > b.order; });
    out.insert(out.end(), rotations.begin(), rotations.end());
    out.insert(out.end(), impropers.begin(), impropers.end());
    out.insert(out.end(), planes.begin(), planes.end());
    if (c.inversion) out.push_back({Kind::inversion, 2, {}});
    return out;
}

std::vector<std::vector<int>> equivalent_sets(const std::vector<Operation>& group, std::size_t natoms) {
    std::vector<std::vector<int>> sets;
    std::vector<char> seen(natoms, 0);
    for (std::size_t i = 0; i < natoms; ++i) {
        if (seen[i]) continue;
        std::vector<int> set;
        for (const Operation& g : group) set.push_back(g.perm[i]);
        std::sort(set.begin(), set.end());
        set.erase(std::unique(set.begin(), set.end()), set.end());
        for (int j : set) seen[static_cast<std::size_t>(j)] = 1;
        sets.push_back(std::move(set));
    }
    return sets;
}

// ---- molecules on a line, and a lone point

Mat frame_about(const Vec& z) {
    Vec e{1, 0, 0};
    if (std::fabs(z[0]) > std::fabs(z[1]) && std::fabs(z[0]) > std::fabs(z[2])) e = {0, 1, 0};
    const Vec x = symmetry::unit(symmetry::sub(e, symmetry::scale(z, symmetry::dot(e, z))));
    return {x, symmetry::cross(z, x), z};
}

void linear_group(const Frame& f, const Vec& u, PointGroupResult& r) {
    using Kind = SymmetryElement::Kind;
    const std::size_t n = f.pos.size();
    std::vector<double> along(n);
    for (std::size_t i = 0; i < n; ++i) along[i] = symmetry::dot(f.pos[i], u);
    // Inversion pairs: the atom of the same element nearest the mirrored place.
    std::vector<int> partner(n, -1);
    bool centric = true;
    for (std::size_t i = 0; i < n && centric; ++i) {
        double best = r.tolerance;
        for (int j : f.members[static_cast<std::size_t>(f.kind[i])])
            if (std::fabs(along[i] + along[static_cast<std::size_t>(j)]) <= best)
                best = std::fabs(along[i] + along[static_cast<std::size_t>(j)]), partner[i] = j;
        centric = partner[i] >= 0;
    }
    r.group = centric ? "D*h" : "C*v";
    r.order = 0;
    r.axes = frame_about(u);
    r.deviation = 0;
    for (std::size_t i = 0; i < n; ++i) {
        r.deviation = std::max(r.deviation, 2 * symmetry::distance_from_axis(f.pos[i], u));
        const double z = centric ? (along[i] - along[static_cast<std::size_t>(partner[i])]) / 2 : along[i];
        if (centric)
            r.deviation = std::max(r.deviation, symmetry::norm(symmetry::add(f.pos[i], f.pos[static_cast<std::size_t>(partner[i])])));
        r.symmetrised.push_back({0, 0, z});
    }
    r.elements = {{Kind::identity, 1, {}}, {Kind::rotation, 0, {0, 0, 1}}, {Kind::reflection, 0, {1, 0, 0}}};
    if (centric)
        r.elements.insert(r.elements.end(),
                          {{Kind::rotation, 2, {1, 0, 0}}, {Kind::reflection, 1, {0, 0, 1}}, {Kind::inversion, 2, {}}});
    std::vector<int> identity_perm(n);
    std::iota(identity_perm.begin(), identity_perm.end(), 0);
    Operation e{identity_perm};
    std::vector<Operation> ops{e};
    if (centric) ops.push_back(Operation{partner});
    r.equivalent_sets = equivalent_sets(ops, n);
}

}  // namespace

PointGroupResult find_point_group(const std::vector<SymAtom>& atoms, double tolerance) {
    PointGroupResult r;
    r.tolerance = tolerance;
    if (atoms.empty()) return r;
    r.aligned = true;
    const Prepared p = prepare(atoms);
    const Frame& f = p.frame;
    r.centre = p.centre;
    const Eigen inertia = principal_axes(f.pos, p.mass);
    r.moments = inertia.values;
    double reach = 0, off_line = 0;
    for (const Vec& x : f.pos) {
        reach = std::max(reach, symmetry::norm(x));
        off_line = std::max(off_line, symmetry::distance_from_axis(x, inertia.vectors[0]));
    }
    if (reach <= tolerance / 2) {
        // Everything at one point.
        r.group = "Kh";
        r.order = 0;
        r.symmetrised.assign(atoms.size(), Vec{});
        r.elements = {{SymmetryElement::Kind::identity, 1, {}}, {SymmetryElement::Kind::inversion, 2, {}}};
        r.equivalent_sets = {std::vector<int>(atoms.size())};
        std::iota(r.equivalent_sets[0].begin(), r.equivalent_sets[0].end(), 0);
        return r;
    }
    if (2 * off_line <= tolerance) {
        linear_group(f, inertia.vectors[0], r);
        return r;
    }
    OperationGroup group(f.pos, tolerance);
    for (const Operation& op : find_operations(f, inertia, tolerance)) group.extend(op);
    const auto& ops = group.elements();
    for (const Operation& op : ops) r.deviation = std::max(r.deviation, op.deviation);
    r.order = static_cast<int>(ops.size());
    r.equivalent_sets = equivalent_sets(ops, atoms.size());

    const std::vector<Vec> ideal = symmetrise(f.pos, ops);
    std::vector<Mat> matrices;
    for (const Operation& op : ops) matrices.push_back(symmetry::fit_matrix(ideal, op.perm, op.sign).value_or(op.matrix));
    const Census census = take_census(matrices);
    const Eigen ideal_inertia = principal_axes(ideal, p.mass);
    r.group = group_name(census, ideal_inertia.vectors[2]);
    r.axes = aligned_axes(census, r.group, ideal_inertia);
    r.elements = list_elements(census, r.axes);
    for (const Vec& x : ideal) {
        Vec y = symmetry::apply(r.axes, x);
        for (double& c : y)
            if (std::fabs(c) < 5e-7) c = 0;
        r.symmetrised.push_back(y);
    }
    return r;
}

}  // namespace zentol
