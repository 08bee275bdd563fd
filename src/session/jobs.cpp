#include "session/jobs.h"

#include <filesystem>

#include "session/job_files.h"
#include "session/session.h"
#include "session/startup.h"
#include "text/fixed_format.h"
#include "toolkit/files.h"
#include "toolkit/toolkit.h"

namespace zentol {

std::string job_file(const Session& s, const std::string& extension) { return s.job.name + extension; }

namespace {

bool same_directory(const std::string& a, const std::string& b) {
    std::error_code ec;
    return std::filesystem::equivalent(a, b, ec) && !ec;
}

}  // namespace

int job_status(const Session& s, const std::string& job) {
    int status = 0;
    if (!files::exists(job + ".ins")) status += 1;
    if (!files::exists(job + ".xyz")) status += 2;
    std::string dir = text::upper_case(files::current_dir());
    for (std::size_t at = dir.find("LIBRARY"); at != std::string::npos; at = dir.find("LIBRARY", at + 1)) status += 10;
    if (text::equals_nocase(job, "ptest") && same_directory(files::current_dir(), s.job.scratch_dir))
        status = kStatusPtestInScratch;
    return status;
}

void show_recent_jobs(Session& s) {
    for (int k = 1; k <= kRecentJobs; ++k) s.tk.WMenuSetString(40066 + k, s.job.mru[k]);
}

void remember_job(Session& s) {
    std::string path = files::current_dir() + "/" + s.job.name + ".xyz";
    int match = 0;
    for (int k = 1; k <= kRecentJobs; ++k)
        if (s.job.mru[k] == path) match = k;   // the highest match wins
    int from = match == 0 ? kRecentJobs : match;
    for (int k = from; k > 1; --k) s.job.mru[k] = s.job.mru[k - 1];
    s.job.mru[1] = path;
    show_recent_jobs(s);
}

void purge_job_files(const Session& s, bool keep, bool delete_movie) {
    if (!keep) {
        remove_frame_files(s.job.name);
        files::remove_file(job_file(s, ".dyn"));
    }
    if (delete_movie) files::remove("MV*.INS");
}

void show_job_name(Session& s) {
    s.tk.WindowOutStatusBar(2, std::string(1, s.job.instance_digit) + ":" + s.job.name);
    s.tk.set_window_title(s.job.name + " - " + kWindowTitle);
}

void tell(Session& s, std::initializer_list<const char*> lines) {
    std::string text;
    for (const char* l : lines) text += (text.empty() ? "" : "\r") + std::string(l);
    s.tk.WMessageBox(kButtonsOk, MessageIcon::Exclamation, 1, text, "Zentol");
}

bool ask_yes_no(Session& s, const std::string& text) {
    return s.tk.WMessageBox(kButtonsYesNo, MessageIcon::Question, 1, text, "Zentol") == 1;
}

}  // namespace zentol
