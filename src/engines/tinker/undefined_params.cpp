#include "engines/tinker/undefined_params.h"

#include "engines/runner.h"
#include "engines/tinker/tinker_log.h"
#include "session/session.h"
#include "toolkit/files.h"
#include "toolkit/toolkit.h"

namespace zentol {

// For now the command points the user at the log: the parameter dialogs
// that fill the key file are still to come.
void undefined_parameters_command(Session& s) {
    auto lines = files::read_lines(log_file_name);
    if (!lines || lines->size() < 5) return;
    const bool shift = log_shift(*lines);
    bool found = false;
    for (const std::string& l : *lines) found = found || shifted(l, shift).rfind("Undefined", 0) == 0;
    if (!found) return;
    s.tk.WMessageBox(kButtonsOk, MessageIcon::Exclamation, 1,
                     "The last Tinker run met Undefined parameters\rUse Edit.LOG to examine the Undefined items\r"
                     "and Edit.KEY to add them",
                     "Tinker");
}

}  // namespace zentol
