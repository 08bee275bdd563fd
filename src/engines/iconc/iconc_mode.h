// ICONC mode: the loop of menu 30005. "&NewInput" prepares the engine's
// labels, "Run&Iconc" opens the options (dialog 111) and runs an energy, a
// bond scan or an optimisation; leaving removes the run's scratch files.
#pragma once

namespace zentol {

struct Session;
struct IconcOptions;

// Dialog 111 until it is closed: 0 cancelled, 1 Save, 3 Run Iconc. The
// charge goes back to the session as well.
int ask_iconc_options(Session& s, IconcOptions& options);

// "Use Iconc" (command 52). Without the programs field 9 says which one is
// missing and where to name it, and the mode is not entered.
void iconc_mode(Session& s);

}  // namespace zentol
