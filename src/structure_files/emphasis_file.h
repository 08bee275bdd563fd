// The emphasis file: which atoms the picture shows in full while the rest
// fade. Lines: "REM ..." or blank-led lines are skipped, "EMPHASISE THE FIRST
// n" marks atoms 1..n (when n is below the atom count), any other line names
// an atom label.
#pragma once

#include <string>
#include <vector>

#include "session/molecule_store.h"

namespace zentol {

// Clears atom_emph and applies the lines; returns how many marks were made
// (also left in emphasis_count).
int apply_emphasis_lines(Store& st, const std::vector<std::string>& lines);

// Applies the file when it exists; no file, nothing emphasised.
void read_emphasis_file(Store& st, const std::string& name);

}  // namespace zentol
