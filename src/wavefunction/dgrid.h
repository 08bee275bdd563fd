// DGrid on a Firefly wavefunction: a batch file naming the installed DGrid
// with the job's wavefunction, a fixed deck (density on a grid, basins,
// basin overlaps, delocalisation indices), and the two converter stages
// that turn job.wfn into DGrid's input. Running the batch is left to the
// user.
#pragma once

#include <string>
#include <vector>

namespace zentol {

struct Session;

// job_D.bat: the one line that runs DGrid on job.wfn.
std::vector<std::string> dgrid_batch(const std::string& program, const std::string& job);

// job_D.inp: the 29 records of the deck.
std::vector<std::string> dgrid_deck(const std::string& job);

// The DGrid program: version 5.1 (engines.def key dgrid51) wins over 5.0
// (dgrid50); "" when neither is installed.
std::string dgrid_program(const Session& s);

// Nothing without job.wfn. Otherwise job_D.bat and job_D.inp when a DGrid
// is installed (a message names the keys when not), then elf_input_gen on
// the job and dos2unix on run_<job>, each waited for; a missing converter
// gets a message. Returns false when job.wfn is missing.
bool dgrid_prepare(Session& s, const std::string& job);

}  // namespace zentol
