#include "engines/queue/queue_job.h"

#include <algorithm>
#include <filesystem>

#include "engines/firefly/firefly_mode.h"
#include "engines/orca/orca_mode.h"
#include "session/openers.h"
#include "text/fixed_format.h"
#include "toolkit/files.h"
#include "toolkit/process.h"

namespace zentol {

std::optional<QueuedJob> queued_job(const std::string& record, std::string* why) {
    const std::filesystem::path path(std::string(text::trim(record)));
    const std::string ext = text::lower_case(path.extension().string());
    QueuedJob job;
    if (ext == ".ino") job.engine = QueueEngine::Orca;
    else if (ext == ".inp") job.engine = QueueEngine::Firefly;
    else {
        if (why) *why = "not an ORCA (.ino) or Firefly (.inp) deck";
        return std::nullopt;
    }
    if (!path.is_absolute() || path.stem().empty()) {
        if (why) *why = "not a full path";
        return std::nullopt;
    }
    job.deck = path.string();
    job.dir = path.parent_path().string();
    job.name = path.stem().string();
    return job;
}

namespace {

std::optional<int> number_after(const std::vector<std::string_view>& words, std::size_t k) {
    if (k + 1 >= words.size()) return std::nullopt;
    auto n = text::read_i(words[k + 1]);
    if (!n || *n < 1 || *n > 9999) return std::nullopt;
    return static_cast<int>(*n);
}

}  // namespace

int orca_deck_cores(const std::vector<std::string>& deck) {
    bool in_pal = false;
    for (const std::string& raw : deck) {
        const std::string line = text::upper_case(raw);
        const auto words = text::split_words(line);
        for (std::size_t k = 0; k < words.size(); ++k) {
            const std::string_view w = words[k];
            if (w == "%PAL") in_pal = true;
            else if (w == "END") in_pal = false;
            else if (in_pal && (w == "NPROC" || w == "NPROCS")) {
                if (auto n = number_after(words, k)) return *n;
            } else if (!line.empty() && text::trim(line).front() == '!' && w.size() > 3 &&
                       w.substr(0, 3) == "PAL") {
                if (auto n = text::read_i(w.substr(3)); n && *n >= 1 && *n <= 9999) return static_cast<int>(*n);
            }
        }
    }
    return 1;
}

const char* queue_engine_key(QueueEngine e) { return e == QueueEngine::Orca ? "orca" : "firefly"; }
const char* queue_engine_title(QueueEngine e) { return e == QueueEngine::Orca ? "ORCA" : "Firefly"; }

std::string queue_engine_program(const EngineConfig& engines, QueueEngine e) {
    const std::string key = queue_engine_key(e);
    // Firefly mode falls back to "firefly" on PATH when an older
    // engines.def has no key for it.
    std::string value(text::trim(engines.values.count(key) ? engines.get(key) : key));
    if (value.empty()) return "";
    if (value.find('/') == std::string::npos) return on_path(value);
    return runnable(value) ? value : "";
}

void prepare_queued_run(const QueuedJob& job) {
    if (job.engine == QueueEngine::Orca) {
        files::remove(job.name + "_chg.log");
        // job.xyz stays: ORCA overwrites it and the saved copy goes back
        // after the run, while a Zentol that has the job open finds it.
        keep_structure_safe(job.name, true);
    } else {
        clear_firefly_run_files(job.name);
    }
}

std::string queued_command_line(const QueuedJob& job, const std::string& program) {
    if (job.engine == QueueEngine::Orca) return orca_command_line(program, job.name);
    return firefly_command_line(program, job.name, job.cores);
}

void finish_queued_run(const QueuedJob& job) {
    if (job.engine == QueueEngine::Orca) restore_structure_after_run(job.name);
    else keep_firefly_punch(job.name);
}

std::vector<std::string> finish_queued_run_script(const QueuedJob& job) {
    using process::shell_quote;
    if (job.engine == QueueEngine::Firefly) {
        const std::string pun = shell_quote(files::resolve(job.name + ".pun"));
        return {"if [ -f PUNCH ]; then cp PUNCH " + pun + "; elif [ -f punch ]; then cp punch " + pun + "; fi"};
    }
    // ORCA names its geometry after the deck as it is spelled on disk.
    const std::string deck = files::resolve(job.name + ".ino");
    const std::string engine_xyz = shell_quote(deck.substr(0, deck.size() - 4) + ".xyz");
    const std::string xyz = shell_quote(job.name + ".xyz");
    const std::string saved = shell_quote(files::resolve("old_" + job.name + ".xyz"));
    return {"if [ -f " + shell_quote(files::resolve(job.name + ".lst")) + " ]; then",
            "  cp " + engine_xyz + " " + shell_quote(files::resolve(job.name + ".out")) + " 2>/dev/null",
            "  rm -f " + engine_xyz + " " + xyz,
            "  cp " + saved + " " + xyz + " 2>/dev/null",
            "  rm -f " + saved,
            "fi"};
}

}  // namespace zentol
