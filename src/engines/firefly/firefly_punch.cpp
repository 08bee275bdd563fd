#include "engines/firefly/firefly_punch.h"

#include "text/fixed_format.h"

namespace zentol {

namespace {

bool begins(std::string_view line, std::string_view key) { return line.substr(0, key.size()) == key; }

constexpr int kMaxPunchRows = 3000;

// A row of 61 columns: the label, the nuclear charge, then x y z as F15.10
// behind 16 columns:
//  C           6.0  -1.4168673288   0.2341505881   0.0000000000
std::optional<ListingAtom> punch_row(std::string_view line) {
    if (text::trimmed_length(line) < 61) return std::nullopt;
    ListingAtom a;
    const std::string head = text::column_field(line, 1, 16);
    auto words = text::trim(head);
    const std::size_t blank = words.find(' ');
    a.label = std::string(words.substr(0, blank));
    if (a.label.empty() || text::read_f(a.label)) return std::nullopt;
    if (blank != std::string_view::npos) a.nuclear_charge = text::read_f(text::trim(words.substr(blank))).value_or(0);
    double* xyz[3] = {&a.x, &a.y, &a.z};
    for (int c = 0; c < 3; ++c) {
        auto v = text::read_f(text::column_field(line, 17 + 15 * c, 15), 10);
        if (!v) return std::nullopt;
        *xyz[c] = *v;
    }
    return a;
}

std::vector<ListingAtom> punch_block(const text::TextLines& punch, std::size_t first_row, int natoms) {
    std::vector<ListingAtom> atoms;
    const int limit = natoms > 0 ? natoms : kMaxPunchRows;
    for (std::size_t row = first_row; row < punch.size() && static_cast<int>(atoms.size()) < limit; ++row) {
        auto a = punch_row(punch[row]);
        if (!a) break;
        atoms.push_back(std::move(*a));
    }
    return atoms;
}

}  // namespace

// ----- RESULTS FROM SUCCESSFUL RHF      GEOMETRY SEARCH -----
// ----- COORDS, ORBS, GRADIENT, AND APPROX. HESSIAN -----
//  COORDINATES OF SYMMETRY UNIQUE ATOMS (ANGS)
//    ATOM   CHARGE       X              Y              Z
//  ------------------------------------------------------------
//  C           6.0  -1.4168673288   0.2341505881   0.0000000000
PunchGeometry read_punch_geometry(const text::TextLines& punch, int natoms) {
    PunchGeometry g;
    for (std::size_t i = 0; i < punch.size(); ++i) {
        if (!begins(punch[i], "----- RESULTS FROM SUCCESSFUL")) continue;
        g.converged = true;
        g.atoms = punch_block(punch, i + 5, natoms);
        return g;
    }
    std::size_t last = punch.size();
    for (std::size_t i = 0; i < punch.size(); ++i) {
        if (!begins(punch[i], " COORDINATES OF")) continue;
        ++g.cycles;
        last = i;
    }
    if (last < punch.size()) g.atoms = punch_block(punch, last + 3, natoms);
    return g;
}

std::optional<std::vector<std::string>> bader_section(const text::TextLines& punch) {
    for (std::size_t i = 0; i < punch.size(); ++i) {
        if (!begins(punch[i], "----- TOP OF INPUT FILE FOR BADER")) continue;
        std::vector<std::string> out;
        for (std::size_t k = i + 1; k < punch.size(); ++k) out.emplace_back(punch[k]);
        return out;
    }
    return std::nullopt;
}

std::optional<std::vector<std::string>> hessian_group(const text::TextLines& punch) {
    std::size_t i = 0;
    while (i < punch.size() && !begins(punch[i], " $HESS")) ++i;
    std::vector<std::string> group;
    for (; i < punch.size(); ++i) {
        group.emplace_back(text::trim_right(punch[i]));
        if (group.size() > 1 && begins(punch[i], " $END")) return group;
    }
    return std::nullopt;
}

}  // namespace zentol
