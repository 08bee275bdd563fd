// Firefly mode's New Input: dialog 116, the refusals, the orbital-plot
// dialog 110, and the deck written whole.
#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

#include "engines/firefly/firefly_deck.h"
#include "engines/firefly/firefly_listing.h"
#include "engines/firefly/firefly_mode.h"
#include "engines/firefly/firefly_punch.h"
#include "engines/firefly/firefly_zmatrix.h"
#include "engines/runner.h"
#include "session/session.h"
#include "structure_files/geo_log.h"
#include "text/fixed_format.h"
#include "toolkit/files.h"
#include "toolkit/toolkit.h"

namespace zentol {

namespace {

constexpr int kInputDialog = 116;
constexpr int kScfGroup = 1051, kMethodGroup = 1050, kRunGroup = 1054, kPlotGroup = 1075;
constexpr int kScfFields[] = {1051, 1052, 1053};
constexpr int kMethodFields[] = {1050, 1056, 1057, 1058, 1059, 1077, 1035};
constexpr int kRunFields[] = {1054, 1055, 1048, 1049};
constexpr int kPlotDialog = 110;

// Check boxes of dialog 116 and the settings they hold. GQ2 and Charges
// are shown and never read.
struct CheckField {
    int field;
    bool FireflySettings::*value;
};
constexpr CheckField kChecks[] = {{1037, &FireflySettings::zmat},          {1012, &FireflySettings::lpun},
                                  {1016, &FireflySettings::chelpg},        {1039, &FireflySettings::bond_rotation},
                                  {1072, &FireflySettings::dft},           {1097, &FireflySettings::disp},
                                  {1098, &FireflySettings::nbo},           {1099, &FireflySettings::wfn}};

// Integer fields and their settings; MEMORY is shown and never read.
struct IntField {
    int field;
    int FireflySettings::*value;
};
constexpr IntField kInts[] = {{1102, &FireflySettings::charge},    {1027, &FireflySettings::multiplicity},
                              {1036, &FireflySettings::time_limit}, {1082, &FireflySettings::np},
                              {1084, &FireflySettings::nd},         {1101, &FireflySettings::maxit},
                              {1029, &FireflySettings::max_steps}};

void message(Session& s, const std::string& text) {
    s.tk.WMessageBox(kButtonsOk, MessageIcon::Exclamation, 1, text, "Firefly");
}

void fill_dialog(Toolkit& tk, const FireflySettings& o) {
    tk.WDialogPutRadioButton(kScfFields[std::clamp(o.scf_type, 1, 3) - 1]);
    tk.WDialogPutRadioButton(kMethodFields[std::clamp(o.method, 1, 7) - 1]);
    tk.WDialogPutRadioButton(kRunFields[std::clamp(o.run_type, 1, 4) - 1]);
    tk.WDialogPutRadioButton(o.plot == 2 ? 1025 : 1075);
    for (const CheckField& c : kChecks) tk.WDialogPutCheckBox(c.field, o.*c.value ? 1 : 0);
    tk.WDialogPutCheckBox(1022, o.plot > 0);
    tk.WDialogPutCheckBox(1094, o.gq2);
    tk.WDialogPutCheckBox(1031, o.charges_box);
    for (const IntField& f : kInts) tk.WDialogPutInteger(f.field, o.*f.value);
    tk.WDialogPutInteger(1034, o.memory_mwords);
    tk.WDialogPutInteger(1095, std::lround(o.cores));
    tk.WDialogPutReal(1071, o.opt_tol);
}

void read_dialog(Toolkit& tk, FireflySettings& o) {
    o.scf_type = std::max(1, tk.WDialogGetRadioButton(kScfGroup));
    o.method = std::max(1, tk.WDialogGetRadioButton(kMethodGroup));
    o.run_type = std::max(1, tk.WDialogGetRadioButton(kRunGroup));
    for (const CheckField& c : kChecks) o.*c.value = tk.WDialogGetCheckBox(c.field) != 0;
    o.plot = tk.WDialogGetCheckBox(1022) ? (tk.WDialogGetRadioButton(kPlotGroup) == 2 ? 2 : 1) : 0;
    for (const IntField& f : kInts) o.*f.value = static_cast<int>(tk.WDialogGetInteger(f.field));
    o.cores = static_cast<float>(std::clamp<long long>(tk.WDialogGetInteger(1095), 1, 99));
    o.opt_tol = static_cast<float>(tk.WDialogGetReal(1071));
}

// The refusals, in order; false when no deck is to be written.
bool accept_choices(Session& s, FireflySettings& o) {
    if (o.multiplicity > 1 && o.scf_type == 1 &&
        s.tk.WMessageBox(kButtonsYesNo, MessageIcon::Question, 1,
                         "Multiplicity > 1 and RHF selected\rDo you want to swiich to UHF?", "Firefly") == 1)
        o.scf_type = 2;
    if (o.plot > 0 && !firefly_ab_initio(o)) {
        message(s, "Firefly orbital plots only available\rat HF 3-21G and above.\r"
                   "Use Mopac for Semi-Empirical orbital plots");
        return false;
    }
    if (o.run_type == 4 && !firefly_ab_initio(o)) {
        message(s, "Raman intensity calculation not available\rbelow HF and dft level");
        return false;
    }
    if (o.bond_rotation && s.view.marks.count < 2) {
        message(s, "No Dihedral Stored");
        return false;
    }
    if (o.run_type >= 3) files::remove("IRCDATA");
    return true;
}

// The H.O.M.O of the last listing; without one, half the electrons of the
// molecule as it stands.
int homo_number(Session& s) {
    if (auto listing = files::read_text_lines(job_file(s, ".lst"))) {
        const ListingOrbitals o = read_listing_orbitals(*listing);
        if (o.nocc > 0) return o.nocc;
    }
    int electrons = -s.firefly.charge;
    for (int i = 1; i <= s.store.natoms; ++i) electrons += atomic_number(s.store, label_text(s.store.atom_label[i]));
    return std::max(1, (electrons + 1) / 2);
}

// Dialog 110 for an orbital plot; false when it was cancelled.
bool ask_orbital(Session& s, FireflySettings& o) {
    Toolkit& tk = s.tk;
    const int homo = homo_number(s);
    tk.WDialogLoad(kPlotDialog);
    tk.WDialogPutRadioButton(1051);
    tk.WDialogPutString(1005, "HOMO is no. " + std::to_string(homo));
    tk.WDialogPutInteger(1101, homo);
    tk.WDialogPutInteger(1102, o.grid_steps);
    tk.WDialogShow(1);
    const bool ok = tk.last_button() == 1;
    int orbital = static_cast<int>(tk.WDialogGetInteger(1101));
    if (tk.WDialogGetRadioButton(1051) == 2 && orbital == homo) orbital = homo + 1;
    const int steps = static_cast<int>(tk.WDialogGetInteger(1102));
    tk.WDialogUnload();
    if (!ok) return false;
    o.plot_orbital = std::max(1, orbital);
    o.plot_homo = homo;
    o.grid_steps = std::clamp(steps, 27, 128);
    return true;
}

// The four atoms of the stored dihedral (IDHED.DAT), or zeros.
std::array<int, 4> stored_dihedral() {
    std::array<int, 4> atoms{0, 0, 0, 0};
    auto lines = files::read_lines("IDHED.DAT");
    std::string all;
    for (const std::string& l : lines.value_or(std::vector<std::string>{})) all += l + " ";
    auto v = text::read_ints(all, 4);
    for (std::size_t k = 0; v && k < v->size() && k < 4; ++k) atoms[k] = static_cast<int>((*v)[k]);
    return atoms;
}

// A Z-matrix rotation profile holds the dihedral about the stored bond
// fixed in the optimisation.
void freeze_dihedral(Session& s, std::vector<std::string>& header) {
    const std::array<int, 4> atoms = stored_dihedral();
    auto listing = files::read_text_lines("output2");
    auto rows = listing ? read_internal_coordinates(*listing, s.store.natoms) : std::nullopt;
    const int statpt = statpt_record_index(header);
    if (!rows || statpt < 0) return;
    auto frozen = find_frozen_dihedral(*rows, atoms[1], atoms[2]);
    if (!frozen) {
        log_line(s, "No Z-matrix dihedral about the stored bond: none frozen");
        return;
    }
    log_line(s, frozen_dihedral_line(s.store, *frozen));
    header[static_cast<std::size_t>(statpt)] = freeze_coordinate(header[static_cast<std::size_t>(statpt)], frozen->coordinate);
}

// A Raman run takes the Hessian of the earlier Hessian run's punch file.
void add_hessian(Session& s, std::vector<std::string>& deck) {
    auto punch = files::read_text_lines(job_file(s, ".pun"));
    auto group = punch ? hessian_group(*punch) : std::nullopt;
    if (!group) {
        message(s, "The sequence Opt, IR/Hessian, Raman\rNo HESSIAN matrix available\rmust be used");
        return;
    }
    deck.insert(deck.end(), group->begin(), group->end());
}

bool write_deck(Session& s, const FireflySettings& o) {
    std::vector<std::string> header = firefly_header(o, s.job.name, s.store.natoms);
    const std::vector<std::string> atoms = firefly_atom_records(s);
    if (atoms.empty()) return false;
    if (o.bond_rotation) {
        if (o.zmat) freeze_dihedral(s, header);
        files::write_lines("pppgamet.tmp", header);
        files::write_lines("pppgameb.tmp", atoms);
    }
    std::vector<std::string> deck = header;
    deck.insert(deck.end(), atoms.begin(), atoms.end());
    if (o.run_type == 4) add_hessian(s, deck);
    if (!files::write_lines(job_file(s, ".inp"), deck)) {
        message(s, "Cannot write " + job_file(s, ".inp"));
        return false;
    }
    if (o.plot == 2) files::write_lines(job_file(s, ".kew"), firefly_kew(o.plot_orbital, o.plot_homo, o.grid_steps));
    return true;
}

}  // namespace

std::vector<std::string> firefly_atom_records(Session& s) {
    if (!s.firefly.zmat) return firefly_cartesian_atoms(s.store);
    auto rows = run_zmatrix_converter(s);
    if (!rows) return {};
    return zmatrix_records(s.store, *rows);
}

int ff_new_input(Session& s) {
    files::remove("punch");
    files::remove("INPUT");
    if (s.store.natoms < 1) {
        message(s, "There is no molecule to write a deck for.");
        return 0;
    }
    FireflySettings o = s.firefly;
    o.charge = s.flags.total_charge;
    o.multiplicity = s.flags.spin_multiplicity;
    Toolkit& tk = s.tk;
    tk.WDialogLoad(kInputDialog);
    fill_dialog(tk, o);
    tk.WDialogShow(1);
    const int button = tk.last_button();
    if (button != 0) read_dialog(tk, o);
    tk.WDialogUnload();
    if (button == 0) return 0;
    s.flags.total_charge = o.charge;
    s.flags.spin_multiplicity = o.multiplicity;
    // A single atom has no internal coordinates.
    if (s.store.natoms < 2) o.zmat = false;
    const bool accepted = accept_choices(s, o);
    s.firefly = o;
    if (!accepted) return 0;
    if (o.plot == 2 && !ask_orbital(s, o)) return 0;
    s.firefly = o;
    if (!write_deck(s, o)) return 0;
    s.tk.WindowOutStatusBar(status_message_field, "Firefly input generated");
    return button == 3 ? 3 : 1;
}

}  // namespace zentol
