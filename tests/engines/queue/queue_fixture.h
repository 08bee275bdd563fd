// A temporary installation for the queue runner: engines.def naming
// wrappers around the fake ORCA and Firefly of the mode tests, job
// directories with their decks, and the real zentol-queue program started
// on them.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "support/test_support.h"

namespace zentol::testing {

struct QueueFixture {
    QueueFixture();
    ~QueueFixture();
    TempDir dir;
    std::string root;          // $ZENTOL_ROOT of the runner
    std::string orca_queue;    // work/orca/qorca.txt
    std::string firefly_queue; // work/firefly/qfirefly.txt
    std::string order;         // each engine start appends the deck it was given

    // engines.def: the wrappers, plus the extra lines.
    void write_engines_def(const std::string& more = "");
    // jobs/<name>/<name>.ino with a structure file, queued; the path.
    std::string orca_job(const std::string& name, int cores = 1);
    std::string firefly_job(const std::string& name, int cores = 1);

    // Runs zentol-queue with the words to its end; its exit status.
    int run(const std::vector<std::string>& words, std::string* out = nullptr);
    // Starts zentol-queue and returns at once.
    pid_t start(const std::vector<std::string>& words);
    // Waits up to `seconds` for the process; its exit status, -1 on time out.
    static int wait_for(pid_t pid, int seconds);

    std::vector<std::string> started() const;   // the order file's lines
    std::vector<std::string> log_statuses(const std::string& queue) const;   // "status deck-leaf"
};

std::string queue_program();
std::vector<std::string> lines_of(const std::string& path);
// Polls until the file holds the text, up to `seconds`.
bool wait_for_text(const std::string& path, const std::string& text, int seconds);

}  // namespace zentol::testing
