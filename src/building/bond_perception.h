// Bonds found from distances and covalent radii.
#pragma once

#include "session/molecule_store.h"

namespace zentol {

class Toolkit;

// Clears every atom's neighbours and marks, then bonds each pair closer than
// the sum of their covalent radii plus the tolerance. A count may pass 8;
// only the first 8 neighbours are stored. Rebuilds the bond list.
void perceive_bonds_by_distance(Store& st, Toolkit* tk, float tolerance);

}  // namespace zentol
