// Firefly mode: the input dialog and its deck, the run, the listing and
// punch file read back into the job, the maps, the normal modes with
// their spectrum and movie, and the job queue.
#pragma once

#include <string>
#include <vector>

namespace zentol {

struct Session;

// ---- Input (firefly_input.cpp) ----

// Dialog 116 and the refusals; then job.inp (and the two halves of a
// rotation profile, job.kew for an orbital plot). 0 when no deck was
// written, 1 Save, 3 Run Firefly.
int ff_new_input(Session& s);

// The deck's atom records for the molecule as it stands: Cartesian, or
// the Z-matrix through the MOPAC converter (empty when it failed).
std::vector<std::string> firefly_atom_records(Session& s);

// ---- Output (firefly_update.cpp) ----

// Reads job.lst after a run of the given run type (1 Ener, 2 Opt,
// 3 Hessian, 4 Raman): summary, charges, geometry, orbitals, energy and
// the verdict. Nothing happens without a listing.
void ff_update(Session& s, int run_type);

// The molecule of an empty job from the listing's first coordinate block,
// or from the punch file; false when there was none.
bool load_molecule_from_listing(Session& s);
bool load_molecule_from_punch(Session& s);

// job.wfn from the punch file's AIMPAC section, then the DGrid deck and
// the wavefunction converters.
void make_wavefunction_file(Session& s);

// ---- Mode (firefly_mode.cpp) ----

// "firefly -i job.inp -o job.lst", with " -np" and the cores (I2) for
// more than one core.
std::string firefly_command_line(const std::string& program, const std::string& job, int cores);

// Before a run, in the job's directory: the charge log, the engine's
// punch and dictionary files and the old listing go.
void clear_firefly_run_files(const std::string& job);
// After a run: the engine's punch file kept as job.pun.
void keep_firefly_punch(const std::string& job);

// The run: the engine, the punch copy, the wavefunction, the update.
void run_firefly(Session& s);

// The queue file qfirefly.txt in the scratch folder's sibling "firefly".
std::string firefly_queue_file(const Session& s);

// The mode's loop until the user leaves it.
void firefly_mode(Session& s);

}  // namespace zentol
