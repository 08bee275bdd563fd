#include "wavefunction/multiwfn.h"

#include <algorithm>
#include <filesystem>

#include "engines/runner.h"
#include "session/config.h"
#include "session/openers.h"
#include "session/session.h"
#include "text/fixed_format.h"
#include "toolkit/files.h"
#include "toolkit/toolkit.h"
#include "wavefunction/multiwfn_answers.h"

namespace zentol {

namespace {

constexpr int kActionFields[] = {1051, 1052, 1053, 1054, 1055, 1048, 1049, 1050};
// Runs whose menu text Multiwfn would print on a console go to this file,
// where the user can read why something went wrong.
constexpr char kConsoleLog[] = "multiwfn.log";

struct Run {
    Session& s;
    std::string program;
    std::string molden;   // job.molden.input as spelled on disk
};

void notice(Session& s, const char* text) {
    s.tk.WDialogLoad(114);
    s.tk.WDialogPutString(1001, text);
    s.tk.WDialogShow(2);
}

void notice_off(Session& s) {
    s.tk.WDialogSelect(114);
    s.tk.WDialogUnload();
}

void say(Session& s, const std::string& text) {
    s.tk.WMessageBox(kButtonsOk, MessageIcon::Information, 1, text, "MultiWFN");
}

void multiwfn(const Run& r, const std::string& answers, const std::string& output = kConsoleLog) {
    run_blocking(r.s, shell_line(r.program, {r.molden}, {answers, output}));
}

bool in_scratch(const Session& s) {
    std::error_code ec;
    return std::filesystem::equivalent(files::current_dir(), s.job.scratch_dir, ec);
}

// Replaces the scratch directory's copies of the files, for the viewers.
void copy_to_scratch(const Session& s, std::initializer_list<const char*> names) {
    for (const char* name : names) {
        const std::string there = s.job.scratch_dir + "/" + name;
        files::remove(there);
        files::copy(name, there);
    }
}

std::string shipped(const Session& s, const char* name) { return s.inst.bin + "/" + name; }

// A configured viewer (vmd, chimerax) is started on the result; without
// one the user opens the files with a viewer of their own.
void start_viewer(Session& s, const char* key, const std::vector<std::string>& words) {
    if (text::trim(s.engines.get(key)).empty()) return;
    const std::string viewer = configured_program(s, key);
    if (viewer.empty()) return tell_missing(s, key, key);
    run_detached(s, shell_line(viewer, words));
}

void edit_here(Session& s, const std::string& name) { edit_file(s, files::current_dir() + "/" + files::resolve(name)); }

void cubes_and_compositions(const Run& r) {
    Session& s = r.s;
    const std::string list(text::trim(s.multiwfn.orbital_list));
    if (list.empty()) {
        s.tk.WindowOutStatusBar(status_message_field, "Give the orbitals as a comma delimited list");
        return;
    }
    const auto orbitals = parse_orbital_list(list);
    if (!orbitals) {
        say(s, "Orbital list not understood: " + list);
        return;
    }
    notice(s, "Wait for Calc.");
    files::remove("CUBES.TXT");
    cube_answers(list).save("cubes.txt");
    multiwfn(r, "cubes.txt");
    if (orbitals->size() < 8) {
        for (int n : *orbitals) {
            orbital_answers(n).save("cubes.txt");
            multiwfn(r, "cubes.txt", orbital_stem(n) + ".LST");
        }
    }
    files::remove("CUBES.TXT");
    files::remove("orb_comp1.lst");
    composition_answers(*orbitals).save("cubes.txt");
    multiwfn(r, "cubes.txt", "orb_comp1.LST");
    files::remove("CUBES.TXT");
    files::remove("dorb.TXT");
    files::remove("orb_comp.lst");
    std::vector<std::string> key = d_orbital_key();
    files::write_lines("dorb.txt", key);
    auto compositions = files::read_text_lines("orb_comp1.lst");
    std::string joined;
    for (const std::string& line : key) joined += line + "\n";
    if (compositions) joined += std::string(compositions->text()) + "\n";
    files::write_atomic("orb_comp.lst", joined);
    files::remove("dorb.TXT");
    files::remove("orb_comp1.lst");
    notice_off(s);
    edit_here(s, "orb_comp.lst");
}

void elf_basins(const Run& r) {
    Session& s = r.s;
    notice(s, "Wait for Calc.");
    const bool scratch = in_scratch(s);
    for (const char* name : {"topmod.txt", "topmod.lst", "basinsyn.vmd"}) files::remove(name);
    files::copy(shipped(s, "basinsyn.vmd"), "basinsyn.vmd");
    topmod_first_answers().save("topmod.txt");
    multiwfn(r, "topmod.txt", "topmod.lst");
    const auto topmod = files::read_text_lines("topmod.lst");
    topmod_second_answers(read_basin_lists(topmod.value_or(text::TextLines{}))).save("topmod.txt");
    multiwfn(r, "topmod.txt");
    notice_off(s);
    files::remove("topmod.txt");
    edit_here(s, "topmod.lst");
    if (!scratch) copy_to_scratch(s, {"basinfunc.cub", "basinsyn.cub", "basinsyn.vmd"});
    say(s, "VMD files in " + s.job.scratch_dir);
    start_viewer(s, "vmd", {"-e", "basinsyn.vmd"});
}

// The line of rloba.bat that shows the joined answers and output.
std::string viewer_line(const Session& s, const std::string& name) {
    std::string program = configured_program(s, "editor");
    if (program.empty()) program = configured_program(s, "opener");
    return program.empty() ? shell_line("cat", {name}) : shell_line(program, {name});
}

void loba_oxidation_states(const Run& r) {
    Session& s = r.s;
    notice(s, "Wait for Calc.");
    for (const char* name : {"loba.txt", "loba.lst", "rloba.txt", "rloba.lst", "rloba.bat"}) files::remove(name);
    // rloba.bat repeats the run by hand with an edited rloba.txt.
    write_command_file("rloba.bat", {shell_line(r.program, {r.molden}, {"rloba.txt", "rloba.lst"}),
                                     "cat rloba.txt rloba.lst > rloba2.lst", viewer_line(s, "rloba2.lst")});
    const auto molden = files::read_text_lines(r.molden);
    const bool open_shell = molden && molden_unrestricted(*molden);
    loba_answers(s.multiwfn.mloba_threshold, open_shell).save("loba.txt");
    files::copy("loba.txt", "rloba.txt");
    multiwfn(r, "loba.txt", "loba.lst");
    notice_off(s);
    edit_here(s, "loba.lst");
}

void potential_surface(const Run& r) {
    Session& s = r.s;
    notice(s, "Wait for Calc.5");
    files::remove("esp.txt");
    files::copy(shipped(s, "esp.vmd"), "esp.vmd");
    esp_answers().save("esp.txt");
    multiwfn(r, "esp.txt");
    files::remove("mol1_orca1.pdb");
    files::remove("vtx1.pdb");
    files::copy(job_file(s, "_orca.pdb"), "mol1_orca1.pdb");
    files::copy("vtx.pdb", "vtx1.pdb");
    if (!in_scratch(s)) copy_to_scratch(s, {"mol1_orca1.pdb", "vtx1.pdb", "esp.vmd"});
    else files::copy(shipped(s, "esp.vmd"), "esp.vmd");
    notice_off(s);
    say(s, "VMD files in " + s.job.scratch_dir);
    start_viewer(s, "vmd", {"-e", "esp.vmd"});
}

void hirshfeld_charges(const Run& r) {
    Session& s = r.s;
    notice(s, "Wait for Calc.");
    hirshfeld_answers().save("hirs.txt");
    multiwfn(r, "hirs.txt");
    notice_off(s);
    // Multiwfn names the file after its input up to the first dot.
    const std::string chg = r.molden.substr(0, r.molden.find('.')) + ".chg";
    if (files::exists(chg)) edit_here(s, chg);
    files::remove(job_file(s, "_chg.log"));
    const auto charges = files::read_text_lines(chg);
    if (!charges) {
        say(s, chg + " was not written: see " + kConsoleLog);
        return;
    }
    if (auto log = hirshfeld_charge_log(*charges, s.store.natoms)) {
        files::write_lines(job_file(s, "_chg.log"), *log);
        s.tk.WindowOutStatusBar(status_message_field, job_file(s, "_chg.log") + " holds the Hirshfeld charges");
    }
}

void spin_density(const Run& r) {
    Session& s = r.s;
    if (s.flags.spin_multiplicity < 2) {
        s.tk.WindowOutStatusBar(status_message_field, "A spin density needs a multiplicity of 2 or more");
        return;
    }
    notice(s, "Wait for Calc.");
    spin_density_answers().save("spind.txt");
    multiwfn(r, "spind.txt");
    notice_off(s);
    say(s, "Open " + job_file(s, "_orca.pdb") + " and spindensity.cub usoing Chimera");
    files::remove("spind.txt");
    start_viewer(s, "chimerax", {job_file(s, "_orca.pdb"), "spindensity.cub"});
}

void interactive(Session& s, const Run& r) {
    const std::string terminal = configured_program(s, "terminal");
    if (terminal.empty()) return tell_missing(s, "A terminal", "terminal");
    run_detached(s, "exec " + shell_line(terminal, {"-e", r.program, r.molden}));
}

// A Molden file of a molecule with core potentials gets the [Nval] section
// Multiwfn needs. Without it Multiwfn stops at load time to warn of the
// large net charge, its prompt takes the first answer of the file and every
// later answer lands in the wrong menu; and the core atoms would count
// their full nuclear charge. False when the file cannot be used.
bool valence_electrons_told(Session& s, const Run& r) {
    auto molden = files::read_text_lines(r.molden);
    if (!molden) return false;
    const auto section = valence_section(*molden, s.flags.total_charge);
    if (!section) {
        say(s, r.molden + " has core potentials of unknown size.\rAdd a [Nval] section (element and valence "
                          "electrons, such as \"Y 11\") after its [Atoms] block.");
        return false;
    }
    if (section->empty()) return true;
    if (!files::write_lines(r.molden, with_valence_section(*molden, *section))) return false;
    s.tk.WindowOutStatusBar(status_message_field, "[Nval] added to " + r.molden + " for the core potentials");
    return true;
}

void open_manual(Session& s) {
    const std::string manual(text::trim(s.engines.get("multiwfn_manual")));
    if (manual.empty()) {
        s.tk.WMessageBox(kButtonsOk, MessageIcon::Exclamation, 1,
                         "The Multiwfn manual is not configured.\rSet \"multiwfn_manual\" in " +
                             cfg_path(s, "engines.def"),
                         "MultiWFN");
        return;
    }
    open_document(s, manual);
}

}  // namespace

std::string multiwfn_program(const Session& s) {
    const std::string program = configured_program(s, "multiwfn");
    return !program.empty() && files::size(program) > 100 ? program : "";
}

void multiwfn_action(Session& s, int action) {
    if (action == 8) return open_manual(s);
    const Run r{s, multiwfn_program(s), files::resolve(job_file(s, ".molden.input"))};
    if (r.program.empty()) return;
    if (files::size(r.molden) <= 100) {
        s.tk.WindowOutStatusBar(status_message_field, job_file(s, ".molden.input") + " missing: optimise in Orca first");
        return;
    }
    if (!valence_electrons_told(s, r)) return;
    switch (action) {
        case 1: interactive(s, r); break;
        case 2: cubes_and_compositions(r); break;
        case 3: elf_basins(r); break;
        case 4: loba_oxidation_states(r); break;
        case 5: potential_surface(r); break;
        case 6: hirshfeld_charges(r); break;
        case 7: spin_density(r); break;
        default: break;
    }
}

void multiwfn_command(Session& s) {
    if (multiwfn_program(s).empty()) {
        s.tk.WindowOutStatusBar(status_message_field, "Multiwfn is not installed: set \"multiwfn\" in " +
                                                          cfg_path(s, "engines.def"));
        return;
    }
    Toolkit& tk = s.tk;
    tk.WDialogLoad(127);
    tk.WDialogPutRadioButton(kActionFields[std::clamp(s.multiwfn.action, 1, 8) - 1]);
    tk.WDialogPutString(1021, s.multiwfn.orbital_list);
    tk.WDialogPutReal(1071, s.multiwfn.mloba_threshold);
    tk.WDialogShow(1);
    const bool ok = tk.last_button() == 1;
    s.multiwfn.action = std::max(1, tk.WDialogGetRadioButton(1051));
    s.multiwfn.orbital_list = tk.WDialogGetString(1021);
    s.multiwfn.mloba_threshold = static_cast<float>(tk.WDialogGetReal(1071));
    tk.WDialogUnload();
    if (ok) multiwfn_action(s, s.multiwfn.action);
}

}  // namespace zentol
