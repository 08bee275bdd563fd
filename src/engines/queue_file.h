// The job queues of Orca and Firefly: a text file of deck paths, one a
// line, worked through by the queue runner zentol-queue. It lives in a
// folder beside the scratch folder (~/zentol/orca/qorca.txt,
// ~/zentol/firefly/qfirefly.txt by default), with queue.log, the runner's
// record of every job, beside it.
#pragma once

#include <string>

namespace zentol {

// The queue's folder: the scratch folder's sibling of the given name.
std::string queue_directory(const std::string& scratch_dir, const std::string& name);

// Appends `deck` (a full path) to the queue file unless it is there already.
// Records are compared case-insensitively over all but the deck's last
// character, so "/Jobs/w.ino" and "/JOBS/W.INO" are one job. The folder and
// the file are made when missing. Returns 1 when added, 0 when the job was
// queued already, -1 when the file could not be written. Either way a
// "queued" line with the job's cores goes to queue.log, so that the runner
// starts the job as the mode would have started it.
int add_to_queue(const std::string& queue_file, const std::string& deck, int cores = 0);

// Deletes the queue file (under the queue's lock: a runner taking a job
// meanwhile cannot bring it back).
void delete_queue(const std::string& queue_file);

// An exclusive lock (flock) on a file beside the queue, released when the
// object goes. Every edit of a queue file by the program and the runner
// holds `queue_lock_file` for the moment of the edit; a runner holds
// `runner_lock_file` for as long as it works, so that two runners never
// work through one queue at once.
class QueueLock {
public:
    // Waits for the lock when `wait`, else gives up at once when another
    // process holds it.
    QueueLock(const std::string& lock_file, bool wait);
    ~QueueLock();
    QueueLock(const QueueLock&) = delete;
    QueueLock& operator=(const QueueLock&) = delete;
    bool held() const { return held_; }

private:
    int fd_ = -1;
    bool held_ = false;
};

std::string queue_lock_file(const std::string& queue_file);    // "<queue>.lock"
std::string runner_lock_file(const std::string& queue_file);   // "<queue>.runner"

// True when a runner is working through the queue right now.
bool queue_runner_busy(const std::string& queue_file);

}  // namespace zentol
