#include "session/display_loop.h"

#include <algorithm>

#include "display/colours.h"
#include "engines/runner.h"
#include "display/hard_copy.h"
#include "display/renderer.h"
#include "display/view.h"
#include "session/config.h"
#include "session/job_commands.h"
#include "session/openers.h"
#include "session/setup_dialog.h"
#include "session/structure_exchange.h"
#include "session/jobs.h"
#include "session/session.h"
#include "session/store_ops.h"
#include "structure_files/geo_log.h"
#include "structure_files/ins_file.h"
#include "text/fixed_format.h"
#include "analysis/lewis_command.h"
#include "analysis/point_group_command.h"
#include "analysis/unique_names.h"
#include "building/build_mode.h"
#include "engines/firefly/firefly_mode.h"
#include "engines/iconc/iconc_mode.h"
#include "engines/mopac/mopac_mode.h"
#include "engines/orca/orca_mode.h"
#include "engines/tinker/tinker_mode.h"
#include "toolkit/files.h"
#include "toolkit/toolkit.h"
#include "wavefunction/multiwfn.h"

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
        case MessageType::MouseDown: e.command = kCommandPress; e.button = m.value; break;
        case MessageType::MouseUp: e.command = kCommandRelease; e.button = m.value; break;
        case MessageType::MouseMove: e.moved = true; break;
        case MessageType::Resize: e.state = 1; break;
        case MessageType::Expose: e.state = 2; break;
        case MessageType::Close: e.command = kCommandClose; break;
        case MessageType::Wheel: e.wheel = m.value; break;
        case MessageType::FileDropped: e.dropped = m.path; break;
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
    collect_elements(s.store);
    if (s.opt.colour_by_molecule) assign_molecule_colours(s.store);
    // The round trip ends with a draw of its own: one frame, not two.
    // The counts of atoms and bonds are shown by the write of the job's files.
    if (!s.flags.mouse_rotating) save_and_reload(s);
    else draw_scene(s);
    s.flags.view_action = 0;
    s.flags.view_rot_sign = 0;
}

void redraw_screen(Session& s) {
    s.flags.view_action = 10;
    prepare_display(s);
    save_and_reload(s);
    set_zoom(s, 1.0f);
}

// Commands 40 and 65: save and hand the job over to a sibling at exit.
bool hand_over_to(Session& s, const std::string& key, const std::string& what, bool& flag) {
    if (!sibling_installed(s, key)) {
        tell_missing(s, what, key);
        return true;
    }
    write_job_files(s);
    flag = true;
    s.flags.session_running = 0;
    bool delete_movie = s.flags.movie_made && ask_yes_no(s, "Delete movie files");
    purge_job_files(s, s.opt.keep_dyn_files, delete_movie);
    return false;
}

void edit_log(Session& s) {
    std::string path = files::current_dir() + "/" + job_file(s, ".geo");
    close_job_log(s);
    edit_file(s, files::resolve(path));
    open_job_log(s, true, "");
}

void write_zmatrix_input(Session& s) {
    std::string zmatgen = configured_program(s, "zmatgen");
    if (zmatgen.empty()) return tell_missing(s, "ZMATGEN", "zmatgen");
    files::remove("zmatgen.fhz");
    bool with_h = ask_yes_no(s, " Include H atoms?");
    std::vector<std::string> lines{s.job.name};
    const Store& st = s.store;
    for (int i = 1; i <= st.natoms; ++i) {
        if (!with_h && (st.atom_label[i][0] == 'H' || st.atom_label[i][0] == 'D')) continue;
        const auto& r = st.atom_rec[i];
        lines.push_back(label_text(st.atom_label[i]) + text::format_f(r[kX], 12, 6) + text::format_f(r[kY], 12, 6) +
                        text::format_f(r[kZ], 12, 6));
    }
    files::write_lines("zmatgen.fhz", lines);
    run_blocking(s, shell_line(zmatgen, {}));
    files::remove("zmatgen.fhz");
}

int letter_command(int key) {
    switch (key) {
        case 'B': case 'b': return 3;
        case 'T': case 't': return 13;
        case 'M': case 'm': return 14;
        case 'F': case 'f': return 15;
        case 'I': case 'i': return 52;
        default: return 0;
    }
}

// Commands of this loop. Returns false when the loop is to end.
bool dispatch(Session& s, const Event& e) {
    int c = e.command;
    switch (c) {
        case kCommandClose:
        case kCommandExit: close_path(s); return false;
        case 2: open_document(s, help_page(s, "tutorial.html")); break;
        case 3:
            build_mode(s);
            if (s.build.close_requested) {
                close_path(s);
                return false;
            }
            loop_start(s);
            break;
        case 4: setup_command(s); break;
        case 5: open_existing_job(s); break;
        case 6: open_document(s, help_page(s, "zentol.html")); break;
        case 7: save_job_as(s); break;
        case 9: s.flags.rot_step = 1; break;
        case 10: s.flags.rot_step = 2; break;
        case 11: s.flags.rot_step = 5; break;
        case 12: ptest_in_scratch(s); break;
        case 13:
            tinker_mode(s);
            if (s.flags.quit_requested) {
                close_path(s);
                return false;
            }
            loop_start(s);
            break;
        case 14:
            mopac_mode(s);
            if (s.flags.quit_requested || s.flags.plot_exit) {
                close_path(s);
                return false;
            }
            loop_start(s);
            break;
        case 15:
            firefly_mode(s);
            if (s.flags.quit_requested) {
                close_path(s);
                return false;
            }
            loop_start(s);
            break;
        case 26: show_current_job(s); break;
        case 29: align_to_symmetry(s); break;
        case 31: point_group_command(s); break;
        case 32: check_for_updates(s); break;
        case 39: set_zoom(s, s.flags.zoom + 0.1f); break;
        case 40: return hand_over_to(s, "zentol9", "Zentol-9", s.flags.switch_to_sibling);
        case 41: set_zoom(s, s.flags.zoom - 0.1f); break;
        case 42: set_zoom(s, 1.0f); break;
        case 44: make_unique_names(s); break;
        case 45: edit_log(s); break;
        case 52:
            iconc_mode(s);
            if (s.flags.quit_requested) {
                close_path(s);
                return false;
            }
            loop_start(s);
            break;
        case 60: redraw_screen(s); break;
        case 64: hard_copy(s); break;
        case 65: return hand_over_to(s, "orbview", "Orbview", s.flags.run_orbview_at_exit);
        case 78: open_document(s, help_page(s, "units.html")); break;
        case 80: write_zmatrix_input(s); break;
        case 81: lewis_command(s); break;
        case 83: open_document(s, help_page(s, "periodic-table.html")); break;
        case 84: multiwfn_command(s); break;
        case 85:
            if (!orca_mode(s)) break;
            if (s.flags.quit_requested) {
                close_path(s);
                return false;
            }
            loop_start(s);
            break;
        case 86: open_command_window(s, ""); break;
        case kCommandExport: export_structure(s); break;
        default:
            if (c >= 67 && c <= 76) open_recent_job(s, c - 66);
            break;
    }
    return true;
}

// The view uncovered after being hidden or minimised: the turn so far goes
// into the molecule before the round trip, so the picture comes back as it
// was left.
void window_uncovered(Session& s) { reload_keeping_turn(s); }

// A command's answer in field 9 (a point group, a formula, an energy, a
// picked atom's label) stands until the next command; redraws, turns and
// uncovering the window leave it alone.
bool answer_standing(const Session& s, const std::string& before) {
    std::string now = s.tk.status_field(9);
    return now != before && !text::trim(now).empty();
}

}  // namespace

void display_loop(Session& s) {
    loop_start(s);
    bool standing = false;
    while (s.flags.session_running > 0) {
        if (!s.flags.mouse_rotating) s.tk.WindowOutStatusBar(10, "Display Idle");
        show_job_name(s);
        const std::string folder = short_directory(files::current_dir());
        if (!standing) s.tk.WindowOutStatusBar(9, folder);
        if (s.flags.start_in_mopac && !s.flags.plot_exit) {
            // Back from an orbital plot in orbview: straight into Mopac mode.
            s.flags.view_action = 10;
            prepare_display(s);
            if (!dispatch(s, Event{.command = 14})) return;
        }
        Event e = read_event(s);
        if (!e.dropped.empty()) {
            // A file dropped on the window opens as File > Open would.
            s.tk.WindowOutStatusBar(9, folder);
            open_dropped_file(s, e.dropped);
            standing = answer_standing(s, folder);
            continue;
        }
        if (e.key == 'R' || e.key == 'r') {
            draw_scene(s);
            continue;
        }
        s.flags.sphere_slices = s.flags.sphere_stacks = 32;
        bool click = e.command == kCommandRelease && s.flags.mouse_rotating && !s.view.turned;
        if (drag_rotation(s, e)) {
            // A press and release that turned nothing is a click: it picks.
            if (click) standing = pick_atom(s, e.x, e.y) > 0;
            continue;
        }
        if (e.key && rotate_by_key(s, e.key)) continue;
        if (e.wheel) {
            zoom_by_wheel(s, e.wheel);
            continue;
        }
        s.flags.view_action = 0;
        Event command = e;
        if (e.key && !e.command) command.command = letter_command(e.key);
        if (e.state == 1) {
            project_atoms(s);
            draw_scene(s);
        } else if (e.state == 2) {
            window_uncovered(s);
        } else if (command.command != 0) {
            // A new command: the last answer goes, unless it gives one of its
            // own. Closing the window leaves the last word as it is.
            if (command.command != kCommandClose && command.command != kCommandExit)
                s.tk.WindowOutStatusBar(9, folder);
            if (!dispatch(s, command)) return;
            standing = answer_standing(s, folder);
        }
        if (s.flags.exit_requested) {
            close_path(s);
            return;
        }
    }
}

}  // namespace zentol
