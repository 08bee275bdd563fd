// Queued jobs handed to a Slurm cluster: each job becomes a batch script
// that runs the mode's line in the job's directory on the deck's cores,
// submitted with sbatch. Nothing of Slurm is linked: its commands are run.
// The script writes the engine's exit status to slurm/<id>.exit beside the
// queue, so that the end of a job is known where the cluster keeps no
// accounting (sacct unavailable).
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "engines/queue/queue_job.h"

namespace zentol {

// engines.def: queue_backend slurm, queue_partition, queue_time_limit
// (any form sbatch --time takes, "2-00:00:00"), queue_cores.
struct SlurmSettings {
    std::string partition;
    std::string time_limit;
};

// The folder of batch scripts, their output and exit files.
std::string slurm_folder(const std::string& queue_file);

// The batch script of one job; `engine_line` is the mode's line, run in
// the job's directory.
std::vector<std::string> slurm_batch_script(const QueuedJob& job, const std::string& engine_line,
                                            const std::vector<std::string>& after, const SlurmSettings& settings,
                                            const std::string& folder);

// The job id sbatch --parsable printed ("42" or "42;cluster"); nothing
// when it printed none.
std::optional<std::string> parse_sbatch_id(const std::string& output);

// Submits a script: the job id, or nothing and *why (sbatch's message).
std::optional<std::string> sbatch_submit(const std::string& script, std::string* why);

// A job's state as the cluster tells it.
struct SlurmState {
    std::string state;        // PENDING, RUNNING, COMPLETED, FAILED ... or "" when unknown
    std::optional<int> exit_status;
    bool ended = false;
};

// "id|STATE" lines of squeue -h -o "%i|%T".
std::map<std::string, std::string> parse_squeue(const std::string& output);
// "id|STATE|exit:signal" lines of sacct -n -X -P -o JobID,State,ExitCode.
std::map<std::string, SlurmState> parse_sacct(const std::string& output);

// The states of the given jobs: squeue for those still queued or running,
// then sacct, then the exit files for those the cluster forgot.
std::map<std::string, SlurmState> slurm_states(const std::vector<std::string>& ids, const std::string& folder);

}  // namespace zentol
