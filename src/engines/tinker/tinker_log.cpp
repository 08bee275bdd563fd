#include "engines/tinker/tinker_log.h"

#include "text/fixed_format.h"

namespace zentol {

bool log_shift(const std::vector<std::string>& lines) {
    return lines.size() >= 5 && lines[4].size() >= 2 && lines[4][0] == ' ' && lines[4][1] == '#';
}

std::string shifted(const std::string& line, bool shift) {
    if (!shift || line.empty()) return line;
    return line.substr(1);
}

std::optional<double> value_after_key(const std::vector<std::string>& lines, const std::string& key, int blank) {
    const bool shift = log_shift(lines);
    for (const std::string& raw : lines) {
        std::string line = shifted(raw, shift);
        if (line.compare(0, key.size(), key) != 0) continue;
        line.replace(0, std::min<std::size_t>(static_cast<std::size_t>(blank), line.size()),
                     std::min<std::size_t>(static_cast<std::size_t>(blank), line.size()), ' ');
        auto v = text::read_reals(line, 1);
        if (!v || v->empty()) return std::nullopt;
        return (*v)[0];
    }
    return std::nullopt;
}

double final_function_value(const std::vector<std::string>& lines) {
    // Five lines at least, or there is no energy to read.
    if (lines.size() < 5) return kNoTinkerEnergy;
    return value_after_key(lines, "Final Function Value", 25).value_or(kNoTinkerEnergy);
}

std::optional<double> total_potential_energy(const std::vector<std::string>& lines) {
    if (lines.size() < 5) return std::nullopt;
    return value_after_key(lines, "Total Potential Energy :", 25);
}

bool has_undefined_block(const std::vector<std::string>& lines) {
    for (const std::string& l : lines)
        if (l.compare(0, 10, " Undefined") == 0) return true;
    return false;
}

bool vibrate_succeeded(const std::vector<std::string>& lines) {
    for (const std::string& l : lines)
        if (l.compare(0, 6, " Vibra") == 0 || l.compare(0, 6, "Vibrat") == 0) return true;
    return false;
}

}  // namespace zentol
