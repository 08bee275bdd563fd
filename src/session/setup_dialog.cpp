#include "session/setup_dialog.h"

#include <algorithm>
#include <cmath>

#include "building/connectivity.h"
#include "display/colours.h"
#include "display/renderer.h"
#include "session/config.h"
#include "session/session.h"
#include "session/setup_file.h"
#include "session/store_ops.h"
#include "structure_files/geo_log.h"
#include "text/fixed_format.h"
#include "toolkit/toolkit.h"

namespace zentol {

namespace {

constexpr int kSetupDialog = 106;
constexpr int kFirstMap = 1051;
constexpr int kFirstLevel = 1054;
constexpr int kLevelFields[] = {1054, 1055, 1048};
constexpr char kCurveLetters[] = {'L', 'S', 'E'};

struct RealField {
    int field;
    float Options::*option;
};

struct TinkerField {
    int field;
    float TinkerSettings::*setting;
};

constexpr RealField kDisplayReals[] = {{1008, &Options::label_offset}, {1023, &Options::bond_rot_step},
                                       {1071, &Options::view_distance}, {1096, &Options::cov_tolerance}};
constexpr TinkerField kTinkerReals[] = {
    {1067, &TinkerSettings::tk_min_rms},     {1076, &TinkerSettings::tk_anneal_t0},
    {1073, &TinkerSettings::tk_anneal_t1},   {1074, &TinkerSettings::tk_anneal_equil},
    {1079, &TinkerSettings::tk_anneal_cool}, {1019, &TinkerSettings::tk_anneal_step},
    {1069, &TinkerSettings::tk_anneal_dump}, {1070, &TinkerSettings::tk_anneal_mass}};

void fill_pages(Session& s) {
    Toolkit& tk = s.tk;
    const Options& o = s.opt;
    const TinkerSettings& t = s.tinker;
    tk.WDialogPutTrackbar(1014, static_cast<int>(std::lround(o.atom_size * 100)));
    tk.WDialogPutTrackbar(1013, static_cast<int>(std::lround(o.bond_width * 100)));
    tk.WDialogPutCheckBox(1022, 1);   // always offered ticked
    tk.WDialogPutCheckBox(1036, o.labels_on);
    tk.WDialogPutReal(1078, o.label_size * 5);
    tk.WDialogPutCheckBox(1039, o.charge_labels);
    tk.WDialogPutCheckBox(1072, o.charge_colours);
    tk.WDialogPutCheckBox(1031, o.colour_by_molecule);
    for (const auto& f : kDisplayReals) tk.WDialogPutReal(f.field, s.opt.*f.option);
    tk.WDialogPutRadioButton(kFirstMap + std::clamp(o.palette_choice, 1, 3) - 1);
    tk.WDialogPutRadioButton(kLevelFields[std::clamp(s.flags.user_level, 1, 3) - 1]);
    tk.WDialogPutCheckBox(1037, t.tk_optimize > 0.5f);
    for (const auto& f : kTinkerReals) tk.WDialogPutReal(f.field, t.*f.setting);
    tk.WDialogPutString(1021, std::string(1, static_cast<char>(std::lround(t.tk_qualifier))));
    int curve = std::clamp(static_cast<int>(std::lround(t.tk_curve)), 1, 3);
    tk.WDialogPutString(1011, std::string(1, kCurveLetters[curve - 1]));
    tk.WDialogPutInteger(1101, std::lround(t.tk_auto_cycles));
    tk.WDialogPutInteger(1102, std::lround(t.tk_movie_delay));
}

void read_display_page(Session& s) {
    Toolkit& tk = s.tk;
    Options& o = s.opt;
    o.atom_size = static_cast<float>(tk.WDialogGetTrackbar(1014)) / 100.0f;
    o.bond_width = static_cast<float>(tk.WDialogGetTrackbar(1013)) / 100.0f;
    // A ticked box keeps the dynamics files: the label says the opposite.
    o.keep_dyn_files = tk.WDialogGetCheckBox(1022) != 0;
    o.labels_on = tk.WDialogGetCheckBox(1036) != 0;
    o.label_size = static_cast<float>(tk.WDialogGetReal(1078) / 5.0);
    o.charge_labels = tk.WDialogGetCheckBox(1039) != 0;
    o.charge_colours = tk.WDialogGetCheckBox(1072) != 0;
    o.colour_by_molecule = tk.WDialogGetCheckBox(1031) != 0;
    for (const auto& f : kDisplayReals) o.*f.option = static_cast<float>(tk.WDialogGetReal(f.field));
    if (o.view_distance > 100 || o.view_distance < 1) o.view_distance = 100;
    o.palette_choice = std::max(1, tk.WDialogGetRadioButton(kFirstMap));
    int level = tk.WDialogGetRadioButton(kFirstLevel);
    if (level >= 1) s.flags.user_level = level;
}

void read_tinker_page(Session& s) {
    Toolkit& tk = s.tk;
    TinkerSettings& t = s.tinker;
    t.tk_optimize = tk.WDialogGetCheckBox(1037) ? 1.0f : 0.0f;
    for (const auto& f : kTinkerReals) t.*f.setting = static_cast<float>(tk.WDialogGetReal(f.field));
    std::string q = tk.WDialogGetString(1021);
    if (!q.empty()) t.tk_qualifier = static_cast<unsigned char>(q[0]);
    std::string curve = text::upper_case(text::trim(tk.WDialogGetString(1011)));
    for (int k = 0; k < 3 && !curve.empty(); ++k)
        if (curve[0] == kCurveLetters[k]) t.tk_curve = static_cast<float>(k + 1);
    t.tk_auto_cycles = static_cast<float>(tk.WDialogGetInteger(1101));
    t.tk_movie_delay = static_cast<float>(tk.WDialogGetInteger(1102));
}

}  // namespace

SetupResult run_setup(Session& s) {
    SetupResult r;
    int old_palette = s.opt.palette_choice;
    s.tk.WDialogLoad(kSetupDialog);
    fill_pages(s);
    s.tk.WDialogShow(1);
    if (s.tk.last_button() != 1) {
        s.tk.WDialogUnload();
        return r;
    }
    read_display_page(s);
    read_tinker_page(s);
    s.tk.WDialogUnload();
    r.confirmed = true;
    r.palette_changed = s.opt.palette_choice != old_palette;
    s.tk.WindowOutStatusBar(7, level_name(s.flags.user_level));
    write_user_level(s);
    save_setup(s);
    if (!s.opt.colour_by_molecule) perceive_bonds(s.store, &s.tk, s.opt.cov_tolerance);
    return r;
}

void recolour_atoms(Session& s) {
    Store& st = s.store;
    if (s.opt.charge_labels || s.opt.charge_colours) {
        auto charges = read_value_log(job_file(s, "_chg.log"));
        if (charges && static_cast<int>(charges->size()) == st.natoms) {
            for (int i = 1; i <= st.natoms && i <= 250; ++i) st.atom_charge[i] = static_cast<float>((*charges)[i - 1]);
            if (s.opt.charge_colours) {
                assign_charge_colours(st, s.palette, *charges);
                return;
            }
        } else if (charges) {
            s.opt.charge_labels = s.opt.charge_colours = false;
        }
    }
    if (s.opt.colour_by_molecule) assign_molecule_colours(st);
    else assign_element_colours(st);
}

void setup_command(Session& s) {
    SetupResult r = run_setup(s);
    if (!r.confirmed) return;
    if (r.palette_changed) {
        load_colour_map(s);
        reload_keeping_turn(s);
    }
    recolour_atoms(s);
    s.renderer.init_gl_state();
    draw_scene(s);
}

}  // namespace zentol
