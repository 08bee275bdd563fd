#include "session/store_ops.h"

#include <algorithm>
#include <cmath>

#include "display/colours.h"
#include "display/projection.h"
#include "display/renderer.h"
#include "display/view.h"
#include "session/session.h"
#include "session/setup_dialog.h"
#include "structure_files/emphasis_file.h"
#include "structure_files/ins_file.h"
#include "structure_files/xyz_file.h"
#include "text/fixed_format.h"
#include "toolkit/files.h"
#include "toolkit/toolkit.h"

namespace zentol {

bool label_is_one_letter(std::string_view label) { return label.size() < 2 || label[1] < ':'; }

std::string element_symbol(std::string_view label) {
    std::string key = "  ";
    if (!label.empty()) key[0] = label[0];
    if (label.size() >= 2 && label[1] >= ':') key[1] = label[1];
    if (key[1] >= 'A' && key[1] <= 'Z') key[1] = char(key[1] + 32);
    return key;
}

namespace {

int find_element(const Store& store, const std::string& key) {
    for (int row = 1; row <= kElementRows; ++row)
        if (store.elements[row].symbol[0] == key[0] && store.elements[row].symbol[1] == key[1]) return row;
    return 0;
}

float ask_radius(Store& store, Toolkit* tk, int row) {
    ElementRow& e = store.elements[row];
    if (!e.confirmed && tk) {
        tk->WDialogLoad(103);
        tk->WDialogPutString(1002, std::string(e.symbol, 2));
        tk->WDialogPutReal(1071, e.radius);
        tk->WDialogShow(1);
        if (tk->last_button() == 1) {
            double r = tk->WDialogGetReal(1071);
            if (r > 0) e.radius = static_cast<float>(r);
        }
        tk->WDialogUnload();
    }
    e.confirmed = true;
    return e.radius;
}

}  // namespace

float element_lookup(Store& store, Toolkit* tk, std::string_view label, int mode) {
    if (mode == kLookupConfirmAll || mode == kLookupClearConfirm) {
        for (int row = 1; row <= kElementRows; ++row) store.elements[row].confirmed = (mode == kLookupConfirmAll);
        return 0.0f;
    }
    if (text::starts_with_nocase(label, "CEN")) return 0.0f;
    if (!label.empty() && (label[0] == 'Q' || label[0] == 'q')) return 0.77f;
    int row = find_element(store, element_symbol(label));
    if (row == 0) return 0.74f;
    if (mode <= kLookupElectronegativity) return store.elements[row].electronegativity;
    if (mode <= kLookupAtomicNumber) return static_cast<float>(row);
    return ask_radius(store, tk, row);
}

void rebuild_bond_list(Store& store) {
    // Every slot is looked at, so a bond behind an empty slot is drawn too.
    int n = 0;
    for (int i = 1; i <= store.natoms && n < kMaxBonds; ++i) {
        for (int slot = 1; slot <= kMaxNeighbours && n < kMaxBonds; ++slot) {
            int j = store.nbr(i, slot);
            if (j > i && j <= store.natoms) {
                ++n;
                store.bond_a[n] = i;
                store.bond_b[n] = j;
            }
        }
    }
    store.nbonds = n;
    for (int i = 1; i <= store.disp_natoms; ++i) store.disp_label[i] = store.atom_label[i];
}

namespace {

void pull_back(Store& st) {
    for (int i = 1; i <= st.natoms; ++i) {
        st.atom_rec[i][kX] = st.disp_x[i] / st.disp_scale;
        st.atom_rec[i][kY] = st.disp_y[i] / st.disp_scale;
        st.atom_rec[i][kZ] = st.disp_z[i] / st.disp_scale;
        // The radius is divided too, although the display never multiplied
        // it; the next .xyz read replaces it.
        st.atom_rec[i][kRadius] = st.disp_w[i] / st.disp_scale;
    }
}

void centre_and_scale(Store& st, double sx, double sy, double sz) {
    int n = st.natoms;
    float cx = static_cast<float>(sx / n), cy = static_cast<float>(sy / n), cz = static_cast<float>(sz / n);
    float lo = 1000.0f, hi = -1000.0f;
    for (int i = 1; i <= n; ++i) {
        st.disp_x[i] -= cx;
        st.disp_y[i] -= cy;
        st.disp_z[i] -= cz;
        lo = std::min({lo, st.disp_x[i], st.disp_y[i], st.disp_z[i]});
        hi = std::max({hi, st.disp_x[i], st.disp_y[i], st.disp_z[i]});
    }
    float extent = std::max({std::fabs(lo), std::fabs(hi), 1.0f});
    st.disp_scale = 1.0f / extent;
    for (int i = 1; i <= n; ++i) {
        st.disp_x[i] *= st.disp_scale;
        st.disp_y[i] *= st.disp_scale;
        st.disp_z[i] *= st.disp_scale;
    }
}

}  // namespace

void prepare_display(Session& s) {
    Store& st = s.store;
    st.disp_natoms = st.natoms;
    if (s.flags.view_action == 10) {
        pull_back(st);
        s.flags.view_action = 0;
        return;
    }
    double sx = 0, sy = 0, sz = 0;
    for (int i = 1; i <= st.natoms; ++i) {
        st.disp_x[i] = st.atom_rec[i][kX];
        st.disp_y[i] = st.atom_rec[i][kY];
        st.disp_z[i] = st.atom_rec[i][kZ];
        st.disp_w[i] = st.atom_rec[i][kRadius];
        sx += st.atom_rec[i][kX];
        sy += st.atom_rec[i][kY];
        sz += st.atom_rec[i][kZ];
    }
    if (st.natoms == 0) {
        st.emphasis_count = 0;
        return;
    }
    read_emphasis_file(st, files::exists(job_file(s, ".fsa")) ? job_file(s, ".fsa") : ".fsa");
    centre_and_scale(st, sx, sy, sz);
    collect_elements(st);
    load_colour_map(s);
    load_element_colours(s);
    // Charge colours, when asked for, last through every round trip.
    if (!s.opt.colour_by_molecule) recolour_atoms(s);
}

void project_atoms(Session& s) {
    const Matrix4 camera = camera_matrix(Viewport{s.tk.window_size(1), s.tk.window_size(2)});
    Store& st = s.store;
    for (int i = 1; i <= st.disp_natoms; ++i) {
        auto p = project_point(st.disp_x[i] * s.flags.zoom, st.disp_y[i] * s.flags.zoom,
                               st.disp_z[i] * s.flags.zoom, camera);
        st.screen_x[i] = p.first;
        st.screen_y[i] = p.second;
    }
}

void draw_scene(Session& s) {
    if (s.opt.fast_draw) s.flags.sphere_slices = 8;
    s.flags.sphere_stacks = s.flags.sphere_slices;
    s.view.pick_tolerance = pick_tolerance_for(s.store.disp_natoms);
    apply_pending_rotation(s);
    s.renderer.draw(s);
}

void reload_keeping_turn(Session& s) {
    s.flags.view_action = 10;
    prepare_display(s);
    save_and_reload(s);
}

void save_and_reload(Session& s) {
    // The molecule goes through its file; when the file cannot take it, the
    // same round trip runs on the text in memory, so nothing is read over
    // the user's edits. A molecule that does not fit the file goes back to
    // the file's last good one.
    int status = 0;
    switch (write_job_files(s)) {
        case SaveResult::Written: read_job_xyz(s, status); break;
        case SaveResult::Unwritable:
            if (files::exists(job_file(s, ".xyz"))) read_job_xyz(s, status);
            break;
        case SaveResult::Failed:
        case SaveResult::Held:
            reload_from_text(s, format_xyz(s.store, s.job.name, s.flags.total_charge, s.flags.spin_multiplicity));
            s.tk.WindowOutStatusBar(4, text::format_i(s.store.natoms, 4));
            s.tk.WindowOutStatusBar(6, text::format_i(s.store.nbonds, 4));
            break;
    }
    prepare_display(s);
    rebuild_bond_list(s.store);
    project_atoms(s);
    draw_scene(s);
}

}  // namespace zentol
