// Setup's choices kept between sessions: cfgset/setup.def, one "key value"
// a line, written when Setup is confirmed and read at start-up. A key that
// is missing or does not read keeps its default; unknown keys are skipped,
// so the file survives a change of version either way.
#pragma once

#include <string>
#include <vector>

namespace zentol {

struct Session;
struct Options;
struct TinkerSettings;

std::vector<std::string> setup_file_lines(const Options& o, const TinkerSettings& t);
void read_setup_lines(const std::vector<std::string>& lines, Options& o, TinkerSettings& t);

// Writes cfgset/setup.def; a failure is said in a message.
void save_setup(Session& s);
// Reads cfgset/setup.def when there is one.
void load_setup(Session& s);

}  // namespace zentol
