// The .ins structure file (SHELX-style, for the sibling crystallographic
// programs), the point-group input SYMMOL.INP and the alignment list
// mol_al.lst, all written in one pass with the .xyz file.
#pragma once

#include <string>

#include "session/molecule_store.h"

namespace zentol {

struct Session;

std::string sfac_line(const Store& st);
std::string format_ins(const Store& st, const std::string& job_name);
std::string format_symmol_inp(const Store& st);
std::string format_mol_al(const Store& st);

enum class SaveResult {
    Written,      // the job's .xyz holds the molecule
    Unwritable,   // a value does not fit the file: the file keeps its last good molecule
    Failed,       // the file could not be written (read-only folder, full disk)
    Held,         // a molecule cut on loading is not written over its original
};

// Writes .key (when missing), .xyz, .ins, SYMMOL.INP (more than 2 atoms) and
// mol_al.lst from atom_rec as it stands, and shows the atom and bond counts.
// A molecule that does not fit the .xyz columns is never written; a write
// that fails says which file and why (a message the first time, then the
// status bar) and leaves the molecule in memory.
SaveResult write_job_files(Session& s);

}  // namespace zentol
