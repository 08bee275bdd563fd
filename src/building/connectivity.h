// The connectivity table as a graph: atom types from symbols, bonds from
// distances, the walks that find fragments, molecules and rings, and the
// edits that keep the table packed when atoms come and go.
#pragma once

#include <string>
#include <string_view>

#include "session/molecule_store.h"

namespace zentol {

class Toolkit;

// 'H' or 'D' as the first character.
bool is_hydrogen(const Label& label);

// The default MM3 type of a label's element: 240 for a centroid "CN",
// 1 for a dummy Q and for unknown symbols.
int atom_type_of(const Store& st, std::string_view label);

// Capital then small letter ("CL1" -> "Cl1"), except labels beginning
// "BX" or "CEN".
Label normalise_symbol(std::string_view label);

// Covalent radius of atom i's element, as every placement uses it.
float covalent_radius(Store& st, Toolkit* tk, int atom);

// Bonds from distances: a pair bonds when closer than the sum of its radii
// plus the tolerance. A row holds its first eight partners in ascending
// order, the count says how many there are. Found through a grid of cells,
// with the same result as trying every pair in order. Rebuilds the bond list.
void perceive_bonds(Store& st, Toolkit* tk, float tolerance);

// Marker column (kConnMark) after a walk: 1 for reached atoms.
bool is_marked(const Store& st, int atom);

// Marks every atom connected to a (a itself through its neighbours).
void mark_fragment(Store& st, int a);

// Molecule numbers into the sixth value of every atom record.
void number_molecules(Store& st);

// The bond a-b as a question: 0 "Atoms not Adjacent", 2 "Atoms in Ring",
// 1 a chain bond, when the marker column holds b's side.
inline constexpr int kNotAdjacent = 0;
inline constexpr int kChainBond = 1;
inline constexpr int kRingBond = 2;
int test_bond(Store& st, int a, int b);

// Row edits. Slots are 1..8 and a 0 is an empty slot.
bool has_neighbour(const Store& st, int atom, int other, int last_slot = kMaxNeighbours);
// Takes other out of atom's row, shifting the later slots left, the count
// one less.
void remove_neighbour(Store& st, int atom, int other);
// The first slot 1..last_slot naming old_nbr names new_nbr instead.
void replace_neighbour(Store& st, int atom, int old_nbr, int new_nbr, int last_slot = 7);
// Adds other behind the last used slot, the count one more.
void add_neighbour(Store& st, int atom, int other);

// Appends an atom with an empty row; returns its number.
int append_atom(Store& st, const Label& label, float x, float y, float z, float radius, int type);

// Removes atom i: later atoms move down one place, references to them are
// lowered and references to i are taken out of every row first.
void remove_atom(Store& st, int i);

}  // namespace zentol
