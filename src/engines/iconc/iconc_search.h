// The two searches of ICONC mode, each a series of runs on the working
// copy: a scan of the stored bond's length, and an optimisation that moves
// one atom along one axis at a time. Esc between two runs ends either; the
// molecule itself changes only when the user asked for it.
#pragma once

#include <array>
#include <optional>
#include <vector>

#include "engines/iconc/iconc_runs.h"

namespace zentol {

struct Session;
struct Store;

// The bond Build mode stored in ICONV.DAT: two different atoms of the
// molecule, or nothing.
std::optional<std::array<int, 2>> stored_bond(const Store& st);

// The atoms a bond scan moves: the side of b when a-b is a chain bond;
// b alone when it is a ring bond or the atoms are not bonded.
std::vector<int> scan_moving_atoms(Store& st, int a, int b);

// B-Scan: "Steps" runs, each with the bond longer by "Step"; the log lines,
// the chart and the print question; with "Apply Scan" the molecule takes
// the geometry of the lowest energy.
void iconc_bond_scan(Session& s, IconcState& state);

// Optimize: every atom not held (its mark below 0.5) is moved along x, y
// and z in turn while the energy falls by more than "Ediff"; with "Update"
// the molecule takes the result.
void iconc_optimise(Session& s, IconcState& state);

// Reads the messages that came in during a run without waiting: true when
// one was Esc, or the window was closed (which also ends the mode).
bool stop_requested(Session& s);

}  // namespace zentol
