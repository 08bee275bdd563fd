#include "building/bond_rotation.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <string>

#include "building/build_commands.h"
#include "building/connectivity.h"
#include "building/geometry.h"
#include "display/view.h"
#include "session/display_loop.h"
#include "session/session.h"
#include "session/store_ops.h"
#include "text/fixed_format.h"
#include "toolkit/files.h"
#include "toolkit/toolkit.h"

namespace zentol {

namespace {

constexpr float kDegreesPerRadian = 57.29578f;
constexpr int kKeyTurnForward = 261;    // turns forward; every other event turns back
constexpr int kCommandStopRotate = 43;
constexpr int kFirstChoice = 1051;      // dialog 124: Bond, Dihedral, Clear

constexpr const char* kFirstAtomFile = "ICONA.DAT";
constexpr const char* kBondFile = "ICONV.DAT";
constexpr const char* kDihedralFile = "IDHED.DAT";

std::string label_of(const Session& s, int atom) {
    return std::string(text::trim_right(label_text(s.store.atom_label[atom])));
}

void write_mark_file(const char* name, std::initializer_list<int> atoms) {
    text::FreeRecord record;
    for (int a : atoms) record << a;
    files::write_atomic(name, record.str() + "\n");
}

void clear_atom_marks(Store& st) {
    for (int i = 1; i <= st.natoms; ++i) st.atom_rec[i][kMark] = 0;
}

const char* prompt(int mark_mode) {
    if (mark_mode == kMarkBond) return "Pick 2 adjacent atoms";
    if (mark_mode == kMarkDihedral) return "Pick 4 adjacent atoms";
    return "Pick 4 atoms 3,4 move (cursors)";
}

// The k-th pick of the command, highlighted and named in field 9; 0 when
// the user left the command instead.
int pick_numbered(Session& s, Want want, int k) {
    const int atom = pick_for_command(s, {want, true, {}, 0});
    if (!atom) {
        s.tk.WindowOutStatusBar(9, " ");
        return 0;
    }
    s.view.pick_list[k] = atom;
    s.view.pick_count = k;
    s.tk.WindowOutStatusBar(9, label_of(s, atom) + " " + std::to_string(k));
    draw_scene(s);
    return atom;
}

// Picks 1 to 4 with the marks that go with them. False when the command
// ended before the fourth pick (always so for a stored bond).
bool pick_four(Session& s, int mark_mode, int atoms[4]) {
    Store& st = s.store;
    const bool marking = mark_mode > 0;
    if (!(atoms[0] = pick_numbered(s, Want::Any, 1))) return false;
    if (marking) {
        write_mark_file(kFirstAtomFile, {atoms[0]});
        st.atom_rec[atoms[0]][kMark] = 1.0f;
        s.tk.WindowOutStatusBar(10, "Atom St.");
    }
    if (!(atoms[1] = pick_numbered(s, marking ? Want::Any : Want::NonHydrogen, 2))) return false;
    if (marking) {
        write_mark_file(kBondFile, {atoms[0], atoms[1]});
        BondMarks& m = s.view.marks;
        m.first_low = std::min(atoms[0], atoms[1]);
        m.first_high = std::max(atoms[0], atoms[1]);
        m.kind = m.count = 1;
        s.tk.WindowOutStatusBar(10, "Bond St.");
    }
    if (mark_mode == kMarkBond) {
        clear_atom_marks(st);
        return false;
    }
    if (!(atoms[2] = pick_numbered(s, Want::NonHydrogen, 3))) return false;
    return (atoms[3] = pick_numbered(s, Want::Any, 4)) != 0;
}

std::string dihedral_status(const Session& s, const int atoms[4], double degrees) {
    std::string out;
    for (int k = 0; k < 4; ++k) out += (k ? "-" : "") + label_of(s, atoms[k]);
    return out + text::format_f(degrees, 9, 3);
}

bool turn_ends(Session& s, const Event& e) {
    if (e.command == kCommandClose) s.build.close_requested = true;
    return e.command == kCommandClose || e.key == kKeyEsc || e.command == kCommandStopRotate ||
           (e.command == kCommandPress && e.button == 3);
}

// Each key, click or command turns atom 3's side by one bond rotation step
// about the bond 2-3 and shows the new dihedral 1-2-3-4.
void turn_by_events(Session& s, const int atoms[4]) {
    Store& st = s.store;
    s.tk.WMenuSetState(40043, 2, 1);
    s.flags.view_action = 0;   // no view turn left pending for the draws below
    const Vec3 through = atom_position(st.atom_rec[atoms[2]]);
    const Vec3 axis = (through - atom_position(st.atom_rec[atoms[1]])).unit();
    double degrees = dihedral_of_atoms(st, atoms, 0.0);
    s.tk.WindowOutStatusBar(9, dihedral_status(s, atoms, degrees));
    while (true) {
        const Event e = read_event(s);
        if (turn_ends(s, e)) break;
        if (e.state == 1 || e.state == 2) {
            if (e.state == 1) project_atoms(s);
            draw_scene(s);
            continue;
        }
        const bool turns = e.key != 0 || e.command == kCommandPress || (e.command >= 1 && e.command <= 199);
        if (!turns) continue;
        const float sign = e.key == kKeyTurnForward ? 1.0f : -1.0f;
        turn_marked_atoms(st, through, axis, sign * s.opt.bond_rot_step);
        prepare_display(s);
        project_atoms(s);
        draw_scene(s);
        degrees = dihedral_of_atoms(st, atoms, degrees);
        s.tk.WindowOutStatusBar(9, dihedral_status(s, atoms, degrees));
    }
    s.tk.WMenuSetState(40043, 2, 0);
}

void act_on_four(Session& s, int mark_mode, const int atoms[4]) {
    // A turn of the view made while picking is kept: the turns below start
    // from the coordinates as they are seen. (The round trip also clears
    // the marker column, so it comes before the walk.)
    if (mark_mode == kRotateBond) write_back_view(s);
    const int bond = test_bond(s.store, atoms[1], atoms[2]);
    if (bond != kChainBond) {
        s.tk.WMessageBox(kButtonsOk, MessageIcon::Exclamation, 1,
                         bond == kRingBond ? "Atoms in Ring" : "Atoms not Adjacent", "Bond Rotate");
        return;
    }
    if (mark_mode == kMarkDihedral) {
        write_mark_file(kDihedralFile, {atoms[0], atoms[1], atoms[2], atoms[3]});
        BondMarks& m = s.view.marks;
        m.second_low = std::min(atoms[1], atoms[2]);
        m.second_high = std::max(atoms[1], atoms[2]);
        m.kind = m.count = 2;
        s.tk.WindowOutStatusBar(10, "Bond St.");
        return;
    }
    turn_by_events(s, atoms);
}

}  // namespace

void turn_marked_atoms(Store& st, const Vec3& through, const Vec3& axis, float degrees) {
    const float angle = degrees / kDegreesPerRadian;
    const float c = std::cos(angle), sn = std::sin(angle);
    for (int i = 1; i <= st.natoms; ++i) {
        if (!is_marked(st, i)) continue;
        // rodrigues() turns the other way round; the minus makes the turn
        // right-handed about the axis.
        const Vec3 w = rodrigues(atom_position(st.atom_rec[i]) - through, axis, c, -sn);
        set_position(st.atom_rec[i], through + w);
    }
}

void bond_rotate(Session& s, int mark_mode) {
    s.tk.WindowOutStatusBar(9, prompt(mark_mode));
    s.tk.WindowOutStatusBar(10, "Rot.Bond");
    if (mark_mode > 0) {
        // A new mark starts all three files afresh.
        for (const char* name : {kFirstAtomFile, kBondFile, kDihedralFile}) files::write_atomic(name, "");
    }
    int atoms[4] = {};
    if (pick_four(s, mark_mode, atoms)) act_on_four(s, mark_mode, atoms);
    s.view.pick_count = 0;
    s.view.circle_count = 0;
    draw_scene(s);
}

void mark_bond_command(Session& s) {
    write_back_view(s);
    clear_atom_marks(s.store);
    s.tk.WDialogLoad(124);
    s.tk.WDialogShow(1);
    const bool ok = s.tk.last_button() == 1;
    const int choice = s.tk.WDialogGetRadioButton(kFirstChoice);
    s.tk.WDialogUnload();
    if (!ok || choice < 1) return;
    if (choice == 3) {
        s.view.pick_count = 0;
        s.view.marks.count = 0;
        s.view.marks.kind = 0;
        draw_scene(s);
        return;
    }
    bond_rotate(s, 2 * choice);
}

}  // namespace zentol
