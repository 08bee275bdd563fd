// The job's files as a Tinker program meets them, and what a run left.
//
// Tinker names every file it writes after the coordinate file it was told,
// less its extension, and it is case-sensitive: told "ETHANOL.XYZ" it looks
// for "ETHANOL.key" and "ETHANOL.dyn" and writes "ETHANOL.xyz", or
// "ETHANOL.xyz_2" (then _3, _4 ...) when that name is taken. It never
// overwrites. So before a run the key file is spelled as Tinker looks for
// it and the structures of earlier runs are deleted, and after it the
// structure is looked for under the names Tinker gives it.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "session/molecule_store.h"

namespace zentol {

struct Session;

struct TinkerNames {
    std::string told;            // the structure file as spelled on disk: "ETHANOL.XYZ"
    std::string base;            // told without its extension: "ETHANOL"
    bool plain_taken = false;    // base + ".xyz" stood there before the run under that very spelling
};

// The names of the job's structure file as it stands now.
TinkerNames tinker_names(const Session& s);

// Before a run: deletes the job's structure files of earlier runs (.xyz_2,
// .xyz_3 ... in any spelling) and renames the key file to the spelling
// Tinker looks for. Returns the names to tell Tinker.
TinkerNames prepare_tinker_run(Session& s);

// After a run: the structure file it wrote, "" when there is none: the
// highest base.xyz_N, else base.xyz when that is new and not the told file.
std::string tinker_result_file(const TinkerNames& names);

// A file named exactly so exists (no case folding: Tinker's view).
bool exact_file(const std::string& name);

// The positions of a Tinker restart file (job.dyn), one per atom; empty
// when the file does not hold them whole.
std::vector<std::array<double, 3>> restart_positions(const std::vector<std::string>& dyn);

// True when the positions and the store's atoms have the same shape: the
// same number of atoms and every interatomic distance within 0.001 A, so
// that a turn or a shift of the whole molecule does not count as a change.
bool same_geometry(const std::vector<std::array<double, 3>>& positions, const Store& st);

// Whether the job's restart file is to go before a Dynamics or Anneal run:
// when tk_dyn_stale says so (after Build), or when the structure is no
// longer the one the restart file holds (after Minimize, an edit, a
// profile): Tinker would otherwise go on from the old trajectory.
bool restart_is_stale(const Session& s);

}  // namespace zentol
