#include "building/geometry.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "building/build_commands.h"
#include "building/connectivity.h"
#include "display/view.h"
#include "session/session.h"
#include "session/store_ops.h"
#include "structure_files/geo_log.h"
#include "text/fixed_format.h"
#include "toolkit/toolkit.h"

namespace zentol {

namespace {

constexpr double kDegrees = 57.29578;   // degrees per radian

struct Vec3d {
    double x = 0, y = 0, z = 0;
    explicit Vec3d(const Vec3& v) : x(v.x), y(v.y), z(v.z) {}
    Vec3d(double x_, double y_, double z_) : x(x_), y(y_), z(z_) {}
    Vec3d operator-(const Vec3d& o) const { return {x - o.x, y - o.y, z - o.z}; }
    Vec3d operator*(double f) const { return {x * f, y * f, z * f}; }
    double dot(const Vec3d& o) const { return x * o.x + y * o.y + z * o.z; }
    Vec3d cross(const Vec3d& o) const { return {y * o.z - z * o.y, z * o.x - x * o.z, x * o.y - y * o.x}; }
    double length() const { return std::sqrt(dot(*this)); }
};

std::string f9(double v) { return text::format_f(v, 9, 5); }

std::string joined(const Label* labels, int n) {
    std::string out;
    for (int k = 0; k < n; ++k) out += (k ? "-" : "") + label_text(labels[k]);
    return out;
}

// The valence a bond estimate assumes: the column up to 4, eight minus it
// beyond; an atom past neon with at least that many neighbours counts its
// neighbours instead.
int assumed_valence(const BondAtom& a, int group) {
    int v = group > 4 ? 8 - group : group;
    if (a.z > 10 && a.neighbours >= v) v = a.neighbours;
    return v;
}

}  // namespace

double distance(const Vec3& a, const Vec3& b) { return (Vec3d(a) - Vec3d(b)).length(); }

double angle(const Vec3& p1, const Vec3& p2, const Vec3& p3, double old_value) {
    const double a = distance(p1, p2), b = distance(p2, p3), c = distance(p1, p3);
    if (a == 0 || b == 0 || c == 0) return old_value;
    const double cosine = std::clamp((a * a + b * b - c * c) / (2 * a * b), -1.0, 1.0);
    return std::acos(cosine) * kDegrees;
}

double dihedral(const Vec3& p1, const Vec3& p2, const Vec3& p3, const Vec3& p4, double old_value) {
    Vec3d b1 = Vec3d(p2) - Vec3d(p1), b2 = Vec3d(p2) - Vec3d(p3), b3 = Vec3d(p4) - Vec3d(p3);
    const double l1 = b1.length(), l2 = b2.length(), l3 = b3.length();
    if (l1 <= 1e-5 || l2 <= 1e-5 || l3 <= 1e-5) return old_value;
    b1 = b1 * (1 / l1);
    b2 = b2 * (1 / l2);
    b3 = b3 * (1 / l3);
    const double cos1 = b1.dot(b2), cos2 = b2.dot(b3);
    if (std::fabs(cos1) > 0.99999 || std::fabs(cos2) > 0.99999) return old_value;
    if (std::sqrt(1 - cos1 * cos1) * std::sqrt(1 - cos2 * cos2) < 1e-5) return old_value;
    // b2 points back from p3 to p2, hence the minus on the triple product.
    const Vec3d n = b2.cross(b3);
    double degrees = std::atan2(-b1.dot(n), b1.cross(b2).dot(n)) * kDegrees;
    if (degrees > 180) degrees -= 360;
    return degrees;
}

double dihedral_of_atoms(const Store& st, const int atoms[4], double old_value) {
    for (int i = 0; i < 4; ++i)
        for (int j = i + 1; j < 4; ++j)
            if (atoms[i] == atoms[j]) return old_value;
    return dihedral(atom_position(st.atom_rec[atoms[0]]), atom_position(st.atom_rec[atoms[1]]),
                    atom_position(st.atom_rec[atoms[2]]), atom_position(st.atom_rec[atoms[3]]), old_value);
}

int periodic_group(int z) {
    if (z == 1 || z == 2) return z;
    if (z >= 3 && z <= 10) return z - 2;
    if (z >= 11 && z <= 18) return z - 10;
    if (z == 19 || z == 20) return z - 18;
    if (z >= 31 && z <= 36) return z - 28;
    if (z == 37 || z == 38) return z - 36;
    if (z >= 49 && z <= 54) return z - 46;
    return 99;
}

BondReport bond_length_report(BondAtom a, BondAtom b, double length) {
    if (a.z < b.z) std::swap(a, b);
    BondReport r;
    const int g1 = periodic_group(a.z), g2 = periodic_group(b.z);
    for (const BondAtom* x : {&a, &b}) {
        const int g = periodic_group(x->z);
        if (g >= 3 && g <= 7 && x->neighbours > 4) r.log.push_back(label_text(x->label) + " is hypervalent");
    }
    const double sum = a.radius + b.radius, diff = length - sum;
    const double dx = std::fabs(a.electronegativity - b.electronegativity);
    const std::string pair = label_text(a.label) + "-" + label_text(b.label);
    std::string fixed = "     " + pair + f9(length) + f9(sum) + f9(diff);
    text::FreeRecord free;
    free << pair << length << sum << diff;
    if (g1 == 1 || g2 == 1 || (g1 < 3 && g2 < 3)) {
        r.log.push_back(fixed);
        r.status = (free << " End").str();
        return r;
    }
    const bool single = g1 >= 3 && g2 >= 3 && assumed_valence(a, g1) == a.neighbours &&
                        assumed_valence(b, g2) == b.neighbours;
    if (single) {
        const double pc = 0.0 - 0.085 * std::pow(dx, 1.36);   // 0 - x: no "-0" for equal atoms
        r.log.push_back("Updated version of Blom Haaland J.Mol.Struct.128(1985)21-27");
        r.log.push_back("pc = -1.*0.085(ABS(X(1)-X(2)))**1.36");
        fixed += " dEn " + f9(dx) + " pc " + f9(pc);
        free << " dEn " << dx << " pc " << pc;
    } else if (a.z != b.z) {
        fixed += " dEn " + f9(dx);
        free << " dEn " << dx;
    }
    r.log.push_back(fixed);
    r.status = free.str();
    return r;
}

BondAtom bond_atom(Session& s, int atom) {
    Store& st = s.store;
    const std::string label = label_text(st.atom_label[atom]);
    BondAtom a;
    a.label = st.atom_label[atom];
    a.z = static_cast<int>(element_lookup(st, &s.tk, label, kLookupAtomicNumber));
    a.radius = covalent_radius(st, &s.tk, atom);
    a.electronegativity = element_lookup(st, &s.tk, label, kLookupElectronegativity);
    a.neighbours = st.conn_count(atom);
    return a;
}

std::string atom_picked_line(const Label& label, const Vec3& p, int type) {
    return (text::FreeRecord() << "Atom Picked " << label_text(label) << p.x << p.y << p.z << type).str();
}

std::vector<std::string> distance_lines(const Label& a, const Vec3& pa, const Label& b, const Vec3& pb,
                                        double length) {
    auto place = [](const Label& l, const Vec3& p) {
        return "     " + label_text(l) + " " + f9(p.x) + f9(p.y) + f9(p.z);
    };
    return {place(a, pa), place(b, pb), "     Distance  " + label_text(a) + "-" + label_text(b) + f9(length)};
}

std::string angle_line(const Label labels[3], double degrees) {
    return "     Angle     " + joined(labels, 3) + text::format_f(degrees, 8, 3);
}

std::string dihedral_line(const Label labels[4], double degrees) {
    return "     Dihedral  " + joined(labels, 4) + text::format_f(degrees, 8, 3);
}

namespace {

// The picks of one Geometry command; the angle and dihedral keep their
// last values for the degenerate cases.
struct GeometryWork {
    int atom[5] = {};
    Label label[5] = {};
    Vec3 pos[5];
    double angle = 0, dihedral = 0;
};

void report(Session& s, const std::vector<std::string>& log, const std::string& status) {
    for (const auto& record : log) log_line(s, record);
    s.tk.WindowOutStatusBar(9, std::string(text::trim(status)));
}

void report_pick(Session& s, GeometryWork& w, int k) {
    switch (k) {
        case 1: {
            const std::string line = atom_picked_line(w.label[1], w.pos[1], s.store.conn_type(w.atom[1]));
            report(s, {line}, line);
            break;
        }
        case 2: {
            const double d = distance(w.pos[1], w.pos[2]);
            std::vector<std::string> log{"Distance Calculation"};
            for (auto& line : distance_lines(w.label[1], w.pos[1], w.label[2], w.pos[2], d)) log.push_back(line);
            BondReport bond = bond_length_report(bond_atom(s, w.atom[1]), bond_atom(s, w.atom[2]), d);
            log.insert(log.end(), bond.log.begin(), bond.log.end());
            report(s, log, bond.status);
            break;
        }
        case 3: {
            w.angle = angle(w.pos[1], w.pos[2], w.pos[3], w.angle);
            const std::string line = angle_line(&w.label[1], w.angle);
            report(s, {"Angle Calculation", line}, line);
            break;
        }
        default: {
            w.dihedral = dihedral_of_atoms(s.store, &w.atom[1], w.dihedral);
            const std::string line = dihedral_line(&w.label[1], w.dihedral);
            report(s, {"Dihedral Calculation", line}, line);
            break;
        }
    }
}

// A fifth pick begins the count again at 1.
void take_pick(Session& s, GeometryWork& w, int atom) {
    ViewState& v = s.view;
    const int k = v.pick_count >= 4 ? 1 : v.pick_count + 1;
    v.pick_count = k;
    v.pick_list[k] = atom;
    w.atom[k] = atom;
    w.label[k] = s.store.atom_label[atom];
    w.pos[k] = atom_position(s.store.atom_rec[atom]);
    report_pick(s, w, k);
    draw_scene(s);
}

bool ends_and_parks(const Event& e) {
    return e.command == 56 || (e.key >= kKeyZMinus && e.key <= kKeyXMinus) || e.key == 'S' || e.key == 's';
}

}  // namespace

Event geometry_command(Session& s) {
    write_back_view(s);
    s.tk.WindowOutStatusBar(10, "Geom.");
    s.tk.WMenuSetState(40017, 2, 1);
    s.view.pick_count = 0;
    GeometryWork w;
    Event e;
    while (true) {
        if (s.view.pick_count == 0) s.tk.WindowOutStatusBar(9, "Pick  Atoms");
        e = read_event(s);
        if (e.key == kKeyEsc || e.command == kCommandClose) {
            if (e.command == kCommandClose) s.build.close_requested = true;
            break;
        }
        if (ends_and_parks(e)) {
            e.x = 12.6f;
            e.y = 2.0f;
            break;
        }
        if (e.state == 1 || e.state == 2) {
            if (e.state == 1) project_atoms(s);
            draw_scene(s);
        } else if (e.key == 'R' || e.key == 'r') {
            rotate_loop(s);
            s.tk.WindowOutStatusBar(10, "Geom.");
        } else if (e.command == kCommandPress && e.button == 3) {
            s.view.pick_count = 0;
            draw_scene(s);
        } else if (e.command == kCommandPress && e.button == 1) {
            project_atoms(s);
            bool found = false;
            const int atom = nearest_atom(s, e.x, e.y, found);
            if (found) {
                take_pick(s, w, atom);
            } else {
                drag_rotation(s, e);   // a press on empty space turns the molecule
                rotate_loop(s);
                s.tk.WindowOutStatusBar(10, "Geom.");
            }
        }
    }
    s.view.pick_count = 0;
    draw_scene(s);
    return e;
}

}  // namespace zentol
