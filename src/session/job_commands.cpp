#include "session/job_commands.h"

#include <filesystem>

#include "session/config.h"
#include "session/display_loop.h"
#include "session/job_files.h"
#include "session/jobs.h"
#include "session/openers.h"
#include "session/session.h"
#include "session/store_ops.h"
#include "session/structure_exchange.h"
#include "structure_files/geo_log.h"
#include "structure_files/ins_file.h"
#include "structure_files/xyz_file.h"
#include "text/fixed_format.h"
#include "toolkit/files.h"
#include "toolkit/toolkit.h"

namespace zentol {

namespace {

int library_count(const std::string& dir) {
    std::string up = text::upper_case(dir);
    int n = 0;
    for (std::size_t at = up.find("LIBRARY"); at != std::string::npos; at = up.find("LIBRARY", at + 1)) ++n;
    return n;
}

// A .xyz that can't be read is refused before the job changes, so nothing
// of the current job or of the damaged file is lost.
bool readable_xyz(Session& s, const std::string& path) {
    XyzProblem problem;
    if (classify_structure_file(path, &problem) != FileKind::DamagedJobXyz) return true;
    tell(s, {input_error_line(path).c_str(), problem.text(path).c_str()});
    return false;
}

// Before another job takes the store: the current molecule is saved, or, when
// its file cannot take it, the user chooses between Save As and losing it.
bool may_leave_job(Session& s) {
    if (s.store.natoms < 1) return true;
    SaveResult r = write_job_files(s);
    while (r == SaveResult::Failed || r == SaveResult::Held) {
        if (!ask_yes_no(s, "The molecule of " + s.job.name + " is not saved.\rSave it under another name first?"))
            return ask_yes_no(s, "Leave " + s.job.name + " and lose the molecule?");
        if (save_job_as(s)) return true;
        r = s.flags.save_failed ? SaveResult::Failed : SaveResult::Held;
    }
    return true;
}

// The job in the current directory becomes the session's job: its .xyz is
// read, or the molecule of an imported file takes its place.
void take_job(Session& s, const std::string& name, const std::string& first_log_line,
              const PendingImport* imported = nullptr) {
    s.job.name = name;
    s.flags.xyz_damaged = false;
    s.flags.save_failed = false;
    s.flags.cut_on_load = 0;
    s.view.pick_count = 0;   // a pick of the last job means nothing in this one
    s.view.circle_count = 0;
    files::remove_stale_temporaries(".");
    close_job_log(s);
    int status = kXyzRead;
    if (imported) {
        clear_replaced_job(*imported);
        install_import(s, *imported);
    } else {
        read_job_xyz(s, status);
    }
    save_and_reload(s);
    show_job_name(s);
    remember_job(s);
    write_dir_file(s, "DIR.DEF", files::current_dir());
    write_dir_file(s, dir_def_name(s), files::current_dir());
    open_job_log(s, false, (text::FreeRecord() << first_log_line).str());
    if (imported) report_import(s, *imported);
}

// The job checks of a name in the current directory before it is opened;
// false when refused (the user was told why).
bool may_open_job(Session& s, const std::string& name) {
    int status = job_status(s, name);
    if (status == kStatusPtestInScratch) files::remove("ptest.ins");
    if (status >= 10 && s.flags.user_level < 3) {
        tell(s, {"Zentol will not open files in the Library", "Choose a folder outside the Library path and",
                 "and Load from the library using Build Mode"});
    } else if (status == 2) {
        tell(s, {"Current jobname INS file exists Choose a different Job"});
    } else if (std::string why; !valid_job_name(name, &why)) {
        tell(s, {why.c_str()});
    } else {
        return true;
    }
    return false;
}

// Another program's file: a new job beside it, or the job of its name that
// is there already when the user keeps it.
bool open_foreign_file(Session& s, const std::string& path) {
    PendingImport pending;
    std::string existing;
    switch (prepare_import(s, path, pending, &existing)) {
        case ImportChoice::Import:
            read_zentol_def(s);
            take_job(s, pending.name, "Imported " + pending.name, &pending);
            return true;
        case ImportChoice::OpenExisting:
            if (!may_open_job(s, existing) || !readable_xyz(s, existing + ".xyz")) return false;
            read_zentol_def(s);
            take_job(s, existing, "Opened " + existing);
            return true;
        case ImportChoice::Refused: break;
    }
    return false;
}

// Opens the file at path as the session's job; false when refused, with the
// current directory as it was.
bool open_path(Session& s, const std::string& path) {
    const std::string home = files::current_dir();
    const std::string absolute = std::filesystem::absolute(path).lexically_normal().string();
    auto [dir, name] = split_job_path(absolute);
    if (!files::change_dir(dir)) return false;
    bool opened = false;
    if (classify_structure_file(absolute) == FileKind::Foreign) {
        opened = open_foreign_file(s, absolute);
    } else if (may_open_job(s, name) && readable_xyz(s, name + ".xyz")) {
        read_zentol_def(s);
        take_job(s, name, "Opened " + name);
        opened = true;
    }
    if (!opened) files::change_dir(home);
    return opened;
}

}  // namespace

std::pair<std::string, std::string> split_job_path(const std::string& path) {
    std::filesystem::path p(path);
    std::string name = p.filename().string();
    if (name.size() > 4 && text::equals_nocase(name.substr(name.size() - 4), ".xyz")) name.resize(name.size() - 4);
    return {p.parent_path().string(), name};
}

void open_existing_job(Session& s) {
    if (!may_leave_job(s)) return;
    if (s.flags.type_list_flag && s.store.natoms > 1) write_type_list(s);
    std::string path = files::current_dir() + "/" + s.job.name + ".xyz";
    while (s.tk.select_file(kFilterStructureOpen, kChooseExisting, path, "Find the XYZ Input File")) {
        if (open_path(s, path)) return;
    }
}

void open_dropped_file(Session& s, const std::string& path) {
    std::error_code ec;
    if (!std::filesystem::is_regular_file(path, ec)) {
        tell(s, {(path + " is not a file Zentol can open.").c_str()});
        return;
    }
    if (!may_leave_job(s)) return;
    if (s.flags.type_list_flag && s.store.natoms > 1) write_type_list(s);
    open_path(s, path);
}

void open_recent_job(Session& s, int k) {
    if (k < 1 || k > kRecentJobs || !may_leave_job(s)) return;
    std::string entry(text::trim(s.job.mru[k]));
    if (entry.size() <= 2) return;
    auto [dir, name] = split_job_path(entry);
    if (std::string why; !valid_job_name(name, &why)) {
        tell(s, {why.c_str()});
        return;
    }
    if (!std::filesystem::is_directory(dir)) {
        tell(s, {("The folder " + dir + " is no longer there").c_str()});
        return;
    }
    const std::string home = files::current_dir();
    files::change_dir(dir);
    if (!readable_xyz(s, name + ".xyz")) {
        files::change_dir(home);
        return;
    }
    take_job(s, name, "Zentol " + name);
}

void ptest_in_scratch(Session& s) {
    if (s.job.name == "ptest" || !may_leave_job(s)) return;
    files::make_dirs(s.job.scratch_dir);
    files::change_dir(s.job.scratch_dir);
    files::remove("ptest.ins");
    take_job(s, "ptest", "Ptest in " + s.job.scratch_dir);
}

void show_current_job(Session& s) {
    s.tk.WMessageBox(kButtonsOk, MessageIcon::Information, 1, files::current_dir() + "/" + s.job.name,
                     "Current Job is ..");
}

namespace {

enum class Target { Cancelled, Refused, Chosen };

// Asks for the new directory and name; the directories of a typed path are
// made. On Chosen the current directory is the target's.
Target choose_target(Session& s, const std::string& home, std::string& name) {
    std::string path = home + "/" + s.job.name + ".xyz";
    if (!s.tk.select_file(20001, kChooseNew, path, "Find the Directory -and Give the New Jobname")) return Target::Cancelled;
    auto [dir, chosen] = split_job_path(path);
    if (library_count(dir) > 0 && s.flags.user_level < 3) {
        tell(s, {"You are attempting to save into the Library", "Choose a folder outside the Library path"});
        return Target::Refused;
    }
    if (!files::make_dirs(dir) || !files::change_dir(dir)) {
        tell(s, {("Cannot make the folder " + dir).c_str()});
        return Target::Refused;
    }
    name = chosen.size() > kMaxJobName ? chosen.substr(0, 20) : chosen;
    std::string why;
    if (!valid_job_name(name, &why)) {
        tell(s, {why.c_str()});
        return Target::Refused;
    }
    return Target::Chosen;
}

bool same_file(const std::string& a, const std::string& b) {
    std::error_code ec;
    return std::filesystem::equivalent(files::resolve(a), files::resolve(b), ec) && !ec;
}

// The job's side files go with it; the molecule itself is written from
// memory. Old results of a job of the new name are cleared first, but a
// file is never deleted when it is the very file to be copied.
void copy_job_files(const std::string& from_dir, const std::string& from, const std::string& to) {
    for (const char* ext : {".key", ".lst", ".pun"}) {
        if (!same_file(from_dir + "/" + from + ext, to + ext)) files::remove_file(to + ext);
    }
    for (const char* ext : {".key", ".lst", ".ino"}) {
        std::string source = from_dir + "/" + from + ext;
        if (files::exists(source) && !same_file(source, to + ext)) files::copy(source, to + ext);
    }
}

}  // namespace

bool save_job_as(Session& s) {
    if (s.store.natoms < 1) return false;
    const std::string home = files::current_dir();
    std::string name;
    while (true) {
        Target t = choose_target(s, home, name);
        if (t != Target::Chosen) {
            files::change_dir(home);
            return false;
        }
        std::error_code ec;
        // The job itself, in any spelling: a plain save.
        if (std::filesystem::equivalent(files::current_dir(), home, ec) && text::equals_nocase(name, s.job.name))
            return write_job_files(s) == SaveResult::Written;
        if (!files::exists(name + ".xyz")) break;
        if (s.flags.user_level < 2) {
            tell(s, {(name + " job exists").c_str(), "Choose another name"});
            files::change_dir(home);
            continue;
        }
        if (!ask_yes_no(s, name + " job exists\rOverwrite ?")) {
            files::change_dir(home);
            return false;
        }
        break;
    }
    copy_job_files(home, s.job.name, name);
    const std::string old_name = s.job.name;
    const int old_cut = s.flags.cut_on_load;
    s.job.name = name;
    s.flags.cut_on_load = 0;   // a new job: the cut molecule is its own
    if (write_job_files(s) != SaveResult::Written) {
        s.job.name = old_name;
        s.flags.cut_on_load = old_cut;
        files::change_dir(home);
        return false;
    }
    write_dir_file(s, "DIR.DEF", files::current_dir());
    remember_job(s);
    show_job_name(s);
    close_job_log(s);
    open_job_log(s, false, (text::FreeRecord() << "Job Saved as " + name).str());
    return true;
}

std::optional<long> version_in(const std::string& content) {
    std::size_t start = 0;
    while (start < content.size()) {
        std::size_t end = content.find('\n', start);
        if (end == std::string::npos) end = content.size();
        std::string line = content.substr(start, end - start);
        if (line.rfind("version", 0) == 0) {
            auto v = text::read_ints(text::sanitise_text(line.substr(7)), 1);
            if (v && !v->empty()) return static_cast<long>((*v)[0]);
            return std::nullopt;
        }
        start = end + 1;
    }
    return std::nullopt;
}

void check_for_updates(Session& s) {
    files::remove("brevan_ver.txt");
    std::string endpoint(text::trim(s.engines.get("update_url")));
    if (endpoint.empty()) {
        tell(s, {"No update address is configured.",
                 ("Set \"update_url\" in " + cfg_path(s, "engines.def")).c_str()});
        return;
    }
    while (!endpoint.empty() && endpoint.back() == '/') endpoint.pop_back();
    s.tk.WindowOutStatusBar(9, "Checking for updates");
    auto body = s.tk.http_get(endpoint + "/brevan_ver.txt", 5000);
    if (!body) {
        s.tk.WindowOutStatusBar(9, "No answer from the update server");
        return;
    }
    auto version = version_in(*body);
    if (!version) {
        s.tk.WindowOutStatusBar(9, "The update server's answer holds no version");
        return;
    }
    if (*version > kProgramVersion) {
        if (ask_yes_no(s, "A Newer Version of Zentol is Available\rDo you want to download the latest version?")) {
            open_document(s, cfg_path(s, "dload2.htm"));
            s.tk.wait_hundredths(300);
            s.flags.exit_requested = true;
        }
        return;
    }
    tell(s, {"You have the Latest Version of Zentol"});
}

}  // namespace zentol
