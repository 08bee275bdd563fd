// The ORCA deck job.ino, written from the choices of the Orca Input dialog
// and the molecule. The program never reads the deck's keywords back: a
// user who needs more than the dialog offers edits the deck by hand.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "session/molecule_store.h"

namespace zentol {

// What dialog 125 holds.
struct OrcaInput {
    int charge = 0;
    int multiplicity = 1;
    int run_type = 2;        // 1 Energy, 2 Optimisation
    int method = 2;          // 1 B3LYP, 2 wB97X-D3, 3 AM1, 4 MP2
    int basis = 2;           // 1 3-21G, 2 6-31G**, 3 def2-TZVP, 4 6-311G**
    int cores = 1;
    bool wfn = true;         // ask for the extra wavefunction output (AIM)
    bool spectrum_on = false;
    int spectrum = 1;        // 1 IR, 2 Raman, 3 UV-visible: the radio button, used only when spectrum_on
    float scale_factor = 0.97f;
};

// The thirteen 9-column keywords the deck is made of, filled on every
// entry to the mode.
using OrcaKeywords = std::array<std::string, 13>;
OrcaKeywords orca_keyword_table();

// The four keywords a deck uses: method, basis, run and SCF field, each
// trimmed. The SCF field keeps what it held when the multiplicity is
// below 1.
struct OrcaDeckWords {
    std::string method, basis, run, scf = "RHF";
};

// Chooses the words for the options. Sets `opt_requested` when the run
// type is Optimisation (whatever the method).
OrcaDeckWords orca_deck_words(const OrcaInput& in, const OrcaKeywords& table, const std::string& scf_before,
                              bool& opt_requested);

// The whole deck: form A (a DFT or MP2 run, with IR or Raman on request),
// form B (the fixed TD-DFT UV-visible run) or form C (AM1), then the
// coordinates of every atom.
std::vector<std::string> orca_deck(const OrcaInput& in, const OrcaDeckWords& words, const std::string& job,
                                   const Store& st);

// The cores template bin/orca.txt: one record, the number right-aligned in
// five columns; reading takes its first value in free format.
std::string orca_cores_record(int cores);
std::optional<int> read_orca_cores(const std::vector<std::string>& lines);

}  // namespace zentol
