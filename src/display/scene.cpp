#include "display/scene.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>

#include "display/view.h"
#include "session/session.h"
#include "text/fixed_format.h"
#include "toolkit/plot.h"

namespace zentol {

BondMarks session_bond_marks(const Session& s) { return s.view.marks; }

Scene::Scene() {
    spheres.reserve(kAtomRows);
    sticks.reserve(2 * kMaxBonds);
    labels.reserve(kAtomRows);
    circles.reserve(5);
}

int label_length(const Label& label) {
    int n = 4;
    while (n > 1 && label[static_cast<std::size_t>(n - 1)] == ' ') --n;
    return n;
}

int charge_text(float charge, char* out) {
    // Short enough for the string's own buffer: no allocation per label.
    const std::string t = charge >= 0 ? text::format_f(charge, 5, 3) : text::format_f(charge, 6, 3);
    const int n = static_cast<int>(std::min<std::size_t>(t.size(), 7));
    std::memcpy(out, t.data(), static_cast<std::size_t>(n));
    out[n] = '\0';
    return n;
}

namespace {

bool is_picked(const ViewState& v, int atom) {
    const int n = std::clamp(v.pick_count, 0, 4);
    for (int k = 1; k <= n; ++k)
        if (v.pick_list[k] == atom) return true;
    return false;
}

int palette_entry(float value) { return std::clamp(static_cast<int>(std::lround(value)), 0, 48); }

bool is_dummy(const Label& l) { return l[0] == 'D' && l[1] == 'u' && l[2] == 'm'; }

struct Frame {
    const Store& st;
    float zoom;
    bool emphasis;
};

void add_atoms(const Session& s, const Frame& f, Scene& out) {
    const Store& st = f.st;
    const float size = s.opt.atom_size;
    const bool labels = s.opt.labels_on;
    for (int i = 1; i <= std::min(st.disp_natoms, kAtomRows); ++i) {
        if (is_dummy(st.disp_label[i])) continue;
        const float x = st.disp_x[i] * f.zoom, y = st.disp_y[i] * f.zoom, z = st.disp_z[i] * f.zoom;
        float radius = st.disp_w[i] * 1.4f * st.disp_scale * size * f.zoom;
        float alpha = 1.0f;
        if (f.emphasis && st.atom_emph[i] < 0.5f) {
            radius = radius / size * 0.1f;
            alpha = s.opt.deemphasis_alpha;
        }
        const int colour = is_picked(s.view, i) ? kHighlightEntry : palette_entry(st.atom_colour[i]);
        out.spheres.push_back({x, y, z, radius, colour, alpha});
        if (!labels) continue;
        // Beside the atom, to its right at mid height, a gap of a quarter of
        // the label offset away, and in front of its sphere, so the atom
        // never hides its own label.
        const float em = s.opt.label_size;
        SceneLabel l{x + radius + 0.25f * s.opt.label_offset, y - 0.35f * em, z + radius + 0.05f, {}, 0};
        if (s.opt.charge_labels) {
            // The charge table serves molecules of up to 250 atoms.
            if (i >= static_cast<int>(st.atom_charge.size())) continue;
            l.length = charge_text(st.atom_charge[static_cast<std::size_t>(i)], l.text);
        } else {
            l.length = label_length(st.disp_label[i]);
            std::memcpy(l.text, st.disp_label[i].data(), static_cast<std::size_t>(l.length));
            l.text[l.length] = '\0';
        }
        out.labels.push_back(l);
    }
}

// Highlight state of a bond: 1 a shown stored bond, 2 between two picked
// atoms while bonds are marked, 0 neither. The stored bond wins.
int bond_highlight(const ViewState& v, const BondMarks& m, int a, int b) {
    int h = 0;
    if (m.count > 0 && is_picked(v, a) && is_picked(v, b)) h = 2;
    if ((m.kind == 1 && a == m.first_low && b == m.first_high) ||
        (m.kind == 2 && a == m.second_low && b == m.second_high))
        h = 1;
    return h;
}

void add_bonds(const Session& s, const BondMarks& marks, const Frame& f, Scene& out) {
    const Store& st = f.st;
    const bool fast = s.flags.sphere_slices == kFastSlices;
    for (int k = 1; k <= std::min(st.nbonds, kMaxBonds); ++k) {
        const int a = st.bond_a[k], b = st.bond_b[k];
        if (a < 1 || b < 1 || a > kAtomRows || b > kAtomRows) continue;
        const float px = st.disp_x[a] * f.zoom, py = st.disp_y[a] * f.zoom, pz = st.disp_z[a] * f.zoom;
        const float qx = st.disp_x[b] * f.zoom, qy = st.disp_y[b] * f.zoom, qz = st.disp_z[b] * f.zoom;
        if (fast) {
            out.sticks.push_back({px, py, pz, qx, qy, qz, kFastBondEntry, 1.0f});
            continue;
        }
        const int h = bond_highlight(s.view, marks, a, b);
        float alpha = 1.0f;
        if (f.emphasis && std::lround(st.atom_emph[a]) + std::lround(st.atom_emph[b]) == 0)
            alpha = s.opt.deemphasis_alpha;
        const float mx = (px + qx) / 2, my = (py + qy) / 2, mz = (pz + qz) / 2;
        auto half_colour = [&](int atom) {
            return h == 1 ? kStoredBondEntry : h == 2 ? kHighlightEntry : palette_entry(st.atom_colour[atom]);
        };
        out.sticks.push_back({px, py, pz, mx, my, mz, half_colour(a), alpha});
        out.sticks.push_back({mx, my, mz, qx, qy, qz, half_colour(b), alpha});
    }
}

void add_circles(const Session& s, const Frame& f, Scene& out) {
    const auto c = colour_number(kPickCircleColour);
    const std::array<float, 3> rgb{c[0] / 255.0f, c[1] / 255.0f, c[2] / 255.0f};
    for (int k = 1; k <= std::clamp(s.view.circle_count, 0, 4); ++k) {
        const int a = s.view.circle_list[k];
        if (a < 1 || a > std::min(f.st.disp_natoms, kAtomRows)) continue;
        out.circles.push_back(
            {f.st.disp_x[a] * f.zoom, f.st.disp_y[a] * f.zoom, f.st.disp_z[a] * f.zoom, kPickCircleRadius, rgb});
    }
}

}  // namespace

void build_scene(const Session& s, Scene& out) { build_scene(s, session_bond_marks(s), out); }

void build_scene(const Session& s, const BondMarks& marks, Scene& out) {
    const Store& st = s.store;
    const Palette& p = s.palette;
    for (std::size_t k = 0; k < out.palette.size(); ++k) out.palette[k] = {p.r[k], p.g[k], p.b[k]};
    out.background = out.palette[kBackgroundEntry];
    out.slices = s.flags.sphere_slices;
    out.stacks = s.flags.sphere_stacks;
    out.label_scale = s.opt.label_size;
    const float ink = s.opt.palette_choice == 1 ? 0.0f : 1.0f;
    out.label_colour = {ink, ink, ink};
    out.spheres.clear();
    out.sticks.clear();
    out.labels.clear();
    out.circles.clear();

    const Frame f{st, s.flags.zoom, st.emphasis_count > 0};
    out.stick_radius = s.opt.bond_width * 0.3f * st.disp_scale * f.zoom;
    bool atoms = !st.hide_atoms && st.disp_natoms > 0;
    if (s.flags.mouse_rotating && st.disp_natoms > kFullPictureWhileTurning) {
        // While the mouse drags a large molecule: thin sticks only, unless
        // there is nothing but atoms to show. Smaller ones draw fast enough
        // to keep their whole picture.
        out.stick_radius *= 0.3f;
        if (st.nbonds > 0) atoms = false;
    }
    if (atoms) add_atoms(s, f, out);
    if (!s.opt.hide_bonds && st.nbonds > 0) add_bonds(s, marks, f, out);
    add_circles(s, f, out);
}

}  // namespace zentol
