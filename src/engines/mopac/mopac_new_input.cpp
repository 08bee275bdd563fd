// The New Input command: dialog 107 into MopacOptions, the engine
// generation chosen, and the deck written.
#include "engines/mopac/mopac_mode.h"

#include <algorithm>
#include <fstream>

#include "engines/mopac/mopac_input.h"
#include "engines/runner.h"
#include "session/jobs.h"
#include "session/session.h"
#include "text/fixed_format.h"
#include "toolkit/files.h"
#include "toolkit/toolkit.h"

namespace zentol {

namespace {

constexpr int kMethodFields[] = {1049, 1050, 1056, 1057, 1058, 1059, 1077, 1035, 1075, 1025};
constexpr char kMarker[] = "MOP2016.TXT";

// The method of the job's last deck ("PM7" at the head of job.inp), 0 when
// there is none.
int last_deck_method(const Session& s) {
    const auto deck = files::read_text_lines(job_file(s, ".inp"));
    if (!deck || deck->empty()) return 0;
    const std::string_view head = text::trim((*deck)[0]);
    return mopac_method_index(head.substr(0, head.find(' ')));
}

// The last method chosen: in this visit of the mode, else in the job's last
// deck, else PM7.
int method_to_offer(const Session& s, const MopacState& m) {
    if (m.options.method >= 1) return m.options.method;
    const int last = last_deck_method(s);
    return last >= 1 ? last : kDefaultMethod;
}

void fill_dialog(Session& s, const MopacState& m) {
    Toolkit& tk = s.tk;
    tk.WDialogLoad(107);
    tk.WDialogPutRadioButton(kMethodFields[method_to_offer(s, m) - 1]);
    tk.WDialogPutRadioButton(1051);
    tk.WDialogPutInteger(1101, 30);
    tk.WDialogFieldState(1101, 0);
    tk.WDialogPutInteger(1102, s.flags.total_charge);
    tk.WDialogPutInteger(1027, s.flags.spin_multiplicity);
    tk.WDialogPutRadioButton(1055);
    tk.WDialogPutCheckBox(1072, files::exists(kMarker) ? 1 : 0);
    tk.WDialogPutRadioButton(1043);
}

MopacOptions read_dialog(Toolkit& tk) {
    MopacOptions o;
    o.method = tk.WDialogGetRadioButton(1049);
    o.scf = std::max(1, tk.WDialogGetRadioButton(1051));
    o.charge = static_cast<int>(tk.WDialogGetInteger(1102));
    o.multiplicity = static_cast<int>(tk.WDialogGetInteger(1027));
    o.run_type = std::max(1, tk.WDialogGetRadioButton(1054));
    o.geo_ok = tk.WDialogGetCheckBox(1031) != 0;
    o.mm_ok = tk.WDialogGetCheckBox(1016) != 0;
    o.bond_rotation = tk.WDialogGetCheckBox(1039) != 0;
    o.mass_weighted = tk.WDialogGetCheckBox(1022) != 0;
    o.mopac2016 = tk.WDialogGetCheckBox(1072) != 0;
    o.plot_type = std::max(1, tk.WDialogGetRadioButton(1043));
    return o;
}

}  // namespace

int choose_mopac_version(Session& s, bool mopac2016_checked) {
    files::remove(kMarker);
    const bool mopac6 = engine_available(s, "mopac6");
    const bool modern = engine_available(s, "mopac2016");
    // Unchecked, a configured Mopac 6 runs; without one the MOPAC of today
    // does, so that a fresh installation runs MOPAC at all. With neither
    // installed the deck is the modern one, and the run says which engine
    // to install.
    int version = kMopac2016;
    if (mopac6 && (!mopac2016_checked || !modern)) version = kMopac6;
    if (version == kMopac2016) files::write_atomic(kMarker, "MOPAC 2016 generation\n");
    return version;
}

int new_input(Session& s, MopacState& m) {
    while (true) {
        fill_dialog(s, m);
        s.tk.WDialogShow(1);
        const int button = s.tk.last_button();
        MopacOptions o = read_dialog(s.tk);
        s.tk.WDialogUnload();
        if (button != 1 && button != 3) return 0;
        s.flags.total_charge = o.charge;
        s.flags.spin_multiplicity = o.multiplicity;
        if (o.bond_rotation && s.view.marks.count < 2) {
            tell(s, {"No Dihedral Stored"});
            return 0;
        }
        o.plot_type -= 1;
        if (o.multiplicity == 1 && o.plot_type == 1) o.plot_type = 0;
        if (o.bond_rotation) o.run_type = 1;
        if (o.run_type != 1) o.bond_rotation = false;
        const int version = choose_mopac_version(s, o.mopac2016);
        // What the chosen engine cannot run is refused, saying why, and the
        // dialog comes again with the choice kept.
        const std::string refused = mopac_refusal(o, version, o.mopac2016);
        if (!refused.empty()) {
            m.options.method = o.method;
            s.tk.WMessageBox(kButtonsOk, MessageIcon::Exclamation, 1, refused, "Mopac");
            continue;
        }
        m.options = o;
        m.version = version;
        s.flags.plot_kind = o.plot_type;
        if (o.run_type == 3) files::remove(job_file(s, "_ir.lst"));
        m.force = o.run_type == 3;
        const std::vector<std::string> header = mopac_header(m.options, version, s.job.name);
        files::write_lines(job_file(s, ".inp"), header);
        files::write_lines("mopac.inp", header);
        s.tk.WindowOutStatusBar(status_message_field, "Mopac input generated");
        return button;
    }
}

}  // namespace zentol
