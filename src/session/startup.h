// The main program: start-up, the job check, the display loop and the exit
// sequence.
#pragma once

#include <string>
#include <vector>

namespace zentol {

struct Session;

inline constexpr const char* kWindowTitle = "Zentol 2026  Version 6.1.7";

// Runs a whole session. words[0] is the program's own path, words[1..5] the
// command-line words: job (or a path to a structure file), instance digit,
// IMX / IMPX / MOPA / MOPAS / MOPAD / M9, orbital number or TIF, IMX or TIF.
// Returns the process exit code.
int run_program(Session& s, const std::vector<std::string>& words);

// The parts, for tests and for the job commands.
void read_start_words(Session& s, const std::vector<std::string>& words);
// The job check loop; false when the user cancelled the file choice.
bool check_job(Session& s);
void exit_sequence(Session& s);

}  // namespace zentol
