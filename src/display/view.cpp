#include "display/view.h"

#include <algorithm>
#include <cmath>

#include "session/display_loop.h"
#include "session/session.h"
#include "session/store_ops.h"
#include "text/fixed_format.h"
#include "toolkit/toolkit.h"

namespace zentol {

void apply_pending_rotation(Session& s) {
    int axis = s.flags.view_action;
    if (axis < 1 || axis > 3) return;
    turn_display(s, axis, static_cast<float>(s.flags.view_rot_sign) * s.flags.rot_step);
}

void turn_display(Session& s, int axis, float degrees) {
    if (axis < 1 || axis > 3 || degrees == 0) return;
    float angle = degrees / 57.2957763671875f;
    float c = std::cos(angle), sn = std::sin(angle);
    Store& st = s.store;
    for (int i = 1; i <= st.disp_natoms; ++i) {
        float x = st.disp_x[i], y = st.disp_y[i], z = st.disp_z[i];
        if (axis == 1) {
            st.disp_y[i] = y * c - z * sn;
            st.disp_z[i] = y * sn + z * c;
        } else if (axis == 2) {
            st.disp_x[i] = x * c + z * sn;
            st.disp_z[i] = -x * sn + z * c;
        } else {
            st.disp_x[i] = x * c - y * sn;
            st.disp_y[i] = y * c + x * sn;
        }
    }
}

bool rotate_by_key(Session& s, int key) {
    int axis = 0, sign = 0;
    switch (key) {
        case kKeyYMinus: axis = 2, sign = -1; break;
        case kKeyYPlus: axis = 2, sign = 1; break;
        case kKeyXMinus: axis = 1, sign = -1; break;
        case kKeyXPlus: axis = 1, sign = 1; break;
        case kKeyZMinus: axis = 3, sign = -1; break;
        case kKeyZPlus: axis = 3, sign = 1; break;
        default: return false;
    }
    s.flags.view_action = axis;
    s.flags.view_rot_sign = sign;
    draw_scene(s);
    return true;
}

void set_zoom(Session& s, float zoom) {
    s.flags.zoom = std::clamp(zoom, 0.2f, 3.8f);
    project_atoms(s);
    draw_scene(s);
}

void zoom_by_wheel(Session& s, int steps) { set_zoom(s, s.flags.zoom + 0.1f * static_cast<float>(steps)); }

float pick_tolerance_for(int natoms) { return natoms < 10 ? 0.05f : natoms < 20 ? 0.02f : 0.01f; }

int nearest_atom(const Session& s, float x, float y, bool& found) {
    const Store& st = s.store;
    float best = 100.0f;
    int atom = 0;
    for (int i = 1; i <= st.disp_natoms; ++i) {
        float d = std::fabs(st.screen_x[i] - x) + std::fabs(st.screen_y[i] - y);
        if (d < best) best = d, atom = i;
    }
    found = atom > 0 && best < s.view.pick_tolerance;
    return atom;
}

namespace {

void begin_drag(Session& s, const Event& e) {
    s.flags.mouse_rotating = true;
    s.view.turned = false;
    s.tk.message_enable(MessageType::MouseMove, true);
    s.view.last_x = e.x;
    s.view.last_y = e.y;
}

void end_drag(Session& s) {
    s.flags.mouse_rotating = false;
    s.tk.message_enable(MessageType::MouseMove, false);
    s.flags.view_action = 0;
    s.flags.sphere_slices = s.flags.sphere_stacks = 32;
    draw_scene(s);
}

}  // namespace

bool drag_rotation(Session& s, const Event& e) {
    if (e.command == kCommandPress) {
        begin_drag(s, e);
        return true;
    }
    if (!s.flags.mouse_rotating) return false;
    if (e.command == kCommandRelease) {
        end_drag(s);
        return true;
    }
    if (!e.moved) return false;
    s.tk.WindowOutStatusBar(10, "Rotating");
    // Large molecules drop to the quick picture while they turn; up to the
    // size that draws in well under a frame's time the full one stays.
    if (s.store.disp_natoms > kFullPictureWhileTurning) s.flags.sphere_slices = s.flags.sphere_stacks = 8;
    const float dx = e.x - s.view.last_x, dy = e.y - s.view.last_y;
    s.view.last_x = e.x;
    s.view.last_y = e.y;
    if (dx == 0 && dy == 0) return true;
    // The turn follows the distance moved, not the number of move events:
    // across the whole view is half a turn.
    s.view.turned = true;
    s.flags.view_action = 0;
    turn_display(s, 2, dx * kDegreesPerView);
    turn_display(s, 1, -dy * kDegreesPerView);
    draw_scene(s);
    return true;
}

int pick_atom(Session& s, float x, float y) {
    project_atoms(s);
    bool found = false;
    int atom = nearest_atom(s, x, y, found);
    s.view.pick_count = found ? 1 : 0;
    s.view.pick_list[1] = found ? atom : 0;
    s.tk.WindowOutStatusBar(9, found ? std::string(text::trim_right(label_text(s.store.atom_label[atom]))) : " ");
    draw_scene(s);
    return found ? atom : 0;
}

void show_pick_circle(Session& s, int atom) {
    ViewState& v = s.view;
    if (v.circle_count >= 4) {
        for (int k = 1; k < 4; ++k) v.circle_list[k] = v.circle_list[k + 1];
        v.circle_count = 3;
    }
    v.circle_list[++v.circle_count] = atom;
    draw_scene(s);
}

void clear_pick_circles(Session& s) {
    if (s.view.circle_count == 0) return;
    s.view.circle_count = 0;
    draw_scene(s);
}

void rotate_loop(Session& s) {
    s.tk.WindowOutStatusBar(10, "Rotating");
    while (true) {
        Event e = read_event(s);
        if (e.key == 27 || e.command == kCommandClose || e.state == 3) break;
        if (e.command == kCommandRelease && s.flags.mouse_rotating) break;
        if (!drag_rotation(s, e)) s.flags.view_action = 0;
        if (e.command == kCommandRelease) break;
    }
    s.flags.mouse_rotating = false;
    s.tk.message_enable(MessageType::MouseMove, false);
    s.flags.view_action = 0;
    s.flags.sphere_slices = s.flags.sphere_stacks = 32;
    s.tk.WindowOutStatusBar(10, " ");
    draw_scene(s);
}

}  // namespace zentol
