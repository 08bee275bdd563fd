// Which files are the job's own. A job is a name in a folder the user may
// share with anything else (a thesis, a PDB file, another program's work),
// so Zentol deletes only the names it writes itself after the job's name
// (docs/file-names.md lists them), and treats the job name literally.
#pragma once

#include <string>
#include <vector>

namespace zentol {

// The endings Zentol writes after a job's name, lower case (".xyz",
// "_chg.log", ...). Files are met in any case.
const std::vector<std::string>& job_file_endings();

// True for <job><ending> of the list, and for Tinker's numbered frames
// <job>.<digits>; compared without regard to case.
bool is_job_file(const std::string& job, const std::string& leaf);

// Deletes every file of the job in `dir` ("." the current folder).
void remove_own_job_files(const std::string& dir, const std::string& job);

// Tinker's numbered frames <job>.001 ... and nothing else.
void remove_frame_files(const std::string& job);

// A job name is a file name without a folder: 1 to 50 characters, none of
// them a pattern character (* ? [), a slash or a control character. False
// with the reason in *why otherwise.
bool valid_job_name(const std::string& name, std::string* why);

}  // namespace zentol
