// Mopac mode: decks written from the New Input dialog, the engine run, its
// listing read back into the molecule, and the orbital plots.
#pragma once

#include <vector>

#include "engines/mopac/mopac_input.h"

namespace zentol {

struct Session;

// What the mode keeps between its commands.
struct MopacState {
    MopacOptions options;
    int version = kMopac2016;
    bool force = false;              // the deck asks for force constants
    bool energy_run = false;         // the last run was an Energy run that read its orbitals
    std::vector<float> mo_energy;    // by orbital number, as the listing printed them
    int first_orbital = 1;           // the lowest orbital the listing printed
    int homo_index = 0;
};

// Dialog 107 until it is closed: 0 cancelled, 1 Save (the header written),
// 3 Run Mopac.
int new_input(Session& s, MopacState& m);

// The generation to run, with the MOP2016.TXT marker set to match.
int choose_mopac_version(Session& s, bool mopac2016_checked);

// Finishes the deck, runs the engine and reads its listing.
void run_mopac(Session& s, MopacState& m);

// UpDate: reads job.lst again into the job and the molecule, and shows the
// result in the message field.
void update_from_listing(Session& s, MopacState& m);

// The mode's loop until the user leaves it.
void mopac_mode(Session& s);

}  // namespace zentol
