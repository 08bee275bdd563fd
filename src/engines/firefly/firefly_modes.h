// The normal modes of a Firefly Hessian or Raman run, as the listing's
// "NORMAL COORDINATE ANALYSIS" prints them: frequencies, IR intensities or
// Raman activities, and the displacement of every atom.
#pragma once

#include <vector>

#include "spectra/stick_list.h"
#include "text/text_lines.h"

namespace zentol {

struct ListingModes {
    bool found = false;                 // a table of normal modes was read
    int rigid_first = 0, rigid_last = 0;   // the rotations and translations
    int natoms = 0;                     // atoms of the displacement table
    std::vector<VibrationMode> vibrations;   // the modes less the rigid ones
};

// Reads the last table of the listing; `raman` takes the Raman activity
// as the intensity, else the IR intensity.
ListingModes read_listing_modes(const text::TextLines& listing, bool raman);

}  // namespace zentol
