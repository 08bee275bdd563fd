// The Lewis and OS analysis command of Display mode.
#pragma once

namespace zentol {

struct Session;

// Runs the analysis on the molecule: the .GEO log and lewis.brt written,
// the tables shown by the tabview sibling when it is installed, else in
// the toolkit's own viewer.
void lewis_command(Session& s);

}  // namespace zentol
