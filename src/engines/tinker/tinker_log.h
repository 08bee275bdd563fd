// Reading the terminal output of the Tinker programs (ZENTOL.LOG). Tinker
// writes its log either with a leading blank on every line or without; the
// fifth line tells which, and both forms read the same.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace zentol {

// True when the fifth line begins with a blank and '#': every line then
// stands one column to the right. False also for a log of fewer than five
// lines.
bool log_shift(const std::vector<std::string>& lines);

// A line as the keys are tested against it: one character shorter in
// front when the log is shifted.
std::string shifted(const std::string& line, bool shift);

// The value behind a key: the first line whose first key.size() characters
// are the key, its first `blank` characters blanked, read as one free-form
// number. nullopt when no line has the key or the number is unreadable.
std::optional<double> value_after_key(const std::vector<std::string>& lines, const std::string& key, int blank);

// Minimize and Optimize: " Final Function Value :   3.0866".
inline constexpr double kNoTinkerEnergy = -1000.0;
double final_function_value(const std::vector<std::string>& lines);

// Analyze: " Total Potential Energy :   7.0517 Kcal/mole".
std::optional<double> total_potential_energy(const std::vector<std::string>& lines);

// A line beginning " Undefined" anywhere in the log (minimisation found
// parameters missing).
bool has_undefined_block(const std::vector<std::string>& lines);

// Vibrate: some line begins " Vibra" or "Vibrat".
bool vibrate_succeeded(const std::vector<std::string>& lines);

}  // namespace zentol
