// Orca mode: the deck from the Orca Input dialog, the engine run, its
// listing read back (charges, spectra, summary, the optimised geometry),
// the spectrum plots and vibration replay, and the job queue an outside
// runner works through.
#pragma once

#include <string>

#include "engines/orca/orca_input.h"
#include "engines/orca/orca_listing.h"

namespace zentol {

struct Session;

// What one stay in the mode keeps.
struct OrcaState {
    OrcaInput input;                  // the dialog's choices, kept for the next New Input
    OrcaKeywords keywords = orca_keyword_table();
    std::string scf_field;            // the SCF keyword of the last deck
    bool last_deck_am1 = false;
    OrcaFlags flags;
};

// The configured ORCA program, and its converters: orca_pltvib and
// orca_2mkl as configured, else beside the ORCA program. "" when missing.
std::string orca_program(const Session& s);
std::string orca_helper(const Session& s, const std::string& key);

// bin/orca.txt: read, or asked for once with dialog 104 and written.
int load_orca_cores(Session& s);

// Before a run or a queued run: job.xyz kept as old_job.xyz (ORCA writes
// its result under the name of the job's own structure file) and the
// files of an earlier run deleted. In the job's directory.
// The queue runner leaves job.xyz in place (`keep_structure_file`): the
// job may be open in Zentol meanwhile, which reads and writes it.
void keep_structure_safe(Session& s);
void keep_structure_safe(const std::string& job, bool keep_structure_file = false);

// The run's line in the job's directory: "orca job.ino >job.lst". The
// queue runner starts queued decks with the same line.
std::string orca_command_line(const std::string& program, const std::string& job);

// After a run that left job.lst: ORCA's job.xyz kept as job.out and the
// job's own structure file put back. False when there is no listing.
bool restore_structure_after_run(const std::string& job);

// New Input: dialog 125 and the deck; true when it was closed with Run.
bool orca_new_input(Session& s, OrcaState& m);
// RunOrca: asks, keeps the structure file safe, runs, reads the listing.
void orca_run(Session& s, OrcaState& m);
// Update: reads job.lst again, writes the side files, runs the converters
// and returns an optimised geometry.
void orca_update(Session& s, OrcaState& m);

// The queue qorca.txt beside the scratch folder.
std::string orca_queue_file(const Session& s);
void add_to_orca_queue(Session& s);
void delete_orca_queue(Session& s);

// job_orca.pdb from orca1.pdb with the bonds as CONECT records.
void make_job_orca_pdb(Session& s);

// The mode from the Display loop. False, with field 9 telling why, when
// the ORCA program is not there.
bool orca_mode(Session& s);

}  // namespace zentol
