// Run Queue, in Orca and Firefly modes: starts zentol-queue for the mode's
// queue file and leaves it working on its own; field 9 says what happened.
#pragma once

#include <string>

namespace zentol {

struct Session;

// The installed runner (bin/zentol-queue, else on PATH); "" when missing.
std::string queue_runner_program(const Session& s);

void start_queue_runner(Session& s, const std::string& queue_file);

}  // namespace zentol
