// The event loop every engine mode shares: its name in the mode field,
// B for Build, redraws, R to leave, the window's close, its commands, and
// the mouse and cursor keys turning the molecule.
#pragma once

#include <functional>

namespace zentol {

struct Session;

enum class ModeNext { Stay, Leave, Rebuild };

// Runs until a command or key ends the visit. A close of the window sets
// s.flags.quit_requested and leaves.
ModeNext engine_mode_loop(Session& s, const char* mode_name, int build_command,
                          const std::function<ModeNext(int)>& dispatch);

// A visit to Build from a mode: the view pulled back and saved, Build run,
// then back to the mode (rebuilt) or out when the window was closed there.
ModeNext visit_build(Session& s);

}  // namespace zentol
