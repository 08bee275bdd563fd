// The ORCA run and the reading of its results.
#include <filesystem>

#include "engines/orca/orca_mode.h"
#include "engines/runner.h"
#include "session/jobs.h"
#include "session/openers.h"
#include "session/session.h"
#include "session/store_ops.h"
#include "text/fixed_format.h"
#include "toolkit/files.h"
#include "toolkit/toolkit.h"

namespace zentol {

std::string orca_program(const Session& s) { return engine_command(s, "orca"); }

std::string orca_helper(const Session& s, const std::string& key) {
    if (!text::trim(s.engines.get(key)).empty()) return engine_command(s, key);
    // ORCA ships its converters beside the main program.
    const std::string orca = orca_program(s);
    if (orca.empty()) return "";
    const std::string beside = (std::filesystem::path(orca).parent_path() / key).string();
    return runnable(beside) ? beside : "";
}

namespace {

void say(Session& s, const std::string& text) {
    s.tk.WMessageBox(kButtonsOk, MessageIcon::Information, 1, text, "Orca");
}

// A converter of the engine, run and waited for; a missing one is named in
// field 9 (the run's other results stand).
void run_helper(Session& s, const std::string& key, const std::vector<std::string>& words) {
    const std::string program = orca_helper(s, key);
    if (program.empty()) {
        s.tk.WindowOutStatusBar(status_message_field, key + " not found: set \"" + key + "\" in engines.def");
        return;
    }
    run_blocking(s, shell_line(program, words));
}

void run_molden_writer(Session& s) { run_helper(s, "orca_2mkl", {s.job.name, "-molden"}); }

void write_if(const std::optional<std::vector<std::string>>& lines, const std::string& name) {
    if (lines) files::write_lines(name, *lines);
}

std::vector<std::string> labels_of(const Store& st) {
    std::vector<std::string> labels;
    for (int i = 1; i <= st.natoms; ++i) labels.push_back(label_text(st.atom_label[i]));
    return labels;
}

// The optimised geometry: the last block of job_property.txt or, when the
// engine wrote no such block (ORCA 6), its own job.xyz kept as job.out.
std::optional<std::vector<OrcaAtom>> final_geometry(Session& s, const OrcaState& m, bool& property_read) {
    const int natoms = s.store.natoms;
    std::optional<std::vector<OrcaAtom>> atoms;
    auto property = files::read_text_lines(job_file(s, "_property.txt"));
    property_read = property.has_value();
    if (property) atoms = property_geometry(*property, natoms);
    if (atoms && atoms->empty()) atoms.reset();
    if (!atoms && m.flags.geom_converged)
        if (auto xyz = files::read_text_lines(job_file(s, ".out"))) atoms = orca_xyz_geometry(*xyz, natoms);
    return atoms;
}

void return_geometry(Session& s, OrcaState& m) {
    bool property_read = false;
    const auto atoms = final_geometry(s, m, property_read);
    if (!atoms) {
        // A property file without a whole geometry: the listing says why.
        if (property_read) say(s, "Edit LST to troubleshoot");
        return;
    }
    const std::string deck = job_file(s, ".ino");
    if (auto old = files::read_lines(deck))
        files::write_lines(deck, orca_deck_with_geometry(*old, labels_of(s.store), *atoms, m.flags.version5));
    files::write_lines("orca1.pdb", orca_pdb_records(*atoms));
    for (int i = 1; i <= s.store.natoms; ++i)
        for (int c = 0; c < 3; ++c) s.store.atom_rec[i][c] = static_cast<float>((*atoms)[i - 1].xyz[c]);
    save_and_reload(s);
    show_job_name(s);
    say(s, m.flags.geom_converged ? "Geometry converged" : "ORCA TERMINATED NORMALLY");
    if (!m.last_deck_am1) run_molden_writer(s);
    files::remove(job_file(s, "_trj.xyz"));
}

}  // namespace

void keep_structure_safe(Session& s) { keep_structure_safe(s.job.name); }

void keep_structure_safe(const std::string& job, bool keep_structure_file) {
    const std::string xyz = job + ".xyz", saved = "old_" + xyz;
    // A second call before the structure was written again keeps the copy.
    if (files::exists(xyz)) {
        files::remove(saved);
        files::copy(xyz, saved);
    }
    if (!keep_structure_file) files::remove(xyz);
    for (const char* e : {".out", "_ir.lst", "_ra.lst"}) files::remove(job + e);
    files::remove(job + ".lst.v*.xyz");
    // orca_pltvib's trajectories of an earlier run must not replay as this one's.
    files::remove(job + ".hess.v*.xyz");
}

std::string orca_command_line(const std::string& program, const std::string& job) {
    return shell_line(program, {files::resolve(job + ".ino")}, {"", job + ".lst"});
}

bool restore_structure_after_run(const std::string& job) {
    const std::string xyz = job + ".xyz", saved = "old_" + xyz;
    if (!files::exists(job + ".lst")) return false;
    files::copy(xyz, job + ".out");
    files::remove(xyz);
    files::copy(saved, xyz);
    files::remove(saved);
    return true;
}

void orca_update(Session& s, OrcaState& m) {
    auto listing = files::read_text_lines(job_file(s, ".lst"));
    if (!listing) return;
    s.tk.WindowOutStatusBar(status_message_field, "Updating files");
    const OrcaScan scan = scan_orca_listing(*listing, s.store.natoms, s.job.name, m.flags);
    files::remove(job_file(s, "_chg.log"));
    write_if(scan.charges, job_file(s, "_chg.log"));
    write_if(scan.ir, job_file(s, "_ir.lst"));
    write_if(scan.raman, job_file(s, "_ra.lst"));
    write_if(scan.uv, job_file(s, "_uv.lst"));
    if (scan.ir_seen) files::remove(job_file(s, "_trj.xyz"));
    if (scan.summary) {
        files::remove(job_file(s, "_summary.lst"));
        files::write_lines(job_file(s, "_summary.lst"), *scan.summary);
    }
    s.tk.WindowOutStatusBar(status_message_field, " ");
    if (scan.ir_seen || scan.raman_seen) run_helper(s, "orca_pltvib", {files::resolve(job_file(s, ".hess")), "ALL"});
    if (!m.flags.terminated) {
        say(s, "Edit LST to troubleshoot");
        return;
    }
    if (!m.flags.opt_requested) {
        run_molden_writer(s);
        s.tk.WindowOutStatusBar(status_message_field, "ORCA TERMINATED NORMALLY");
        return;
    }
    return_geometry(s, m);
}

void orca_run(Session& s, OrcaState& m) {
    if (s.tk.WMessageBox(kButtonsYesNo, MessageIcon::Question, 1, "Do you really want to run Orca?", "Orca") != 1)
        return;
    m.flags.geom_converged = false;
    const std::string deck = job_file(s, ".ino");
    if (!files::exists(deck)) return;
    const std::string program = orca_program(s);
    if (program.empty()) {
        // Gone since the mode was entered: nothing is moved, nothing is run.
        s.tk.WindowOutStatusBar(status_message_field, "ORCA is not installed: set \"orca\" in engines.def");
        return;
    }
    s.flags.view_action = 10;
    prepare_display(s);
    save_and_reload(s);
    files::remove(job_file(s, "_chg.log"));
    keep_structure_safe(s);
    s.tk.WindowOutStatusBar(status_message_field, "Orca running");
    run_blocking(s, orca_command_line(program, s.job.name));
    s.tk.WindowOutStatusBar(status_message_field, " ");
    if (!restore_structure_after_run(s.job.name)) return;
    orca_update(s, m);
}

}  // namespace zentol
