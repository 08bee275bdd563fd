#include "building/build_mode.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "building/bond_rotation.h"
#include "building/build_commands.h"
#include "building/connectivity.h"
#include "building/geometry.h"
#include "building/library.h"
#include "building/placement.h"
#include "display/view.h"
#include "session/display_loop.h"
#include "session/jobs.h"
#include "session/openers.h"
#include "session/session.h"
#include "session/store_ops.h"
#include "text/fixed_format.h"
#include "toolkit/files.h"
#include "toolkit/toolkit.h"

namespace zentol {

namespace {

constexpr int kBuildDialog = 102;
constexpr int kEndBuild = 56;
constexpr int kFirstChoiceField = 1051;
// Radio fields of the 23 choices, in the dialog's order.
constexpr int kChoiceFields[23] = {1051, 1052, 1053, 1054, 1055, 1048, 1049, 1050, 1056, 1057, 1058, 1059,
                                   1077, 1060, 1061, 1062, 1063, 1064, 1065, 1066, 1067, 1068, 1069};

}  // namespace

BuildChoice ask_build_choice(Session& s) {
    Toolkit& tk = s.tk;
    BuildChoice c;
    tk.WDialogLoad(kBuildDialog);
    tk.WDialogPutString(1021, std::string(text::trim_right(label_text(normalise_symbol(label_text(s.build.current_element))))));
    tk.WDialogPutInteger(1101, s.flags.total_charge);
    const int preset = std::clamp(static_cast<int>(std::lround(s.build.last_geometry)), 1, 23);
    tk.WDialogPutRadioButton(kChoiceFields[preset - 1]);
    tk.WDialogPutCheckBox(1031, 0);
    tk.WDialogPutCheckBox(1016, 0);
    tk.WDialogShow(1);
    c.ok = tk.last_button() == 1;
    if (c.ok) {
        std::string element(text::trim(tk.WDialogGetString(1021)));
        if (element.empty()) element = label_text(s.build.current_element);
        c.element = normalise_symbol(element);
        c.charge = static_cast<int>(tk.WDialogGetInteger(1101));
        c.load_library = tk.WDialogGetCheckBox(1031) != 0;
        c.back_to_display = tk.WDialogGetCheckBox(1016) != 0;
        c.choice = std::max(1, tk.WDialogGetRadioButton(kFirstChoiceField));
    }
    tk.WDialogUnload();
    return c;
}

namespace {

void add_substituent(Session& s, const BuildSite& site, int choice) {
    const int code = choice - 14;
    const int result = append_library_file(s, code);
    if (result == kAppendFailed) {
        s.tk.WMessageBox(kButtonsOk, MessageIcon::Exclamation, 1,
                         "Library file missing or unreadable:\r" + library_path(s.job.library_dir, code, ""),
                         "Build");
        return;
    }
    if (result == kAppendJoined && site.hydrogen >= 1) {
        const int h2 = s.store.natoms;
        if (s.store.nbr(h2, 1) >= 1) join_by_hydrogens(s.store, &s.tk, site.hydrogen, h2);
        rebuild_bond_list(s.store);
    }
    save_and_reload(s);
    if (result == kAppendJoined) write_back_view(s);
}

}  // namespace

bool apply_build_choice(Session& s, BuildSite& site, const BuildChoice& c) {
    s.build.current_element = c.element;
    site.new_type = atom_type_of(s.store, label_text(c.element));
    if (c.back_to_display) return true;
    if (c.load_library) {
        if (add_molecule_from_file(s) != kAppendFailed) s.build.add_mol_used = true;
        save_and_reload(s);
        return false;
    }
    if (c.choice == 14) {
        add_isolated_atom(s.store, &s.tk, c.element);
        save_and_reload(s);
        return false;
    }
    s.build.last_geometry = static_cast<float>(c.choice);
    s.flags.total_charge = c.charge;
    if (c.choice >= 15) {
        add_substituent(s, site, c.choice);
        return false;
    }
    if (c.choice == 13) s.build.last_geometry = 6.0f;
    if (place_atom(s.store, &s.tk, site, {c.element, c.choice})) {
        rebuild_bond_list(s.store);
        save_and_reload(s);
    }
    return false;
}

namespace {

void idle_status(Session& s) {
    s.tk.WindowOutStatusBar(4, text::format_i(s.store.natoms, 4));
    s.tk.WindowOutStatusBar(6, text::format_i(s.store.nbonds, 4));
    show_job_name(s);
    s.tk.WindowOutStatusBar(10, "Build Idle");
    s.tk.WindowOutStatusBar(9, s.store.natoms == 0 ? "Click Screen" : " ");
    s.tk.WMenuSetState(40043, 2, 0);
}

// The dialog on a site (or, with none, for the molecule's first atom);
// true when Build is to end.
bool build_dialog_on(Session& s, BuildSite site) {
    const BuildChoice c = ask_build_choice(s);
    if (!c.ok) return false;
    return apply_build_choice(s, site, c);
}

// Returns true when Build is to end.
bool dispatch(Session& s, int command) {
    static const int kWriteBackFirst[] = {5, 7, 8, 24, 25, 40, 41, 42, 44, 77};
    if (std::find(std::begin(kWriteBackFirst), std::end(kWriteBackFirst), command) != std::end(kWriteBackFirst))
        write_back_view(s);
    switch (command) {
        case 5: remove_hydrogen_command(s); break;
        case 6: open_document(s, help_page(s, "zentol.html")); break;
        case 7: delete_atoms_command(s); break;
        case 8: remove_centroids(s); break;
        case 15: purge_command(s); break;
        case 22:
            if (add_molecule_from_file(s) != kAppendFailed) s.build.add_mol_used = true;
            save_and_reload(s);
            break;
        case 24: make_connection_command(s); break;
        case 25: remove_connections(s); break;
        case 26: mark_bond_command(s); break;
        case 41: bond_rotate(s, kRotateBond); break;
        case 49:
            if (geometry_command(s).command == kEndBuild) return true;
            break;
        case 40: make_bond_command(s); break;
        case 42: delete_bond_command(s); break;
        case 44: delete_molecule_command(s); break;
        case kEndBuild: return true;
        case 77: deuterium_to_hydrogen(s); break;
        case 82: total_charge_command(s); break;
        default: break;
    }
    return s.build.close_requested;
}

// A press of the left button: an atom reports itself, a hydrogen opens the
// dialog on its site, empty space turns the molecule. True when Build ends.
bool click(Session& s, const Event& e) {
    project_atoms(s);
    bool found = false;
    const int atom = nearest_atom(s, e.x, e.y, found);
    if (!found) {
        drag_rotation(s, e);
        rotate_loop(s);
        return false;
    }
    show_pick_circle(s, atom);
    s.tk.WindowOutStatusBar(9, std::string(text::trim_right(label_text(s.store.atom_label[atom]))) + " Selected");
    bool end = false;
    if (is_hydrogen(s.store.atom_label[atom]) && s.store.nbr(atom, 1) >= 1) {
        BuildSite site;
        site.parent = s.store.nbr(atom, 1);
        site.parent_type = s.store.conn_type(site.parent);
        site.hydrogen = atom;
        end = build_dialog_on(s, site);
    }
    clear_pick_circles(s);
    return end;
}

void enter(Session& s) {
    s.build.current_element = make_label("C");
    s.build.molecule_empty = s.store.natoms == 0;
    s.build.add_mol_used = false;
    s.build.close_requested = false;
    s.tk.menu_load(30003);
    s.tk.WMenuToolbar(30103);
}

void leave(Session& s) {
    s.tk.menu_load(30001);
    s.tk.WMenuToolbar(30101);
    s.tk.WMenuSetState(40017, 2, 0);
    s.tk.WindowOutStatusBar(9, " ");
    clear_pick_circles(s);
}

bool empty_molecule_asks(const Session& s) { return s.store.natoms == 0 && !s.build.add_mol_used; }

}  // namespace

void build_mode(Session& s) {
    enter(s);
    bool ask_now = empty_molecule_asks(s);
    while (true) {
        if (ask_now && empty_molecule_asks(s)) {
            BuildSite start;
            start.start_flag = kStartAtom;
            if (build_dialog_on(s, start)) break;
        }
        idle_status(s);
        draw_scene(s);
        Event e = read_event(s);
        if (e.key == 'R' || e.key == 'r') break;
        if (e.command == kCommandClose) {
            s.build.close_requested = true;
            break;
        }
        ask_now = true;   // after a cancelled start the next turn asks again
        if (e.state == 1 || e.state == 2) {
            if (e.state == 1) project_atoms(s);
            draw_scene(s);
            ask_now = false;
            continue;
        }
        if (e.key && rotate_by_key(s, e.key)) continue;
        if (e.command >= 1 && e.command <= 199) {
            if (dispatch(s, e.command)) break;
            continue;
        }
        if (e.command == kCommandPress && e.button == 3) break;
        if (e.command == kCommandPress && e.button == 1 && click(s, e)) break;
        if (s.build.close_requested) break;
    }
    leave(s);
}

}  // namespace zentol
