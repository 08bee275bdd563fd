#include "engines/mode_loop.h"

#include "building/build_mode.h"
#include "display/view.h"
#include "engines/runner.h"
#include "session/display_loop.h"
#include "session/jobs.h"
#include "session/session.h"
#include "session/store_ops.h"
#include "toolkit/toolkit.h"

namespace zentol {

ModeNext engine_mode_loop(Session& s, const char* mode_name, int build_command,
                          const std::function<ModeNext(int)>& dispatch) {
    while (true) {
        s.tk.WindowOutStatusBar(status_mode_field, mode_name);
        Event e = read_event(s);
        if (e.key == 'B' || e.key == 'b') e.command = build_command;
        if (e.state == 1 || e.state == 2) {
            if (e.state == 1) project_atoms(s);
            draw_scene(s);
            continue;
        }
        if (e.key == 3 || e.key == 'R' || e.key == 'r') return ModeNext::Leave;
        if (e.command == kCommandClose) {
            s.flags.quit_requested = true;
            return ModeNext::Leave;
        }
        if (e.command >= 1 && e.command <= 199) {
            const ModeNext next = dispatch(e.command);
            if (next != ModeNext::Stay) return next;
            continue;
        }
        if (e.key && rotate_by_key(s, e.key)) continue;
        if (e.wheel) {
            zoom_by_wheel(s, e.wheel);
            continue;
        }
        drag_rotation(s, e);
    }
}

ModeNext visit_build(Session& s) {
    s.flags.view_action = 10;
    prepare_display(s);
    save_and_reload(s);
    build_mode(s);
    if (s.build.close_requested) s.flags.quit_requested = true;
    show_job_name(s);
    return s.flags.quit_requested ? ModeNext::Leave : ModeNext::Rebuild;
}

}  // namespace zentol
