// The runner's children: an engine line run in its own process group, so
// that a stop reaches the engine and everything it started, and the
// cluster's commands, whose output is read back.
#pragma once

#include <csignal>
#include <string>
#include <vector>

namespace zentol {

struct ChildResult {
    bool started = false;
    int exit_status = -1;     // the exit status, or 128 + the signal that ended it
    bool stopped = false;     // ended because *stop was raised
    long long seconds = 0;
};

// Runs the line through /bin/sh -c in the given directory and waits. When
// *stop becomes non-zero the child's process group gets SIGTERM, and
// SIGKILL when it has not ended `grace_seconds` later.
ChildResult run_line_stoppable(const std::string& line, const std::string& dir, const volatile std::sig_atomic_t* stop,
                               int grace_seconds = 20);

// Runs a program (looked up on PATH) with its words and returns its exit
// status, standard output in *out and standard error in *err; -1 when it
// could not be started or was killed after `timeout_seconds`.
int run_capture(const std::vector<std::string>& argv, std::string* out, std::string* err, int timeout_seconds = 60);

}  // namespace zentol
