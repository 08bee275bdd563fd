#include "building/connectivity.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

#include "session/store_ops.h"
#include "text/fixed_format.h"

namespace zentol {

bool is_hydrogen(const Label& label) { return label[0] == 'H' || label[0] == 'D'; }

int atom_type_of(const Store& st, std::string_view label) {
    const std::string l = label_text(make_label(label));
    if ((l[0] == 'C' || l[0] == 'c') && (l[1] == 'N' || l[1] == 'n') && l[2] == ' ') return 240;
    if (l[0] == 'Q' || l[0] == 'q') return 1;
    // The lookup only reads the table here, so a const store will do.
    const float row = element_lookup(const_cast<Store&>(st), nullptr, l, kLookupAtomicNumber);
    const int r = row >= 1.0f ? static_cast<int>(row) : 0;
    return r >= 1 && r <= kElementRows ? st.elements[r].mm3_type : 1;
}

Label normalise_symbol(std::string_view label) {
    Label l = make_label(label);
    if (text::starts_with_nocase(label_text(l), "BX") || text::starts_with_nocase(label_text(l), "CEN")) return l;
    if (l[0] >= 'a' && l[0] <= 'z') l[0] = static_cast<char>(l[0] - 'a' + 'A');
    if (l[1] >= 'A' && l[1] <= 'Z') l[1] = static_cast<char>(l[1] - 'A' + 'a');
    return l;
}

float covalent_radius(Store& st, Toolkit* tk, int atom) {
    return element_lookup(st, tk, label_text(st.atom_label[atom]), kLookupRadius);
}

namespace {

// Distance test of one pair, always with the lower atom first so that the
// rounding is the same whichever side asks.
bool bonded(const Store& st, const std::vector<float>& r, int i, int j, float tolerance) {
    if (j < i) std::swap(i, j);
    const float dx = st.atom_rec[i][kX] - st.atom_rec[j][kX];
    const float dy = st.atom_rec[i][kY] - st.atom_rec[j][kY];
    const float dz = st.atom_rec[i][kZ] - st.atom_rec[j][kZ];
    return std::sqrt(dx * dx + dy * dy + dz * dz) < r[i] + r[j] + tolerance;
}

// Atoms by cell, for the occupied cells only: a hash from the cell's three
// whole-number coordinates to the chain of its atoms. However far apart the
// atoms lie (one fragment 300 Angstrom away, or a wild coordinate), the work
// stays linear in the atom count.
class CellHash {
public:
    CellHash(const Store& st, int n, float cell) : cell_(std::max(cell, 1e-3f)), next_(static_cast<std::size_t>(n) + 1, 0) {
        std::size_t size = 16;
        while (size < 2 * static_cast<std::size_t>(n)) size *= 2;
        while ((std::size_t(1) << bits_) < size) ++bits_;
        keys_.assign(size, kEmpty);
        first_.assign(size, 0);
        for (int i = n; i >= 1; --i) {
            std::size_t slot = find(key(cell_of(st, i)));
            keys_[slot] = key(cell_of(st, i));
            next_[static_cast<std::size_t>(i)] = first_[slot];
            first_[slot] = i;
        }
    }
    // The cell of an atom; coordinates that are not finite or lie beyond a
    // million cells are held at the edge before they become whole numbers.
    std::array<int, 3> cell_of(const Store& st, int i) const {
        std::array<int, 3> c{};
        for (int a = 0; a < 3; ++a) {
            float v = st.atom_rec[i][a] / cell_;
            c[a] = std::isfinite(v) ? static_cast<int>(std::floor(std::clamp(v, -kLimit, kLimit))) : 0;
        }
        return c;
    }
    // The first atom of a cell, 0 when it holds none; then next(atom).
    int first(const std::array<int, 3>& c) const {
        std::size_t slot = find(key(c));
        return keys_[slot] == kEmpty ? 0 : first_[slot];
    }
    int next(int atom) const { return next_[static_cast<std::size_t>(atom)]; }

private:
    static constexpr float kLimit = 1.0e6f;
    static constexpr std::uint64_t kEmpty = ~std::uint64_t(0);
    static std::uint64_t key(const std::array<int, 3>& c) {
        auto part = [](int v) { return static_cast<std::uint64_t>(v + (1 << 20) + 1) & 0x1FFFFF; };
        return part(c[0]) | part(c[1]) << 21 | part(c[2]) << 42;
    }
    std::size_t find(std::uint64_t k) const {
        // Multiplicative hashing: the top bits of the product mix all three parts.
        std::size_t mask = keys_.size() - 1;
        auto slot = static_cast<std::size_t>((k * 0x9E3779B97F4A7C15ULL) >> (64 - bits_));
        while (keys_[slot] != kEmpty && keys_[slot] != k) slot = (slot + 1) & mask;
        return slot;
    }
    float cell_;
    int bits_ = 0;
    std::vector<std::uint64_t> keys_;
    std::vector<int> first_, next_;
};

}  // namespace

void perceive_bonds(Store& st, Toolkit* tk, float tolerance) {
    for (int c = kConnFirstNbr; c <= kConnMark; ++c)
        for (int i = 1; i <= st.natoms; ++i) st.conn[c][i] = 0;
    const int n = std::min(st.natoms, kMaxAtoms);
    if (n == 0) {
        rebuild_bond_list(st);
        return;
    }
    std::vector<float> r(static_cast<std::size_t>(n) + 1, 0.0f);
    float r_max = 0;
    for (int i = 1; i <= n; ++i) {
        r[static_cast<std::size_t>(i)] = covalent_radius(st, tk, i);
        r_max = std::max(r_max, r[static_cast<std::size_t>(i)]);
    }
    // A cell spans the longest possible bond, so partners lie in the 27
    // cells round an atom's own.
    const CellHash cells(st, n, 2 * r_max + tolerance);
    std::vector<int> found;
    for (int i = 1; i <= n; ++i) {
        found.clear();
        const auto c = cells.cell_of(st, i);
        for (int dz = -1; dz <= 1; ++dz)
            for (int dy = -1; dy <= 1; ++dy)
                for (int dx = -1; dx <= 1; ++dx)
                    for (int j = cells.first({c[0] + dx, c[1] + dy, c[2] + dz}); j; j = cells.next(j))
                        if (j != i && bonded(st, r, i, j, tolerance)) found.push_back(j);
        // Pair by pair in order, a row fills with the partners below the
        // atom and then those above it: ascending.
        std::sort(found.begin(), found.end());
        st.conn_count(i) = static_cast<int>(found.size());
        for (int k = 0; k < std::min<int>(static_cast<int>(found.size()), kMaxNeighbours); ++k)
            st.nbr(i, k + 1) = found[static_cast<std::size_t>(k)];
    }
    rebuild_bond_list(st);
}

bool is_marked(const Store& st, int atom) { return st.conn[kConnMark][atom] != 0; }

namespace {

// Sweeps from `from` on, marking unmarked neighbours of marked atoms, until
// a sweep marks nothing.
void sweep(Store& st, int from) {
    bool changed = true;
    while (changed) {
        changed = false;
        for (int i = from; i <= st.natoms; ++i) {
            if (!is_marked(st, i)) continue;
            for (int k = 1; k <= kMaxNeighbours; ++k) {
                const int j = st.nbr(i, k);
                if (j >= 1 && j <= st.natoms && !is_marked(st, j)) {
                    st.conn[kConnMark][j] = 1;
                    changed = true;
                }
            }
        }
    }
}

void mark_neighbours(Store& st, int a) {
    for (int k = 1; k <= kMaxNeighbours; ++k) {
        const int j = st.nbr(a, k);
        if (j >= 1 && j <= st.natoms) st.conn[kConnMark][j] = 1;
    }
}

}  // namespace

void mark_fragment(Store& st, int a) {
    for (int i = 1; i <= st.natoms; ++i) st.conn[kConnMark][i] = 0;
    mark_neighbours(st, a);
    sweep(st, 1);
}

void number_molecules(Store& st) {
    if (st.natoms == 0) return;
    int number = 1;
    if (st.atom_rec[1][kMolecule] > 0) {
        float top = 0;
        for (int i = 1; i <= st.natoms; ++i) top = std::max(top, st.atom_rec[i][kMolecule]);
        number = static_cast<int>(top) + 1;
        for (int i = 1; i <= st.natoms; ++i) st.atom_rec[i][kMolecule] = 0;
    }
    for (int start = 1; start <= st.natoms; ++start) {
        if (st.atom_rec[start][kMolecule] > 0) continue;
        for (int i = 1; i <= st.natoms; ++i) st.conn[kConnMark][i] = 0;
        st.conn[kConnMark][start] = 1;
        mark_neighbours(st, start);
        sweep(st, start);
        for (int i = 1; i <= st.natoms; ++i)
            if (is_marked(st, i) && st.atom_rec[i][kMolecule] == 0) st.atom_rec[i][kMolecule] = float(number);
        ++number;
    }
}

int test_bond(Store& st, int a, int b) {
    int slot_a = 0, slot_b = 0;
    for (int k = 1; k <= kMaxNeighbours; ++k) {
        if (!slot_a && st.nbr(a, k) == b) slot_a = k;
        if (!slot_b && st.nbr(b, k) == a) slot_b = k;
    }
    if (!slot_a) return kNotAdjacent;
    st.nbr(a, slot_a) = 0;
    if (slot_b) st.nbr(b, slot_b) = 0;
    mark_fragment(st, b);
    st.conn[kConnMark][b] = 1;
    const bool ring = is_marked(st, a);
    st.nbr(a, slot_a) = b;
    if (slot_b) st.nbr(b, slot_b) = a;
    return ring ? kRingBond : kChainBond;
}

bool has_neighbour(const Store& st, int atom, int other, int last_slot) {
    for (int k = 1; k <= last_slot; ++k)
        if (st.nbr(atom, k) == other) return true;
    return false;
}

void remove_neighbour(Store& st, int atom, int other) {
    for (int k = 1; k <= kMaxNeighbours; ++k) {
        if (st.nbr(atom, k) != other) continue;
        for (int m = k; m < kMaxNeighbours; ++m) st.nbr(atom, m) = st.nbr(atom, m + 1);
        st.nbr(atom, kMaxNeighbours) = 0;
        st.conn_count(atom) = std::max(0, st.conn_count(atom) - 1);
        return;
    }
}

void replace_neighbour(Store& st, int atom, int old_nbr, int new_nbr, int last_slot) {
    for (int k = 1; k <= last_slot; ++k)
        if (st.nbr(atom, k) == old_nbr) {
            st.nbr(atom, k) = new_nbr;
            return;
        }
}

void add_neighbour(Store& st, int atom, int other) {
    int last = 0;
    for (int k = 1; k <= kMaxNeighbours; ++k)
        if (st.nbr(atom, k) != 0) last = k;
    if (last < kMaxNeighbours) st.nbr(atom, last + 1) = other;
    ++st.conn_count(atom);
}

int append_atom(Store& st, const Label& label, float x, float y, float z, float radius, int type) {
    const int n = ++st.natoms;
    st.atom_label[n] = label;
    st.atom_rec[n] = {x, y, z, radius, 0, 0};
    for (int c = 0; c <= kConnMark2; ++c) st.conn[c][n] = 0;
    st.conn_type(n) = type;
    return n;
}

void remove_atom(Store& st, int i) {
    const int n = st.natoms;
    if (i < 1 || i > n) return;
    for (int a = 1; a <= n; ++a)
        if (a != i)
            while (has_neighbour(st, a, i)) remove_neighbour(st, a, i);
    for (int a = i; a < n; ++a) {
        st.atom_label[a] = st.atom_label[a + 1];
        st.atom_rec[a] = st.atom_rec[a + 1];
        for (int c = 0; c <= kConnMark2; ++c) st.conn[c][a] = st.conn[c][a + 1];
    }
    for (int c = 0; c <= kConnMark2; ++c) st.conn[c][n] = 0;
    st.atom_label[n] = make_label("");
    st.atom_rec[n] = {};
    st.natoms = n - 1;
    for (int a = 1; a <= st.natoms; ++a)
        for (int k = 1; k <= kMaxNeighbours; ++k)
            if (st.nbr(a, k) > i) --st.nbr(a, k);
}

}  // namespace zentol
