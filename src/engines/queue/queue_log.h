// queue.log: one line for every step of a queued job, beside the queue
// file. The program writes "queued" when the user adds a job; the runner
// writes "running", "done", "failed", "interrupted", "submitted" (a job
// handed to a cluster) and "stopped" (the runner could not start a job and
// left it in the queue). Lines are appended whole, never rewritten:
//
//   2026-11-23 12:31:04 running     cores 4                      /home/ann/jobs/w.ino
//   2026-11-23 12:35:10 done        exit 0, 246 s                /home/ann/jobs/w.ino
//
// Columns: the local time (1-19), the status (21-32), the detail (33-61),
// the deck's full path from column 62 on (it may hold blanks).
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zentol {

struct QueueEvent {
    std::string time;     // "YYYY-MM-DD hh:mm:ss"
    std::string status;
    std::string detail;
    std::string deck;
};

inline constexpr int queue_log_status_column = 21;
inline constexpr int queue_log_detail_column = 33;
inline constexpr int queue_log_deck_column = 62;

std::string queue_log_path(const std::string& queue_file);
std::string format_queue_event(const QueueEvent& e);
// Nothing for a line too short to hold a deck.
std::optional<QueueEvent> parse_queue_event(std::string_view line);
std::string local_time_text();

// Appends one line stamped with the time now; false when it could not be
// written.
bool log_queue_event(const std::string& queue_file, const std::string& status, const std::string& detail,
                     const std::string& deck);

// Every line of the log; none when there is no log.
std::vector<QueueEvent> read_queue_log(const std::string& queue_file);

// The cores of the newest "queued" line of a deck ("cores 4"), compared
// without regard to case; nothing when the log names none.
std::optional<int> queued_cores(const std::vector<QueueEvent>& log, const std::string& deck);

}  // namespace zentol
