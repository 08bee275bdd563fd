#include "engines/iconc/iconc_search.h"

#include <string>

#include "building/connectivity.h"
#include "building/vec3.h"
#include "engines/runner.h"
#include "session/session.h"
#include "session/store_ops.h"
#include "structure_files/geo_log.h"
#include "text/fixed_format.h"
#include "toolkit/files.h"
#include "toolkit/toolkit.h"

namespace zentol {

namespace {

constexpr const char* kBondFile = "ICONV.DAT";
// A guard for an engine whose energy keeps falling: one coordinate moves
// at most this many steps in one direction (two Angstrom at the default
// step) before the search goes on to the next.
constexpr int kMaxStepsOneWay = 50;

Vec3 position(const IconcAtom& a) { return {a.x, a.y, a.z}; }

void move(IconcAtom& a, const Vec3& by) {
    a.x += by.x;
    a.y += by.y;
    a.z += by.z;
}

float& coordinate(IconcAtom& a, int axis) { return axis == 1 ? a.x : axis == 2 ? a.y : a.z; }

double distance(const IconcAtom& a, const IconcAtom& b) { return (position(b) - position(a)).length(); }

IconcAtom& atom(IconcState& state, int i) { return state.atoms[static_cast<std::size_t>(i - 1)]; }

// The molecule takes the working coordinates, and the files and the
// screen follow.
void store_working_copy(Session& s, const IconcState& state) {
    Store& st = s.store;
    for (int i = 1; i <= st.natoms && i <= static_cast<int>(state.atoms.size()); ++i) {
        const IconcAtom& a = state.atoms[static_cast<std::size_t>(i - 1)];
        st.atom_rec[i][kX] = a.x;
        st.atom_rec[i][kY] = a.y;
        st.atom_rec[i][kZ] = a.z;
    }
    s.flags.view_action = 0;
    save_and_reload(s);
}

void show_scan(Session& s, const std::vector<ScanPoint>& points, const Label& a, const Label& b) {
    const Chart chart = scan_chart(points, a, b);
    s.tk.show_chart(chart);
    while (s.tk.WMessageBox(kButtonsYesNo, MessageIcon::Question, 1, "Note the Min. and Max.",
                            "Plot on System Printer") == 1)
        s.tk.print_chart(chart);
}

// One coordinate searched in one direction: steps while each gains more
// than Ediff, the step that gains nothing taken back. Counts the steps that
// were kept; `stopped` when Esc came between two runs.
int search_direction(Session& s, IconcState& state, int i, int axis, float step, double& best, bool& stopped) {
    float& x = coordinate(atom(state, i), axis);
    int kept = 0;
    for (int n = 0; n < kMaxStepsOneWay && !stopped; ++n) {
        const float before = x;
        x += step;
        const double e = run_iconc(s, state);
        log_line(s, optimise_log_line(i, axis, e));
        const bool gained = best - e > state.options.ediff;
        if (gained) {
            best = e;
            ++kept;
        } else {
            x = before;
        }
        stopped = stop_requested(s);
        if (!gained) break;
    }
    return kept;
}

}  // namespace

bool stop_requested(Session& s) {
    bool stop = false;
    while (auto m = s.tk.poll_message()) {
        if (m->type == MessageType::Close) {
            s.flags.quit_requested = true;
            stop = true;
        } else if (m->type == MessageType::Key && m->value == kKeyEsc) {
            stop = true;
        } else if (m->type == MessageType::Resize || m->type == MessageType::Expose) {
            if (m->type == MessageType::Resize) project_atoms(s);
            draw_scene(s);
        }
    }
    return stop;
}

std::optional<std::array<int, 2>> stored_bond(const Store& st) {
    const auto lines = files::read_text_lines(kBondFile);
    if (!lines) return std::nullopt;
    std::string all;
    for (std::string_view line : *lines) all += std::string(line) + " ";
    const auto values = text::read_ints(all, 2);
    if (!values || values->size() < 2) return std::nullopt;
    const long long a = (*values)[0], b = (*values)[1];
    if (a < 1 || b < 1 || a > st.natoms || b > st.natoms || a == b) return std::nullopt;
    return std::array<int, 2>{static_cast<int>(a), static_cast<int>(b)};
}

std::vector<int> scan_moving_atoms(Store& st, int a, int b) {
    std::vector<int> moving;
    if (test_bond(st, a, b) == kChainBond)
        for (int i = 1; i <= st.natoms; ++i)
            if (i != a && is_marked(st, i)) moving.push_back(i);
    if (moving.empty()) moving.push_back(b);
    return moving;
}

void iconc_bond_scan(Session& s, IconcState& state) {
    const auto bond = stored_bond(s.store);
    if (!bond) {
        s.tk.WMessageBox(kButtonsOk, MessageIcon::Exclamation, 1, "No Bond Stored", "Iconc");
        return;
    }
    const int a = (*bond)[0], b = (*bond)[1];
    const std::vector<int> moving = scan_moving_atoms(s.store, a, b);
    const std::vector<IconcAtom> start = state.atoms;
    const Label label_a = atom(state, a).label, label_b = atom(state, b).label;
    Vec3 shift = position(atom(state, b)) - position(atom(state, a));
    const float length = shift.length();
    shift = length > 0 ? shift * (state.options.step / length) : Vec3{};

    for (const std::string& line : scan_log_head()) log_line(s, line);
    std::vector<ScanPoint> points;
    for (int k = 1; k <= state.options.steps; ++k) {
        for (int i : moving) move(atom(state, i), shift);
        const double e = run_iconc(s, state);
        const double d = distance(atom(state, a), atom(state, b));
        points.push_back({d, e});
        log_line(s, scan_log_line(label_a, label_b, a, b, d, e));
        s.tk.WindowOutStatusBar(status_message_field, scan_step_status(k, e, d));
        if (k < state.options.steps && stop_requested(s)) break;
    }
    state.atoms = start;
    if (s.flags.quit_requested) return;
    show_scan(s, points, label_a, label_b);

    const int best = scan_minimum(points);
    if (!state.options.apply_scan || best == 0) return;
    for (int i : moving) move(atom(state, i), shift * static_cast<float>(best));
    store_working_copy(s, state);
    s.tk.WindowOutStatusBar(status_message_field,
                            scan_applied_status(points[static_cast<std::size_t>(best - 1)].distance));
}

void iconc_optimise(Session& s, IconcState& state) {
    const std::vector<IconcAtom> start = state.atoms;
    const float step = state.options.step;
    log_line(s, " ICONC Optimization");
    double best = run_iconc(s, state);
    log_line(s, optimise_log_line(0, 0, best));
    bool stopped = stop_requested(s);
    const Store& st = s.store;
    for (int i = 1; i <= st.natoms && i <= static_cast<int>(state.atoms.size()) && !stopped; ++i) {
        // Held atoms and the dummy centres the engine never sees stay.
        if (st.atom_rec[i][kMark] >= 0.5f || is_dummy_centre(atom(state, i).label)) continue;
        for (int axis = 1; axis <= 3 && !stopped; ++axis)
            if (search_direction(s, state, i, axis, step, best, stopped) == 0 && !stopped)
                search_direction(s, state, i, axis, -step, best, stopped);
    }
    log_line(s, optimise_final_line(best));
    s.tk.WindowOutStatusBar(status_message_field, "Optimization Finished");
    if (state.options.update && !s.flags.quit_requested) store_working_copy(s, state);
    else state.atoms = start;
}

}  // namespace zentol
