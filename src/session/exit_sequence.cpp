// What happens after the display loop has ended for good: the job's state is
// saved, scratch files go, the recent list and DIR.DEF are written, and a
// sibling program is started when one was asked for.
#include <algorithm>
#include <cmath>

#include "session/config.h"
#include "session/job_files.h"
#include "session/job_commands.h"
#include "session/jobs.h"
#include "session/openers.h"
#include "session/session.h"
#include "session/startup.h"
#include "structure_files/geo_log.h"
#include "structure_files/ins_file.h"
#include "text/fixed_format.h"
#include "toolkit/files.h"
#include "toolkit/toolkit.h"

namespace zentol {

namespace {

const char* const kWorkingFiles[] = {"ZENTOL.BAT", "ZENTOL.INP", "ZENTOL.LOG", "SYMMOL.LST", "SYMMOL.INP",
                                     "MOL_AL.LST", "input",      "fort.22",    "symmetrz.out", "icona.dat",
                                     "iconv.dat",  "idhed.dat",  "pppele.dat"};

// A sibling that is not installed is simply not started here; the command
// that asked for it has said so already.
void start_sibling(Session& s, const std::string& key, std::vector<std::string> args) {
    std::string program = configured_program(s, key);
    if (!program.empty()) s.tk.IOsExecute(program, args);
}

// An empty job leaves nothing behind, but only its own files go: the
// folder may hold anything else of the user's under the same name.
void remove_job_files(Session& s) {
    bool keep = s.flags.xyz_damaged || s.flags.save_failed;
    if (s.store.natoms < 1 && !keep) {
        for (const char* ext : {".xyz", ".ins", ".geo", ".key"}) files::remove_file(job_file(s, ext));
    }
    for (const char* name : kWorkingFiles) files::remove_file(name);
    files::remove_file(job_file(s, ".rat"));
    files::remove_file(job_file(s, ".mat"));
    if (s.store.natoms == 0 && !keep) remove_own_job_files(".", s.job.name);
}

void hand_over(Session& s) {
    std::string n(1, s.job.instance_digit);
    bool imx = s.words.imx || s.words.file_path;
    if (s.flags.switch_to_sibling) {
        close_job_log(s);
        start_sibling(s, "zentol9", imx ? std::vector<std::string>{s.job.name, n, "IMX"}
                                        : std::vector<std::string>{s.job.name, n, "MX"});
    }
    if (s.flags.run_orbview_at_exit) {
        write_bond_list(s);
        start_sibling(s, "orbview", imx ? std::vector<std::string>{s.job.name, n, "IMPX"}
                                        : std::vector<std::string>{s.job.name, n});
    }
    if (s.flags.plot_exit) {
        files::copy(job_file(s, ".bgl"), "pppmap.bgl");
        close_job_log(s);
        static const char* kinds[] = {"MOPAC", "MOPAS", "MOPAD"};
        long nn = std::clamp(std::lround(s.flags.plot_number), 0L, 99L);
        std::string number = (nn < 10 ? "0" : "") + std::to_string(nn);
        std::vector<std::string> args{s.job.name, n, kinds[std::clamp(s.flags.plot_kind, 0, 2)], number};
        if (imx) args.push_back("IMX");
        start_sibling(s, "orbview", args);
    }
}

void return_to_launcher(Session& s) {
    long long size = files::size(cfg_path(s, std::string("brevan_run") + s.job.instance_digit + ".dat"));
    if (size > 1 && !s.words.imx && !s.words.impx && !s.words.file_path) {
        files::change_dir(s.job.start_dir);
        write_dir_file(s, dir_def_name(s), s.job.start_dir);
        files::remove("mop2016.txt");
        start_sibling(s, "launcher", {s.job.name, std::string(1, s.job.instance_digit)});
    }
}

// The molecule is written before anything goes. When its file cannot take
// it, the user is offered Save As until it is saved somewhere or the user
// lets it go; the ptest job, which the next start clears, offers a name too.
void save_before_leaving(Session& s) {
    if (s.store.natoms < 1 || s.flags.xyz_damaged) return;
    SaveResult r = write_job_files(s);
    while (r == SaveResult::Failed || r == SaveResult::Held) {
        if (!ask_yes_no(s, "The molecule of " + s.job.name + " is not saved.\rSave it under another name?")) return;
        if (save_job_as(s)) return;
        r = s.flags.save_failed ? SaveResult::Failed : SaveResult::Held;
    }
    bool ptest_in_scratch = job_status(s, s.job.name) == kStatusPtestInScratch;
    if (ptest_in_scratch && !s.flags.plot_exit &&
        ask_yes_no(s, "ptest is cleared at the next start.\rSave the molecule under a name?"))
        save_job_as(s);
}

}  // namespace

void exit_sequence(Session& s) {
    save_before_leaving(s);
    if (!s.flags.plot_exit) close_job_log(s);
    if (s.flags.type_list_flag) write_type_list(s);
    if (files::exists(job_file(s, ".ins"))) files::copy(job_file(s, ".ins"), job_file(s, ".agl"));
    remove_job_files(s);
    hand_over(s);
    // orbview reads the map after this program has gone: on a plot exit the
    // plot files stay for it, and go when the session it returns to ends.
    if (!s.flags.plot_exit) {
        for (const char* name : {"graph.dat", "graph.tmp", "spn.dat", "dens.dat", "pppmap.*"}) files::remove(name);
        files::remove_file(job_file(s, ".mpf"));
        files::remove_file(job_file(s, ".mgf"));
    }
    write_mru(s);
    return_to_launcher(s);
    write_dir_file(s, "DIR.DEF", s.job.scratch_dir);
    s.tk.close_all();
}

}  // namespace zentol
