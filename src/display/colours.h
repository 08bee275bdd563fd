// The colour table, the element list and the element, charge and molecule
// colourings of atoms.
#pragma once

#include <string_view>
#include <vector>

#include "session/molecule_store.h"

namespace zentol {

struct Session;
struct Palette;

// Reads RASMAP<n>.DEF (entries 1-16), fills the fixed charge scale 17-48 and
// writes RGB.LST in the job directory. A missing or short map file leaves
// grey entries and says so in status field 9.
void load_colour_map(Session& s);

// Entries 17-48 and the 32 map values.
void fill_charge_scale(Palette& p);

// The RGB.LST text of a palette.
std::string rgb_listing(const Palette& p);

// element_list: "C", "H", "N", "O", a blank fifth, then every other symbol
// in atom order; at most 20, later new symbols overwriting the twentieth.
void collect_elements(Store& st);

// Reads RASCOL.DEF for the palette index of each listed element; entries the
// file does not name become 1.
void load_element_colours(Session& s);
void apply_element_colour_lines(Store& st, const std::vector<std::string>& lines);

// The palette index of one atom: a label with a blank first character gets 8,
// an element not in the list 2.
int colour_slot(const Label& label, const Store& st);

// atom_colour of every atom from its element.
void assign_element_colours(Store& st);

// Charge colouring: each charge divided by the largest absolute charge and
// matched to the 32 map values within 0.04; the larger matching step wins,
// 32 when none matches. Returns false (and colours nothing) when the number
// of charges is not the atom count.
bool assign_charge_colours(Store& st, const Palette& p, const std::vector<double>& charges);

// Molecule colouring: molecule number + 3, less 8 when that exceeds 11.
void assign_molecule_colours(Store& st);

}  // namespace zentol
