// The queue runner behind zentol-queue: works through the queue files one
// job at a time, here or on a Slurm cluster, and tells their states.
#pragma once

#include <csignal>
#include <iosfwd>
#include <string>
#include <vector>

#include "engines/queue/slurm_backend.h"
#include "session/session.h"

namespace zentol {

struct QueueRunner {
    std::vector<std::string> queue_files;
    EngineConfig engines;
    bool watch = false;            // keep watching the queues when they are empty
    int watch_seconds = 10;        // between two looks at empty queues
    const volatile std::sig_atomic_t* stop = nullptr;   // raised by SIGTERM/SIGINT
    std::ostream* out = nullptr;   // progress and --status
    std::ostream* err = nullptr;   // what went wrong
};

// True when engines.def names the Slurm back end (queue_backend slurm).
bool slurm_backend(const EngineConfig& engines);
SlurmSettings slurm_settings(const EngineConfig& engines);

// Works through the queues: once until they are empty, or on until *stop
// with `watch`. A queue another runner is working through is left to it.
// 0 when done, 1 when a job could not be started (an engine or sbatch
// missing: its record stays in the queue), 3 when every queue was busy.
int run_queues(const QueueRunner& r);

// Prints the waiting records of each queue and the last state of its
// recent jobs; jobs on the cluster are asked about and their end logged.
int print_queue_status(const QueueRunner& r);

// Takes the first record off the queue (under the queue's lock); nothing
// when the queue is empty or could not be rewritten.
std::optional<std::string> take_first_record(const std::string& queue_file, std::string* why);
// Puts a record back at the head of the queue, unless it is there.
bool put_back_record(const std::string& queue_file, const std::string& record);

}  // namespace zentol
