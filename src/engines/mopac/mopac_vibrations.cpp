#include "engines/mopac/mopac_vibrations.h"

#include <cmath>
#include <optional>

#include "session/session.h"
#include "spectra/transmission.h"
#include "spectra/vibration_movie.h"
#include "text/fixed_format.h"
#include "toolkit/files.h"
#include "toolkit/toolkit.h"

namespace zentol {

namespace {

using text::TextLines;

std::size_t last_line_containing(const TextLines& l, std::string_view key, std::size_t from = 0) {
    std::size_t found = l.size();
    for (std::size_t i = from; i < l.size(); ++i)
        if (l[i].find(key) != std::string_view::npos) found = i;
    return found;
}

// The number behind a row's words: "FREQUENCY          1407.94".
std::optional<double> value_after(std::string_view line, std::string_view key) {
    const std::string_view t = text::trim(line);
    if (t.substr(0, key.size()) != key) return std::nullopt;
    auto w = text::split_words(t.substr(key.size()));
    if (w.empty()) return std::nullopt;
    return text::read_f(w[0]);
}

// The open-source MOPAC:
//  VIBRATION          1    1A1         ATOM PAIR     ENERGY CONTRIBUTION    RADIAL
//  FREQUENCY          1407.94         O 1 -- H 2         +50.0% ( 56.8%)      9.6%
//  TRANSITION DIPOLE   0.5214         O 1 -- H 3         +50.0% ( 56.8%)      9.6%
// Mopac 6 writes the same rows as "FREQ." and "T-DIPOLE".
std::vector<VibrationMode> described_modes(const TextLines& l) {
    std::vector<VibrationMode> modes;
    const std::size_t key = last_line_containing(l, "DESCRIPTION OF VIBRATIONS");
    for (std::size_t i = key; i < l.size(); ++i) {
        const std::string_view line = l[i];
        if (auto n = value_after(line, "VIBRATION")) {
            modes.push_back({});
            modes.back().number = static_cast<int>(*n);
        } else if (modes.empty()) {
            continue;
        } else if (auto f = value_after(line, "FREQUENCY")) {
            modes.back().frequency = *f;
        } else if (auto f6 = value_after(line, "FREQ.")) {
            modes.back().frequency = *f6;
        } else if (auto t = value_after(line, "TRANSITION DIPOLE")) {
            modes.back().intensity = *t * *t;
        } else if (auto t6 = value_after(line, "T-DIPOLE")) {
            modes.back().intensity = *t6 * *t6;
        }
    }
    return modes;
}

// One root of the normal-coordinate table: its frequency and the 3N rows.
struct Root {
    double frequency = 0;
    std::vector<double> rows;
};

bool is_root_line(std::string_view line) {
    const std::string_view t = text::trim(line);
    return text::starts_with_nocase(t, "Root No.");
}

//    Root No.       1         2         3
//
//                  1 A1      1 B2      2 A1
//
//                 1407.9    2806.6    2862.5
//
//            1   -0.0322   -0.0375   -0.0162
// A row with one number a root is the frequencies; a row with one more,
// the coordinate number first, is a row of the table.
std::size_t read_root_block(const TextLines& l, std::size_t at, std::vector<Root>& roots) {
    auto numbers = text::read_ints(text::trim(l[at]).substr(8), 16);
    const std::size_t n = numbers ? numbers->size() : 0;
    const std::size_t first = roots.size();
    roots.resize(first + n);
    bool rows_started = false;
    for (++at; at < l.size() && !is_root_line(l[at]); ++at) {
        const std::string_view line = l[at];
        auto v = text::read_reals(line, static_cast<int>(n) + 2);
        if (!v || (v->empty() && rows_started) || text::count_words(line) != static_cast<int>(v->size())) {
            if (rows_started) break;
            continue;
        }
        if (v->size() == n && !rows_started) {
            for (std::size_t k = 0; k < n; ++k) roots[first + k].frequency = (*v)[k];
        } else if (v->size() == n + 1) {
            rows_started = true;
            for (std::size_t k = 0; k < n; ++k) roots[first + k].rows.push_back((*v)[k + 1]);
        }
    }
    return at;
}

std::vector<Root> normal_coordinates(const TextLines& l) {
    std::vector<Root> roots;
    const std::size_t key = last_line_containing(l, "NORMAL COORDINATE ANALYSIS");
    for (std::size_t at = key; at < l.size();) {
        if (l[at].find("MASS-WEIGHTED") != std::string_view::npos ||
            l[at].find("DESCRIPTION OF VIBRATIONS") != std::string_view::npos)
            break;
        at = is_root_line(l[at]) ? read_root_block(l, at, roots) : at + 1;
    }
    return roots;
}

//           ORIENTATION OF MOLECULE IN FORCE CALCULATION
//
//     NO.       ATOM         X         Y         Z
//
//      1          O      -0.0402   -0.0519    0.0000
std::vector<Point3> force_orientation(const TextLines& l) {
    std::vector<Point3> atoms;
    const std::size_t key = last_line_containing(l, "ORIENTATION OF MOLECULE IN FORCE CALCULATION");
    for (std::size_t at = key + 1; at < l.size() && at < key + 5 + 2500; ++at) {
        const auto w = text::split_words(l[at]);
        const bool row = w.size() == 5 && text::read_i(w[0]).value_or(0) == static_cast<long long>(atoms.size()) + 1;
        std::optional<double> x = row ? text::read_f(w[2]) : std::nullopt, y = row ? text::read_f(w[3]) : std::nullopt,
                              z = row ? text::read_f(w[4]) : std::nullopt;
        if (x && y && z) atoms.push_back({*x, *y, *z});
        else if (!atoms.empty()) break;
    }
    return atoms;
}

// Each described mode takes the root of the nearest frequency: the table
// of Mopac 6 also holds the rotations and translations.
bool attach_displacements(std::vector<VibrationMode>& modes, const std::vector<Root>& roots) {
    bool all = !modes.empty();
    std::vector<bool> used(roots.size(), false);
    for (VibrationMode& m : modes) {
        std::size_t best = roots.size();
        for (std::size_t r = 0; r < roots.size(); ++r)
            if (!used[r] && (best == roots.size() ||
                             std::fabs(roots[r].frequency - m.frequency) < std::fabs(roots[best].frequency - m.frequency)))
                best = r;
        if (best == roots.size() || roots[best].rows.empty() || roots[best].rows.size() % 3 != 0) {
            all = false;
            continue;
        }
        used[best] = true;
        const auto& rows = roots[best].rows;
        for (std::size_t j = 0; j + 2 < rows.size(); j += 3) m.displacement.push_back({rows[j], rows[j + 1], rows[j + 2]});
    }
    return all;
}

void say(Session& s, const std::string& text) {
    s.tk.WMessageBox(kButtonsOk, MessageIcon::Exclamation, 1, text, "Mopac");
}

// The vibrations of the job's listing and job_IR.lst written from them;
// nullopt, with a message, when there are none.
std::optional<MopacVibrations> vibrations_to_stick_file(Session& s) {
    const std::string listing = job_file(s, ".lst");
    auto lines = files::read_text_lines(listing);
    MopacVibrations v = lines ? read_mopac_vibrations(*lines) : MopacVibrations{};
    if (v.modes.empty()) {
        say(s, "No vibrations in " + listing + "\rRun Mopac with IR-Hessian first.");
        return std::nullopt;
    }
    if (!files::write_lines(stick_file_name(s.job.name, 1), stick_file(v.modes, false))) {
        say(s, "Cannot write " + stick_file_name(s.job.name, 1));
        return std::nullopt;
    }
    return v;
}

}  // namespace

MopacVibrations read_mopac_vibrations(const TextLines& listing) {
    MopacVibrations v;
    v.modes = described_modes(listing);
    v.displacements = attach_displacements(v.modes, normal_coordinates(listing));
    v.orientation = force_orientation(listing);
    return v;
}

void mopac_ir_spectrum(Session& s) {
    if (vibrations_to_stick_file(s)) plot_transmission(s, s.job.name, 1);
}

void mopac_animate_vibrations(Session& s) {
    auto v = vibrations_to_stick_file(s);
    if (!v) return;
    s.tk.WMessageBox(kButtonsOk, MessageIcon::Information, 1, "IR Spectrum file written", "Mopac");
    if (!movie_atom_limit_ok(s)) return;
    if (!v->displacements) {
        say(s, "The listing has no normal coordinates to animate.");
        return;
    }
    play_vibration_movie(s, v->modes, v->orientation);
}

}  // namespace zentol
