#include "engines/queue/queue_runner.h"

#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <map>
#include <memory>
#include <ostream>
#include <set>
#include <thread>

#include "engines/queue/child_process.h"
#include "engines/queue/queue_log.h"
#include "engines/queue_file.h"
#include "session/openers.h"
#include "text/fixed_format.h"
#include "toolkit/files.h"

namespace zentol {

bool slurm_backend(const EngineConfig& engines) {
    return text::equals_nocase(text::trim(engines.get("queue_backend")), "slurm");
}

SlurmSettings slurm_settings(const EngineConfig& engines) {
    return {std::string(text::trim(engines.get("queue_partition"))),
            std::string(text::trim(engines.get("queue_time_limit")))};
}

namespace {

// The caller holds the queue's lock.
std::optional<std::string> take_first_locked(const std::string& queue_file, std::string* why) {
    auto lines = files::read_lines(queue_file);
    if (!lines) return std::nullopt;
    std::vector<std::string> rest;
    std::optional<std::string> first;
    for (const std::string& line : *lines) {
        if (!first && !text::trim(line).empty()) first = std::string(text::trim(line));
        else if (!text::trim(line).empty()) rest.push_back(line);
    }
    if (!first) return std::nullopt;
    // Through a temporary file and a rename: a queue is never torn.
    if (!files::write_lines(queue_file, rest, why)) return std::nullopt;
    return first;
}

}  // namespace

std::optional<std::string> take_first_record(const std::string& queue_file, std::string* why) {
    QueueLock lock(queue_lock_file(queue_file), true);
    return take_first_locked(queue_file, why);
}

bool put_back_record(const std::string& queue_file, const std::string& record) {
    QueueLock lock(queue_lock_file(queue_file), true);
    auto lines = files::read_lines(queue_file).value_or(std::vector<std::string>{});
    for (const std::string& line : lines)
        if (text::equals_nocase(text::trim(line), record)) return true;
    lines.insert(lines.begin(), record);
    return files::write_lines(queue_file, lines);
}

namespace {

enum class Step { Empty, Ran, Held };

struct Context {
    const QueueRunner& r;
    bool slurm = false;
    SlurmSettings settings;
};

void say(const Context& c, const std::string& text) {
    if (c.r.out) *c.r.out << "zentol-queue: " << text << std::endl;
}

void complain(const Context& c, const std::string& text) {
    if (c.r.err) *c.r.err << "zentol-queue: " << text << std::endl;
}

std::string first_record(const std::string& queue_file) {
    for (const std::string& line : files::read_lines(queue_file).value_or(std::vector<std::string>{}))
        if (!text::trim(line).empty()) return std::string(text::trim(line));
    return "";
}

// The engine of the next record, checked before the record leaves the
// queue: without it (or without sbatch) the record stays.
bool can_start(const Context& c, const std::string& queue, const std::string& record) {
    auto job = queued_job(record, nullptr);
    if (!job) return true;   // taken and logged as failed
    std::string missing;
    if (queue_engine_program(c.r.engines, job->engine).empty())
        missing = std::string(queue_engine_title(job->engine)) + " is not installed: set \"" +
                  queue_engine_key(job->engine) + "\" in engines.def";
    else if (c.slurm && on_path("sbatch").empty())
        missing = "sbatch is not on PATH (queue_backend slurm)";
    if (missing.empty()) return true;
    log_queue_event(queue, "stopped", "engine missing", record);
    complain(c, missing + "; " + record + " stays in " + queue);
    return false;
}

int job_cores(const Context& c, const std::string& queue, const QueuedJob& job) {
    if (job.engine == QueueEngine::Orca)
        return orca_deck_cores(files::read_lines(job.deck).value_or(std::vector<std::string>{}));
    if (auto n = queued_cores(read_queue_log(queue), job.deck)) return *n;
    auto fallback = text::read_i(text::trim(c.r.engines.get("queue_cores")));
    return fallback && *fallback >= 1 ? static_cast<int>(*fallback) : 1;
}

std::string seconds_text(long long s) { return std::to_string(s) + " s"; }

void run_here(const Context& c, const std::string& queue, const std::string& record, const QueuedJob& job,
              const std::string& program) {
    prepare_queued_run(job);
    const std::string line = queued_command_line(job, program);
    say(c, "running " + record);
    const ChildResult res = run_line_stoppable(line, job.dir, c.r.stop);
    finish_queued_run(job);
    if (res.stopped) {
        // Started again from the top by the next runner.
        log_queue_event(queue, "interrupted", "back in queue, " + seconds_text(res.seconds), record);
        put_back_record(queue, record);
        say(c, "interrupted " + record + " (back in the queue)");
        return;
    }
    const bool done = res.started && res.exit_status == 0;
    const std::string detail =
        res.started ? "exit " + std::to_string(res.exit_status) + ", " + seconds_text(res.seconds) : "not started";
    log_queue_event(queue, done ? "done" : "failed", detail, record);
    say(c, (done ? "done " : "failed ") + record + " (" + detail + ")");
}

Step submit(const Context& c, const std::string& queue, const std::string& record, const QueuedJob& job,
            const std::string& program) {
    prepare_queued_run(job);
    const std::string folder = slurm_folder(queue);
    files::make_dirs(folder);
    const std::string script = folder + "/" + job.name + "-" + std::to_string(getpid()) + "-" +
                               std::to_string(std::chrono::system_clock::now().time_since_epoch().count()) + ".sh";
    std::string why;
    std::optional<std::string> id;
    if (files::write_lines(script, slurm_batch_script(job, queued_command_line(job, program),
                                                      finish_queued_run_script(job), c.settings, folder), &why))
        id = sbatch_submit(script, &why);
    if (!id) {
        log_queue_event(queue, "stopped", "not submitted", record);
        put_back_record(queue, record);
        complain(c, "could not submit " + record + ": " + why);
        return Step::Held;
    }
    log_queue_event(queue, "submitted", "slurm " + *id + ", cores " + std::to_string(job.cores), record);
    say(c, "submitted " + record + " as Slurm job " + *id);
    return Step::Ran;
}

Step work_one(const Context& c, const std::string& queue) {
    std::string record, why;
    {
        QueueLock lock(queue_lock_file(queue), true);
        record = first_record(queue);
        if (record.empty()) return Step::Empty;
        if (!can_start(c, queue, record)) return Step::Held;
        // Off the queue before it starts: a second runner never sees it.
        if (!take_first_locked(queue, &why)) {
            complain(c, "cannot rewrite " + queue + ": " + why);
            return Step::Held;
        }
    }
    auto job = queued_job(record, &why);
    if (job && !files::exists(job->deck)) why = "no such deck", job.reset();
    if (!job) {
        log_queue_event(queue, "failed", why, record);
        complain(c, record + ": " + why);
        return Step::Ran;
    }
    const std::string program = queue_engine_program(c.r.engines, job->engine);
    job->cores = job_cores(c, queue, *job);
    const std::string home = files::current_dir();
    files::change_dir(job->dir);
    Step step = Step::Ran;
    if (c.slurm) step = submit(c, queue, record, *job, program);
    else {
        log_queue_event(queue, "running", "cores " + std::to_string(job->cores), record);
        run_here(c, queue, record, *job, program);
    }
    files::change_dir(home);
    return step;
}

}  // namespace

namespace {

struct OpenJob {
    std::string id;
    std::string status;
    std::string deck;
};

// The Slurm id of a "submitted" or "running" line ("slurm 42, cores 4").
std::optional<std::string> slurm_id(const QueueEvent& e) {
    const auto words = text::split_words(e.detail);
    if ((e.status != "submitted" && e.status != "running") || words.size() < 2 || words[0] != "slurm") return {};
    std::string id(words[1]);
    if (!id.empty() && id.back() == ',') id.pop_back();
    return id;
}

// The newest line of each deck, in the order of those lines.
std::vector<QueueEvent> latest_events(const std::vector<QueueEvent>& log) {
    std::vector<QueueEvent> latest;
    std::set<std::string> seen;
    for (auto it = log.rbegin(); it != log.rend(); ++it)
        if (seen.insert(text::upper_case(it->deck)).second) latest.insert(latest.begin(), *it);
    return latest;
}

// Asks the cluster about the jobs the log has as submitted or running and
// logs the changes; the states it was told.
std::map<std::string, SlurmState> reconcile_slurm(const std::string& queue) {
    QueueLock lock(queue_lock_file(queue), true);
    std::vector<OpenJob> open;
    for (const QueueEvent& e : latest_events(read_queue_log(queue)))
        if (auto id = slurm_id(e)) open.push_back({*id, e.status, e.deck});
    std::vector<std::string> ids;
    for (const auto& j : open) ids.push_back(j.id);
    const auto states = slurm_states(ids, slurm_folder(queue));
    for (const auto& j : open) {
        auto it = states.find(j.id);
        if (it == states.end()) continue;
        const SlurmState& st = it->second;
        const std::string exit = st.exit_status ? ", exit " + std::to_string(*st.exit_status) : "";
        if (st.ended) {
            const bool done = st.state == "COMPLETED" && st.exit_status.value_or(0) == 0;
            log_queue_event(queue, done ? "done" : "failed",
                            "slurm " + j.id + (done ? exit : ", " + text::lower_case(st.state) + exit), j.deck);
        } else if (st.state == "RUNNING" && j.status == "submitted") {
            log_queue_event(queue, "running", "slurm " + j.id, j.deck);
        }
    }
    return states;
}

void print_one_status(std::ostream& os, const std::string& queue, bool slurm) {
    const auto states = slurm ? reconcile_slurm(queue) : std::map<std::string, SlurmState>{};
    os << queue << (queue_runner_busy(queue) ? "  (a runner is working)" : "") << "\n";
    int waiting = 0;
    for (const std::string& line : files::read_lines(queue).value_or(std::vector<std::string>{}))
        if (!text::trim(line).empty()) os << "  " << text::pad_right("waiting", 12) << text::trim(line) << "\n", ++waiting;
    if (!waiting) os << "  (no job waiting)\n";
    const auto latest = latest_events(read_queue_log(queue));
    const std::size_t shown = std::min<std::size_t>(latest.size(), 20);
    for (std::size_t k = latest.size() - shown; k < latest.size(); ++k) {
        const QueueEvent& e = latest[k];
        std::string detail = e.detail;
        if (auto id = slurm_id(e); id && states.count(*id) && !states.at(*id).state.empty())
            detail += " [" + text::lower_case(states.at(*id).state) + "]";
        os << "  " << text::pad_right(e.status, 12) << " " << e.time << "  " << text::pad_right(detail, 28) << " "
           << e.deck << "\n";
    }
}

// Waits up to `seconds`, returning early on a stop.
void pause(const QueueRunner& r, int seconds) {
    for (int k = 0; k < seconds * 10 && !(r.stop && *r.stop); ++k)
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
}

}  // namespace

int run_queues(const QueueRunner& r) {
    Context c{r, slurm_backend(r.engines), slurm_settings(r.engines)};
    std::vector<std::string> mine;
    std::vector<std::unique_ptr<QueueLock>> locks;
    int busy = 0;
    for (const std::string& queue : r.queue_files) {
        // Nothing queued yet: a single pass has nothing to do there.
        if (!r.watch && !files::exists(queue)) continue;
        files::make_dirs(std::filesystem::path(queue).parent_path().string());
        auto lock = std::make_unique<QueueLock>(runner_lock_file(queue), false);
        if (!lock->held()) {
            ++busy;
            complain(c, "another runner is working through " + queue);
            continue;
        }
        locks.push_back(std::move(lock));
        mine.push_back(queue);
    }
    if (mine.empty()) return busy ? 3 : 0;
    std::set<std::string> held;
    while (!(r.stop && *r.stop)) {
        bool worked = false;
        for (const std::string& queue : mine) {
            if (held.count(queue) || (r.stop && *r.stop)) continue;
            const Step step = work_one(c, queue);
            if (step == Step::Held) held.insert(queue);
            worked = worked || step == Step::Ran;
        }
        if (c.slurm && r.watch)
            for (const std::string& queue : mine) reconcile_slurm(queue);
        if (worked) continue;
        if (!r.watch) break;
        pause(r, r.watch_seconds);
    }
    return held.empty() ? 0 : 1;
}

int print_queue_status(const QueueRunner& r) {
    if (!r.out) return 0;
    const bool slurm = slurm_backend(r.engines);
    for (const std::string& queue : r.queue_files) print_one_status(*r.out, queue, slurm);
    return 0;
}

}  // namespace zentol
