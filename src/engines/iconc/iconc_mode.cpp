#include "engines/iconc/iconc_mode.h"

#include <algorithm>
#include <cmath>

#include "building/build_mode.h"
#include "engines/iconc/iconc_runs.h"
#include "engines/iconc/iconc_search.h"
#include "engines/mode_loop.h"
#include "engines/runner.h"
#include "session/jobs.h"
#include "session/session.h"
#include "session/store_ops.h"
#include "toolkit/files.h"
#include "toolkit/toolkit.h"

namespace zentol {

namespace {

using Next = ModeNext;

constexpr int kOptionsDialog = 111;
constexpr int kButtonSave = 1;
constexpr int kButtonRun = 3;

// Fields of dialog 111.
constexpr int kCharge = 1101;
constexpr int kCalcType = 1053;     // Energy, B-Scan, Optimize
constexpr int kApplyScan = 1031;
constexpr int kUpdate = 1016;
constexpr int kIteration = 1051;    // OFF, ON
constexpr int kMetals = 1027;
constexpr int kStep = 1071;
constexpr int kSteps = 1102;
constexpr int kEdiff = 1008;

void put_options(Session& s, const IconcOptions& o) {
    s.tk.WDialogPutInteger(kCharge, o.charge);
    s.tk.WDialogPutRadioButton(kCalcType + std::clamp(o.calc_type, 1, 3) - 1);
    s.tk.WDialogPutCheckBox(kApplyScan, o.apply_scan);
    s.tk.WDialogPutCheckBox(kUpdate, o.update);
    s.tk.WDialogPutRadioButton(o.iterate ? kIteration + 1 : kIteration);
    s.tk.WDialogPutInteger(kMetals, o.metals);
    s.tk.WDialogPutReal(kStep, o.step);
    s.tk.WDialogPutInteger(kSteps, o.steps);
    s.tk.WDialogPutReal(kEdiff, o.ediff);
}

void get_options(Session& s, IconcOptions& o) {
    o.charge = static_cast<int>(s.tk.WDialogGetInteger(kCharge));
    o.calc_type = std::max(1, s.tk.WDialogGetRadioButton(kCalcType));
    o.apply_scan = s.tk.WDialogGetCheckBox(kApplyScan) != 0;
    o.update = s.tk.WDialogGetCheckBox(kUpdate) != 0;
    o.iterate = s.tk.WDialogGetRadioButton(kIteration) == 2;
    // The dialog keeps each value in its range; the clamps keep a damaged
    // description from asking for the impossible.
    o.metals = static_cast<int>(std::clamp<long long>(s.tk.WDialogGetInteger(kMetals), 1, 3));
    o.step = static_cast<float>(std::clamp(s.tk.WDialogGetReal(kStep), 0.01, 0.5));
    o.steps = static_cast<int>(std::clamp<long long>(s.tk.WDialogGetInteger(kSteps), 1, 60));
    o.ediff = static_cast<float>(std::max(0.0, s.tk.WDialogGetReal(kEdiff)));
}

bool has_engine_atoms(Session& s, const IconcState& state) {
    if (s.store.natoms > 0 && (!state.prepared || deck_atom_count(state.atoms) > 0)) return true;
    s.tk.WindowOutStatusBar(status_message_field, "No atoms for Iconc");
    return false;
}

// The molecule as the screen shows it, and the working copy taken from it;
// the labels are asked for first when no "&NewInput" was made on it.
void take_molecule(Session& s, IconcState& state) {
    s.flags.view_action = 10;
    prepare_display(s);
    if (!state.prepared || static_cast<int>(state.atoms.size()) != s.store.natoms) prepare_iconc_input(s, state);
    else refresh_working_coordinates(s, state);
}

void run_command(Session& s, IconcState& state) {
    if (!has_engine_atoms(s, state)) return;
    // The labels first: a metal among them switches the charge iteration
    // on in the dialog.
    take_molecule(s, state);
    if (!has_engine_atoms(s, state)) return;
    const int button = ask_iconc_options(s, state.options);
    if (button != kButtonSave && button != kButtonRun) return;
    if (!write_iconc_deck(state)) {
        s.tk.WindowOutStatusBar(status_message_field, "Cannot write inputc.inp");
        return;
    }
    if (button == kButtonSave) {
        s.tk.WindowOutStatusBar(status_message_field, "Iconc input saved");
        return;
    }
    if (!copy_iconc_tables(s, state)) return;
    s.tk.WindowOutStatusBar(status_message_field, "Iconc running");
    clear_status_results(s);
    switch (state.options.calc_type) {
        case 2: iconc_bond_scan(s, state); break;
        case 3: iconc_optimise(s, state); break;
        default: iconc_energy_run(s, state); break;
    }
}

void new_input(Session& s, IconcState& state) {
    if (!has_engine_atoms(s, state)) return;
    s.flags.view_action = 10;
    prepare_display(s);
    prepare_iconc_input(s, state);
}

Next dispatch(Session& s, IconcState& state, int command) {
    switch (command) {
        case 1: return Next::Leave;
        case 6: run_command(s, state); break;
        case 9: open_command_window(s, state.programs.data_dir); break;
        case 13: return visit_build(s);
        case 23: new_input(s, state); break;
        default: break;
    }
    return s.flags.quit_requested ? Next::Leave : Next::Stay;
}

// One visit, from the menu to leaving or to Build. The labels are asked for
// again after Build: the molecule may have changed there.
Next run_mode(Session& s, IconcState& state) {
    s.tk.menu_load(30005);
    s.flags.view_action = 10;
    prepare_display(s);
    save_and_reload(s);
    state.prepared = false;
    state.atoms.clear();
    return engine_mode_loop(s, "Iconc", 13, [&](int command) { return dispatch(s, state, command); });
}

void leave(Session& s, IconcState& state) {
    remove_iconc_scratch(state);
    s.tk.menu_load(30001);
    s.tk.WMenuToolbar(30101);
    s.tk.WMenuSetState(40017, 1, 1);
    show_job_name(s);
}

}  // namespace

int ask_iconc_options(Session& s, IconcOptions& options) {
    if (!s.tk.WDialogLoad(kOptionsDialog)) return 0;
    options.charge = s.flags.total_charge;
    put_options(s, options);
    s.tk.WDialogShow(1);
    const int button = s.tk.last_button();
    if (button == kButtonSave || button == kButtonRun) {
        get_options(s, options);
        s.flags.total_charge = options.charge;
    }
    s.tk.WDialogUnload();
    return button;
}

void iconc_mode(Session& s) {
    IconcState state;
    state.programs = find_iconc_programs(s);
    if (!state.programs.missing.empty()) {
        s.tk.WindowOutStatusBar(status_message_field, state.programs.missing);
        return;
    }
    while (run_mode(s, state) == Next::Rebuild) {
    }
    leave(s, state);
}

}  // namespace zentol
