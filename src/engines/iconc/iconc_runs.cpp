#include "engines/iconc/iconc_runs.h"

#include <cmath>
#include <filesystem>

#include "building/connectivity.h"
#include "engines/mopac/mopac_plot.h"
#include "engines/runner.h"
#include "session/config.h"
#include "session/openers.h"
#include "session/session.h"
#include "session/store_ops.h"
#include "structure_files/geo_log.h"
#include "text/fixed_format.h"
#include "toolkit/files.h"
#include "toolkit/toolkit.h"

namespace zentol {

namespace {

constexpr const char* kDeck = "inputc.inp";
constexpr const char* kDeckListing = "inputc.lst";
constexpr const char* kEngineInput = "iconcinp.kar";
constexpr const char* kListing = "iconc.out";
constexpr const char* kEnergyFile = "ENERTOT.DAT";
// Outputs of a run, removed before the next one and on leaving the mode.
constexpr const char* kRunOutputs[] = {kListing, kEngineInput, "enerni.dat", kEnergyFile, kDeckListing};

constexpr int kMetalDialog = 115;
constexpr int kMetalNameField = 1001;
constexpr int kPlotGridSteps = 64;

std::string program_in(const std::string& dir, const char* name) {
    const std::string path = dir + "/" + name;
    return runnable(path) ? path : "";
}

// A program named by its own key; the key absent altogether means its
// own name on PATH.
std::string program_by_key(const Session& s, const char* key) {
    return s.engines.values.count(key) ? configured_program(s, key) : on_path(key);
}

std::string parent_dir(const std::string& path) { return std::filesystem::path(path).parent_path().string(); }

// Dialog 115: the exact name of a transition metal in the engine's table,
// the label offered. Cancel or an empty answer keeps the label.
std::string ask_metal_name(Session& s, const std::string& label) {
    if (!s.tk.WDialogLoad(kMetalDialog)) return label;
    s.tk.WDialogPutString(kMetalNameField, std::string(text::trim(label)));
    s.tk.WDialogShow(1);
    const bool ok = s.tk.last_button() == 1;
    const std::string answer(text::trim(s.tk.WDialogGetString(kMetalNameField)));
    s.tk.WDialogUnload();
    return ok && !answer.empty() ? answer.substr(0, 4) : label;
}

void write_charge_log(Session& s, const IconcState& state, const std::vector<double>& deck_charges) {
    if (deck_charges.empty() || static_cast<int>(state.atoms.size()) != s.store.natoms) return;
    const std::vector<double> charges = charges_per_atom(state.atoms, deck_charges);
    std::vector<std::string> lines{"#ICONC atom charges"};
    for (int i = 1; i <= s.store.natoms; ++i) {
        const double q = charges[static_cast<std::size_t>(i - 1)];
        lines.push_back(text::pad_right(text::trim_right(label_text(s.store.atom_label[i])), 4) +
                        text::format_f(q, 16, 4));
        if (i < static_cast<int>(s.store.atom_charge.size())) s.store.atom_charge[i] = static_cast<float>(q);
    }
    files::write_lines(job_file(s, "_chg.log"), lines);
}

}  // namespace

IconcPrograms find_iconc_programs(const Session& s) {
    IconcPrograms p;
    const std::string engines_def = cfg_path(s, "engines.def");
    const std::string dir(text::trim(s.engines.get("iconc_dir")));
    if (!dir.empty()) {
        // The folder names both programs and their tables.
        p.inputc = program_in(dir, "inputc");
        p.iconc = program_in(dir, "iconc");
        p.data_dir = dir;
        const char* lacking = p.inputc.empty() ? "inputc" : p.iconc.empty() ? "iconc" : nullptr;
        if (lacking)
            p.missing = "ICONC: no program " + std::string(lacking) + " in " + dir + ", set \"iconc_dir\" in " +
                        engines_def;
        return p;
    }
    p.inputc = program_by_key(s, "inputc");
    p.iconc = program_by_key(s, "iconc");
    const char* lacking = p.inputc.empty() ? "inputc" : p.iconc.empty() ? "iconc" : nullptr;
    if (lacking)
        p.missing = "ICONC: program " + std::string(lacking) + " not found, set \"" + lacking +
                    "\" or \"iconc_dir\" in " + engines_def;
    else
        p.data_dir = parent_dir(p.iconc);
    return p;
}

void prepare_iconc_input(Session& s, IconcState& state) {
    Store& st = s.store;
    state.atoms.clear();
    for (int i = 1; i <= st.natoms; ++i) {
        IconcAtom a;
        const std::string name = label_text(normalise_symbol(label_text(st.atom_label[i])));
        const float z = element_lookup(st, nullptr, name, kLookupAtomicNumber);
        a.metal = !is_dummy_centre(st.atom_label[i]) && is_transition_metal(static_cast<int>(std::lround(z)));
        if (a.metal) state.options.iterate = true;
        a.label = fold_label(a.metal ? ask_metal_name(s, name) : name);
        a.x = st.atom_rec[i][kX];
        a.y = st.atom_rec[i][kY];
        a.z = st.atom_rec[i][kZ];
        state.atoms.push_back(a);
    }
    state.prepared = true;
    s.tk.WindowOutStatusBar(status_message_field, "Iconc input generated");
}

void refresh_working_coordinates(const Session& s, IconcState& state) {
    const Store& st = s.store;
    for (int i = 1; i <= st.natoms && i <= static_cast<int>(state.atoms.size()); ++i) {
        IconcAtom& a = state.atoms[static_cast<std::size_t>(i - 1)];
        a.x = st.atom_rec[i][kX];
        a.y = st.atom_rec[i][kY];
        a.z = st.atom_rec[i][kZ];
    }
}

bool copy_iconc_tables(Session& s, IconcState& state) {
    for (const char* name : kIconcTables) {
        // A table already in the job directory is the user's (or ours from
        // before): it is used as it stands.
        if (files::exists(name)) continue;
        const std::string from = state.programs.data_dir + "/" + name;
        if (!files::exists(from) || !files::copy(from, name)) {
            s.tk.WMessageBox(kButtonsOk, MessageIcon::Exclamation, 1,
                             "Cannot find " + std::string(name) + " in " + state.programs.data_dir +
                                 "\rSet \"iconc_dir\" in " + cfg_path(s, "engines.def"),
                             "Iconc");
            return false;
        }
        state.copied.emplace_back(name);
    }
    return true;
}

bool write_iconc_deck(const IconcState& state) {
    const IconcOptions& o = state.options;
    return files::write_lines(kDeck, iconc_deck(state.atoms, {o.charge, o.iterate, o.metals}));
}

double run_iconc(Session& s, const IconcState& state) {
    for (const char* name : kRunOutputs) files::remove(name);
    if (!write_iconc_deck(state)) {
        s.tk.WindowOutStatusBar(status_message_field, "Cannot write inputc.inp");
        return 0.0;
    }
    run_blocking(s, shell_line(state.programs.inputc, {}, {kDeck, kDeckListing}));
    run_blocking(s, shell_line(state.programs.iconc, {}, {kEngineInput, kListing}));
    const auto energies = files::read_text_lines(kEnergyFile);
    return energies ? read_iconc_energy(*energies) : 0.0;
}

void iconc_energy_run(Session& s, IconcState& state) {
    const double energy = run_iconc(s, state);
    for (const std::string& line : iconc_energy_log(energy)) log_line(s, line);
    s.tk.WindowOutStatusBar(status_message_field, iconc_energy_status(energy));
    // A run that left no listing has nothing more to give.
    if (!files::exists(kListing)) return;
    const std::string kept = job_file(s, ".lst");
    files::copy(kListing, kept);
    const auto listing = files::read_text_lines(kept);
    if (!listing) return;
    const std::vector<std::string> levels = iconc_level_list(*listing);
    if (!levels.empty()) log_line(s, " ENERGY LEVELS (eV)");
    for (const std::string& level : levels) log_line(s, level);
    write_charge_log(s, state, iconc_net_charges(*listing, deck_atom_count(state.atoms)));
    PlotRequest plot;
    plot.orbital = plot.homo_index = iconc_occupied_levels(levels);
    plot.grid_steps = kPlotGridSteps;
    files::write_lines("pppmap.KEW", plot_control_file(plot));
}

void remove_iconc_scratch(IconcState& state) {
    for (const char* name : kRunOutputs) files::remove(name);
    files::remove(kDeck);
    for (const std::string& name : state.copied) files::remove(name);
    state.copied.clear();
}

}  // namespace zentol
