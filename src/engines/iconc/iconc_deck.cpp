#include "engines/iconc/iconc_deck.h"

#include <algorithm>
#include <cmath>

#include "text/fixed_format.h"

namespace zentol {

namespace {

constexpr std::string_view kLevelsKey = "ENERGY LEVELS (eV)";
constexpr std::string_view kLevelsEndKey = "SUM OF ONE-ELECTRON";
constexpr std::string_view kChargeKey = "ATOM      NET CHG.";
constexpr int kChargeLabelColumns = 10;
constexpr int kEnergyLine = 4;           // ENERTOT.DAT: three heading lines first
constexpr int kEnergyLabelColumns = 20;

bool contains(std::string_view line, std::string_view key) { return line.find(key) != std::string_view::npos; }

std::string label_line(const Label& l) { return std::string(text::trim_right(label_text(l))); }

std::string trimmed(const std::string& line) { return std::string(text::trim_right(line)); }

// The labels of the charge iteration: metals first, then the others in
// deck order, as many as asked for.
std::vector<Label> iterated_labels(const std::vector<IconcAtom>& atoms, int count) {
    std::vector<Label> out;
    for (bool metals : {true, false})
        for (const IconcAtom& a : atoms) {
            if (static_cast<int>(out.size()) >= count) return out;
            if (!is_dummy_centre(a.label) && a.metal == metals) out.push_back(a.label);
        }
    return out;
}

std::string joined_labels(const Label& a, const Label& b) {
    return std::string(text::trim(label_text(a))) + "-" + std::string(text::trim(label_text(b)));
}

}  // namespace

bool is_transition_metal(int z) { return (z >= 21 && z <= 30) || (z >= 39 && z <= 48) || (z >= 71 && z <= 80); }

Label fold_label(std::string_view label) {
    Label l = make_label(label);
    for (char& c : l) {
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
        else if (!(c >= 'A' && c <= 'Z') && !(c >= '0' && c <= '9')) c = ' ';
    }
    return l;
}

bool is_dummy_centre(const Label& label) { return text::starts_with_nocase(label_text(label), "CN"); }

int deck_atom_count(const std::vector<IconcAtom>& atoms) {
    return static_cast<int>(std::count_if(atoms.begin(), atoms.end(),
                                          [](const IconcAtom& a) { return !is_dummy_centre(a.label); }));
}

std::vector<std::string> iconc_deck(const std::vector<IconcAtom>& atoms, const IconcDeckOptions& o) {
    std::vector<std::string> lines{"1", "ICONCINP", "PTEST", text::format_i(deck_atom_count(atoms), 4),
                                   text::format_i(o.charge, 3)};
    for (const IconcAtom& a : atoms)
        if (!is_dummy_centre(a.label)) lines.push_back(label_line(a.label));
    for (const IconcAtom& a : atoms)
        if (!is_dummy_centre(a.label))
            lines.push_back(text::format_f(a.x, 12, 5) + text::format_f(a.y, 12, 5) + text::format_f(a.z, 12, 5));
    if (!o.iterate) {
        lines.emplace_back("N");
        return lines;
    }
    const std::vector<Label> iterated = iterated_labels(atoms, std::clamp(o.metals, 1, 3));
    for (const char* answer : {"Y", "1", "B", "B"}) lines.emplace_back(answer);
    lines.push_back(text::format_i(static_cast<long long>(iterated.size()), 1));
    for (const Label& l : iterated) lines.push_back(label_line(l));
    lines.emplace_back("Y");
    lines.emplace_back("9");
    return lines;
}

double read_iconc_energy(const text::TextLines& enertot) {
    if (enertot.size() < static_cast<std::size_t>(kEnergyLine)) return 0.0;
    const std::string_view line = enertot[kEnergyLine - 1];
    if (line.size() <= static_cast<std::size_t>(kEnergyLabelColumns)) return 0.0;
    const auto values = text::read_reals(line.substr(kEnergyLabelColumns), 4);
    if (!values || values->size() < 4 || !std::isfinite((*values)[3])) return 0.0;
    return (*values)[3];
}

std::vector<std::string> iconc_level_list(const text::TextLines& listing) {
    std::vector<std::string> levels;
    bool inside = false;
    for (std::string_view line : listing) {
        if (!inside) {
            inside = contains(line, kLevelsKey);
            continue;
        }
        if (contains(line, kLevelsEndKey)) return levels;
        if (!text::trim(line).empty()) levels.emplace_back(text::trim_right(line));
    }
    return levels;
}

int iconc_occupied_levels(const std::vector<std::string>& levels) {
    int occupied = 0;
    for (const std::string& line : levels) {
        const auto values = text::read_reals(line, 16);
        if (values && values->size() >= 2 && values->back() > 0) ++occupied;
    }
    return occupied;
}

std::vector<double> iconc_net_charges(const text::TextLines& listing, int deck_atoms) {
    std::vector<double> charges;
    std::size_t i = 0;
    while (i < listing.size() && listing[i].substr(0, kChargeKey.size()) != kChargeKey) ++i;
    for (++i; i < listing.size() && static_cast<int>(charges.size()) < deck_atoms; ++i) {
        const std::string_view line = listing[i];
        if (line.size() <= static_cast<std::size_t>(kChargeLabelColumns)) break;
        const auto values = text::read_reals(line.substr(kChargeLabelColumns), 1);
        if (!values || values->empty()) break;
        charges.push_back(values->front());
    }
    return charges;
}

std::vector<double> charges_per_atom(const std::vector<IconcAtom>& atoms, const std::vector<double>& deck_charges) {
    std::vector<double> out;
    std::size_t k = 0;
    for (const IconcAtom& a : atoms) {
        if (is_dummy_centre(a.label)) {
            out.push_back(0.0);
            continue;
        }
        out.push_back(k < deck_charges.size() ? deck_charges[k] : 0.0);
        ++k;
    }
    return out;
}

std::vector<std::string> iconc_energy_log(double energy) {
    return {" ICONC energy", text::format_a(" Total Energy = ", 15) + text::format_f(energy, 15, 5) + " eV    " +
                                 text::format_f(energy * kEvToKj, 15, 5) + " kJ/mol"};
}

std::string iconc_energy_status(double energy) { return text::format_f(energy, 12, 5) + " eV"; }

std::vector<std::string> scan_log_head() {
    return {" ICONC RUN", " ATOMs       NO.s     Dist." + text::blanks(14) + "EV" + text::blanks(21) + "kJ/mol"};
}

std::string scan_log_line(const Label& a, const Label& b, int atom_a, int atom_b, double distance, double energy) {
    return trimmed(label_text(a) + label_text(b) + " " + text::format_i(atom_a, 4) + text::format_i(atom_b, 4) +
                   text::format_f(distance, 9, 3) + text::format_f(energy, 22, 8) +
                   text::format_f(energy * kEvToKj, 22, 3));
}

std::string scan_step_status(int step, double energy, double distance) {
    return "Step " + text::format_i(step, 3) + text::format_f(energy, 14, 5) + " eV  Dist." +
           text::format_f(distance, 8, 3);
}

std::string scan_applied_status(double distance) {
    return text::pad_right("B-Scan Min.at", 14) + text::format_f(distance, 7, 3) + " see .GEO";
}

int scan_minimum(const std::vector<ScanPoint>& points) {
    int best = 0;
    for (std::size_t k = 0; k < points.size(); ++k)
        if (best == 0 || points[k].energy < points[static_cast<std::size_t>(best - 1)].energy)
            best = static_cast<int>(k) + 1;
    return best;
}

Chart scan_chart(const std::vector<ScanPoint>& points, const Label& a, const Label& b) {
    Chart c;
    c.title = joined_labels(a, b) + " Min at step " + std::to_string(scan_minimum(points));
    c.x_title = "Distance";
    c.y_title = "Energy";
    if (points.empty()) return c;
    c.x_min = c.x_max = points.front().distance;
    c.y_min = c.y_max = points.front().energy;
    for (const ScanPoint& p : points) {
        c.x_min = std::min(c.x_min, p.distance);
        c.x_max = std::max(c.x_max, p.distance);
        c.y_min = std::min(c.y_min, p.energy);
        c.y_max = std::max(c.y_max, p.energy);
        c.points.push_back({p.distance, p.energy});
    }
    return c;
}

std::string optimise_log_line(int atom, int axis, double energy) {
    return text::format_i(atom, 3) + text::format_i(axis, 3) + text::format_f(energy, 26, 8);
}

std::string optimise_final_line(double energy) {
    return " STABILIZATION + REPULSION  optimized = " + text::format_f(energy, 15, 5) + "                  = " +
           text::format_f(energy * kEvToKj, 15, 3) + " kJ/mol";
}

}  // namespace zentol
