#include "analysis/lewis_command.h"

#include "analysis/lewis.h"
#include "engines/runner.h"
#include "session/openers.h"
#include "session/session.h"
#include "structure_files/geo_log.h"
#include "text/fixed_format.h"
#include "toolkit/files.h"
#include "toolkit/toolkit.h"

namespace zentol {

void lewis_command(Session& s) {
    const LewisInput in = lewis_input_from(s.store, s.flags.total_charge);
    const std::string refusal = lewis_refusal(in);
    if (!refusal.empty()) {
        s.tk.WMessageBox(kButtonsOk, MessageIcon::Exclamation, 1, refusal, "Lewis and OS analysis");
        return;
    }
    const LewisResult r = lewis_analysis(in);
    for (const std::string& m : r.messages) s.tk.WMessageBox(kButtonsOk, MessageIcon::Information, 1, m, "Lewis");
    for (const std::string& line : lewis_log_lines(in, r)) log_line(s, line);
    if (r.ierr != 0) return;
    const std::vector<std::string> cbc = cbc_lines(in, r);
    for (const std::string& line : cbc) log_line(s, line);
    files::write_lines("lewis.brt", lewis_brt_lines(in, r));
    if (sibling_installed(s, "tabview")) {
        run_detached(s, shell_line(engine_command(s, "tabview"), {"lewis.brt"}));
        return;
    }
    // The metal lines go right under the title, where they are seen without
    // scrolling past the tables.
    const std::vector<std::string> table = lewis_table_text(in, r);
    std::string text = table.front() + "\n";
    for (const std::string& line : cbc) text += line + "\n";
    for (std::size_t k = 1; k < table.size(); ++k) text += table[k] + "\n";
    s.tk.show_text("Lewis Structure and Oxidation States", text);
}

}  // namespace zentol
