// Tinker mode: the molecular-mechanics workbench. Its toolbar runs the
// Tinker programs on the job; its menu edits the job's files, holds the
// Tinker settings and reaches Build mode and back.
#pragma once

namespace zentol {

struct Session;

// Runs the mode until the user leaves it. With Tinker not installed it
// returns at once and says nothing, as the button simply does nothing.
// A close of the window leaves s.build.close_requested set.
void tinker_mode(Session& s);

}  // namespace zentol
