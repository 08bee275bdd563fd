#include "engines/tinker/rotation_profile.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "building/bond_rotation.h"
#include "building/connectivity.h"
#include "building/geometry.h"
#include "engines/runner.h"
#include "engines/tinker/tinker_decks.h"
#include "engines/tinker/tinker_job.h"
#include "engines/tinker/tinker_log.h"
#include "engines/tinker/tinker_outcome.h"
#include "session/session.h"
#include "session/store_ops.h"
#include "structure_files/geo_log.h"
#include "structure_files/ins_file.h"
#include "text/fixed_format.h"
#include "toolkit/files.h"
#include "toolkit/toolkit.h"

namespace zentol {

namespace {

constexpr const char* kDihedralFile = "IDHED.DAT";

// The four atoms of the stored dihedral, when the file holds four different
// atoms of the molecule.
std::optional<std::array<int, 4>> stored_dihedral(const Store& st) {
    auto lines = files::read_lines(kDihedralFile);
    if (!lines) return std::nullopt;
    std::string all;
    for (const auto& l : *lines) all += l + " ";
    auto values = text::read_ints(all, 4);
    if (!values || values->size() < 4) return std::nullopt;
    std::array<int, 4> atoms{};
    for (int k = 0; k < 4; ++k) {
        const long long a = (*values)[static_cast<std::size_t>(k)];
        if (a < 1 || a > st.natoms) return std::nullopt;
        atoms[static_cast<std::size_t>(k)] = static_cast<int>(a);
    }
    for (int j = 0; j < 4; ++j)
        for (int k = j + 1; k < 4; ++k)
            if (atoms[static_cast<std::size_t>(j)] == atoms[static_cast<std::size_t>(k)]) return std::nullopt;
    return atoms;
}

std::string dihedral_labels(const Store& st, const std::array<int, 4>& atoms) {
    std::string out;
    for (int k = 0; k < 4; ++k)
        out += (k ? "-" : "") + std::string(text::trim(label_text(st.atom_label[atoms[static_cast<std::size_t>(k)]])));
    return out;
}

void message(Session& s, const ProfileEngine& engine, const std::string& text) {
    s.tk.WMessageBox(kButtonsOk, MessageIcon::Exclamation, 1, text, engine.mode_name);
}

// The first point of the lowest and of the highest energy.
std::pair<const ProfilePoint*, const ProfilePoint*> extremes(const std::vector<ProfilePoint>& points) {
    const ProfilePoint *low = nullptr, *high = nullptr;
    for (const ProfilePoint& p : points) {
        if (!low || p.energy < low->energy) low = &p;
        if (!high || p.energy > high->energy) high = &p;
    }
    return {low, high};
}

void redraw(Session& s) {
    write_job_files(s);
    prepare_display(s);
    project_atoms(s);
    draw_scene(s);
}

// Turns the atoms on the far side of the dihedral's central bond.
void turn_far_side(Store& st, const std::array<int, 4>& atoms, const std::vector<int>& moving, float degrees) {
    for (int i = 1; i <= st.natoms; ++i) st.conn[kConnMark][i] = 0;
    for (int i : moving) st.conn[kConnMark][i] = 1;
    const Vec3 through = atom_position(st.atom_rec[atoms[2]]);
    const Vec3 axis = (through - atom_position(st.atom_rec[atoms[1]])).unit();
    turn_marked_atoms(st, through, axis, degrees);
}

// A step gave no energy: the sweep ends there. The molecule is turned back
// to where it started, the .GEO log and the user are told, and no table of
// made-up energies is written.
void stop_sweep(Session& s, const ProfileEngine& engine, const std::array<int, 4>& atoms,
                const std::vector<int>& moving, int done, int count, float step) {
    turn_far_side(s.store, atoms, moving, step * static_cast<float>(done));
    redraw(s);
    const std::string where = "Bond rotation stopped at point " + std::to_string(done + 1) + " of " +
                              std::to_string(count) + ": no energy";
    log_line(s, " " + where);
    s.tk.WindowOutStatusBar(status_message_field, where);
    s.tk.WindowOutStatusBar(status_mode_field, engine.mode_name);
    message(s, engine, where + ".\r" + engine.why_no_energy(s));
}

}  // namespace

double capped_energy(double energy) { return std::min(energy, kProfileEnergyCap); }

int profile_point_count(float step) {
    const long rounded = std::max(1L, std::lround(step));
    return static_cast<int>(360 / rounded) + 1;
}

void set_relative_energies(std::vector<ProfilePoint>& points, double to_kj) {
    const ProfilePoint* low = extremes(points).first;
    if (!low) return;
    const double lowest = low->energy;
    for (ProfilePoint& p : points) p.relative = (p.energy - lowest) * to_kj;
}

void sort_by_dihedral(std::vector<ProfilePoint>& points) {
    const int n = static_cast<int>(points.size());
    auto at = [&](int i) -> ProfilePoint& { return points[static_cast<std::size_t>(i)]; };
    for (int gap = n / 2; gap > 0; gap /= 2)
        for (int j = 0; j + gap < n; ++j)
            for (int i = j; i >= 0 && at(i).dihedral > at(i + gap).dihedral; i -= gap) std::swap(at(i), at(i + gap));
}

std::string profile_table_line(const ProfilePoint& p) {
    return text::format_f(p.dihedral, 9, 2) + text::format_f(p.relative, 14, 2) + text::format_f(p.energy, 13, 3);
}

std::string profile_extremes_line(double min_dihedral, double max_dihedral) {
    return " Minimum at " + text::format_f(min_dihedral, 7, 2) + " Maximum at " + text::format_f(max_dihedral, 7, 2);
}

std::string start_dihedral_status(const std::string& labels, double dihedral) {
    return labels + " Dihedral " + text::format_f(dihedral, 8, 2);
}

std::string step_status(double dihedral, const std::string& unit, double energy) {
    return "Dihedral " + text::format_f(dihedral, 8, 2) + unit + text::format_f(energy, 9, 3);
}

Chart profile_chart(const std::vector<ProfilePoint>& sorted, const std::string& labels) {
    Chart c;
    c.title = labels + " Dihedral";
    c.x_title = "Dihedral";
    c.y_title = "Energy kJ/mol";
    if (!sorted.empty()) {
        c.x_min = sorted.front().dihedral;
        c.x_max = sorted.back().dihedral;
    }
    double low = 100000.0, high = -100000.0;
    for (const ProfilePoint& p : sorted) {
        low = std::min(low, p.relative);
        high = std::max(high, p.relative);
        c.points.push_back({p.dihedral, p.relative});
    }
    if (!sorted.empty()) c.y_min = low, c.y_max = high;
    return c;
}

void rotation_profile(Session& s, const ProfileEngine& engine) {
    Store& st = s.store;
    if (s.view.marks.count < 2) {
        message(s, engine, "No Dihedral Stored");
        return;
    }
    if (st.natoms < 1) return;
    const auto stored = stored_dihedral(st);
    if (!stored) {
        message(s, engine, "No Dihedral Stored");
        return;
    }
    const std::array<int, 4>& atoms = *stored;
    log_line(s, "");
    log_line(s, engine.log_title + s.job.name);
    log_line(s, "");

    const int bond = test_bond(st, atoms[1], atoms[2]);
    if (bond != kChainBond) {
        message(s, engine, bond == kRingBond ? "Atoms in Ring" : "Atoms not Adjacent");
        s.tk.WindowOutStatusBar(status_mode_field, engine.mode_name);
        return;
    }
    // The side of the third atom turns; the marks are kept apart so that
    // nothing in the steps can lose them.
    std::vector<int> moving;
    for (int i = 1; i <= st.natoms; ++i)
        if (is_marked(st, i)) moving.push_back(i);

    const std::string labels = dihedral_labels(st, atoms);
    double dihedral = dihedral_of_atoms(st, atoms.data(), 0.0);
    s.tk.WindowOutStatusBar(status_message_field, start_dihedral_status(labels, dihedral));

    s.flags.view_action = 0;
    write_job_files(s);
    const float step = s.opt.bond_rot_step;
    const int count = profile_point_count(step);
    std::vector<ProfilePoint> points;
    double energy = 0;   // a step without an energy keeps the one before
    for (int k = 0; k < count; ++k) {
        if (auto e = engine.single_point(s)) {
            energy = capped_energy(*e);
        } else if (engine.why_no_energy) {
            stop_sweep(s, engine, atoms, moving, k, count, step);
            return;
        }
        dihedral = dihedral_of_atoms(st, atoms.data(), dihedral);
        points.push_back({dihedral, energy, 0});
        s.tk.WindowOutStatusBar(status_message_field, step_status(dihedral, engine.energy_unit, energy));

        turn_far_side(st, atoms, moving, -step);
        redraw(s);
    }

    set_relative_energies(points, engine.to_kj);
    log_line(s, engine.table_header);
    log_line(s, "");
    for (const ProfilePoint& p : points) log_line(s, profile_table_line(p));
    log_line(s, "");
    auto [low, high] = extremes(points);
    log_line(s, profile_extremes_line(low->dihedral, high->dihedral));

    if (!engine.copy_log_to.empty() && !s.job.log_path.empty()) {
        files::copy(s.job.log_path, engine.copy_log_to);
        open_job_log(s, true, "");
    }
    s.tk.WindowOutStatusBar(status_message_field, engine.finished);
    s.tk.WindowOutStatusBar(status_mode_field, engine.mode_name);

    sort_by_dihedral(points);
    const Chart chart = profile_chart(points, labels);
    s.tk.show_chart(chart);
    while (s.tk.WMessageBox(kButtonsYesNo, MessageIcon::Question, 1, "Note the Min. and Max.",
                            "Plot on System Printer") == 1)
        s.tk.print_chart(chart);
}

std::optional<double> tinker_single_point(Session& s) {
    s.tk.WindowOutStatusBar(status_mode_field, "Calc.");
    if (!run_tinker(s, "analyze", analyze_answers(prepare_tinker_run(s).told, 'E'))) return std::nullopt;
    auto lines = files::read_lines(log_file_name);
    if (!lines || !judge_tinker_log(*lines, kEnergyResult).ok()) return std::nullopt;
    return total_potential_energy(*lines);
}

std::string tinker_step_failure(Session&) {
    const auto lines = files::read_lines(log_file_name).value_or(std::vector<std::string>{});
    TinkerOutcome outcome = judge_tinker_log(lines, kEnergyResult);
    if (outcome.ok()) outcome = {TinkerProblem::NoResult, kEnergyResult.front()};
    return tinker_failure_text("analyze", outcome, lines);
}

ProfileEngine tinker_profile_engine() {
    ProfileEngine e;
    e.mode_name = "Tinker";
    e.log_title = " Tinker Bond Rotation Profile for ";
    e.table_header = "  Dihedral  Rel.kJ/mol  Total Pot. Energy kcal/mol";
    e.energy_unit = " kcal/mol";
    e.to_kj = 4.184;
    e.copy_log_to = log_file_name;
    e.finished = "Dihedral finished results in .LOG";
    e.single_point = tinker_single_point;
    e.why_no_energy = tinker_step_failure;
    return e;
}

void tinker_rotation_profile(Session& s) { rotation_profile(s, tinker_profile_engine()); }

}  // namespace zentol
