// The job commands of the display loop: open, save under a new name, the
// recent list, the ptest job, the update check.
#pragma once

#include <optional>
#include <string>

namespace zentol {

struct Session;

inline constexpr long kProgramVersion = 6001060;

// File > Open: the job's .xyz, or any structure file Open Babel reads,
// which becomes a new job beside it.
void open_existing_job(Session& s);
// The same for a file dropped on the window.
void open_dropped_file(Session& s, const std::string& path);
void open_recent_job(Session& s, int k);
void ptest_in_scratch(Session& s);
bool save_job_as(Session& s);
void show_current_job(Session& s);
void check_for_updates(Session& s);

// The number of the first line beginning "version" of an update file.
std::optional<long> version_in(const std::string& text);

// Directory and job name of a path to a .xyz file ("/a/b/water.xyz" gives
// "/a/b" and "water").
std::pair<std::string, std::string> split_job_path(const std::string& path);

}  // namespace zentol
