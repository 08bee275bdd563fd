// The file side of the point-group program: element masses, the two inputs
// the main program writes, and the four answer files.
#include <algorithm>
#include <cmath>
#include <numbers>
#include <optional>
#include <utility>

#include "analysis/point_group.h"
#include "session/store_ops.h"
#include "text/fixed_format.h"

namespace zentol {

using symmetry::Mat;
using symmetry::Vec;
using text::format_f;
using text::format_i;

std::string element_of_label(std::string_view label) {
    return std::string(text::trim(element_symbol(text::trim(label))));
}

double atomic_mass(std::string_view element) {
    static const std::pair<const char*, double> kMasses[] = {
        {"H", 1.008},    {"D", 2.014},    {"He", 4.0026},  {"Li", 6.94},    {"Be", 9.0122},  {"B", 10.81},
        {"C", 12.011},   {"N", 14.007},   {"O", 15.999},   {"F", 18.998},   {"Ne", 20.180},  {"Na", 22.990},
        {"Mg", 24.305},  {"Al", 26.982},  {"Si", 28.085},  {"P", 30.974},   {"S", 32.06},    {"Cl", 35.45},
        {"Ar", 39.948},  {"K", 39.098},   {"Ca", 40.078},  {"Ti", 47.867},  {"V", 50.942},   {"Cr", 51.996},
        {"Mn", 54.938},  {"Fe", 55.845},  {"Co", 58.933},  {"Ni", 58.693},  {"Cu", 63.546},  {"Zn", 65.38},
        {"Ga", 69.723},  {"Ge", 72.630},  {"As", 74.922},  {"Se", 78.971},  {"Br", 79.904},  {"Kr", 83.798},
        {"Rb", 85.468},  {"Sr", 87.62},   {"Zr", 91.224},  {"Mo", 95.95},   {"Ru", 101.07},  {"Rh", 102.91},
        {"Pd", 106.42},  {"Ag", 107.87},  {"Cd", 112.41},  {"Sn", 118.71},  {"Sb", 121.76},  {"Te", 127.60},
        {"I", 126.90},   {"Xe", 131.29},  {"Cs", 132.91},  {"Ba", 137.33},  {"W", 183.84},   {"Os", 190.23},
        {"Ir", 192.22},  {"Pt", 195.08},  {"Au", 196.97},  {"Hg", 200.59},  {"Pb", 207.2},   {"Bi", 208.98},
        {"U", 238.03}};
    for (const auto& [symbol, mass] : kMasses)
        if (element == symbol) return mass;
    return 12.0;
}

namespace {

// The first line of SYMMOL.INP is a cell a b c alpha beta gamma; the
// coordinates are fractions of it. The usual 1 1 1 90 90 90 is Cartesian.
Mat cell_matrix(const std::string& line) {
    auto v = text::read_reals(line, 6);
    if (!v || v->size() < 6) return symmetry::identity();
    const double a = (*v)[0], b = (*v)[1], c = (*v)[2];
    const double deg = std::numbers::pi / 180;
    const double ca = std::cos((*v)[3] * deg), cb = std::cos((*v)[4] * deg), cg = std::cos((*v)[5] * deg);
    const double sg = std::sin((*v)[5] * deg);
    const double volume = 1 - ca * ca - cb * cb - cg * cg + 2 * ca * cb * cg;
    if (a <= 0 || b <= 0 || c <= 0 || volume <= 0 || sg == 0) return symmetry::identity();
    return {Vec{a, b * cg, c * cb}, Vec{0, b * sg, c * (ca - cb * cg) / sg}, Vec{0, 0, c * std::sqrt(volume) / sg}};
}

// Three fixed fields from column `first` on, each `width` wide; failing
// those, the last three numbers after the label.
std::optional<Vec> read_xyz(const std::string& line, int first, int width) {
    Vec p{};
    bool fixed = true;
    for (int k = 0; k < 3 && fixed; ++k) {
        auto value = text::read_f(text::column_field(line, first + k * width, width));
        fixed = value.has_value();
        if (value) p[static_cast<std::size_t>(k)] = *value;
    }
    if (fixed && text::trim(text::column_field(line, first + 3 * width, 20)).empty()) return p;
    auto v = text::read_reals(line.size() > 4 ? std::string_view(line).substr(4) : std::string_view(), 4);
    if (!v || v->size() < 3) return std::nullopt;
    const std::size_t s = v->size() - 3;
    return Vec{(*v)[s], (*v)[s + 1], (*v)[s + 2]};
}

std::optional<SymAtom> read_atom(const std::string& line, int first, int width) {
    if (text::trim(line).empty()) return std::nullopt;
    auto p = read_xyz(line, first, width);
    if (!p) return std::nullopt;
    SymAtom a;
    a.label = std::string(text::trim(text::column_field(line, 1, 4)));
    a.element = element_of_label(a.label);
    a.pos = *p;
    return a;
}

std::string vec_text(const Vec& v, int w = 12, int d = 6) {
    std::string s;
    for (double c : v) s += format_f(std::fabs(c) < 0.5 * std::pow(10.0, -d) ? 0.0 : c, w, d);
    return s;
}

std::string element_name(const SymmetryElement& e) {
    using Kind = SymmetryElement::Kind;
    switch (e.kind) {
    case Kind::identity: return "E";
    case Kind::rotation: return e.order == 0 ? "C*" : "C" + std::to_string(e.order);
    case Kind::improper: return "S" + std::to_string(e.order);
    case Kind::reflection: return e.order == 0 ? "sigma*" : "sigma";
    case Kind::inversion: return "i";
    }
    return "?";
}

std::string element_line(const SymmetryElement& e) {
    using Kind = SymmetryElement::Kind;
    const std::string name = "   " + text::pad_right(element_name(e), 8);
    switch (e.kind) {
    case Kind::identity: return name + "identity";
    case Kind::inversion: return name + "centre of inversion at the origin";
    case Kind::reflection:
        return name + (e.order == 0 ? "every plane through the axis, e.g. normal" : "plane, normal") +
               vec_text(e.direction);
    default: return name + "axis" + vec_text(e.direction);
    }
}

}  // namespace

std::vector<SymAtom> parse_symmol_inp(const std::vector<std::string>& lines) {
    std::vector<SymAtom> atoms;
    if (lines.size() < 2) return atoms;
    const Mat cell = cell_matrix(lines[0]);
    for (std::size_t k = 2; k < lines.size(); ++k)
        if (auto a = read_atom(lines[k], 7, 9)) {
            a->pos = symmetry::apply(cell, a->pos);
            atoms.push_back(std::move(*a));
        }
    return atoms;
}

std::vector<SymAtom> parse_mol_al_list(const std::vector<std::string>& lines) {
    std::vector<SymAtom> atoms;
    for (const std::string& line : lines)
        if (auto a = read_atom(line, 5, 10)) atoms.push_back(std::move(*a));
    // The list closes with the three reference axes A1, B1, C1.
    const std::size_t n = atoms.size();
    if (n >= 3 && atoms[n - 3].label == "A1" && atoms[n - 2].label == "B1" && atoms[n - 1].label == "C1")
        atoms.resize(n - 3);
    return atoms;
}

std::string format_symmol_out(const PointGroupResult& r) {
    std::string out = text::pad_right(r.group, 7) + format_f(r.deviation, 9, 4) + "\n";
    out += " order" + (r.order > 0 ? format_i(r.order, 5) : std::string("  inf")) + "  tolerance" +
           format_f(r.tolerance, 9, 4) + "\n";
    // One line an element: its name, and the axis or normal where it has one.
    using Kind = SymmetryElement::Kind;
    for (const SymmetryElement& e : r.elements) {
        const bool directed = e.kind != Kind::identity && e.kind != Kind::inversion;
        out += " " + (directed ? text::pad_right(element_name(e), 7) + vec_text(e.direction) : element_name(e)) + "\n";
    }
    return out;
}

std::string format_symmol_lst(const std::vector<SymAtom>& atoms, const PointGroupResult& r) {
    std::string out = " Zentol point-group search\n\n";
    out += " Atoms read        " + format_i(static_cast<long long>(atoms.size()), 8) + "\n";
    out += " Tolerance         " + format_f(r.tolerance, 8, 4) +
           " A   (an atom may lie this far from its symmetry image)\n";
    out += " Point group       " + text::format_a(r.group, 8) + "\n";
    out += " Order of group    " + (r.order > 0 ? format_i(r.order, 8) : std::string("infinite")) + "\n";
    out += " Deviation         " + format_f(r.deviation, 8, 4) +
           " A   (largest distance between an atom moved by an operation\n"
           "                            of the group and the atom it is carried onto)\n\n";
    out += " Symmetry elements (centre of mass at the origin, main axis along z)\n";
    for (const SymmetryElement& e : r.elements) out += element_line(e) + "\n";
    out += "\n Sets of symmetry-equivalent atoms\n";
    for (const auto& set : r.equivalent_sets) {
        std::string line = "  ";
        for (int i : set) line += " " + text::pad_right(atoms[static_cast<std::size_t>(i)].label, 5);
        out += std::string(text::trim_right(line)) + "\n";
    }
    out += "\n Symmetrised coordinates (Angstrom, aligned frame)      moved by\n";
    for (std::size_t i = 0; i < atoms.size() && i < r.symmetrised.size(); ++i) {
        const Vec before = symmetry::apply(r.axes, symmetry::sub(atoms[i].pos, r.centre));
        const double moved = symmetry::norm(symmetry::sub(before, r.symmetrised[i]));
        out += "   " + text::pad_right(atoms[i].label, 6) + vec_text(r.symmetrised[i]) + format_f(moved, 10, 4) + "\n";
    }
    return out;
}

std::string format_mol_al_txt(const PointGroupResult& r) {
    if (!r.aligned) return " No atoms were read: nothing has been aligned\n";
    std::string out = "  The molecule has been aligned to its principal axes\n";
    out += " Centre of mass           " + vec_text(r.centre) + "\n";
    out += " Principal moments, amu A^2" + vec_text(r.moments, 14, 4) + "\n";
    out += " New axes in the input frame\n";
    const char* names[] = {"x", "y", "z"};
    for (int k = 0; k < 3; ++k) out += "   " + std::string(names[k]) + vec_text(r.axes[static_cast<std::size_t>(k)]) + "\n";
    return out;
}

std::string format_symmetrz_out(const std::vector<SymAtom>& atoms, const PointGroupResult& r) {
    std::string out;
    for (std::size_t i = 0; i < atoms.size() && i < r.symmetrised.size(); ++i)
        out += text::pad_right(atoms[i].label, 6) + vec_text(r.symmetrised[i]) + "\n";
    return out;
}

}  // namespace zentol
