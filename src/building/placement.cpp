#include "building/placement.h"

#include <algorithm>
#include <cmath>

#include "building/connectivity.h"
#include "session/store_ops.h"

namespace zentol {

namespace {

constexpr float kHydrogenBond = 0.32f;     // r(H) in every placement formula
constexpr float kDegreesPerRadian = 57.29578f;

float radius_of(Store& st, Toolkit* tk, const Label& l) {
    return element_lookup(st, tk, label_text(l), kLookupRadius);
}

float hydrogen_radius(Store& st) { return element_lookup(st, nullptr, "H   ", kLookupRadius); }

// The hydrogens a new atom brings: 21 on an alcohol oxygen, 23 on an amine
// nitrogen, else 5.
int carried_hydrogen_type(int type) { return type == 6 ? 21 : type == 8 ? 23 : 5; }

int append_hydrogen(Store& st, const Vec3& p, int parent, int type) {
    const int h = append_atom(st, make_label("H"), p.x, p.y, p.z, hydrogen_radius(st), type);
    st.nbr(h, 1) = parent;
    st.conn_count(h) = 1;
    return h;
}

// A parent of type 2 under a new carbonyl oxygen becomes a carbonyl carbon.
void retype_parent(Store& st, int parent, int new_type) {
    if (parent >= 1 && new_type == 7 && st.conn_type(parent) == 2) st.conn_type(parent) = 3;
}

// Turns the fitted template so that its back point lands on b and its
// centre beyond it on the line from p through b.
std::vector<Vec3> lay_over(const std::vector<Vec3>& points, const Vec3& p, const Vec3& b) {
    const Vec3 u = (b - p).unit();
    const Vec3 v = (points[0] - points[1]).unit();
    Vec3 k = u.cross(v);
    const float sine = k.length(), cosine = u.dot(v);
    if (sine > 1e-10f) k = k * (1.0f / sine);
    std::vector<Vec3> out;
    for (const Vec3& w : points) out.push_back(rodrigues(w - points[1], k, cosine, sine) + b);
    return out;
}

void start_molecule(Store& st, Toolkit* tk, BuildSite& site, const PlaceRequest& rq) {
    const int type = atom_type_of(st, label_text(rq.element));
    const float r = radius_of(st, tk, rq.element);
    if (rq.choice == 1) {
        const int x = append_atom(st, rq.element, 0, 0, 0, r, type);
        const int h = append_atom(st, make_label("H1"), 0, 0, r + kHydrogenBond, hydrogen_radius(st), 5);
        st.nbr(x, 1) = h;
        st.nbr(h, 1) = x;
        st.conn_count(x) = st.conn_count(h) = 1;
        return;
    }
    site.start_flag = kStartAtom;
    const std::vector<Vec3> p = fit_template(site, r, r);
    const int centre = append_atom(st, rq.element, p[0].x, p[0].y, p[0].z, r, type);
    for (std::size_t k = 1; k < p.size(); ++k) add_neighbour(st, centre, append_hydrogen(st, p[k], centre, carried_hydrogen_type(type)));
    const float turn = start_turn_degrees(rq.choice);
    if (turn > 1.0f) turn_about_x(st, turn);
}

void replace_hydrogen(Store& st, Toolkit* tk, const BuildSite& site, const PlaceRequest& rq) {
    const int h = site.hydrogen, p = site.parent;
    const float r = radius_of(st, tk, rq.element);
    const Vec3 to = move_along(atom_position(st.atom_rec[p]), atom_position(st.atom_rec[h]), r - 0.31f);
    set_position(st.atom_rec[h], to);
    st.atom_label[h] = rq.element;
    st.atom_rec[h][kRadius] = r;
    const int type = correct_type(atom_type_of(st, label_text(rq.element)), site.parent_type, 1, rq.choice);
    st.conn_type(h) = type;
    retype_parent(st, p, type);
}

void place_template(Store& st, Toolkit* tk, const BuildSite& site, const PlaceRequest& rq) {
    const int h = site.hydrogen, parent = site.parent;
    const float r_new = radius_of(st, tk, rq.element), r_parent = covalent_radius(st, tk, parent);
    const Vec3 p = atom_position(st.atom_rec[parent]);
    const Vec3 b = move_along(p, atom_position(st.atom_rec[h]), ((r_new + r_parent) / 2 - kHydrogenBond) - r_parent);
    const std::vector<Vec3> w = lay_over(fit_template(site, r_parent, r_new), p, b);
    const int looked_up = atom_type_of(st, label_text(rq.element));
    set_position(st.atom_rec[h], w[0]);
    st.atom_label[h] = rq.element;
    st.atom_rec[h][kRadius] = r_new;
    for (int k = 1; k <= kMaxNeighbours; ++k) st.nbr(h, k) = 0;
    st.nbr(h, 1) = parent;
    st.conn_count(h) = 1;
    for (std::size_t k = 2; k < w.size(); ++k) add_neighbour(st, h, append_hydrogen(st, w[k], h, carried_hydrogen_type(looked_up)));
    const int type = correct_type(looked_up, site.parent_type, site.template_size, rq.choice);
    st.conn_type(h) = type;
    retype_parent(st, parent, type);
}

void place_cp_ring(Store& st, Toolkit* tk, BuildSite& site) {
    const int h = site.hydrogen, metal = site.parent;
    site.start_flag = kRigidRing;
    const float r_m = covalent_radius(st, tk, metal), r_c = radius_of(st, tk, make_label("C"));
    const float height = std::sqrt((r_c + r_m) * (r_c + r_m) - 1.2544f);
    const Vec3 p = atom_position(st.atom_rec[metal]);
    const Vec3 b = move_along(p, atom_position(st.atom_rec[h]), (height - 1.22f) - r_m);
    const std::vector<Vec3> w = lay_over(fit_template(site, r_m, r_c), p, b);
    const Label centroid = make_label("Cn");
    set_position(st.atom_rec[h], w[0]);
    st.atom_label[h] = centroid;
    st.atom_rec[h][kRadius] = radius_of(st, tk, centroid);
    st.conn_type(h) = 240;
    const int first = st.natoms + 1;
    for (int k = 0; k < 5; ++k) {
        const Vec3& c = w[static_cast<std::size_t>(2 + k)];
        append_atom(st, make_label("C"), c.x, c.y, c.z, r_c, 113);
    }
    for (int k = 0; k < 5; ++k) {
        const int c = first + k;
        st.nbr(c, 1) = first + (k + 1) % 5;
        st.nbr(c, 2) = first + (k + 4) % 5;
        st.nbr(c, 3) = append_hydrogen(st, w[static_cast<std::size_t>(7 + k)], c, 5);
        st.conn_count(c) = 3;
    }
}

bool bonded_to_type(const Store& st, int atom, int type) {
    for (int k = 1; k <= kMaxNeighbours; ++k) {
        const int n = st.nbr(atom, k);
        if (n >= 1 && n <= st.natoms && st.conn_type(n) == type) return true;
    }
    return false;
}

// MM3 has no parameters for a few hydrogens as the parent's type gives them,
// and a Tinker run would stop on them: an alcohol hydrogen (21) on the
// oxygen (6) of an acid, next to a carbonyl carbon (3), is a carboxyl one
// (24); an amine hydrogen (23) on an sp2 nitrogen (9) an amide one (28); a
// hydrogen (5) on an sp carbon (4) an acetylene one (124). Run over the
// whole molecule after each change, whichever atom came last.
void retype_hydrogens_for_mm3(Store& st) {
    for (int h = 1; h <= st.natoms; ++h) {
        const int p = st.nbr(h, 1);
        if (p < 1 || p > st.natoms) continue;
        const int type = st.conn_type(h), parent = st.conn_type(p);
        if (type == 21 && parent == 6 && bonded_to_type(st, p, 3)) st.conn_type(h) = 24;
        else if (type == 23 && parent == 9) st.conn_type(h) = 28;
        else if (type == 5 && parent == 4) st.conn_type(h) = 124;
    }
}

}  // namespace

int hydrogen_type(int parent_type) {
    switch (parent_type) {
        case 6: return 21;
        case 8: return 23;
        case 15: return 44;
        default: return 5;
    }
}

int correct_type(int type, int parent_type, int n, int choice) {
    if (type == 6 && n == 1) return parent_type == 4 ? 82 : 7;
    if (type == 1 && n == 4) return 2;
    if (type == 1 && n == 3) return 4;
    if (type == 8 && n == 1) return 10;
    if (type == 8 && choice == 3) return 9;
    return type;
}

bool place_atom(Store& st, Toolkit* tk, BuildSite& site, const PlaceRequest& rq) {
    const TemplateRef t = template_for_choice(rq.choice);
    site.template_size = t.size;
    site.template_index = t.index;
    site.choice = rq.choice;
    if (st.natoms == 0 || site.hydrogen == 0) {
        if (rq.choice == 13 || rq.choice > 12 || rq.choice < 1) return false;   // a ring needs a metal to sit on
        start_molecule(st, tk, site, rq);
        return true;
    }
    if (site.hydrogen > st.natoms || site.parent < 1 || site.parent > st.natoms) return false;
    if (rq.choice == 1) replace_hydrogen(st, tk, site, rq);
    else if (rq.choice == 13) place_cp_ring(st, tk, site);
    else if (t.size > 0) place_template(st, tk, site, rq);
    else return false;
    retype_hydrogens_for_mm3(st);
    return true;
}

void add_isolated_atom(Store& st, Toolkit* tk, const Label& element) {
    float max_x = 0;
    if (st.natoms > 0) {
        max_x = st.atom_rec[1][kX];
        for (int i = 2; i <= st.natoms; ++i) max_x = std::max(max_x, st.atom_rec[i][kX]);
        max_x *= 1.05f;
    }
    const float r = radius_of(st, tk, element);
    append_atom(st, element, max_x + 2.0f + r, 0, 0, r, atom_type_of(st, label_text(element)));
}

void turn_about_x(Store& st, float degrees) {
    const float c = std::cos(degrees / kDegreesPerRadian), s = std::sin(degrees / kDegreesPerRadian);
    for (int i = 1; i <= st.natoms; ++i) {
        const float y = st.atom_rec[i][kY], z = st.atom_rec[i][kZ];
        st.atom_rec[i][kY] = y * c - z * s;
        st.atom_rec[i][kZ] = y * s + z * c;
    }
}

namespace {

// Turns the marked atoms about the normal of the triangle (other, pivot,
// moving) through the pivot, so that other, pivot and moving come onto a
// line. A triangle with two points on top of each other is left alone.
void straighten(Store& st, const Vec3& other, const Vec3& pivot, const Vec3& moving) {
    const Vec3 e1 = other - pivot, e2 = moving - pivot;
    const float l1 = e1.length(), l2 = e2.length();
    if (l1 < 1e-6f || l2 < 1e-6f || (moving - other).length() < 1e-6f) return;
    const float cosine_t = std::clamp(e1.dot(e2) / (l1 * l2), -1.0f, 1.0f);
    const float turn = 180.0f - std::acos(cosine_t) * kDegreesPerRadian;
    Vec3 k = e1.cross(e2);
    if (k.length() < 1e-6f * l1 * l2) {
        if (turn < 1.0f) return;   // already in line
        // Folded back onto the other point: any normal will do.
        k = std::fabs(e1.x) < 0.9f * l1 ? e1.cross({1, 0, 0}) : e1.cross({0, 1, 0});
    }
    k = k.unit();
    // Turning e2 further away from e1 about e1 x e2.
    const float c = std::cos(turn / kDegreesPerRadian), s = std::sin(turn / kDegreesPerRadian);
    for (int i = 1; i <= st.natoms; ++i) {
        if (!is_marked(st, i)) continue;
        const Vec3 w = atom_position(st.atom_rec[i]) - pivot;
        set_position(st.atom_rec[i], rodrigues(w, k, c, -s) + pivot);
    }
}

}  // namespace

void join_by_hydrogens(Store& st, Toolkit* tk, int h1, int h2) {
    const int a = st.nbr(h1, 1), t = st.nbr(h2, 1);
    if (a < 1 || t < 1) return;
    mark_fragment(st, h2);
    auto at = [&](int i) { return atom_position(st.atom_rec[i]); };
    straighten(st, at(a), at(h1), at(h2));
    straighten(st, at(h1), at(h2), at(t));
    const float d = (at(t) - at(a)).length();
    const float shift = (covalent_radius(st, tk, a) + covalent_radius(st, tk, t)) - d;
    if (d > 1e-6f) {
        const Vec3 step = (at(t) - at(a)).unit() * shift;
        for (int i = 1; i <= st.natoms; ++i)
            if (is_marked(st, i)) set_position(st.atom_rec[i], at(i) + step);
    }
    replace_neighbour(st, a, h1, t);
    replace_neighbour(st, t, h2, a);
    remove_atom(st, std::max(h1, h2));
    remove_atom(st, std::min(h1, h2));
    retype_hydrogens_for_mm3(st);
}

}  // namespace zentol
