#include "session/setup_file.h"

#include <algorithm>
#include <cmath>

#include "session/config.h"
#include "session/session.h"
#include "text/fixed_format.h"
#include "toolkit/files.h"
#include "toolkit/toolkit.h"

namespace zentol {

namespace {

struct Entry {
    const char* key;
    float Options::*option;                 // one of the two is set
    float TinkerSettings::*setting;
    float low, high;
};

struct Switch {
    const char* key;
    bool Options::*option;
};

constexpr Entry kEntries[] = {
    {"atom_size", &Options::atom_size, nullptr, 0.01f, 1.0f},
    {"bond_width", &Options::bond_width, nullptr, 0.01f, 1.0f},
    {"label_size", &Options::label_size, nullptr, 0.04f, 0.18f},
    {"label_offset", &Options::label_offset, nullptr, -5.0f, 5.0f},
    {"bond_rot_step", &Options::bond_rot_step, nullptr, 0.1f, 180.0f},
    {"view_distance", &Options::view_distance, nullptr, 1.0f, 100.0f},
    {"cov_tolerance", &Options::cov_tolerance, nullptr, 0.0f, 2.0f},
    {"tk_optimize", nullptr, &TinkerSettings::tk_optimize, 0.0f, 1.0f},
    {"tk_min_rms", nullptr, &TinkerSettings::tk_min_rms, 1e-6f, 100.0f},
    {"tk_anneal_t0", nullptr, &TinkerSettings::tk_anneal_t0, 0.0f, 1e5f},
    {"tk_anneal_t1", nullptr, &TinkerSettings::tk_anneal_t1, 0.0f, 1e5f},
    {"tk_anneal_equil", nullptr, &TinkerSettings::tk_anneal_equil, 0.0f, 1e7f},
    {"tk_anneal_cool", nullptr, &TinkerSettings::tk_anneal_cool, 0.0f, 1e7f},
    {"tk_anneal_step", nullptr, &TinkerSettings::tk_anneal_step, 0.0f, 1e3f},
    {"tk_anneal_dump", nullptr, &TinkerSettings::tk_anneal_dump, 0.0f, 1e3f},
    {"tk_anneal_mass", nullptr, &TinkerSettings::tk_anneal_mass, 0.0f, 1e3f},
    {"tk_qualifier", nullptr, &TinkerSettings::tk_qualifier, 33.0f, 126.0f},
    {"tk_curve", nullptr, &TinkerSettings::tk_curve, 1.0f, 3.0f},
    {"tk_auto_cycles", nullptr, &TinkerSettings::tk_auto_cycles, 0.0f, 1e4f},
    {"tk_movie_delay", nullptr, &TinkerSettings::tk_movie_delay, 0.0f, 1e4f},
};

constexpr Switch kSwitches[] = {
    {"keep_dyn_files", &Options::keep_dyn_files}, {"labels_on", &Options::labels_on},
    {"charge_labels", &Options::charge_labels},   {"charge_colours", &Options::charge_colours},
    {"colour_by_molecule", &Options::colour_by_molecule},
};

}  // namespace

std::vector<std::string> setup_file_lines(const Options& o, const TinkerSettings& t) {
    std::vector<std::string> lines{"# Setup's choices, written by Zentol when Setup is confirmed."};
    for (const Entry& e : kEntries) {
        float v = e.option ? o.*e.option : t.*e.setting;
        lines.push_back(std::string(e.key) + " " + std::string(text::trim((text::FreeRecord() << v).str())));
    }
    for (const Switch& sw : kSwitches) lines.push_back(std::string(sw.key) + (o.*sw.option ? " 1" : " 0"));
    lines.push_back("palette_choice " + std::to_string(o.palette_choice));
    return lines;
}

void read_setup_lines(const std::vector<std::string>& lines, Options& o, TinkerSettings& t) {
    for (const auto& raw : lines) {
        std::string_view line = text::trim(raw);
        if (line.empty() || line[0] == '#') continue;
        std::size_t blank = line.find(' ');
        if (blank == std::string_view::npos) continue;
        std::string_view key = line.substr(0, blank);
        auto values = text::read_reals(line.substr(blank + 1), 1);
        if (!values || values->size() != 1 || !std::isfinite((*values)[0])) continue;
        const float v = static_cast<float>((*values)[0]);
        for (const Entry& e : kEntries) {
            if (key != e.key) continue;
            (e.option ? o.*e.option : t.*e.setting) = std::clamp(v, e.low, e.high);
        }
        for (const Switch& sw : kSwitches)
            if (key == sw.key) o.*sw.option = v > 0.5f;
        if (key == "palette_choice") o.palette_choice = std::clamp(static_cast<int>(std::lround(v)), 1, 3);
    }
}

void save_setup(Session& s) {
    std::string why, path = cfg_path(s, "setup.def");
    if (!files::write_lines(path, setup_file_lines(s.opt, s.tinker), &why))
        s.tk.WMessageBox(kButtonsOk, MessageIcon::Exclamation, 1,
                         "Cannot write " + path + ":\r" + why + "\rSetup's choices last for this session only.", "Zentol");
}

void load_setup(Session& s) {
    if (auto lines = files::read_lines(cfg_path(s, "setup.def"))) read_setup_lines(*lines, s.opt, s.tinker);
}

}  // namespace zentol
