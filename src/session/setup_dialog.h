// Setup: the options of the session (display page) and the Tinker settings
// (Tinker page) in dialog 106.
#pragma once

namespace zentol {

struct Session;

struct SetupResult {
    bool confirmed = false;
    bool palette_changed = false;
};

// Shows Setup and takes the answers: the level goes to zentol.def and status
// field 7; unless colouring by molecule, the bonds are found again by
// distance.
SetupResult run_setup(Session& s);

// Colours every atom: by charge when charge labels or colours are on and
// <job>_chg.log has one value per atom (otherwise both switch off), by
// molecule, or by element. Charge labels take their values from the log.
void recolour_atoms(Session& s);

// The Setup command of every mode: the dialog, then the colours and the
// picture brought up to date.
void setup_command(Session& s);

}  // namespace zentol
