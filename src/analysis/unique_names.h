// Unique atom labels, the molecular formula and its weight.
#pragma once

#include <string>
#include <vector>

#include "session/molecule_store.h"

namespace zentol {

struct Session;

struct FormulaEntry {
    std::string symbol;   // two characters as in the labels: "C ", "Cl"
    int count = 0;
};

inline constexpr int kMaxFormulaEntries = 50;

// Relabels every atom with its symbol and a serial: carbons and hydrogens
// (D included) each count on their own, every other element shares one
// series. Returns the formula in the order the elements were met.
std::vector<FormulaEntry> relabel_atoms(Store& st);

// Carbon first, hydrogen second, nitrogen third, where they are present.
void order_formula(std::vector<FormulaEntry>& formula);

// One 6-column cell an element: symbol, count in 3 columns, a blank.
std::string formula_text(const std::vector<FormulaEntry>& formula);

// The scratch file fort.19: one line an element.
std::vector<std::string> formula_file_lines(const std::vector<FormulaEntry>& formula);

// The weight report: percentage lines, total, the formula weight. A volume
// of -1 asks for the molecular form; a cell volume adds F000 and density.
struct FormulaWeight {
    double weight = 0;
    std::vector<std::string> lines;
};
FormulaWeight formula_weight(const std::vector<FormulaEntry>& formula, float volume);

// The UniqueNames command: relabel, save, report in field 9 and the log.
void make_unique_names(Session& s);

}  // namespace zentol
