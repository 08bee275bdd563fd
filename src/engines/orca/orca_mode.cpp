#include "engines/orca/orca_mode.h"

#include <algorithm>
#include <cmath>

#include "display/view.h"
#include "engines/mode_loop.h"
#include "engines/queue/queue_start.h"
#include "engines/queue_file.h"
#include "engines/runner.h"
#include "session/config.h"
#include "session/jobs.h"
#include "session/openers.h"
#include "session/session.h"
#include "session/store_ops.h"
#include "spectra/chart_spectrum.h"
#include "spectra/orca_replay.h"
#include "text/fixed_format.h"
#include "toolkit/files.h"
#include "toolkit/toolkit.h"

namespace zentol {

namespace {

constexpr int kMethodFields[] = {1051, 1052, 1053, 1054};
constexpr int kBasisFields[] = {1055, 1048, 1049, 1050};
constexpr int kSpectrumFields[] = {1058, 1059, 1077};

int pick(const int (&fields)[4], int choice) { return fields[std::clamp(choice, 1, 4) - 1]; }

void fill_dialog(Session& s, const OrcaInput& in) {
    Toolkit& tk = s.tk;
    tk.WDialogLoad(125);
    tk.WDialogPutInteger(1101, s.flags.total_charge);
    tk.WDialogPutInteger(1102, s.flags.spin_multiplicity);
    tk.WDialogPutRadioButton(in.run_type == 1 ? 1056 : 1057);
    tk.WDialogPutRadioButton(pick(kMethodFields, in.method));
    tk.WDialogPutRadioButton(pick(kBasisFields, in.basis));
    tk.WDialogPutInteger(1027, in.cores);
    tk.WDialogPutCheckBox(1031, in.wfn ? 1 : 0);
    tk.WDialogPutCheckBox(1016, in.spectrum_on ? 1 : 0);
    tk.WDialogPutRadioButton(kSpectrumFields[std::clamp(in.spectrum, 1, 3) - 1]);
    tk.WDialogPutReal(1071, in.scale_factor);
}

OrcaInput read_dialog(Toolkit& tk) {
    OrcaInput in;
    in.charge = static_cast<int>(tk.WDialogGetInteger(1101));
    in.multiplicity = static_cast<int>(tk.WDialogGetInteger(1102));
    in.run_type = std::max(1, tk.WDialogGetRadioButton(1056));
    in.method = std::max(1, tk.WDialogGetRadioButton(1051));
    in.basis = std::max(1, tk.WDialogGetRadioButton(1055));
    in.cores = std::max(1, static_cast<int>(tk.WDialogGetInteger(1027)));
    in.wfn = tk.WDialogGetCheckBox(1031) != 0;
    in.spectrum_on = tk.WDialogGetCheckBox(1016) != 0;
    in.spectrum = std::max(1, tk.WDialogGetRadioButton(1058));
    in.scale_factor = static_cast<float>(tk.WDialogGetReal(1071));
    return in;
}

}  // namespace

int load_orca_cores(Session& s) {
    const std::string path = s.inst.bin + "/orca.txt";
    if (!files::exists(path)) {
        s.tk.WDialogLoad(104);
        s.tk.WDialogPutInteger(1101, 4);
        s.tk.WDialogShow(1);
        const int cores = std::max(1, static_cast<int>(s.tk.WDialogGetInteger(1101)));
        s.tk.WDialogUnload();
        files::make_dirs(s.inst.bin);
        files::write_lines(path, {orca_cores_record(cores)});
    }
    auto lines = files::read_lines(path);
    return std::max(1, lines ? read_orca_cores(*lines).value_or(1) : 1);
}

bool orca_new_input(Session& s, OrcaState& m) {
    // A leftover checkpoint must not seed the next calculation.
    files::remove("*.gbw");
    fill_dialog(s, m.input);
    s.tk.WDialogShow(1);
    const int button = s.tk.last_button();
    OrcaInput in = read_dialog(s.tk);
    s.tk.WDialogUnload();
    // However the dialog was closed, the deck is written.
    s.flags.total_charge = in.charge;
    s.flags.spin_multiplicity = in.multiplicity;
    m.input = in;
    const OrcaDeckWords words = orca_deck_words(in, m.keywords, m.scf_field, m.flags.opt_requested);
    m.scf_field = words.scf;
    m.last_deck_am1 = in.method == 3;
    const std::string deck = job_file(s, ".ino");
    if (!files::write_lines(deck, orca_deck(in, words, s.job.name, s.store))) {
        s.tk.WMessageBox(kButtonsOk, MessageIcon::Exclamation, 1, "Could not write " + deck, "Orca");
        return false;
    }
    s.tk.WindowOutStatusBar(status_message_field, deck + " written");
    // Run is button 3: the toolkit reads button 2 as Cancel.
    return button == 3;
}

std::string orca_queue_file(const Session& s) { return queue_directory(s.job.scratch_dir, "orca") + "/qorca.txt"; }

void add_to_orca_queue(Session& s) {
    // The job's directory is prepared as a run prepares it.
    keep_structure_safe(s);
    const std::string deck = job_file(s, ".ino");
    if (!files::exists(deck)) return;
    const std::string queue = orca_queue_file(s);
    if (add_to_queue(queue, files::current_dir() + "/" + files::resolve(deck)) < 0) {
        s.tk.WMessageBox(kButtonsOk, MessageIcon::Exclamation, 1, "Could not write " + queue, "Orca");
        return;
    }
    // Said also when the job was queued already.
    s.tk.WMessageBox(kButtonsOk, MessageIcon::Information, 1, s.job.name + ".ino Added to Q", "Orca");
}

void delete_orca_queue(Session& s) {
    if (s.tk.WMessageBox(kButtonsYesNo, MessageIcon::Question, 1, "Delete Orca Queue?", "Delete OrcaQ ?") == 1)
        delete_queue(orca_queue_file(s));
}

void make_job_orca_pdb(Session& s) {
    auto orca1 = files::read_lines("orca1.pdb");
    if (!orca1) return;
    const Store& st = s.store;
    const std::string pdb = job_file(s, "_orca.pdb");
    files::remove(pdb);
    std::vector<std::string> lines(orca1->begin(), orca1->begin() + std::min<std::size_t>(orca1->size(), st.natoms + 4));
    for (int i = 1; i <= st.natoms; ++i) {
        std::string conect = "CONECT" + text::format_i(i, 5);
        for (int slot = 1; slot <= kMaxNeighbours; ++slot)
            if (st.nbr(i, slot) > 0) conect += text::format_i(st.nbr(i, slot), 5);
        lines.push_back(conect);
    }
    files::write_lines(pdb, lines);
    files::remove("orca1.pdb");
}

namespace {

using Next = ModeNext;

// An editor on a file of the job directory; a missing file is named.
void edit_job_file(Session& s, const std::string& name) {
    if (!files::exists(name)) {
        s.tk.WindowOutStatusBar(status_message_field, name + " not found");
        return;
    }
    const std::string path = files::resolve(name);
    edit_file(s, path.front() == '/' ? path : files::current_dir() + "/" + path);
}

void open_manual(Session& s) {
    const std::string manual(text::trim(s.engines.get("orca_manual")));
    if (manual.empty()) {
        s.tk.WMessageBox(kButtonsOk, MessageIcon::Exclamation, 1,
                         "The ORCA manual is not configured.\rSet \"orca_manual\" in " + cfg_path(s, "engines.def"),
                         "Orca");
        return;
    }
    open_document(s, manual);
}

void plot_if_there(Session& s, const OrcaState& m, int kind) {
    const std::string name = job_file(s, kind == 1 ? "_ir.lst" : kind == 2 ? "_ra.lst" : "_uv.lst");
    if (!files::exists(name)) {
        s.tk.WindowOutStatusBar(status_message_field, name + " not found");
        return;
    }
    if (kind == 3) plot_uv(s);
    else plot_spectrum(s, m.input.scale_factor, kind);
}

Next dispatch(Session& s, OrcaState& m, int command) {
    switch (command) {
        case 1: return Next::Leave;
        case 2:
            if (orca_new_input(s, m)) orca_run(s, m);
            break;
        case 3: orca_run(s, m); break;
        case 5: edit_job_file(s, job_file(s, ".ino")); break;
        case 6: edit_job_file(s, job_file(s, ".lst")); break;
        case 21: edit_job_file(s, job_file(s, "_summary.lst")); break;
        case 9: delete_orca_queue(s); break;
        case 10: add_to_orca_queue(s); break;
        case 11: edit_job_file(s, orca_queue_file(s)); break;
        case 12: start_queue_runner(s, orca_queue_file(s)); break;
        case 13: plot_if_there(s, m, 1); break;
        case 14: orca_replay(s, 1); break;
        case 15: plot_if_there(s, m, 2); break;
        case 16: orca_replay(s, 2); break;
        case 17: orca_update(s, m); break;
        case 18: plot_if_there(s, m, 3); break;
        case 19: open_document(s, s.inst.bin + "/orca_ha_basis.htm"); break;
        case 20: open_manual(s); break;
        default: break;
    }
    return Next::Stay;
}

}  // namespace

bool orca_mode(Session& s) {
    if (orca_program(s).empty()) {
        s.tk.WindowOutStatusBar(status_message_field, "ORCA is not installed: set \"orca\" in " +
                                                          cfg_path(s, "engines.def"));
        return false;
    }
    s.flags.view_action = 10;
    prepare_display(s);
    save_and_reload(s);
    s.tk.menu_load(30008);
    s.tk.WMenuToolbar(30108);
    OrcaState m;
    m.input.cores = load_orca_cores(s);
    draw_scene(s);
    s.tk.WindowOutStatusBar(status_message_field, " ");
    engine_mode_loop(s, "Orca", 0, [&](int command) { return dispatch(s, m, command); });
    make_job_orca_pdb(s);
    s.tk.menu_load(30001);
    s.tk.WMenuToolbar(30101);
    s.tk.WindowOutStatusBar(status_message_field, short_directory(files::current_dir()));
    show_job_name(s);
    return true;
}

}  // namespace zentol
