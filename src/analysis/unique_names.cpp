#include "analysis/unique_names.h"

#include <algorithm>
#include <array>

#include "session/session.h"
#include "session/store_ops.h"
#include "structure_files/geo_log.h"
#include "structure_files/ins_file.h"
#include "text/fixed_format.h"
#include "toolkit/files.h"
#include "toolkit/toolkit.h"

namespace zentol {

namespace {

struct WeightRow {
    const char* symbol;
    float weight;
};

// Atomic weights by atomic number; deuterium has no row of its own.
constexpr std::array<WeightRow, 103> kWeights = {{
    {"H ", 1.008f},    {"HE", 4.003f},    {"LI", 6.941f},    {"BE", 9.012f},    {"B ", 10.81f},
    {"C ", 12.011f},   {"N ", 14.007f},   {"O ", 15.999f},   {"F ", 18.998f},   {"NE", 20.179f},
    {"NA", 22.99f},    {"MG", 24.305f},   {"AL", 26.982f},   {"SI", 28.086f},   {"P ", 30.974f},
    {"S ", 32.06f},    {"CL", 35.453f},   {"AR", 39.948f},   {"K ", 39.098f},   {"CA", 40.08f},
    {"SC", 44.956f},   {"TI", 47.9f},     {"V ", 50.942f},   {"CR", 51.996f},   {"MN", 54.938f},
    {"FE", 55.847f},   {"CO", 58.933f},   {"NI", 58.7f},     {"CU", 63.546f},   {"ZN", 65.38f},
    {"GA", 69.72f},    {"GE", 72.59f},    {"AS", 74.922f},   {"SE", 78.96f},    {"BR", 79.904f},
    {"KR", 83.8f},     {"RB", 85.468f},   {"SR", 87.62f},    {"Y ", 88.906f},   {"ZR", 91.22f},
    {"NB", 92.906f},   {"MO", 95.94f},    {"TC", 97.0f},     {"RU", 101.07f},   {"RH", 102.906f},
    {"PD", 106.4f},    {"AG", 107.868f},  {"CD", 112.41f},   {"IN", 114.82f},   {"SN", 118.69f},
    {"SB", 121.75f},   {"TE", 127.6f},    {"I ", 126.905f},  {"XE", 131.3f},    {"CS", 132.905f},
    {"BA", 137.33f},   {"LA", 138.906f},  {"CE", 140.12f},   {"PR", 140.908f},  {"ND", 144.24f},
    {"PM", 145.0f},    {"SM", 150.4f},    {"EU", 151.96f},   {"GD", 157.25f},   {"TB", 158.925f},
    {"DY", 162.5f},    {"HO", 164.93f},   {"ER", 167.26f},   {"TM", 168.934f},  {"YB", 173.04f},
    {"LU", 174.967f},  {"HF", 178.49f},   {"TA", 180.948f},  {"W ", 183.85f},   {"RE", 186.207f},
    {"OS", 190.2f},    {"IR", 192.22f},   {"PT", 195.09f},   {"AU", 196.967f},  {"HG", 200.59f},
    {"TL", 204.37f},   {"PB", 207.2f},    {"BI", 208.98f},   {"PO", 209.0f},    {"AT", 210.0f},
    {"RN", 222.0f},    {"FR", 223.0f},    {"RA", 226.025f},  {"AC", 227.028f},  {"TH", 232.038f},
    {"PA", 231.037f},  {"U ", 238.029f},  {"NP", 237.048f},  {"PU", 244.0f},    {"AM", 243.0f},
    {"CM", 247.0f},    {"BK", 247.0f},    {"CF", 251.0f},    {"ES", 252.0f},    {"FM", 257.0f},
    {"MD", 258.0f},    {"NO", 259.0f},    {"LR", 260.0f},
}};

// The next serial of a counter that stops at its cap.
int next_serial(int& counter, int cap) {
    if (counter < cap) ++counter;
    return counter;
}

void add_to_formula(std::vector<FormulaEntry>& formula, const std::string& symbol) {
    for (FormulaEntry& e : formula)
        if (e.symbol == symbol) {
            ++e.count;
            return;
        }
    if (static_cast<int>(formula.size()) < kMaxFormulaEntries) formula.push_back({symbol, 1});
    else formula.back() = {symbol, 1};   // past the 50th, the last entry is overwritten
}

}  // namespace

std::vector<FormulaEntry> relabel_atoms(Store& st) {
    std::vector<FormulaEntry> formula;
    int carbons = 0, hydrogens = 0, others = 0;
    for (int i = 1; i <= st.natoms; ++i) {
        Label& l = st.atom_label[i];
        const bool one = label_is_one_letter(label_text(l));
        const std::string symbol = one ? std::string(1, l[0]) + " " : std::string{l[0], l[1]};
        add_to_formula(formula, symbol);
        int serial = 0;
        if (one && l[0] == 'C') serial = next_serial(carbons, 999);
        else if (one && (l[0] == 'H' || l[0] == 'D')) serial = next_serial(hydrogens, 999);
        else serial = next_serial(others, 99);
        const std::string stem = one ? symbol.substr(0, 1) : symbol;
        l = make_label(stem + std::to_string(serial));
    }
    return formula;
}

void order_formula(std::vector<FormulaEntry>& formula) {
    const char* const first[] = {"C ", "H ", "N "};
    for (std::size_t place = 0; place < 3 && place < formula.size(); ++place) {
        for (std::size_t k = 0; k < formula.size(); ++k)
            if (formula[k].symbol == first[place] && k != place) {
                std::swap(formula[k], formula[place]);
                break;
            }
    }
}

std::string formula_text(const std::vector<FormulaEntry>& formula) {
    std::string text;
    for (const FormulaEntry& e : formula) text += e.symbol + text::format_i(e.count, 3) + " ";
    return text;
}

std::vector<std::string> formula_file_lines(const std::vector<FormulaEntry>& formula) {
    std::vector<std::string> lines;
    for (const FormulaEntry& e : formula) lines.push_back("  " + text::format_a(e.symbol, 4) + text::format_i(e.count, 5));
    return lines;
}

FormulaWeight formula_weight(const std::vector<FormulaEntry>& formula, float volume) {
    FormulaWeight out;
    float fw = 0;
    long long f000 = 0, non_h = 0;
    std::vector<float> mass(formula.size(), 0.0f);
    for (std::size_t row = 0; row < kWeights.size(); ++row)
        for (std::size_t k = 0; k < formula.size(); ++k) {
            if (text::upper_case(formula[k].symbol) != kWeights[row].symbol) continue;
            mass[k] = kWeights[row].weight * static_cast<float>(formula[k].count);
            fw += mass[k];
            f000 += static_cast<long long>(row + 1) * formula[k].count;
            if (kWeights[row].symbol != std::string("H ")) non_h += formula[k].count;
        }
    float total = 0;
    for (std::size_t k = 0; k < formula.size(); ++k) {
        const float percent = fw > 0 ? 100.0f * mass[k] / fw : 0.0f;
        total += percent;
        out.lines.push_back("  % " + text::upper_case(formula[k].symbol) + "     " + text::format_f(percent, 6, 2));
    }
    out.lines.push_back("  % Tot    " + text::format_f(total, 6, 2));
    out.lines.push_back(" ");
    if (volume <= -0.5f) {
        out.lines.push_back((text::FreeRecord() << " Formula Wt. " << fw).str());
    } else {
        out.lines.push_back("  Cell Formula Wt " + text::format_f(fw, 11, 3));
        out.lines.push_back("  F000   " + text::format_f(static_cast<double>(f000), 8, 1));
    }
    if (volume > 0.001f) {
        out.lines.push_back("  The calculated density is      " + text::format_f(fw / (volume * 0.6022045f), 6, 3) +
                            " g/cm3");
        out.lines.push_back("  Atomic Volume per NonH Atom is " +
                            text::format_f(non_h > 0 ? volume / static_cast<float>(non_h) : 0.0f, 6, 2) + " A**3");
    }
    out.lines.push_back(" ");
    out.weight = fw;
    return out;
}

void make_unique_names(Session& s) {
    std::vector<FormulaEntry> formula = relabel_atoms(s.store);
    reload_keeping_turn(s);
    order_formula(formula);
    const std::string text = formula_text(formula);
    s.tk.WindowOutStatusBar(9, text.empty() ? " " : text);
    log_line(s, text);
    files::write_lines("fort.19", formula_file_lines(formula));
    for (const std::string& line : formula_weight(formula, -1.0f).lines) log_line(s, line);
}

}  // namespace zentol
