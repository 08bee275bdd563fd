// The job queues of Orca and Firefly: a text file of deck paths, one a
// line, that an outside runner works through. It lives in a folder beside
// the scratch folder (~/zentol/orca/qorca.txt, ~/zentol/firefly/qfirefly.txt
// by default).
#pragma once

#include <string>

namespace zentol {

// The queue's folder: the scratch folder's sibling of the given name.
std::string queue_directory(const std::string& scratch_dir, const std::string& name);

// Appends `deck` (a full path) to the queue file unless it is there already.
// Records are compared case-insensitively over all but the deck's last
// character, so "/Jobs/w.ino" and "/JOBS/W.INO" are one job. The folder and
// the file are made when missing. Returns 1 when added, 0 when the job was
// queued already, -1 when the file could not be written.
int add_to_queue(const std::string& queue_file, const std::string& deck);

}  // namespace zentol
