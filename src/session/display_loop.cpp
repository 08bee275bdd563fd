#include "session/display_loop.h"

#include <algorithm>

#include "session/config.h"
#include "session/jobs.h"
#include "session/session.h"
#include "session/store_ops.h"
#include "structure_files/geo_log.h"
#include "text/fixed_format.h"
#include "toolkit/files.h"
#include "toolkit/toolkit.h"

namespace zentol {

Event read_event(Session& s) {
    Message m = s.tk.next_message();
    Event e;
    e.x = m.fx;
    e.y = 1.0f - m.fy;   // window coordinates run upwards, as the projected atoms do
    switch (m.type) {
        case MessageType::Key: e.key = m.value; break;
        case MessageType::Menu:
            e.command = m.value - 40000;
            if (m.value == 41019) e.command = 19;
            if (m.value == 40019 || m.value == 40036) e.command = 0;
            break;
        case MessageType::MouseDown: e.command = kCommandPress; break;
        case MessageType::MouseUp: e.command = kCommandRelease; break;
        case MessageType::MouseMove: e.moved = true; break;
        case MessageType::Resize: e.state = 1; break;
        case MessageType::Expose: e.state = 2; break;
        case MessageType::Close: e.command = kCommandClose; break;
        case MessageType::None: break;
    }
    if ((e.command >= 1 && e.command <= 199) || e.key > 3) e.state = 3;
    return e;
}

void remove_marked_bonds(Session& s) {
    Store& st = s.store;
    for (int k = 1; k <= st.marked_bond_count; ++k) {
        int a = st.marked_bonds[k][0], b = st.marked_bonds[k][1];
        for (auto [from, to] : {std::pair{a, b}, std::pair{b, a}}) {
            if (from < 1 || from > kMaxAtoms) continue;
            for (int slot = 1; slot <= kMaxNeighbours; ++slot) {
                if (st.nbr(from, slot) != to) continue;
                st.nbr(from, slot) = 0;
                st.conn_count(from) = std::max(0, st.conn_count(from) - 1);
            }
        }
    }
    st.marked_bond_count = 0;
}

void close_path(Session& s) {
    remove_marked_bonds(s);
    s.flags.view_action = 10;
    prepare_display(s);
    save_and_reload(s);
    s.flags.session_running = 0;
    if (!s.flags.bgl_written) {
        write_bond_list(s);
        s.flags.bgl_written = true;
    }
    bool delete_movie = s.flags.movie_made && ask_yes_no(s, "Delete movie files");
    purge_job_files(s, s.opt.keep_dyn_files, delete_movie);
}

namespace {

void loop_start(Session& s) {
    draw_scene(s);
    if (!s.flags.mouse_rotating) save_and_reload(s);
    s.tk.WindowOutStatusBar(4, text::format_i(s.store.natoms, 4));
    s.tk.WindowOutStatusBar(6, text::format_i(s.store.nbonds, 4));
    s.flags.view_action = 0;
    s.flags.view_rot_sign = 0;
}

void set_zoom(Session& s, float zoom) {
    s.flags.zoom = std::clamp(zoom, 0.2f, 3.8f);
    project_atoms(s);
    draw_scene(s);
}

// Commands of this loop. Returns false when the loop is to end.
bool dispatch(Session& s, const Event& e) {
    switch (e.command) {
        case kCommandClose:
        case kCommandExit: close_path(s); return false;
        case 9: s.flags.rot_step = 1; break;
        case 10: s.flags.rot_step = 2; break;
        case 11: s.flags.rot_step = 5; break;
        case 26: s.tk.WMessageBox(kButtonsOk, MessageIcon::Information, 1,
                                  files::current_dir() + "/" + s.job.name, "Current Job is .."); break;
        case 39: set_zoom(s, std::min(s.flags.zoom + 0.1f, 3.8f)); break;
        case 41: set_zoom(s, std::max(s.flags.zoom - 0.1f, 0.2f)); break;
        case 42: set_zoom(s, 1.0f); break;
        case 60:
            s.flags.view_action = 10;
            prepare_display(s);
            save_and_reload(s);
            set_zoom(s, 1.0f);
            break;
        case kCommandPress:
            s.flags.mouse_rotating = true;
            s.tk.message_enable(MessageType::MouseMove, true);
            break;
        case kCommandRelease:
            s.flags.mouse_rotating = false;
            s.tk.message_enable(MessageType::MouseMove, false);
            s.flags.view_action = 0;
            draw_scene(s);
            break;
        default: break;
    }
    return true;
}

}  // namespace

void display_loop(Session& s) {
    loop_start(s);
    while (s.flags.session_running > 0) {
        s.tk.WindowOutStatusBar(10, s.flags.mouse_rotating ? "Rotating" : "Display Idle");
        show_job_name(s);
        s.tk.WindowOutStatusBar(9, short_directory(files::current_dir()));
        Event e = read_event(s);
        if (e.key == 'R' || e.key == 'r') {
            draw_scene(s);
            continue;
        }
        s.flags.sphere_slices = s.flags.sphere_stacks = 32;
        if (e.state == 1) {
            project_atoms(s);
            draw_scene(s);
        } else if (e.state == 2) {
            draw_scene(s);
            save_and_reload(s);
        } else if (!dispatch(s, e)) {
            return;
        }
        if (s.flags.exit_requested) {
            close_path(s);
            return;
        }
    }
}

}  // namespace zentol
