// The job's .key file: Tinker keywords kept line by line. The program knows
// two lines, "parameters <force field>" and "#verbose"; the rest belongs to
// the user and to Tinker mode.
#pragma once

#include <string>
#include <vector>

namespace zentol {

struct Session;

// The force-field path that the "parameters" line names (engines.def).
std::string mm3_parameter_path(const Session& s);

std::string fresh_key_text(const std::string& parameter_path);

// Lines of a key file with every "parameters" line (the word checked in any
// case) pointing at parameter_path; all other lines stay as they stand.
std::vector<std::string> patch_key_lines(const std::vector<std::string>& lines, const std::string& parameter_path);

void create_key_if_missing(Session& s);
// Rewrites <job>.key for this installation's force field, creating it when
// missing.
void patch_key_drive(Session& s);

}  // namespace zentol
