// Operations every mode shares on the store.
#pragma once

#include <string_view>

#include "session/molecule_store.h"

namespace zentol {

class Toolkit;
struct Session;

// element_lookup modes: 2 confirm every radius, 1 clear the confirmations;
// 0..-5 covalent radius; -6..-10 atomic number; -11 and below Allen
// electronegativity. An unconfirmed radius is asked for with dialog 103.
inline constexpr int kLookupConfirmAll = 2;
inline constexpr int kLookupClearConfirm = 1;
inline constexpr int kLookupRadius = 0;
inline constexpr int kLookupAtomicNumber = -6;
inline constexpr int kLookupElectronegativity = -11;

float element_lookup(Store& store, Toolkit* tk, std::string_view label, int mode);

// True when the label's second character is a digit or blank.
bool label_is_one_letter(std::string_view label);

// The element symbol of a label, two characters ("C ", "Cl").
std::string element_symbol(std::string_view label);

// Rebuilds bond_a/bond_b from the connectivity table, stopping at 4000
// bonds, then copies the labels to the display table.
void rebuild_bond_list(Store& store);

// Pushes atom_rec to the display copy (centred, scaled, coloured), or with
// view_action 10 pulls the display copy back into atom_rec.
void prepare_display(Session& s);

// Screen fractions of every display atom, from the scene's fixed camera.
void project_atoms(Session& s);

// Writes the job's files, reads the .xyz back, prepares the display, rebuilds
// the bonds, projects and draws.
void save_and_reload(Session& s);

// The round trip with the view's turn kept: the display copy goes back into
// atom_rec first (view_action 10), so the molecule comes back as it is seen.
void reload_keeping_turn(Session& s);

// Draws the current display copy.
void draw_scene(Session& s);

}  // namespace zentol
