#include "engines/queue/queue_start.h"

#include <filesystem>

#include "engines/queue/queue_runner.h"
#include "engines/queue_file.h"
#include "engines/runner.h"
#include "session/openers.h"
#include "session/session.h"
#include "text/fixed_format.h"
#include "toolkit/files.h"
#include "toolkit/process.h"
#include "toolkit/toolkit.h"

namespace zentol {

std::string queue_runner_program(const Session& s) {
    const std::string installed = s.inst.bin + "/zentol-queue";
    return runnable(installed) ? installed : on_path("zentol-queue");
}

void start_queue_runner(Session& s, const std::string& queue_file) {
    const std::string name = std::filesystem::path(queue_file).filename().string();
    auto say = [&s](const std::string& text) { s.tk.WindowOutStatusBar(status_message_field, text); };
    bool waiting = false;
    for (const std::string& line : files::read_lines(queue_file).value_or(std::vector<std::string>{}))
        waiting = waiting || !text::trim(line).empty();
    if (!waiting) return say("The queue " + name + " is empty");
    if (queue_runner_busy(queue_file)) return say("Queue runner already working");
    const std::string program = queue_runner_program(s);
    if (program.empty()) {
        say("zentol-queue is not installed");
        s.tk.WMessageBox(kButtonsOk, MessageIcon::Exclamation, 1,
                         "The queue runner zentol-queue is not installed.\rIt belongs in " + s.inst.bin +
                             " (Zentol copies it there when it starts).",
                         "Zentol");
        return;
    }
    // The runner reads this session's engines.def, wherever it was found.
    const std::string root = "ZENTOL_ROOT=" + process::shell_quote(s.inst.root) + " ";
    if (!run_detached(s, root + shell_line(program, {queue_file}))) return;
    // The field is narrow: the log's place is told in the README and the
    // queue's folder is the one EditOrcaQ / EditFireflyQ opens.
    say(slurm_backend(s.engines) ? "Queue runner started for Slurm (queue.log)" : "Queue runner started (queue.log)");
}

}  // namespace zentol
