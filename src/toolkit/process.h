// Starting child processes without a toolkit of their own.
#pragma once

#include <string>
#include <vector>

namespace zentol::process {

// Runs one line through /bin/sh -c in the current directory; waits for it
// when told to. Returns false when the shell could not be started.
bool run_shell(const std::string& command, bool wait);

// Starts a program with its argument words and returns at once. False when
// it could not be started.
bool spawn(const std::string& program, const std::vector<std::string>& args);

// Quotes a word for /bin/sh so that it stays one word whatever it holds.
std::string shell_quote(const std::string& word);

}  // namespace zentol::process
