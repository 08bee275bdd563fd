// One record of a queue file as the runner starts it: which engine, in
// which directory, on how many cores, with which line, and the steps the
// mode's Run takes around the engine (the safety copies before it, the
// punch copy or the structure file put back after it).
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "session/session.h"

namespace zentol {

enum class QueueEngine { Orca, Firefly };

struct QueuedJob {
    QueueEngine engine = QueueEngine::Orca;
    std::string deck;   // the record: the deck's full path
    std::string dir;    // its directory
    std::string name;   // the job: the deck's name less its extension
    int cores = 1;
};

// The job of a queue record: an ".ino" deck is ORCA's, an ".inp" deck
// Firefly's, whatever their case. Nothing (and *why) for anything else.
std::optional<QueuedJob> queued_job(const std::string& record, std::string* why);

// The cores an ORCA deck asks for: "%PAL NPROC n" (or NPROCS, on the %pal
// line or the block's next lines) or a "! PALn" keyword; 1 when none.
int orca_deck_cores(const std::vector<std::string>& deck);

// The engine's key in engines.def and its name in messages.
const char* queue_engine_key(QueueEngine e);
const char* queue_engine_title(QueueEngine e);

// The engine's program as engines.def names it (a bare name looked up on
// PATH); "" when it is not installed.
std::string queue_engine_program(const EngineConfig& engines, QueueEngine e);

// In the job's directory (the current one): the mode's steps before the
// engine, and the engine's line.
void prepare_queued_run(const QueuedJob& job);
std::string queued_command_line(const QueuedJob& job, const std::string& program);
// The mode's steps after the engine, in the job's directory.
void finish_queued_run(const QueuedJob& job);
// The same steps as /bin/sh lines, for a batch script that runs where the
// runner is not (names spelled as they are on disk now).
std::vector<std::string> finish_queued_run_script(const QueuedJob& job);

}  // namespace zentol
