// The "&UNdefined" command of Tinker mode: what the last run's log says
// about force-field parameters it did not know.
#pragma once

namespace zentol {

struct Session;

void undefined_parameters_command(Session& s);

}  // namespace zentol
