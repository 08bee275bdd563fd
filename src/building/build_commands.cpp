#include "building/build_commands.h"

#include <algorithm>
#include <string>
#include <vector>

#include "building/connectivity.h"
#include "building/placement.h"
#include "building/vec3.h"
#include "display/view.h"
#include "session/jobs.h"
#include "session/session.h"
#include "session/store_ops.h"
#include "structure_files/geo_log.h"
#include "structure_files/key_file.h"
#include "text/fixed_format.h"
#include "toolkit/files.h"
#include "toolkit/toolkit.h"

namespace zentol {

namespace {

constexpr float kHydrogenBond = 0.32f;

std::string label_of(const Session& s, int atom) {
    return std::string(text::trim_right(label_text(s.store.atom_label[atom])));
}

bool wanted(const Session& s, const PickRules& rules, int atom) {
    const bool h = is_hydrogen(s.store.atom_label[atom]);
    if (rules.want == Want::Hydrogen && !h) return false;
    if (rules.want == Want::NonHydrogen && h) return false;
    return !rules.accept || rules.accept(atom);
}

void refresh(Session& s) { save_and_reload(s); }

// A new hydrogen on parent, on the line from parent through `towards`, at
// `distance` from the parent.
int cap_with_hydrogen(Store& st, int parent, const Vec3& towards, float distance) {
    const Vec3 p = atom_position(st.atom_rec[parent]);
    const Vec3 at = p + (towards - p).unit() * distance;
    const int h = append_atom(st, make_label("H"), at.x, at.y, at.z,
                              element_lookup(st, nullptr, "H   ", kLookupRadius), hydrogen_type(st.conn_type(parent)));
    st.nbr(h, 1) = parent;
    st.conn_count(h) = 1;
    return h;
}

}  // namespace

int pick_for_command(Session& s, const PickRules& rules, Event* ended) {
    while (true) {
        Event e = read_event(s);
        const bool end = e.command == kCommandClose || (rules.escapable && e.key == 27) ||
                         (rules.escapable && e.command == kCommandPress && e.button == 3) ||
                         (rules.end_command && e.command == rules.end_command);
        if (end) {
            if (e.command == kCommandClose) s.build.close_requested = true;
            if (ended) *ended = e;
            return 0;
        }
        if (e.state == 1 || e.state == 2) {
            if (e.state == 1) project_atoms(s);
            draw_scene(s);
            continue;
        }
        if (e.key && rotate_by_key(s, e.key)) continue;
        if (e.command != kCommandPress || e.button != 1) continue;
        project_atoms(s);
        bool found = false;
        const int atom = nearest_atom(s, e.x, e.y, found);
        if (!found) {
            drag_rotation(s, e);   // a press on empty space turns the molecule
            rotate_loop(s);
            continue;
        }
        if (!wanted(s, rules, atom)) continue;
        show_pick_circle(s, atom);
        return atom;
    }
}

void write_back_view(Session& s) {
    s.flags.view_action = 10;
    prepare_display(s);
    save_and_reload(s);
}

void remove_hydrogen_command(Session& s) {
    s.tk.WindowOutStatusBar(9, "Pick H atom");
    const int h = pick_for_command(s, {Want::Hydrogen, true, {}, 0});
    clear_pick_circles(s);
    if (!h) return;
    remove_atom(s.store, h);
    for (int i = h; i <= s.store.natoms; ++i) s.store.atom_rec[i][kMark] = 0;
    refresh(s);
}

void delete_heavy_atom(Store& st, Toolkit* tk, int atom) {
    const float r = covalent_radius(st, tk, atom);
    const Vec3 gone = atom_position(st.atom_rec[atom]);
    std::vector<int> hydrogens, heavy;
    for (int k = 1; k <= kMaxNeighbours; ++k) {
        const int n = st.nbr(atom, k);
        if (n < 1) continue;
        (is_hydrogen(st.atom_label[n]) ? hydrogens : heavy).push_back(n);
    }
    for (int n : heavy) {
        const float d = (gone - atom_position(st.atom_rec[n])).length();
        const int h = cap_with_hydrogen(st, n, gone, d + kHydrogenBond - r);
        replace_neighbour(st, n, atom, h);
    }
    // The hydrogens go first, the highest number first, then the atom.
    std::sort(hydrogens.rbegin(), hydrogens.rend());
    for (int h : hydrogens) {
        remove_atom(st, h);
        if (h < atom) --atom;
    }
    remove_atom(st, atom);
}

void delete_atoms_command(Session& s) {
    s.tk.WindowOutStatusBar(10, "Del.");
    s.tk.WMenuSetState(40063, 2, 1);
    PickRules rules{Want::NonHydrogen, true, {}, 63};
    rules.accept = [&s](int atom) {
        const int t = s.store.conn_type(atom);
        return t != 113 && t != 240;
    };
    while (true) {
        s.tk.WindowOutStatusBar(9, "Pick Non-H atom");
        const int atom = pick_for_command(s, rules);
        clear_pick_circles(s);
        if (!atom) break;
        delete_heavy_atom(s.store, &s.tk, atom);
        if (s.store.natoms == 0) {
            files::write_atomic(job_file(s, ".key"), fresh_key_text(mm3_parameter_path(s)));
            refresh(s);
            break;
        }
        refresh(s);
    }
    s.tk.WMenuSetState(40063, 2, 0);
    s.tk.WMenuSetState(40007, 2, 0);
    s.tk.WindowOutStatusBar(10, "Build");
}

void remove_centroids(Session& s) {
    Store& st = s.store;
    while (true) {
        int c = 0;
        for (int i = 1; i <= st.natoms && !c; ++i)
            if (st.conn_type(i) == 240) c = i;
        if (!c) break;
        for (int i = 1; i <= st.natoms; ++i) {
            if (i == c) continue;
            for (int k = 1; k <= kMaxNeighbours; ++k) {
                if (st.nbr(i, k) != c) continue;
                if (k == kMaxNeighbours) st.nbr(i, k) = 0;
                else {
                    for (int m = k; m < kMaxNeighbours; ++m) st.nbr(i, m) = st.nbr(i, m + 1);
                    st.nbr(i, kMaxNeighbours) = 0;
                }
                st.conn_count(i) = std::max(0, st.conn_count(i) - 1);
                break;
            }
        }
        remove_atom(st, c);
    }
    for (int i = 1; i <= st.natoms; ++i)
        if (st.atom_label[i][0] == 'C' && st.atom_label[i][1] == 'h') st.atom_label[i] = make_label("C");
    refresh(s);
}

void purge_command(Session& s) {
    if (!text::equals_nocase(s.job.name, "ptest")) {
        if (s.flags.user_level < 2) return;
        if (!ask_yes_no(s, "Do you really want to purge all files\rfor the " + s.job.name + " job")) return;
    }
    Store& st = s.store;
    for (int c = 0; c <= kConnMark2; ++c)
        for (int i = 1; i <= st.natoms; ++i) st.conn[c][i] = 0;
    files::write_atomic(job_file(s, ".key"), fresh_key_text(mm3_parameter_path(s)));
    for (const char* ending : {".XYZ", ".MAT", ".engrad", ".gbw", ".ino", ".opt", ".xyz", "_trj.xyz",
                               ".molden.input", ".txt", ".ins", "_orca.pdb"})
        files::remove_file(s.job.name + ending);
    st.natoms = 0;
    st.nbonds = 0;
    s.flags.total_charge = 0;
    s.flags.spin_multiplicity = 1;
    s.tk.WindowOutStatusBar(4, text::format_i(0, 4));
    s.tk.WindowOutStatusBar(6, text::format_i(0, 4));
    rebuild_bond_list(st);
    prepare_display(s);
    draw_scene(s);
    log_line(s, "Purge Used");
}

void make_connection_command(Session& s) {
    BuildState& b = s.build;
    if (b.extra_conn_count >= 9) return;
    s.tk.WindowOutStatusBar(9, "Pick 2 Atoms");
    const PickRules rules{Want::Any, false, {}, 0};
    const int a = pick_for_command(s, rules);
    if (!a) return clear_pick_circles(s);
    s.tk.WindowOutStatusBar(9, label_of(s, a) + " 1");
    const int c = pick_for_command(s, rules);
    clear_pick_circles(s);
    if (!c) return;
    s.tk.WindowOutStatusBar(9, label_of(s, c) + " 2");
    b.extra_conn[b.extra_conn_count + 1][0] = a;
    b.extra_conn[b.extra_conn_count + 1][1] = c;
    if (has_neighbour(s.store, a, c)) return;
    add_neighbour(s.store, a, c);
    add_neighbour(s.store, c, a);
    rebuild_bond_list(s.store);
    ++b.extra_conn_count;
    refresh(s);
}

void remove_connections(Session& s) {
    Store& st = s.store;
    BuildState& b = s.build;
    for (int k = 1; k <= b.extra_conn_count; ++k) {
        const int a = b.extra_conn[k][0], c = b.extra_conn[k][1];
        for (auto [from, to] : {std::pair{a, c}, std::pair{c, a}}) {
            if (from < 1 || from > st.natoms) continue;
            for (int slot = 1; slot <= kMaxNeighbours; ++slot)
                if (st.nbr(from, slot) == to) {
                    st.nbr(from, slot) = 0;
                    --st.conn_count(from);
                }
        }
    }
    b.extra_conn_count = 0;
    refresh(s);
}

void make_bond_command(Session& s) {
    s.tk.WindowOutStatusBar(9, "Pick 2 Hs");
    const int h1 = pick_for_command(s, {Want::Hydrogen, true, {}, 0});
    if (!h1) return clear_pick_circles(s);
    s.tk.WindowOutStatusBar(9, "Pick 2nd H");
    PickRules second{Want::Hydrogen, true, {}, 0};
    second.accept = [&s, h1](int h) { return h != h1 && s.store.nbr(h, 1) != s.store.nbr(h1, 1); };
    const int h2 = pick_for_command(s, second);
    clear_pick_circles(s);
    if (!h2) return;
    join_by_hydrogens(s.store, &s.tk, h1, h2);
    rebuild_bond_list(s.store);
    s.tk.WindowOutStatusBar(9, " ");
    refresh(s);
    write_back_view(s);
}

bool cut_bond(Store& st, Toolkit* tk, int a, int b) {
    if (test_bond(st, a, b) == kNotAdjacent) return false;
    const Vec3 pa = atom_position(st.atom_rec[a]), pb = atom_position(st.atom_rec[b]);
    const int h1 = cap_with_hydrogen(st, a, pb, covalent_radius(st, tk, a) + kHydrogenBond);
    const int h2 = cap_with_hydrogen(st, b, pa, covalent_radius(st, tk, b) + kHydrogenBond);
    replace_neighbour(st, a, b, h1);
    replace_neighbour(st, b, a, h2);
    rebuild_bond_list(st);
    return true;
}

void delete_bond_command(Session& s) {
    s.tk.WindowOutStatusBar(9, "Pick 2 Non-H Atoms");
    const PickRules rules{Want::NonHydrogen, true, {}, 0};
    const int a = pick_for_command(s, rules);
    if (!a) return clear_pick_circles(s);
    s.tk.WindowOutStatusBar(9, label_of(s, a) + " 1");
    const int b = pick_for_command(s, rules);
    clear_pick_circles(s);
    if (!b) return;
    s.tk.WindowOutStatusBar(9, label_of(s, b) + " 2");
    if (!cut_bond(s.store, &s.tk, a, b)) {
        s.tk.WMessageBox(kButtonsOk, MessageIcon::Exclamation, 1, "Atoms not Adjacent", "Del.Bond");
        return;
    }
    refresh(s);
}

void delete_molecule(Store& st, int atom) {
    mark_fragment(st, atom);
    st.conn[kConnMark][atom] = 1;   // a lone atom is its own molecule
    bool removed = true;
    while (removed) {
        removed = false;
        for (int i = 1; i <= st.natoms; ++i)
            if (is_marked(st, i)) {
                remove_atom(st, i);
                removed = true;
                break;
            }
    }
    rebuild_bond_list(st);
}

void delete_molecule_command(Session& s) {
    s.tk.WindowOutStatusBar(9, "Pick Atom in MOL");
    const int atom = pick_for_command(s, {Want::Any, true, {}, 0});
    clear_pick_circles(s);
    if (!atom) return;
    delete_molecule(s.store, atom);
    prepare_display(s);
    refresh(s);
}

void deuterium_to_hydrogen(Session& s) {
    for (int i = 1; i <= s.store.natoms; ++i)
        if (s.store.atom_label[i][0] == 'D') s.store.atom_label[i][0] = 'H';
    refresh(s);
}

void total_charge_command(Session& s) {
    s.tk.WDialogLoad(123);
    s.tk.WDialogPutInteger(1101, s.flags.total_charge);
    s.tk.WDialogShow(1);
    if (s.tk.last_button() == 1) s.flags.total_charge = static_cast<int>(s.tk.WDialogGetInteger(1101));
    s.tk.WDialogUnload();
}

}  // namespace zentol
