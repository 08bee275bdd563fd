// What a finished test session showed and left behind, as the engine tests
// look at it.
#pragma once

#include <string>
#include <vector>

#include "engines/runner.h"
#include "support/test_support.h"
#include "toolkit/files.h"

namespace zentol::testing {

// The lines of a file; none when it is missing.
inline std::vector<std::string> lines_of(const std::string& path) {
    return files::read_lines(path).value_or(std::vector<std::string>{});
}

inline bool holds(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

inline bool transcript_has(const TestSession& t, const std::string& part) {
    for (const std::string& line : t.tk.transcript())
        if (holds(line, part)) return true;
    return false;
}

// Whether the message field (9) ever showed the part.
inline bool status_shows(const TestSession& t, const std::string& part) {
    for (const auto& [field, text] : t.tk.status_writes())
        if (field == status_message_field && holds(text, part)) return true;
    return false;
}

inline bool box_says(const TestSession& t, const std::string& part) {
    for (const std::string& text : t.tk.message_boxes())
        if (holds(text, part)) return true;
    return false;
}

}  // namespace zentol::testing
