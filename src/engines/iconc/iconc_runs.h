// ICONC runs: where the two programs and their tables are, the working
// copy of the molecule the runs are made on, one run of both programs, and
// the energy run with its results.
#pragma once

#include <string>
#include <vector>

#include "engines/iconc/iconc_deck.h"

namespace zentol {

struct Session;

// The preparation program, the engine and the folder their tables
// (atomdef.dat, voi.dat, Foi.dat) are copied from. engines.def names them
// by "iconc_dir" (a folder holding all five) or by "inputc" and "iconc".
struct IconcPrograms {
    std::string inputc, iconc, data_dir;
    // Field 9's words when a program is missing; empty when both are there.
    std::string missing;
};
IconcPrograms find_iconc_programs(const Session& s);

// The engine's tables, copied into the job directory for a run.
inline constexpr const char* kIconcTables[] = {"atomdef.dat", "voi.dat", "Foi.dat"};

// Dialog 111, as the mode keeps it between runs.
struct IconcOptions {
    int charge = 0;
    int calc_type = 1;          // 1 Energy, 2 B-Scan, 3 Optimize
    bool apply_scan = false;    // B-Scan: the molecule takes the scan's minimum
    bool update = false;        // Optimize: the molecule takes the optimised structure
    bool iterate = false;       // charge iteration
    int metals = 1;             // 1..3
    float step = 0.04f;         // Angstrom, 0.01..0.5
    int steps = 60;             // 10..60
    float ediff = 0.004f;       // eV
};

// What the mode keeps between its commands.
struct IconcState {
    IconcPrograms programs;
    IconcOptions options;
    // The working copy: one entry per atom of the molecule, dummy centres
    // included, so that entry i-1 is atom i.
    std::vector<IconcAtom> atoms;
    bool prepared = false;              // the labels were asked for
    std::vector<std::string> copied;    // tables this visit copied in, removed on leaving
};

// "&NewInput": every atom's label folded for the engine, a transition
// metal's name asked for with dialog 115 (its name in the engine's table),
// the coordinates copied. Switches charge iteration on when there is a metal.
void prepare_iconc_input(Session& s, IconcState& state);

// The working coordinates taken again from the molecule.
void refresh_working_coordinates(const Session& s, IconcState& state);

// Copies the tables the job directory lacks. False, after a message,
// when one is nowhere to be found.
bool copy_iconc_tables(Session& s, IconcState& state);

// inputc.inp from the working copy; false when it could not be written.
bool write_iconc_deck(const IconcState& state);

// One run: the deck written, inputc and iconc run in the job directory, and
// the total energy of ENERTOT.DAT (0.0 when the run left none). The files of
// the run before are removed first, so a failed run never reads them.
double run_iconc(Session& s, const IconcState& state);

// The energy run: one run, its energy in the .GEO log and field 9, the
// listing kept as job.lst, its levels logged, the net charges in
// job_chg.log and the control file of the orbital plot.
void iconc_energy_run(Session& s, IconcState& state);

// The scratch files of the runs and the tables copied in, removed.
void remove_iconc_scratch(IconcState& state);

}  // namespace zentol
