#include "display/colours.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "session/session.h"
#include "session/store_ops.h"
#include "text/fixed_format.h"
#include "toolkit/files.h"
#include "toolkit/toolkit.h"

namespace zentol {

void fill_charge_scale(Palette& p) {
    for (int j = 0; j < 16; ++j) {
        // Positive half: from black towards white-blue, blue full.
        p.r[17 + j] = p.g[17 + j] = 16.0f * j / 255.0f;
        p.b[17 + j] = 1.0f;
        // Negative half: red full, green and blue falling to 0.
        p.r[33 + j] = 1.0f;
        p.g[33 + j] = (240.0f - 16.0f * j) / 255.0f;
        p.b[33 + j] = std::max(0.0f, 224.0f - 16.0f * j) / 255.0f;
    }
    for (int k = 1; k <= 32; ++k) p.map_value[k] = -0.9375f + 0.0625f * static_cast<float>(k - 1);
}

std::string rgb_listing(const Palette& p) {
    std::string out;
    for (int k = 1; k <= 48; ++k)
        out += text::format_i(k, 4) + text::format_f(p.r[k], 6, 3) + text::format_f(p.g[k], 6, 3) +
               text::format_f(p.b[k], 6, 3) + "\n";
    std::string values;
    for (int k = 1; k <= 32; ++k) values += text::format_f(p.map_value[k], 6, 3);
    return out + values + "\n";
}

void load_colour_map(Session& s) {
    Palette& p = s.palette;
    int choice = std::clamp(s.opt.palette_choice, 1, 3);
    std::string path = s.inst.cfgset + "/RASMAP" + std::to_string(choice) + ".DEF";
    auto lines = files::read_lines(path);
    int read = 0;
    for (int k = 1; k <= 16; ++k) {
        p.r[k] = p.g[k] = p.b[k] = 0.5f;
        if (!lines || k > static_cast<int>(lines->size())) continue;
        std::string_view line = (*lines)[k - 1];
        auto v = text::read_reals(line.size() > 8 ? line.substr(8) : std::string_view(), 3);
        if (!v || v->size() < 3) continue;
        p.r[k] = static_cast<float>(std::clamp((*v)[0], 0.0, 255.0) / 255.0);
        p.g[k] = static_cast<float>(std::clamp((*v)[1], 0.0, 255.0) / 255.0);
        p.b[k] = static_cast<float>(std::clamp((*v)[2], 0.0, 255.0) / 255.0);
        ++read;
    }
    for (int k = 17; k <= 48; ++k) p.r[k] = p.g[k] = p.b[k] = 0.0f;
    fill_charge_scale(p);
    if (read < 16) s.tk.WindowOutStatusBar(9, "Colour map " + path + " is missing or damaged");
    files::write_atomic("RGB.LST", rgb_listing(p));
}

void collect_elements(Store& st) {
    static const char* first[] = {"C", "H", "N", "O", ""};
    for (int k = 1; k <= 5; ++k) st.element_list[k] = make_label(first[k - 1]);
    int n = 5;
    for (int i = 1; i <= st.natoms; ++i) {
        std::string sym = element_symbol(std::string_view(st.atom_label[i].data(), 4));
        Label key = make_label(std::string(text::trim_right(sym)));
        if (key[0] == ' ') continue;
        bool seen = false;
        for (int k = 1; k <= n && !seen; ++k) seen = (st.element_list[k] == key);
        if (seen) continue;
        n = std::min(n + 1, kMaxColourElements);
        st.element_list[n] = key;
    }
    st.element_count = n;
}

void apply_element_colour_lines(Store& st, const std::vector<std::string>& lines) {
    for (int k = 1; k <= kMaxColourElements; ++k) st.element_index[k] = 0;
    for (const auto& line : lines) {
        if (text::trim(line).empty() || text::starts_with_nocase(line, "REM")) continue;
        Label name = make_label(text::column_field(line, 1, 4));
        for (int k = 1; k <= st.element_count; ++k) {
            if (st.element_list[k] != name) continue;
            auto v = text::read_ints(line.size() > 4 ? std::string_view(line).substr(4) : "", 1);
            if (v && !v->empty()) st.element_index[k] = static_cast<int>((*v)[0]);
        }
    }
    for (int k = 1; k <= kMaxColourElements; ++k)
        if (st.element_index[k] == 0) st.element_index[k] = 1;
}

void load_element_colours(Session& s) {
    auto lines = files::read_lines(s.inst.cfgset + "/RASCOL.DEF");
    if (!lines) s.tk.WindowOutStatusBar(9, "Element colours RASCOL.DEF are missing");
    apply_element_colour_lines(s.store, lines ? *lines : std::vector<std::string>{});
}

int colour_slot(const Label& label, const Store& st) {
    if (label[0] == ' ') return 8;
    std::string sym = element_symbol(std::string_view(label.data(), 4));
    Label key = make_label(std::string(text::trim_right(sym)));
    for (int k = 1; k <= st.element_count; ++k)
        if (st.element_list[k] == key) return st.element_index[k];
    return 2;
}

void assign_element_colours(Store& st) {
    for (int i = 1; i <= st.natoms; ++i) st.atom_colour[i] = static_cast<float>(colour_slot(st.atom_label[i], st));
}

bool assign_charge_colours(Store& st, const Palette& p, const std::vector<double>& charges) {
    if (static_cast<int>(charges.size()) != st.natoms || st.natoms == 0) return false;
    double scale = 0;
    for (double q : charges) scale = std::max(scale, std::fabs(q));
    for (int i = 1; i <= st.natoms; ++i) {
        double q = scale > 0 ? charges[i - 1] / scale : 0.0;
        int index = 32;
        for (int k = 1; k <= 32; ++k)
            if (std::fabs(p.map_value[k] - q) < 0.04) index = 16 + k;
        st.atom_colour[i] = static_cast<float>(index);
    }
    return true;
}

void assign_molecule_colours(Store& st) {
    for (int i = 1; i <= st.natoms; ++i) {
        int c = static_cast<int>(std::lround(st.atom_rec[i][kMolecule])) + 3;
        if (c > 11) c -= 8;
        st.atom_colour[i] = static_cast<float>(c);
    }
}

}  // namespace zentol
