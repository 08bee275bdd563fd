#include "engines/firefly/firefly_mode.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "building/build_mode.h"
#include "engines/firefly/firefly_deck.h"
#include "engines/firefly/firefly_listing.h"
#include "engines/firefly/firefly_modes.h"
#include "engines/firefly/firefly_programs.h"
#include "engines/mode_loop.h"
#include "engines/queue/queue_start.h"
#include "engines/queue_file.h"
#include "engines/runner.h"
#include "engines/tinker/rotation_profile.h"
#include "session/config.h"
#include "session/jobs.h"
#include "session/openers.h"
#include "session/session.h"
#include "session/store_ops.h"
#include "spectra/transmission.h"
#include "spectra/vibration_movie.h"
#include "structure_files/geo_log.h"
#include "text/fixed_format.h"
#include "toolkit/files.h"
#include "toolkit/toolkit.h"

namespace zentol {

namespace {

using Next = ModeNext;

void message(Session& s, const std::string& text) {
    s.tk.WMessageBox(kButtonsOk, MessageIcon::Exclamation, 1, text, "Firefly");
}

bool ask(Session& s, const std::string& text) {
    return s.tk.WMessageBox(kButtonsYesNo, MessageIcon::Question, 1, text, "Firefly") == 1;
}

int cores(const Session& s) { return std::clamp(static_cast<int>(std::lround(s.firefly.cores)), 1, 99); }

// The engine, or the status line that names it and its key.
std::string firefly_program(Session& s) {
    std::string program = helper_program(s, "firefly");
    if (program.empty())
        s.tk.WindowOutStatusBar(status_message_field,
                                "Firefly is not installed: set \"firefly\" in " + cfg_path(s, "engines.def"));
    return program;
}

// One run of the engine on job.inp; the punch file kept as job.pun.
void run_engine(Session& s, const std::string& program) {
    clear_firefly_run_files(s.job.name);
    run_blocking(s, firefly_command_line(program, s.job.name, cores(s)));
    keep_firefly_punch(s.job.name);
}

// ---- Rotation profile ----

std::optional<double> profile_single_point(Session& s) {
    const std::string program = helper_program(s, "firefly");
    const std::vector<std::string> atoms = firefly_atom_records(s);
    auto head = files::read_lines("pppgamet.tmp");
    if (program.empty() || atoms.empty() || !head) return std::nullopt;
    files::write_lines("pppgameb.tmp", atoms);
    std::vector<std::string> deck = *head;
    deck.insert(deck.end(), atoms.begin(), atoms.end());
    files::write_lines(job_file(s, ".inp"), deck);
    s.tk.WindowOutStatusBar(status_mode_field, "Calc.");
    run_engine(s, program);
    auto listing = files::read_text_lines(job_file(s, ".lst"));
    return listing ? listing_final_energy(*listing, s.firefly.run_type == 2) : std::nullopt;
}

void firefly_rotation_profile(Session& s) {
    ProfileEngine e;
    e.mode_name = "Firefly";
    e.log_title = " Firefly Bond Rotation Profile for ";
    e.table_header = "Dihedral     Rel.kJ/mol  Total Energy Hartree";
    e.energy_unit = " Hartree";
    e.to_kj = kHartreeToKjMol;
    e.finished = "Firefly finished results in.GEO";
    e.single_point = profile_single_point;
    rotation_profile(s, e);
}

// ---- Maps ----

void plot_map(Session& s) {
    const std::string pun = job_file(s, ".pun");
    std::string path = files::exists(pun) ? files::current_dir() + "/" + files::resolve(pun) : files::current_dir();
    const char* title = files::exists(pun) ? "Plot this PUN file" : "Find the PUN file to Plot";
    if (!s.tk.select_file(kFilterFireflyPunch, kChooseExisting, path, title)) return;
    files::copy(path, "PUNCH");
    if (!files::copy(job_file(s, ".kew"), "pppmap.kew")) {
        message(s, "No plot settings " + job_file(s, ".kew") + ":\rmake a NewInput with Plot first.");
        return;
    }
    const std::string gridmap = helper_or_message(s, "gridmap", "The map program gridmap");
    if (gridmap.empty()) return;
    s.tk.WindowOutStatusBar(status_message_field, "Calculating Map");
    files::remove("pppmap.atl");
    run_blocking(s, shell_line(gridmap, {}));
    // gridmap names its map in pppmap.atl; pppmap.log says why there is none.
    if (!files::exists("pppmap.atl")) {
        const auto log = files::read_lines("pppmap.log");
        std::string why = "The map program made no map.";
        for (const std::string& line : log.value_or(std::vector<std::string>{})) why += "\r" + line;
        message(s, why);
        s.tk.WindowOutStatusBar(status_message_field, "No map made");
        return;
    }
    const std::string orbview = helper_or_message(s, "orbview", "The viewer orbview");
    if (!orbview.empty()) run_detached(s, shell_line(orbview, {"pppmap", "FIREFLY"}));
    s.tk.WindowOutStatusBar(status_message_field, " ");
}

// ---- Normal modes ----

std::vector<Point3> engine_atoms(const ListingGeometry& g) {
    std::vector<Point3> atoms;
    for (const ListingAtom& a : g.first) atoms.push_back({a.x, a.y, a.z});
    return atoms;
}

void read_modes(Session& s, bool raman) {
    const std::string name = job_file(s, ".lst");
    auto listing = files::read_text_lines(name);
    if (!listing) {
        message(s, "There is no listing " + name);
        return;
    }
    if (not_stationary(*listing)) {
        message(s, "First Optimise the Structure");
        return;
    }
    const ListingModes modes = read_listing_modes(*listing, raman);
    if (modes.vibrations.empty()) {
        message(s, "No normal modes in " + name + "\rRun a Hessian or Raman calculation first.");
        return;
    }
    const int kind = raman ? 2 : 1;
    if (!files::write_lines(stick_file_name(s.job.name, kind), stick_file(modes.vibrations, raman))) {
        message(s, "Cannot write " + stick_file_name(s.job.name, kind));
        return;
    }
    s.tk.WMessageBox(kButtonsOk, MessageIcon::Information, 1,
                     raman ? "Raman Spectrum file written" : "IR Spectrum file written", "Firefly");
    if (!movie_atom_limit_ok(s)) return;
    play_vibration_movie(s, modes.vibrations, engine_atoms(read_listing_geometry(*listing)));
}

// ---- Queue ----

void add_to_firefly_queue(Session& s) {
    const std::string deck = job_file(s, ".inp");
    if (!files::exists(deck)) return;
    // The queued run must not find the engine's files of an earlier one.
    files::remove("punch");
    files::remove("dictnry*.*");
    // The deck's path as it is on disk (a Linux path keeps its case); the
    // queue compares its records without regard to case all the same.
    // The cores go with the job: the runner gives the engine the same -np.
    const int added =
        add_to_queue(firefly_queue_file(s), files::current_dir() + "/" + files::resolve(deck), cores(s));
    if (added < 0) message(s, "Cannot write the queue " + firefly_queue_file(s));
    else s.tk.WMessageBox(kButtonsOk, MessageIcon::Information, 1, s.job.name + ".inp Added to Q", "Firefly");
}

void edit_queue(Session& s) {
    const std::string queue = firefly_queue_file(s);
    if (!files::exists(queue)) s.tk.WindowOutStatusBar(status_message_field, "The Firefly queue is empty");
    else edit_file(s, files::resolve(queue));
}

void delete_queue(Session& s) {
    if (ask(s, "Delete FireflyQ ?")) zentol::delete_queue(firefly_queue_file(s));
}

// ---- The loop ----

void edit_job_file(Session& s, const std::string& name) {
    if (!files::exists(name)) {
        s.tk.WindowOutStatusBar(status_message_field, "There is no " + name);
        return;
    }
    edit_file(s, files::current_dir() + "/" + files::resolve(name));
}

void edit_log(Session& s) {
    const std::string geo = files::current_dir() + "/" + files::resolve(job_file(s, ".geo"));
    close_job_log(s);
    edit_file(s, geo);
    open_job_log(s, true, "");
}

Next dispatch(Session& s, int command) {
    switch (command) {
        case 1: return Next::Leave;
        case 2: plot_transmission(s, s.job.name, 1); break;
        case 5: edit_job_file(s, job_file(s, ".inp")); break;
        case 6: run_firefly(s); break;
        case 7: ff_update(s, s.firefly.run_type); break;
        case 8: edit_job_file(s, job_file(s, ".lst")); break;
        case 9: open_command_window(s, s.inst.bin); break;
        case 10: add_to_firefly_queue(s); break;
        case 11: plot_map(s); break;
        case 12: start_queue_runner(s, firefly_queue_file(s)); break;
        case 13: delete_queue(s); break;
        case 14: edit_queue(s); break;
        case 15: return visit_build(s);
        case 16: plot_transmission(s, s.job.name, 2); break;
        case 17: read_modes(s, false); break;
        case 18: edit_log(s); break;
        case 20: read_modes(s, true); break;
        case 23:
            if (ff_new_input(s) == 3) run_firefly(s);
            break;
        default: break;
    }
    return Next::Stay;
}

// An empty job can take its molecule from the engine's files.
void offer_loads(Session& s) {
    if (s.store.natoms > 0) return;
    const std::string pun = job_file(s, ".pun");
    if (files::exists(job_file(s, ".lst")) && ask(s, "Attempt to load molecule from Firefly LST file?") &&
        load_molecule_from_listing(s))
        return;
    const std::string question = "Attempt to load molecule from Firefly " + pun + " file?";
    if (files::exists(pun) && ask(s, question) && load_molecule_from_punch(s)) return;
    if (files::exists("PUNCH") && files::copy("PUNCH", pun) && ask(s, question)) load_molecule_from_punch(s);
}

Next run_mode(Session& s) {
    s.tk.menu_load(30002);
    save_and_reload(s);
    return engine_mode_loop(s, "Firefly", 15, [&s](int command) { return dispatch(s, command); });
}

// The engine's and the converter's files go; the deck and the listing stay.
void leave(Session& s) {
    for (const char* name : {"input", "PUNCH", "dictnry*.*", "AOINTS.*", "pppgamet.tmp", "pppgameb.tmp", "output",
                             "output2", "fort.26", "fort.19", "file.48", "INPUT.out", "INPUT.arc"})
        files::remove(name);
    files::remove(job_file(s, ".pun"));
    s.tk.menu_load(30001);
    s.tk.WMenuToolbar(30101);
    s.tk.WMenuSetState(40017, 1, 1);
    show_job_name(s);
}

}  // namespace

std::string firefly_command_line(const std::string& program, const std::string& job, int cores) {
    std::string line = shell_line(program, {"-i", files::resolve(job + ".inp"), "-o", job + ".lst"});
    if (cores > 1) line += " -np " + text::format_i(cores, 2);
    return line;
}

void clear_firefly_run_files(const std::string& job) {
    files::remove(job + "_chg.log");
    files::remove("punch");
    files::remove("dictnry*.*");
    files::remove(job + ".lst");
}

void keep_firefly_punch(const std::string& job) {
    if (files::exists("punch")) files::copy("punch", job + ".pun");
}

std::string firefly_queue_file(const Session& s) {
    return queue_directory(s.job.scratch_dir, "firefly") + "/qfirefly.txt";
}

void run_firefly(Session& s) {
    const std::string program = firefly_program(s);
    if (program.empty()) return;
    if (!files::exists(job_file(s, ".inp"))) {
        message(s, "There is no Firefly input " + job_file(s, ".inp") + ":\ruse NewInput first.");
        return;
    }
    if (s.firefly.bond_rotation) {
        firefly_rotation_profile(s);
        return;
    }
    s.tk.WindowOutStatusBar(status_message_field, "Firefly running");
    run_engine(s, program);
    if (s.firefly.wfn) make_wavefunction_file(s);
    s.tk.WindowOutStatusBar(status_message_field, "Firefly finished");
    ff_update(s, s.firefly.run_type);
}

void firefly_mode(Session& s) {
    s.flags.view_action = 10;
    prepare_display(s);
    firefly_program(s);
    offer_loads(s);
    while (run_mode(s) == Next::Rebuild) {
    }
    leave(s);
}

}  // namespace zentol
