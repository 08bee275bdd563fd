#include "engines/queue/queue_log.h"

#include <ctime>
#include <filesystem>

#include "text/fixed_format.h"
#include "toolkit/files.h"

namespace zentol {

std::string queue_log_path(const std::string& queue_file) {
    return (std::filesystem::path(queue_file).parent_path() / "queue.log").string();
}

std::string format_queue_event(const QueueEvent& e) {
    // A detail too long for its column still leaves a blank before the deck.
    std::string line = text::pad_right(e.time, queue_log_status_column - 2) + " " +
                       text::pad_right(e.status, queue_log_detail_column - queue_log_status_column - 1) + " " +
                       text::pad_right(e.detail, queue_log_deck_column - queue_log_detail_column - 1) + " ";
    return line + e.deck;
}

std::optional<QueueEvent> parse_queue_event(std::string_view line) {
    if (line.size() < static_cast<std::size_t>(queue_log_deck_column)) return std::nullopt;
    QueueEvent e;
    e.time = std::string(text::trim(line.substr(0, queue_log_status_column - 1)));
    e.status = std::string(text::trim(line.substr(queue_log_status_column - 1,
                                                  queue_log_detail_column - queue_log_status_column)));
    e.detail = std::string(text::trim(line.substr(queue_log_detail_column - 1,
                                                  queue_log_deck_column - queue_log_detail_column)));
    e.deck = std::string(text::trim(line.substr(queue_log_deck_column - 1)));
    if (e.status.empty() || e.deck.empty()) return std::nullopt;
    return e;
}

std::string local_time_text() {
    std::time_t now = std::time(nullptr);
    std::tm parts{};
    localtime_r(&now, &parts);
    char buf[32];
    std::strftime(buf, sizeof buf, "%Y-%m-%d %H:%M:%S", &parts);
    return buf;
}

bool log_queue_event(const std::string& queue_file, const std::string& status, const std::string& detail,
                     const std::string& deck) {
    // Appended with O_APPEND in one write: the program and a runner may add
    // lines at the same moment without tearing each other's.
    return files::append_line(queue_log_path(queue_file),
                              format_queue_event({local_time_text(), status, detail, deck}));
}

std::vector<QueueEvent> read_queue_log(const std::string& queue_file) {
    std::vector<QueueEvent> events;
    auto lines = files::read_text_lines(queue_log_path(queue_file));
    if (!lines) return events;
    for (std::string_view line : *lines)
        if (auto e = parse_queue_event(line)) events.push_back(std::move(*e));
    return events;
}

std::optional<int> queued_cores(const std::vector<QueueEvent>& log, const std::string& deck) {
    for (auto it = log.rbegin(); it != log.rend(); ++it) {
        if (it->status != "queued" || !text::equals_nocase(it->deck, deck)) continue;
        auto words = text::split_words(it->detail);
        if (words.size() != 2 || words[0] != "cores") return std::nullopt;
        auto n = text::read_i(words[1]);
        if (!n || *n < 1 || *n > 9999) return std::nullopt;
        return static_cast<int>(*n);
    }
    return std::nullopt;
}

}  // namespace zentol
