#include "session/startup.h"

#include <filesystem>
#include <optional>

#include "display/colours.h"
#include "display/renderer.h"
#include "session/config.h"
#include "session/display_loop.h"
#include "session/job_files.h"
#include "session/jobs.h"
#include "session/session.h"
#include "session/setup_file.h"
#include "session/store_ops.h"
#include "session/structure_exchange.h"
#include "structure_files/geo_log.h"
#include "structure_files/key_file.h"
#include "structure_files/xyz_file.h"
#include "text/fixed_format.h"
#include "toolkit/files.h"
#include "toolkit/toolkit.h"

namespace zentol {

namespace {

const std::vector<int> kStatusWidths = {400, 1500, 620, 700, 620, 700, 600, 600, 3200, 1000};

std::string word(const std::vector<std::string>& words, std::size_t n) { return n < words.size() ? words[n] : ""; }
bool begins(const std::string& w, const char* prefix) { return w.rfind(prefix, 0) == 0; }

void open_window(Session& s) {
    s.tk.window_open(800, 600, kWindowTitle);
    s.tk.menu_load(30001);
    s.tk.status_bar_parts(kStatusWidths);
    s.tk.WindowOutStatusBar(1, "Job");
    s.tk.WindowOutStatusBar(3, "Atoms");
    s.tk.WindowOutStatusBar(5, "Bonds");
    s.tk.WMenuToolbar(30101);
    s.renderer.init_gl_state();
}

void enter_dir(const std::string& dir) {
    files::make_dirs(dir);
    files::change_dir(dir);
}

// Word 1 as a path to a structure file: its directory becomes the job's and
// its name without the extension the job name. A name that cannot be a job
// name is refused, and the session starts on ptest in the scratch folder.
// Another program's file (*foreign) is read once the settings are known.
bool start_from_path(Session& s, const std::string& path, bool& foreign) {
    std::filesystem::path p = std::filesystem::absolute(path).lexically_normal();
    foreign = classify_structure_file(p.string()) == FileKind::Foreign;
    std::string why;
    if (!foreign && !valid_job_name(p.stem().string(), &why)) {
        tell(s, {("\"" + p.filename().string() + "\" cannot name a job:").c_str(), why.c_str()});
        return false;
    }
    s.job.start_dir = p.parent_path().string();
    files::change_dir(s.job.start_dir);
    s.job.name = p.stem().string();
    write_dir_file(s, dir_def_name(s), s.job.start_dir);
    return true;
}

// Another program's file on the command line: read in its folder, the
// current one by now, and made the new job beside it (*pending), or the job
// of its name that is there already. False when it cannot be read.
bool start_import(Session& s, const std::string& path, std::optional<PendingImport>& pending) {
    PendingImport import;
    std::string existing;
    switch (prepare_import(s, path, import, &existing)) {
        case ImportChoice::Import:
            s.job.name = import.name;
            clear_replaced_job(import);
            pending = std::move(import);
            return true;
        case ImportChoice::OpenExisting: s.job.name = existing; return true;
        case ImportChoice::Refused: break;
    }
    return false;
}

void choose_start_directory(Session& s) {
    if (!files::exists(cfg_path(s, dir_def_name(s)))) write_dir_file(s, dir_def_name(s), s.inst.default_scratch);
    std::string dir = read_dir_file(s, dir_def_name(s));
    if (!dir.empty()) enter_dir(dir);
    if ((s.words.no_words || s.words.imx) && !s.words.mopa && !s.words.m9) {
        enter_dir(s.job.scratch_dir);
        s.job.start_dir = files::current_dir();
        remove_own_job_files(".", "ptest");
        write_dir_file(s, dir_def_name(s), s.job.start_dir);
    }
}

void flash_title(Session& s) {
    s.tk.WDialogLoad(128);
    s.tk.WDialogShow(2);
    s.tk.wait_hundredths(100);
    s.tk.WDialogUnload();
}

void begin_job_state(Session& s) {
    files::remove_stale_temporaries(".");   // what a killed session was writing
    s.flags.os_version = s.tk.os_family();
    bool continue_log = s.words.m9 || s.words.mopa;
    open_job_log(s, continue_log, (text::FreeRecord() << "Zentol " << s.job.name).str());
    s.flags.iconc_available = files::exists(cfg_path(s, "iconc.def"));
    patch_key_drive(s);
    s.store.cell = {1, 1, 1, 90, 90, 90};
    element_lookup(s.store, &s.tk, "", kLookupConfirmAll);
    show_job_name(s);
    std::string name = text::sanitise_text(s.job.name);
    if (name.rfind("NOS", 0) == 0) s.flags.type_list_flag = true;
}

}  // namespace

void read_start_words(Session& s, const std::vector<std::string>& words) {
    std::string w3 = word(words, 3), w4 = word(words, 4), w5 = word(words, 5);
    StartWords& sw = s.words;
    if (begins(w3, "IMPX")) sw.impx = true;
    else if (begins(w3, "IMX")) sw.imx = true;
    else if (begins(w3, "MOPA")) {
        sw.mopa = true;
        s.flags.start_in_mopac = true;
        s.flags.plot_kind = begins(w3, "MOPAS") ? 1 : begins(w3, "MOPAD") ? 2 : 0;
        auto n = text::read_reals(w4, 1);
        if (n && !n->empty()) s.flags.plot_number = static_cast<float>((*n)[0]);
        if (begins(w5, "IMX")) sw.imx = true;
    } else if (begins(w3, "M9")) sw.m9 = true;
    if (begins(w4, "M9")) sw.m9 = true;
    if (begins(w4, "TIF") || begins(w5, "TIF")) s.opt.colour_by_molecule = true;
    if (!sw.mopa) s.flags.hardcopy_counter = 1;

    std::string w1 = word(words, 1), w2 = word(words, 2);
    s.job.instance_digit = '1';
    if (w1.empty()) {
        sw.no_words = true;
        sw.imx = true;      // no words at all count as IMX
        return;
    }
    if (!w2.empty() && w2[0] >= '1' && w2[0] <= '9') s.job.instance_digit = w2[0];
    if (w2.empty()) sw.file_path = true;
}

bool check_job(Session& s) {
    while (true) {
        int status = job_status(s, s.job.name);
        if (status == kStatusPtestInScratch) files::remove("ptest.ins");
        bool choose = false;
        if (status >= 10 && s.flags.user_level < 3) {
            tell(s, {"Zentol will not open files in the Library", "Choose a folder outside the Library path and",
                     "and Load from the library using Build Mode"});
            choose = true;
        } else if (status == 2) {
            tell(s, {"An INS file exists for the Current Jobname", "Move or Delete this INS file or Choose",
                     "another Jobname"});
            choose = true;
        } else if (std::string why; valid_job_name(s.job.name, &why)) {
            return true;
        } else {
            if (!text::trim(s.job.name).empty()) tell(s, {("\"" + s.job.name + "\" cannot name a job:").c_str(), why.c_str()});
            s.job.name = "ptest";
            if (!s.words.no_words) {
                std::string dir = read_dir_file(s, "DIR.DEF");
                if (!dir.empty()) enter_dir(dir);
            }
            continue;
        }
        if (choose) {
            std::string path = files::current_dir() + "/" + s.job.name + ".xyz";
            while (true) {
                if (!s.tk.select_file(20001, kChooseExisting, path, "Find the XYZ Input File")) {
                    s.job.name = "ptest";
                    return false;
                }
                if (text::lower_case(path).size() >= 3 && text::lower_case(path).ends_with("xyz")) break;
            }
            std::filesystem::path p(path);
            files::change_dir(p.parent_path().string());
            s.job.name = p.stem().string();   // checked as a name on the next turn
        }
    }
}

int run_program(Session& s, const std::vector<std::string>& words) {
    open_window(s);
    read_start_words(s, words);
    // A path on the command line means the folder the program was started in.
    const std::string start_path =
        s.words.file_path ? std::filesystem::absolute(word(words, 1)).lexically_normal().string() : "";
    bool foreign = false;
    if (s.words.file_path && !start_from_path(s, start_path, foreign)) {
        s.words.file_path = false;
        s.words.no_words = s.words.imx = true;   // as a start with no words: ptest in scratch
    }
    read_zentol_def(s);
    s.tk.WindowOutStatusBar(7, level_name(s.flags.user_level));
    choose_start_directory(s);
    load_setup(s);   // the last session's Setup choices
    load_colour_map(s);
    read_mru(s);
    std::optional<PendingImport> pending;
    if (s.words.file_path && foreign && !start_import(s, start_path, pending)) {
        s.words.file_path = false;
        s.words.no_words = s.words.imx = true;
        choose_start_directory(s);
    }
    bool accepted = true;
    if (!s.words.file_path) {
        if (!s.words.mopa) flash_title(s);
        s.job.name = s.words.no_words ? "ptest" : word(words, 1);
        if (s.job.name.empty()) s.job.name = "ptest";
        s.job.start_dir = files::current_dir();
    }
    accepted = check_job(s);
    if (accepted) {
        begin_job_state(s);
        int status = kXyzRead;
        XyzProblem problem;
        // The imported molecule, unless the job check chose another job.
        const bool imported = pending && pending->name == s.job.name;
        if (imported) install_import(s, *pending);
        else read_job_xyz(s, status, &problem);
        if (status == kXyzDamaged) {
            tell(s, {input_error_line(job_file(s, ".xyz")).c_str(), problem.text(job_file(s, ".xyz")).c_str(),
                     "The file is left as it is."});
        } else {
            if (imported) {
                save_and_reload(s);
                report_import(s, *pending);
            }
            do {
                s.flags.session_running = 10;
                remember_job(s);
                display_loop(s);
            } while (s.flags.session_running > 0);
        }
    }
    exit_sequence(s);
    return 0;
}

}  // namespace zentol
