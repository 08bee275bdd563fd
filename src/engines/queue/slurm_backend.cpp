#include "engines/queue/slurm_backend.h"

#include <filesystem>

#include "engines/queue/child_process.h"
#include "text/fixed_format.h"
#include "toolkit/files.h"
#include "toolkit/process.h"

namespace zentol {

std::string slurm_folder(const std::string& queue_file) {
    return (std::filesystem::path(queue_file).parent_path() / "slurm").string();
}

std::vector<std::string> slurm_batch_script(const QueuedJob& job, const std::string& engine_line,
                                            const std::vector<std::string>& after, const SlurmSettings& settings,
                                            const std::string& folder) {
    using process::shell_quote;
    // Directives take no quoting: names with blanks are left to the
    // script's own lines.
    std::vector<std::string> s{"#!/bin/sh", "#SBATCH --job-name=" + text::sanitise_text(job.name),
                               "#SBATCH --nodes=1", "#SBATCH --ntasks=" + std::to_string(job.cores),
                               "#SBATCH --output=" + folder + "/%j.out"};
    if (!settings.partition.empty()) s.push_back("#SBATCH --partition=" + settings.partition);
    if (!settings.time_limit.empty()) s.push_back("#SBATCH --time=" + settings.time_limit);
    s.push_back("exit_file=" + shell_quote(folder + "/") + "\"$SLURM_JOB_ID.exit\"");
    s.push_back("cd " + shell_quote(job.dir) + " || { echo 1 >\"$exit_file.new\"; mv \"$exit_file.new\" \"$exit_file\"; exit 1; }");
    s.push_back(engine_line);
    s.emplace_back("status=$?");
    s.insert(s.end(), after.begin(), after.end());
    // Written whole and renamed: whoever reads it finds the whole number.
    s.emplace_back("echo \"$status\" >\"$exit_file.new\" && mv \"$exit_file.new\" \"$exit_file\"");
    s.emplace_back("exit \"$status\"");
    return s;
}

std::optional<std::string> parse_sbatch_id(const std::string& output) {
    for (const std::string& line : files::split_lines(output)) {
        std::string_view id = text::trim(line);
        id = id.substr(0, id.find(';'));
        if (!id.empty() && id.find_first_not_of("0123456789_") == std::string_view::npos) return std::string(id);
    }
    return std::nullopt;
}

std::optional<std::string> sbatch_submit(const std::string& script, std::string* why) {
    std::string out, err;
    const int status = run_capture({"sbatch", "--parsable", script}, &out, &err);
    auto id = status == 0 ? parse_sbatch_id(out) : std::nullopt;
    if (!id && why) {
        const std::string said(text::trim(err.empty() ? out : err));
        *why = status < 0 ? "sbatch could not be run" : said.empty() ? "sbatch gave no job id" : said;
    }
    return id;
}

std::map<std::string, std::string> parse_squeue(const std::string& output) {
    std::map<std::string, std::string> states;
    for (const std::string& line : files::split_lines(output)) {
        const std::size_t bar = line.find('|');
        if (bar == std::string::npos) continue;
        states[std::string(text::trim(line.substr(0, bar)))] = std::string(text::trim(line.substr(bar + 1)));
    }
    return states;
}

std::map<std::string, SlurmState> parse_sacct(const std::string& output) {
    std::map<std::string, SlurmState> states;
    for (const std::string& line : files::split_lines(output)) {
        std::vector<std::string> f;
        std::size_t from = 0;
        for (std::size_t bar; (bar = line.find('|', from)) != std::string::npos; from = bar + 1)
            f.push_back(line.substr(from, bar - from));
        f.push_back(line.substr(from));
        if (f.size() < 3 || f[0].empty()) continue;
        SlurmState st;
        // "CANCELLED by 0" names who cancelled it.
        st.state = text::split_words(f[1]).empty() ? "" : std::string(text::split_words(f[1])[0]);
        if (auto code = text::read_i(f[2].substr(0, f[2].find(':')))) st.exit_status = static_cast<int>(*code);
        st.ended = st.state != "PENDING" && st.state != "RUNNING" && st.state != "REQUEUED" &&
                   st.state != "SUSPENDED" && st.state != "COMPLETING" && !st.state.empty();
        states[f[0]] = st;
    }
    return states;
}

namespace {

std::string id_list(const std::vector<std::string>& ids) {
    std::string list;
    for (const auto& id : ids) list += (list.empty() ? "" : ",") + id;
    return list;
}

}  // namespace

std::map<std::string, SlurmState> slurm_states(const std::vector<std::string>& ids, const std::string& folder) {
    std::map<std::string, SlurmState> states;
    if (ids.empty()) return states;
    // All of the user's jobs: squeue -j refuses a list with a job the
    // controller has forgotten.
    std::string out;
    const bool listed = run_capture({"squeue", "-h", "--me", "-o", "%i|%T"}, &out, nullptr) == 0;
    const std::map<std::string, std::string> queued = parse_squeue(out);
    std::vector<std::string> gone;
    for (const auto& id : ids) {
        if (auto it = queued.find(id); it != queued.end()) states[id] = {it->second, std::nullopt, false};
        else gone.push_back(id);
    }
    std::map<std::string, SlurmState> accounted;
    out.clear();
    if (listed && !gone.empty() &&
        run_capture({"sacct", "-n", "-X", "-P", "-o", "JobID,State,ExitCode", "-j", id_list(gone)}, &out, nullptr) == 0)
        accounted = parse_sacct(out);
    for (const auto& id : gone) {
        if (auto it = accounted.find(id); it != accounted.end() && !it->second.state.empty()) {
            states[id] = it->second;
            continue;
        }
        // No accounting: the exit file the script wrote.
        SlurmState st;
        if (auto lines = files::read_lines(folder + "/" + id + ".exit")) {
            if (auto code = lines->empty() ? std::nullopt : text::read_i(text::trim((*lines)[0])))
                st.exit_status = static_cast<int>(*code);
            st.ended = true;
            st.state = st.exit_status == 0 ? "COMPLETED" : "FAILED";
        } else if (listed) {
            // Cancelled before it started, or lost with its node.
            st.ended = true;
            st.state = "ENDED";
        }
        states[id] = st;
    }
    return states;
}

}  // namespace zentol
