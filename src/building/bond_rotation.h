// Turning one side of a molecule about a chain bond, and storing a bond or
// a dihedral for the engines' bond scans and rotation profiles. The stored
// marks go to ICONA.DAT (first atom), ICONV.DAT (the bond) and IDHED.DAT
// (the dihedral) in the job's directory, one list-directed record each.
#pragma once

#include "building/vec3.h"
#include "session/molecule_store.h"

namespace zentol {

struct Session;

// What "Start Bond Rotate" does with its picks.
inline constexpr int kRotateBond = 0;     // four atoms, then 3 and 4 turn by key
inline constexpr int kMarkBond = 2;       // two atoms stored as the bond
inline constexpr int kMarkDihedral = 4;   // four atoms stored as the dihedral

// Command 41. With kRotateBond the caller has written the view back, as
// for every Build command.
void bond_rotate(Session& s, int mark_mode);

// Command 26 ("MarkBond"): dialog 124 asks for Bond, Dihedral or Clear;
// Bond and Dihedral go on to bond_rotate with kMarkBond or kMarkDihedral.
void mark_bond_command(Session& s);

// Turns every atom of the marker column by `degrees` about the unit axis
// through `through`; positive turns make the dihedral of a chain
// ..-(axis start)-(axis end)-x grow for a marked x.
void turn_marked_atoms(Store& st, const Vec3& through, const Vec3& axis, float degrees);

}  // namespace zentol
