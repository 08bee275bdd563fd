#include "structure_files/structure_import.h"

#include <algorithm>
#include <cmath>
#include <memory>

#include "analysis/unique_names.h"
#include "building/connectivity.h"
#include "building/placement.h"
#include "session/store_ops.h"
#include "text/fixed_format.h"

namespace zentol {

namespace {

// The .xyz file keeps 7 neighbours an atom; holding no more in memory keeps
// the molecule on screen the same as the one saved.
constexpr int kFileNeighbours = kMaxNeighbours - 1;

// A bond of the file, unless one of its atoms is full or it is there
// already. False when it had to be left out.
bool add_bond(Store& st, int a, int b) {
    if (a == b || a < 1 || b < 1 || a > st.natoms || b > st.natoms) return true;
    if (has_neighbour(st, a, b)) return true;
    if (st.conn_count(a) >= kFileNeighbours || st.conn_count(b) >= kFileNeighbours) return false;
    add_neighbour(st, a, b);
    add_neighbour(st, b, a);
    return true;
}

// Zentol's distance rule for the atoms the file gave no bond: the rule runs
// on a copy, and its bonds that touch such an atom are added.
void bond_unbonded_by_distance(Store& st, Toolkit* tk, float tolerance, ImportNotes& notes) {
    std::vector<bool> bare(static_cast<std::size_t>(st.natoms) + 1, false);
    bool any = false;
    for (int i = 1; i <= st.natoms; ++i) any |= (bare[static_cast<std::size_t>(i)] = st.conn_count(i) == 0);
    if (!any) return;
    auto guess = std::make_unique<Store>(st);
    perceive_bonds(*guess, tk, tolerance);
    for (int i = 1; i <= st.natoms; ++i)
        for (int slot = 1; slot <= std::min(guess->conn_count(i), kMaxNeighbours); ++slot) {
            const int j = guess->nbr(i, slot);
            if (j <= i || (!bare[static_cast<std::size_t>(i)] && !bare[static_cast<std::size_t>(j)])) continue;
            if (!add_bond(st, i, j)) ++notes.bonds_left_out;
        }
    notes.bonds_by_distance = true;
}

// Keeps at most 7 neighbours a row after the distance rule, dropping the
// bond from both rows.
void trim_rows(Store& st, ImportNotes& notes) {
    for (int i = 1; i <= st.natoms; ++i) {
        st.conn_count(i) = std::min(st.conn_count(i), kMaxNeighbours);
        while (st.conn_count(i) > kFileNeighbours) {
            const int j = st.nbr(i, st.conn_count(i));
            remove_neighbour(st, i, j);
            if (j >= 1 && j <= st.natoms && has_neighbour(st, j, i)) remove_neighbour(st, j, i);
            ++notes.bonds_left_out;
        }
    }
    // A partner past a crowded row's eighth slot was never stored there:
    // the bond goes from the other row too.
    for (int i = 1; i <= st.natoms; ++i)
        for (int slot = st.conn_count(i); slot >= 1; --slot) {
            const int j = st.nbr(i, slot);
            if (j >= 1 && j <= st.natoms && !has_neighbour(st, j, i)) remove_neighbour(st, i, j);
        }
}

float angle_at(const Store& st, int centre, int a, int b) {
    float u[3], v[3];
    for (int k = 0; k < 3; ++k) {
        u[k] = st.atom_rec[a][k] - st.atom_rec[centre][k];
        v[k] = st.atom_rec[b][k] - st.atom_rec[centre][k];
    }
    const float nu = std::sqrt(u[0] * u[0] + u[1] * u[1] + u[2] * u[2]);
    const float nv = std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
    if (nu <= 0 || nv <= 0) return 180.0f;
    const float c = std::clamp((u[0] * v[0] + u[1] * v[1] + u[2] * v[2]) / (nu * nv), -1.0f, 1.0f);
    return std::acos(c) * 57.29578f;
}

// The first neighbour of an atom (its parent, for a terminal atom).
int first_neighbour(const Store& st, int i) {
    for (int slot = 1; slot <= kMaxNeighbours; ++slot)
        if (st.nbr(i, slot) >= 1 && st.nbr(i, slot) <= st.natoms) return st.nbr(i, slot);
    return 0;
}

// Build mode's type of a heavy atom with k neighbours: a template holds the
// centre, the back point to the parent and one point for each further
// neighbour, so k neighbours make a template of k + 1; a terminal atom is
// the bare atom laid over a hydrogen (size 1). Two neighbours in a line are
// the linear template (choice 2), bent ones the bent template (choice 3).
int heavy_atom_type(const Store& st, int i, int parent_type) {
    const int type = atom_type_of(st, label_text(st.atom_label[i]));
    const int k = st.conn_count(i);
    if (k == 0) return type;
    int choice = 6;
    if (k == 2) {
        const int a = st.nbr(i, 1), b = st.nbr(i, 2);
        choice = angle_at(st, i, a, b) > 150.0f ? 2 : 3;
    }
    return correct_type(type, parent_type, k == 1 ? 1 : k + 1, choice);
}

bool is_placeholder(const Label& l) {
    const std::string t = label_text(l);
    return text::starts_with_nocase(t, "CEN") || text::starts_with_nocase(t, "BX") || t[0] == 'Q' || t[0] == 'q' ||
           (t[0] == 'C' && t[1] == 'n' && t[2] == ' ');
}

}  // namespace

void assign_build_types(Store& st) {
    // Heavy atoms first, each on its own; then a terminal atom again with
    // its parent's type (a carbonyl O on an sp carbon differs); then the
    // hydrogens by the atom they sit on.
    for (int i = 1; i <= st.natoms; ++i)
        if (!is_hydrogen(st.atom_label[i])) st.conn_type(i) = heavy_atom_type(st, i, 0);
    for (int i = 1; i <= st.natoms; ++i) {
        if (is_hydrogen(st.atom_label[i]) || st.conn_count(i) != 1) continue;
        const int parent = first_neighbour(st, i);
        if (parent && !is_hydrogen(st.atom_label[parent]))
            st.conn_type(i) = heavy_atom_type(st, i, st.conn_type(parent));
    }
    for (int i = 1; i <= st.natoms; ++i) {
        if (!is_hydrogen(st.atom_label[i])) continue;
        const int parent = first_neighbour(st, i);
        st.conn_type(i) = parent && !is_hydrogen(st.atom_label[parent])
                              ? hydrogen_type(st.conn_type(parent))
                              : atom_type_of(st, label_text(st.atom_label[i]));
    }
}

void store_from_foreign(const ForeignMolecule& m, Store& st, Toolkit* tk, float tolerance, ImportNotes* notes) {
    ImportNotes local;
    ImportNotes& n = notes ? *notes : local;
    n = {};
    n.atoms_in_file = static_cast<int>(m.atoms.size());
    st.natoms = std::min(n.atoms_in_file, kMaxAtoms);
    st.natoms_file = st.natoms;
    st.box_corner_count = 0;
    for (int c = 1; c <= kConnMark2; ++c)
        for (int i = 1; i <= st.natoms; ++i) st.conn[c][i] = 0;
    for (int i = 1; i <= st.natoms; ++i) {
        const ForeignAtom& a = m.atoms[static_cast<std::size_t>(i - 1)];
        st.atom_label[i] = normalise_symbol(a.symbol.size() > 2 ? a.symbol.substr(0, 2) : a.symbol);
        st.atom_rec[i] = {static_cast<float>(a.x), static_cast<float>(a.y), static_cast<float>(a.z), 0, 0, 0};
    }
    relabel_atoms(st);
    for (int i = 1; i <= st.natoms; ++i)
        st.atom_rec[i][kRadius] = element_lookup(st, tk, label_text(st.atom_label[i]), kLookupRadius);
    for (const ForeignBond& b : m.bonds)
        if (!add_bond(st, b.a, b.b)) ++n.bonds_left_out;
    if (m.bonds.empty()) {
        perceive_bonds(st, tk, tolerance);
        n.bonds_by_distance = true;
        trim_rows(st, n);
    } else if (m.bonds_partial) {
        bond_unbonded_by_distance(st, tk, tolerance, n);
    }
    for (int i = 1; i <= st.natoms; ++i) st.conn[kConnMark2][i] = 2;
    assign_build_types(st);
    rebuild_bond_list(st);
}

ForeignMolecule foreign_from_store(const Store& st, const std::string& title, int charge, int multiplicity,
                                   const std::vector<double>& partial_charges) {
    ForeignMolecule m;
    m.title = title;
    m.total_charge = charge;
    m.multiplicity = multiplicity;
    m.has_partial_charges = static_cast<int>(partial_charges.size()) >= st.natoms && st.natoms > 0;
    std::vector<int> number(static_cast<std::size_t>(st.natoms) + 1, 0);
    for (int i = 1; i <= st.natoms; ++i) {
        if (is_placeholder(st.atom_label[i])) continue;
        const std::string label = label_text(st.atom_label[i]);
        ForeignAtom a;
        a.symbol = std::string(text::trim(element_symbol(label)));
        const int row = static_cast<int>(element_lookup(const_cast<Store&>(st), nullptr, label, kLookupAtomicNumber));
        a.atomic_number = a.symbol == "D" ? 1 : (row >= 1 && row < kElementRows ? row : 0);
        a.x = st.atom_rec[i][kX];
        a.y = st.atom_rec[i][kY];
        a.z = st.atom_rec[i][kZ];
        if (m.has_partial_charges) a.partial_charge = partial_charges[static_cast<std::size_t>(i - 1)];
        a.name = std::string(text::trim(label));
        m.atoms.push_back(std::move(a));
        number[static_cast<std::size_t>(i)] = static_cast<int>(m.atoms.size());
    }
    for (int i = 1; i <= st.natoms; ++i)
        for (int slot = 1; slot <= kMaxNeighbours; ++slot) {
            const int j = st.nbr(i, slot);
            if (j <= i || j > st.natoms) continue;
            const int a = number[static_cast<std::size_t>(i)], b = number[static_cast<std::size_t>(j)];
            if (a && b) m.bonds.push_back({a, b, 0});
        }
    return m;
}

}  // namespace zentol
