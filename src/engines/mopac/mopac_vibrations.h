// The vibrations of a MOPAC FORCE run, read from the listing: the IR
// stick list job_IR.lst, its drawn spectrum and the vibration movie of
// Mopac mode ("IR Spectrum" and "Animate Vib.").
#pragma once

#include <vector>

#include "spectra/frame_alignment.h"
#include "spectra/stick_list.h"
#include "text/text_lines.h"

namespace zentol {

struct Session;

struct MopacVibrations {
    std::vector<VibrationMode> modes;    // in the order of DESCRIPTION OF VIBRATIONS
    bool displacements = false;          // the normal coordinates were found for every mode
    std::vector<Point3> orientation;     // the atoms as the FORCE calculation turned them
};

// The last FORCE calculation of the listing. The intensity of a mode is
// the square of its transition dipole.
MopacVibrations read_mopac_vibrations(const text::TextLines& listing);

// "IR Spectrum": job_IR.lst from the listing, then the drawn spectrum.
void mopac_ir_spectrum(Session& s);

// "Animate Vib.": job_IR.lst from the listing, then the movie.
void mopac_animate_vibrations(Session& s);

}  // namespace zentol
