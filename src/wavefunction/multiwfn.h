// The MultiWFN command of the Display tool bar: seven canned analyses of a
// structure optimised in ORCA, run by Multiwfn on the Molden file
// job.molden.input that orca_2mkl wrote, plus Multiwfn's manual.
#pragma once

#include <string>

namespace zentol {

struct Session;

// The configured Multiwfn program, "" unless it is a file of more than 100
// bytes.
std::string multiwfn_program(const Session& s);

// Command 84: dialog 127 and the chosen action.
void multiwfn_command(Session& s);

// One action (1 to 8) with the dialog's values; what the command runs.
void multiwfn_action(Session& s, int action);

}  // namespace zentol
