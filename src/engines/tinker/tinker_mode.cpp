#include "engines/tinker/tinker_mode.h"

#include <algorithm>
#include <cmath>

#include "building/build_mode.h"
#include "display/view.h"
#include "engines/mode_loop.h"
#include "engines/runner.h"
#include "engines/tinker/atom_charges.h"
#include "engines/tinker/rotation_profile.h"
#include "engines/tinker/tinker_decks.h"
#include "engines/tinker/tinker_runs.h"
#include "engines/tinker/undefined_params.h"
#include "session/config.h"
#include "session/display_loop.h"
#include "session/jobs.h"
#include "session/openers.h"
#include "session/session.h"
#include "session/setup_dialog.h"
#include "session/store_ops.h"
#include "structure_files/xyz_file.h"
#include "toolkit/files.h"
#include "toolkit/toolkit.h"

namespace zentol {

namespace {

using Next = ModeNext;

// Without its programs the mode is not entered; the user is told which one
// is missing where the answers of commands stand, until the next command.
bool enter_possible(Session& s) {
    std::string missing = missing_tinker_program(s);
    if (missing.empty()) return true;
    s.tk.WindowOutStatusBar(status_message_field, "Tinker's " + missing + " is not installed: set \"tinker_dir\" in " +
                                                      cfg_path(s, "engines.def") + " or put Tinker on PATH");
    return false;
}

bool enter(Session& s) {
    if (!tinker_installed(s)) return false;
    s.tk.menu_load(30006);
    s.tk.WMenuToolbar(30102);
    save_and_reload(s);
    return true;
}

void leave(Session& s) {
    s.tk.menu_load(30001);
    s.tk.WMenuToolbar(30101);
    s.tk.WMenuSetState(40017, 1, 1);
    show_job_name(s);
}

void edit_in_job_dir(Session& s, const std::string& name) {
    edit_file(s, files::current_dir() + "/" + files::resolve(name));
}

void edit_structure(Session& s) {
    edit_in_job_dir(s, job_file(s, ".xyz"));
    int status = 0;
    read_job_xyz(s, status);
    prepare_display(s);
    save_and_reload(s);
}

void go_to_build(Session& s) {
    s.flags.view_action = 10;
    prepare_display(s);
    save_and_reload(s);
    for (int id : {40017, 40043, 40063}) s.tk.WMenuSetState(id, 1, 1);
    s.flags.pg_aligned = false;
    project_atoms(s);
    clear_status_results(s);
    build_mode(s);
    if (s.build.close_requested) s.flags.quit_requested = true;
    show_job_name(s);
    if (s.flags.charges_stale) {
        files::remove(job_file(s, "_spn.log"));
        s.flags.charges_stale = false;
    }
    s.tinker.tk_dyn_stale = 1.0f;
}

// Commands that need atoms do nothing without them.
bool has_atoms(const Session& s) { return s.store.natoms >= 1; }

Next dispatch(Session& s, int command) {
    switch (command) {
        case 1: return Next::Leave;
        case 2: tinker_rotation_profile(s); break;
        case 3: add_atom_charges(s); break;
        case 4: add_comment(s); break;
        case 6: open_document(s, help_page(s, "zentol.html")); break;
        case 8:
            if (has_atoms(s)) minimize_run(s);
            break;
        case 12:
            if (!has_atoms(s)) break;
            if (s.tinker.tk_auto_cycles > 1.5f ? !auto_anneal(s) : !anneal_run(s)) return Next::Leave;
            break;
        case 13: edit_in_job_dir(s, log_file_name); break;
        case 14: edit_in_job_dir(s, job_file(s, ".key")); break;
        case 15: edit_structure(s); break;
        case 16: undefined_parameters_command(s); break;
        case 17: setup_command(s); break;
        case 18: go_to_build(s); return s.flags.quit_requested ? Next::Leave : Next::Rebuild;
        case 21:
            if (has_atoms(s)) analyze_run(s);
            break;
        case 27:
            if (has_atoms(s)) vibrate_run(s);
            break;
        case 28: spacefill_run(s); break;
        case 30:
            if (has_atoms(s) && !dynamics_run(s)) return Next::Leave;
            break;
        case 62: open_command_window(s, tinker_dir(s)); break;
        default: break;
    }
    return Next::Stay;
}

// One visit, from the engine test to leaving or to Build.
Next run_mode(Session& s) {
    if (!enter(s)) return Next::Leave;
    return engine_mode_loop(s, "Tinker", 18, [&s](int command) { return dispatch(s, command); });
}

}  // namespace

void tinker_mode(Session& s) {
    if (!enter_possible(s)) return;
    while (run_mode(s) == Next::Rebuild) {
    }
    leave(s);
}

}  // namespace zentol
