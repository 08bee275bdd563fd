// Replay of an ORCA normal mode: the trajectory files orca_pltvib writes
// (job.hess.vNNN.xyz, 20 frames each) played on the molecule, which gets
// its own coordinates back afterwards.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "text/text_lines.h"

namespace zentol {

struct Session;

// A band of job_ir.lst or job_ra.lst. `mode` is the engine's mode number
// kept in the third column, 0 when the file has none.
struct VibrationRow {
    double frequency = 0, intensity = 0;
    int mode = 0;
};

// The rows after the three heading records, up to "  END" (at most 100).
std::vector<VibrationRow> read_vibration_rows(const text::TextLines& sticks);

// The text of row n in the dialog's list: frequency, intensity, number.
std::string vibration_row_text(const VibrationRow& row, int n);

// The engine's mode of a chosen row (1-based): the number the listing
// printed, or, for a stick file without one, the row plus 5, as ORCA counts
// the six rigid-body modes from 0.
int replay_mode(const std::vector<VibrationRow>& rows, int chosen);

// job.hess.v006.xyz for mode 6.
std::string trajectory_file(const std::string& job, int mode);

// The frames of a trajectory: up to 20, each `natoms` positions. `complete`
// is false when the file ended or broke before the 20th frame.
using TrajectoryFrame = std::vector<std::array<float, 3>>;
std::vector<TrajectoryFrame> read_trajectory(const text::TextLines& file, int natoms, bool& complete);

// Animate IR (kind 1) and Animate Raman (kind 2).
void orca_replay(Session& s, int kind);

}  // namespace zentol
