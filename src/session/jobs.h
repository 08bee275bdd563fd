// A job is a name and a directory; these classify it and keep the recent list.
#pragma once

#include <string>

namespace zentol {

struct Session;

inline constexpr int kStatusPtestInScratch = -5;

// 0 .xyz and .ins exist, 1 .xyz only, 2 .ins only, 3 neither; +10 for every
// "LIBRARY" in the current directory's path (any case); -5 for the ptest job
// in the scratch directory.
int job_status(const Session& s, const std::string& job);

// Puts <current dir>/<job>.xyz at the top of the recent list (a path already
// there moves up; a new one drops the tenth) and relabels menu items
// 40067-40076.
void remember_job(Session& s);
void show_recent_jobs(Session& s);

// Deletes the dynamics files (the numbered frames <job>.001 ... and
// <job>.dyn) unless keep; the movie frames MV*.INS when delete_movie.
void purge_job_files(const Session& s, bool keep, bool delete_movie);

// "N:job" in status field 2, and the job's name in the window's title.
void show_job_name(Session& s);

// A message box of lines (joined by character 13), OK only.
void tell(Session& s, std::initializer_list<const char*> lines);
bool ask_yes_no(Session& s, const std::string& text);

}  // namespace zentol
