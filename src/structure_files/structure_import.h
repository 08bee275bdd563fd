// A molecule of another program's file made into the job's tables, and the
// job's molecule handed out for another program's format.
#pragma once

#include <string>
#include <vector>

#include "session/molecule_store.h"
#include "structure_files/openbabel_import.h"

namespace zentol {

class Toolkit;

// What the conversion had to leave out or work out.
struct ImportNotes {
    int atoms_in_file = 0;       // more than the store holds: the first 2500 are kept
    int bonds_left_out = 0;      // beyond 7 an atom, which the .xyz file cannot hold
    bool bonds_by_distance = false;
};

// Fills the store's atoms: labels in the job's 4-character form, the
// coordinates, the file's bonds (Zentol's distance rule with the tolerance
// where the file states none, and for the atoms a PDB file leaves without
// bonds), and the MM3 types Build mode gives. At most 7 neighbours an atom,
// as the job's file holds. The bond list is rebuilt.
void store_from_foreign(const ForeignMolecule& m, Store& st, Toolkit* tk, float tolerance, ImportNotes* notes);

// MM3 types by Build mode's rules: each atom's element type, corrected for
// the number of its neighbours as a template of that size would be (a
// terminal atom as a bare atom on its parent, two neighbours in a line as
// the linear template), and the hydrogens typed by the atom they sit on.
void assign_build_types(Store& st);

// The job's atoms as another program sees them: elements, coordinates,
// bonds (orders left to the writer), labels as atom names, the charge and
// multiplicity, and per-atom partial charges when there is one for every
// atom. Centroids, box corners and dummy atoms are left out.
ForeignMolecule foreign_from_store(const Store& st, const std::string& title, int charge, int multiplicity,
                                   const std::vector<double>& partial_charges);

}  // namespace zentol
