// The editing commands of Build mode: each picks what it needs in the
// view, changes the tables and ends with the round trip through the job's
// files.
#pragma once

#include <functional>

#include "session/display_loop.h"
#include "session/molecule_store.h"

namespace zentol {

class Toolkit;
struct Session;

// Which atoms a pick takes; others are silently passed over.
enum class Want { Any, Hydrogen, NonHydrogen };

struct PickRules {
    Want want = Want::Any;
    bool escapable = true;                       // Esc and the right button end the command
    std::function<bool(int)> accept;             // a further condition, when given
    int end_command = 0;                         // a menu command that ends it too
};

// Waits for a click on a wanted atom and rings it. 0 when the command
// ends instead; `ended` then holds the event that ended it. A click on
// empty space turns the molecule.
int pick_for_command(Session& s, const PickRules& rules, Event* ended = nullptr);

// The view's turn written back into the coordinates and saved.
void write_back_view(Session& s);

void remove_hydrogen_command(Session& s);       // Rm.H
void delete_atoms_command(Session& s);          // Start Non-H atom Delete
void remove_centroids(Session& s);              // Rm.CENT
void purge_command(Session& s);                 // Purge
void make_connection_command(Session& s);       // Mk.Conn
void remove_connections(Session& s);            // Rm.CONN
void make_bond_command(Session& s);             // Mk.Bond
void delete_bond_command(Session& s);           // Del.Bond
void delete_molecule_command(Session& s);       // Del.Mol
void deuterium_to_hydrogen(Session& s);         // D2H
void total_charge_command(Session& s);          // Total Charge

// Store-level steps of the commands, for tests and other modes.
// Deletes a non-hydrogen atom, capping each heavy neighbour with a hydrogen.
void delete_heavy_atom(Store& st, Toolkit* tk, int atom);
// Cuts the bond a-b and caps both ends; false when they are not bonded.
bool cut_bond(Store& st, Toolkit* tk, int a, int b);
// Removes every atom of the molecule containing atom.
void delete_molecule(Store& st, int atom);

}  // namespace zentol
