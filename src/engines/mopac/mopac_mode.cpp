#include "engines/mopac/mopac_mode.h"

#include <array>
#include <optional>

#include "building/build_mode.h"
#include "display/view.h"
#include "engines/mopac/mopac_listing.h"
#include "engines/mopac/mopac_plot.h"
#include "engines/mopac/mopac_vibrations.h"
#include "engines/mode_loop.h"
#include "engines/runner.h"
#include "engines/tinker/atom_charges.h"
#include "engines/tinker/rotation_profile.h"
#include "text/fixed_format.h"
#include "session/display_loop.h"
#include "session/jobs.h"
#include "session/openers.h"
#include "session/session.h"
#include "session/store_ops.h"
#include "structure_files/geo_log.h"
#include "toolkit/files.h"
#include "toolkit/toolkit.h"

namespace zentol {

namespace {

// The stored dihedral of a bond rotation, or zeros.
std::array<int, 4> stored_dihedral(const MopacState& m) {
    std::array<int, 4> atoms{0, 0, 0, 0};
    if (!m.options.bond_rotation) return atoms;
    auto lines = files::read_lines("IDHED.DAT");
    auto values = lines && !lines->empty() ? text::read_ints((*lines)[0], 4) : std::nullopt;
    for (std::size_t k = 0; values && k < values->size() && k < 4; ++k) atoms[k] = static_cast<int>((*values)[k]);
    return atoms;
}

// The header of the last New Input and the molecule as it stands now; with
// no New Input yet, the job's last deck as it is.
void finish_deck(Session& s, const MopacState& m) {
    auto header = files::read_lines("mopac.inp");
    if (!header) return;
    std::vector<std::string> deck = *header;
    const std::array<int, 4> dihedral = stored_dihedral(m);
    const std::vector<std::string> table = mopac_atom_table(s.store, m.options, m.version, dihedral.data());
    deck.insert(deck.end(), table.begin(), table.end());
    files::write_lines("pppbot.inp", table);
    if (m.force && m.version != kMopac6)
        for (std::string& line : mopac_force_job(m.options, mopac_method(m.options.method))) deck.push_back(line);
    files::write_lines("pppall.inp", deck);
    for (std::string& line : deck) line.erase(line.find_last_not_of(' ') + 1);
    files::write_lines(job_file(s, ".inp"), deck);
}

// The engine's key in engines.def.
const char* engine_key(const MopacState& m) { return m.version == kMopac6 ? "mopac6" : "mopac2016"; }

// Runs the deck; false when the engine is not installed.
bool run_engine(Session& s, const MopacState& m) {
    const std::string deck = job_file(s, ".inp"), listing = job_file(s, ".lst");
    files::remove(listing);   // an old listing must not pass for this run's
    const std::string program = engine_command(s, engine_key(m));
    if (m.version == kMopac6) {
        files::copy(deck, "INPUT");
        files::remove("for01*");
        if (!program.empty()) run_blocking(s, shell_line(program, {}));
        files::copy("output", listing);
    } else {
        files::copy(deck, job_file(s, ".mop"));
        if (!program.empty()) run_blocking(s, shell_line(program, {files::resolve(job_file(s, ".mop"))}));
        files::copy(job_file(s, ".out"), listing);
    }
    for (const char* name : {"output", "punch", "graph.dat"}) files::remove(name);
    files::remove(job_file(s, ".mpf"));
    return !program.empty();
}

std::vector<std::string> labels_of(const Store& st) {
    std::vector<std::string> labels;
    for (int i = 1; i <= st.natoms; ++i) labels.push_back(label_text(st.atom_label[i]));
    return labels;
}

void take_structure(Session& s, const MopacListing& r) {
    Store& st = s.store;
    for (int i = 1; i <= st.natoms && i <= static_cast<int>(r.coordinates.size()); ++i)
        for (int c = kX; c <= kZ; ++c) st.atom_rec[i][c] = r.coordinates[static_cast<std::size_t>(i - 1)][c];
    save_and_reload(s);
    show_job_name(s);
}

// The listing of the last run, read once; nullopt when there is none (the
// engine is missing or did not start).
std::optional<MopacListing> read_job_listing(Session& s, const MopacState& m) {
    const auto lines = files::read_text_lines(job_file(s, ".lst"));
    if (!lines) return std::nullopt;
    return read_mopac_listing(lines->views(), m.version, s.flags.spin_multiplicity, s.store.natoms);
}

void convergence_fault(Session& s) {
    s.tk.WMessageBox(kButtonsOk, MessageIcon::Exclamation, 1, "Convergence Fault or NO parameters/file", "Mopac");
}

void keep_orbitals(MopacState& m, const MopacListing& r) {
    m.mo_energy = r.mo_energy;
    m.first_orbital = r.first_orbital;
    m.homo_index = r.homo_index;
}

// The listing into the job: the .GEO log, the charge and spin logs, the
// charges, and the structure of an optimisation. True when the structure
// was taken.
bool take_listing(Session& s, MopacState& m, const MopacListing& r) {
    const bool energy_run = m.options.run_type == 1;
    for (const std::string& l : mopac_geo_lines(r, energy_run)) log_line(s, l);
    if (r.energy_found) s.tk.WindowOutStatusBar(status_message_field, r.status_text);
    const auto charges = mopac_charge_log(r, labels_of(s.store));
    if (!charges.empty()) files::write_lines(job_file(s, "_chg.log"), charges);
    for (std::size_t i = 0; i < r.charges.size() && i + 1 < s.store.atom_charge.size(); ++i)
        s.store.atom_charge[i + 1] = r.charges[i];
    const auto spins = mopac_spin_log(r, labels_of(s.store));
    if (!spins.empty()) {
        files::write_lines(job_file(s, "_spn.log"), spins);
        s.flags.charges_stale = true;
    }
    const bool updated = r.coordinates_found && !energy_run;
    if (updated) take_structure(s, r);
    m.energy_run = energy_run && r.vectors_found;
    keep_orbitals(m, r);
    return updated;
}

// The result stays in the message field until the next command: the method
// and the energy, and whether the molecule took the new structure.
void show_result(Session& s, const MopacState& m, const std::optional<MopacListing>& r, bool updated) {
    std::string text = "Mopac finished without a result";
    if (r && r->energy_found) {
        text = mopac_result_text(*r, mopac_method(m.options.method));
        if (updated) text += "  structure updated";
    }
    s.tk.WindowOutStatusBar(status_message_field, text);
}

// Reads the listing into the job and says what it gave.
void finish_run(Session& s, MopacState& m, const std::optional<MopacListing>& r) {
    const bool updated = r && take_listing(s, m, *r);
    if ((!r || !r->complete()) && !m.force) convergence_fault(s);
    show_result(s, m, r, updated);
}

}  // namespace

void update_from_listing(Session& s, MopacState& m) { finish_run(s, m, read_job_listing(s, m)); }

namespace {

// One step of a bond rotation profile: the Energy deck of the turned
// molecule, its total energy in eV.
std::optional<double> mopac_single_point(Session& s, MopacState& m) {
    finish_deck(s, m);
    run_engine(s, m);
    const auto r = read_job_listing(s, m);
    if (!r || !r->energy_found) return std::nullopt;
    // A listing with only the heat of formation: the profile's relative
    // energies are the same, so it goes in converted to eV.
    if (r->energy_kind == MopacEnergy::heat_of_formation) return r->heat_of_formation * kKcalToKj / kEvToKjMol;
    return r->energy;
}

void mopac_rotation_profile(Session& s, MopacState& m) {
    ProfileEngine e;
    e.mode_name = "Mopac";
    e.log_title = " Mopac Bond Rotation Profile for ";
    e.table_header = "Dihedral     Rel.kJ/mol  Total Energy EV";
    e.energy_unit = " eV";
    e.to_kj = 96.484505;
    e.finished = "Mopac finished results in.GEO";
    e.single_point = [&m](Session& session) { return mopac_single_point(session, m); };
    rotation_profile(s, e);
}

}  // namespace

void run_mopac(Session& s, MopacState& m) {
    files::remove(job_file(s, "_chg.log"));
    files::remove("INPUT");
    if (m.options.run_type > 1) m.energy_run = false;
    if (m.options.bond_rotation) {
        mopac_rotation_profile(s, m);
        return;
    }
    finish_deck(s, m);
    s.tk.WindowOutStatusBar(status_message_field, "Mopac running");
    const bool installed = run_engine(s, m);
    // The listing first: the graph file's orbitals are numbered from it.
    const std::optional<MopacListing> r = read_job_listing(s, m);
    if (m.version == kMopac6) make_mopac6_graph(m.options.plot_type);
    else make_mopac2016_graph(s, r && r->levels_found ? r->homo_index : 0);
    finish_run(s, m, r);
    files::remove("for01*");
    files::remove("shutdown");
    if (!installed)
        s.tk.WindowOutStatusBar(status_message_field, std::string("MOPAC is not installed: set \"") + engine_key(m) +
                                                          "\" in engines.def");
}

namespace {

using Next = ModeNext;

void leave(Session& s) {
    s.tk.menu_load(30001);
    s.tk.WMenuToolbar(30101);
    s.tk.WMenuSetState(40017, 1, 1);
    for (const char* name : {"ppptop.inp", "pppall.inp", "pppbot.inp", "mopac.inp", "fort.21"}) files::remove(name);
    show_job_name(s);
}

Next dispatch(Session& s, MopacState& m, int command) {
    switch (command) {
        case 1: return Next::Leave;
        case 2: add_comment(s); break;
        case 5: edit_file(s, files::current_dir() + "/" + files::resolve("mopac.inp")); break;
        case 6:
            if (files::exists("mopac.inp") || files::exists(job_file(s, ".inp"))) run_mopac(s, m);
            else tell(s, {"No Mopac input yet: make one with NewInput"});
            break;
        case 7: update_from_listing(s, m); break;
        case 8: edit_file(s, files::current_dir() + "/" + files::resolve(job_file(s, ".lst"))); break;
        case 9: open_command_window(s, ""); break;
        case 10:
            mopac_plot(s, m);
            if (s.flags.plot_exit) return Next::Leave;
            break;
        case 11: mopac_animate_vibrations(s); break;
        case 12: mopac_ir_spectrum(s); break;
        case 13:
            s.flags.view_action = 10;
            prepare_display(s);
            save_and_reload(s);
            build_mode(s);
            if (s.build.close_requested) s.flags.quit_requested = true;
            if (s.flags.charges_stale) {
                // The spin densities were of the molecule before the edit.
                files::remove(job_file(s, "_spn.log"));
                s.flags.charges_stale = false;
            }
            return s.flags.quit_requested ? Next::Leave : Next::Rebuild;
        case 14: {
            const std::string geo = files::current_dir() + "/" + files::resolve(job_file(s, ".geo"));
            close_job_log(s);
            edit_file(s, geo);
            open_job_log(s, true, "");
            break;
        }
        case 23:
            if (new_input(s, m) != 3) break;
            if (s.store.natoms > 0) run_mopac(s, m);
            else tell(s, {"No atoms to calculate: build a molecule first"});
            break;
        default: break;
    }
    return Next::Stay;
}

Next run_mode(Session& s, MopacState& m) {
    s.tk.menu_load(30004);
    save_and_reload(s);
    return engine_mode_loop(s, "Mopac", 13, [&](int command) { return dispatch(s, m, command); });
}

}  // namespace

// Back from orbview (MOPA nn): the orbital table of the Energy run it
// plotted is read again, so that the next plot needs no new run.
void resume_after_plot(Session& s, MopacState& m) {
    const auto r = read_job_listing(s, m);
    if (!r) return;
    m.energy_run = r->vectors_found;
    keep_orbitals(m, *r);
}

void mopac_mode(Session& s) {
    MopacState m;
    m.version = files::exists("MOP2016.TXT") || !engine_available(s, "mopac6") ? kMopac2016 : kMopac6;
    if (s.flags.start_in_mopac) {
        s.flags.start_in_mopac = false;
        resume_after_plot(s, m);
    } else {
        s.flags.plot_kind = 0;
    }
    while (run_mode(s, m) == Next::Rebuild) {
    }
    leave(s);
}

}  // namespace zentol
