#include "engines/mopac/mopac_mgf.h"

#include <algorithm>

#include "text/fixed_format.h"

namespace zentol {

namespace {

using Line = std::string_view;

bool ends_orbital(Line line) {
    return text::trimmed_length(line) == 0 || line.starts_with(" ORBITAL") || line.starts_with(" INVERSE_MATRIX") ||
           line.starts_with(" Keywords");
}

// Five coefficients a line in fields of 15 with D exponents:
//  0.85162057D+00-0.21781058D-16 0.45663473D-12-0.23389083D+00 0.33169074D+00
void read_coefficients(Line line, std::vector<double>& out) {
    for (std::size_t k = 0; k < 5; ++k) {
        const std::size_t from = 15 * k;
        if (from >= line.size()) return;
        const Line field = line.substr(from, 15);
        if (text::trim(field).empty()) return;
        if (auto c = text::read_f(field)) out.push_back(*c);
    }
}

// " ORBITAL 2 1a'    -29.5957": occupancy, symmetry label, energy; then the
// coefficients.
std::size_t read_mgf_orbital(LineViews mgf, std::size_t at, Mop2016Vectors& v) {
    const auto w = text::split_words(mgf[at]);
    MgfOrbital o;
    if (w.size() >= 3) {
        o.occupancy = static_cast<int>(text::read_i(w[1]).value_or(0));
        o.energy = text::read_f(w.back()).value_or(0.0);
        for (std::size_t k = 2; k + 1 < w.size(); ++k)
            o.symmetry += (o.symmetry.empty() ? "" : " ") + std::string(w[k]);
    }
    for (++at; at < mgf.size() && !ends_orbital(mgf[at]); ++at) read_coefficients(mgf[at], o.coefficients);
    v.orbitals.push_back(std::move(o));
    return at;
}

// " INVERSE_MATRIX[6x6]=": the number of basis functions.
int basis_size(Line line) {
    const std::size_t open = line.find('['), x = line.find('x');
    if (open == Line::npos || x == Line::npos || x < open) return 0;
    return static_cast<int>(text::read_i(line.substr(open + 1, x - open - 1)).value_or(0));
}

// The table is the first set of orbitals: a UHF file follows the alpha set
// with the beta set, whose occupancy starts again above 0. The highest
// filled level is the last one before the first empty one; returned as its
// place in the file, 1-based.
int find_homo(Mop2016Vectors& v) {
    const int n = static_cast<int>(v.beta_from);
    v.norbitals = n;
    int homo = 0;
    bool empty_seen = false;
    for (int i = 0; i < n; ++i) {
        const bool filled = v.orbitals[static_cast<std::size_t>(i)].occupancy > 0;
        if (filled && empty_seen) {
            v.norbitals = i;
            break;
        }
        if (filled) homo = i + 1;
        else empty_seen = true;
    }
    return homo;
}

// The atoms, then one line of Slater exponents (s, p, d) an atom:
//   8    0.0000000   0.0000000   0.1173000  -0.6454
//  5.9723090  2.3490170  0.0000000
// Returns the place of the first line after them.
std::size_t read_atoms(LineViews mgf, Mop2016Vectors& v) {
    v.natoms = static_cast<int>(text::read_i(text::column_field(mgf[0], 1, 5)).value_or(0));
    std::size_t at = 1;
    for (; at <= static_cast<std::size_t>(std::max(v.natoms, 0)) && at < mgf.size(); ++at) {
        auto a = text::read_reals(mgf[at], 5);
        // The first number is the atomic number: anything else ends the atoms.
        if (!a || a->size() < 5 || !((*a)[0] >= 0 && (*a)[0] <= 120)) return at;
        v.atoms.push_back({static_cast<int>((*a)[0]), (*a)[1], (*a)[2], (*a)[3], (*a)[4]});
    }
    for (std::size_t k = 0; k < v.atoms.size() && at < mgf.size(); ++k, ++at) {
        if (mgf[at].starts_with(" ORBITAL")) break;
        auto e = text::read_reals(mgf[at], 3);
        if (!e || e->size() < 3) break;
        v.exponents.push_back({(*e)[0], (*e)[1], (*e)[2]});
    }
    return at;
}

// The lower triangle after " INVERSE_MATRIX[6x6]=", five values a line in
// fields of 15 as the coefficients.
std::size_t read_inverse(LineViews mgf, std::size_t at, Mop2016Vectors& v) {
    for (++at; at < mgf.size() && !ends_orbital(mgf[at]); ++at) read_coefficients(mgf[at], v.inverse);
    return at;
}

}  // namespace

LineViews mgf_head(LineViews mgf) {
    std::size_t n = 0;
    while (n < mgf.size() && !mgf[n].starts_with(" Keywords")) ++n;
    return mgf.first(n);
}

// The head line holds the number of atoms (I5) and the writer's name; the
// atoms follow as Z, x, y, z, charge, then one line of exponents an atom:
//     3 MOPAC-Graphical data Version 22.0.6
//    8    0.0000000   0.0000000   0.1173000  -0.6454
// The number of basis functions stands in the INVERSE_MATRIX line at the end.
Mop2016Vectors read_mop2016_vectors(LineViews mgf, int listing_homo) {
    Mop2016Vectors v;
    v.geo_lines.push_back(" Mopac 2016");
    if (mgf.empty()) return v;
    v.beta_from = std::string::npos;
    for (std::size_t at = read_atoms(mgf, v); at < mgf.size();) {
        if (mgf[at].starts_with(" ORBITAL")) {
            at = read_mgf_orbital(mgf, at, v);
            continue;
        }
        if (mgf[at].starts_with(" Keywords") && v.beta_from == std::string::npos) v.beta_from = v.orbitals.size();
        if (mgf[at].starts_with(" INVERSE_MATRIX") && v.inverse.empty()) {
            v.nbasis = basis_size(mgf[at]);
            at = read_inverse(mgf, at, v);
            continue;
        }
        ++at;
    }
    // Only a UHF file has orbitals behind its " Keywords" line.
    if (v.beta_from >= v.orbitals.size()) v.beta_from = v.orbitals.size();
    const int homo_place = find_homo(v);
    // The listing knows the true number of the highest filled level; the
    // file's orbitals are counted from it.
    if (homo_place > 0 && listing_homo > homo_place) v.first_orbital = listing_homo - homo_place + 1;
    v.homo = homo_place > 0 ? v.first_orbital + homo_place - 1 : 0;
    v.geo_lines.push_back("     M.O.    Energy(eV)");
    for (int i = v.norbitals; i >= 1; --i) {
        const int number = v.first_orbital + i - 1;
        std::string row = text::format_i(number, 8) +
                          text::format_f(static_cast<float>(v.orbitals[static_cast<std::size_t>(i - 1)].energy), 12, 5);
        if (number == v.homo) row += " H.O.M.O.";
        v.geo_lines.push_back(row);
    }
    return v;
}

}  // namespace zentol
