// Normal modes as the Firefly and Mopac front ends read them, and the stick
// lists job_IR.lst / job_RA.lst they write: the input of the drawn spectrum
// plot and of the vibration movie.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "text/text_lines.h"

namespace zentol {

struct VibrationMode {
    double frequency = 0;    // cm-1; an imaginary mode is negative
    double intensity = 0;    // IR intensity or Raman activity
    int number = 0;          // the engine's number of the mode
    std::vector<std::array<double, 3>> displacement;   // one an atom
};

// The stick list: a blank record, the title " IR Spectrum" or " Raman
// Spectrum", the heading "  freq.cm**-1  Int.  No.", one row a mode
// (frequency F9.2, intensity F10.5, running number I5) and "  END".
std::vector<std::string> stick_file(const std::vector<VibrationMode>& modes, bool raman);

struct Stick {
    double frequency = 0;
    double intensity = 0;
};

// The sticks from the record after the one that begins "  freq" up to the
// one that begins "  END" (or the end of the file); frequency and
// intensity read in free format. nullopt when there is no "  freq" record.
std::optional<std::vector<Stick>> read_stick_file(const text::TextLines& lines);

}  // namespace zentol
