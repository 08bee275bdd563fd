// The Tinker runs of Tinker mode, from the press of the button to the
// redrawn molecule: files brought up to date, the run, and its results.
#pragma once

#include <string>
#include <vector>

#include "session/molecule_store.h"

namespace zentol {

struct Session;

// Minimize or Optimize. Returns the final energy, kNoTinkerEnergy when
// there is none (and then the user has been told why).
double minimize_run(Session& s);
void analyze_run(Session& s);
void spacefill_run(Session& s);
// Dynamics and Anneal; false when a frame could not be read and the mode
// is to be left.
bool dynamics_run(Session& s);
bool anneal_run(Session& s);
// Anneal and minimise in turn, tk_auto_cycles times; false as above.
bool auto_anneal(Session& s);
void vibrate_run(Session& s);

// "job.007": the frame file of a counter, "job.099" from 99 on.
std::string frame_name(const std::string& job, int counter);
// Cuts an archive of frames of natoms + 1 lines each into frame files,
// at most 500 frames (the 100th on all land in job.099). Returns the number
// of frames read.
int cut_archive(const std::string& archive, const std::string& job, int natoms);
// The frames of an archive's lines, natoms + 1 lines each, at most
// max_frames; a short frame at the end is left out.
std::vector<std::vector<std::string>> archive_frames(const std::vector<std::string>& lines, int natoms,
                                                     int max_frames = 500);
// The job's frame files job.0*, in name order, at most 99.
std::vector<std::string> frame_files(const std::string& job);

// Structures written by Tinker carry element symbols for labels: when they
// hold the same elements in the same order as `before`, the labels of
// `before` are put back.
void keep_job_labels(Store& st, int natoms_before, const std::vector<Label>& labels_before);

// The energy lines of a minimisation: field 9 and the .GEO log.
std::string energy_status_text(double energy);
std::string energy_log_line(double energy);

}  // namespace zentol
