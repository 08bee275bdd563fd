// Unique labels, the formula and its weight report.
#include "analysis/unique_names.h"

#include <string>

#include <gtest/gtest.h>

#include "session/store_ops.h"
#include "support/test_support.h"

using namespace zentol;
using namespace zentol::testing;

namespace {

Store labelled(const std::vector<std::string>& labels) {
    Store st;
    element_lookup(st, nullptr, "", kLookupConfirmAll);
    st.natoms = static_cast<int>(labels.size());
    for (int i = 1; i <= st.natoms; ++i) st.atom_label[i] = make_label(labels[static_cast<std::size_t>(i - 1)]);
    return st;
}

}  // namespace

TEST(UniqueNames, CarbonHydrogenAndOneSharedSeriesForTheRest) {
    Store st = labelled({"O", "C5", "Cl", "H", "N", "D", "C", "Fe", "Cl2", "H"});
    std::vector<FormulaEntry> formula = relabel_atoms(st);
    const char* want[] = {"O1  ", "C1  ", "Cl2 ", "H1  ", "N3  ", "D2  ", "C2  ", "Fe4 ", "Cl5 ", "H3  "};
    for (int i = 1; i <= 10; ++i) EXPECT_EQ(label_text(st.atom_label[i]), want[i - 1]) << i;
    order_formula(formula);
    EXPECT_EQ(formula_text(formula), "C   2 H   2 N   1 O   1 Cl  2 D   1 Fe  1 ");

    // Serials stop at 999 for carbon, 99 for the shared series.
    Store big = labelled(std::vector<std::string>(1001, "C"));
    relabel_atoms(big);
    EXPECT_EQ(label_text(big.atom_label[120]), "C120");
    EXPECT_EQ(label_text(big.atom_label[1001]), "C999");
    Store many = labelled(std::vector<std::string>(101, "Br"));
    relabel_atoms(many);
    EXPECT_EQ(label_text(many.atom_label[101]), "Br99");
}

TEST(UniqueNames, FormulaWeightReport) {
    // Water with one deuterium: D adds no weight but stands in the formula.
    FormulaWeight w = formula_weight({{"H ", 1}, {"O ", 1}, {"D ", 1}}, -1.0f);
    ASSERT_EQ(w.lines.size(), 7u);
    EXPECT_EQ(std::vector<std::string>(w.lines.begin(), w.lines.begin() + 5),
              (std::vector<std::string>{"  % H        5.93", "  % O       94.07", "  % D        0.00",
                                        "  % Tot    100.00", " "}));
    EXPECT_EQ(w.lines[5].substr(0, 14), "  Formula Wt. ");
    EXPECT_NEAR(std::stod(w.lines[5].substr(14)), 17.007, 1e-4);

    FormulaWeight none = formula_weight({}, -1.0f);
    EXPECT_EQ(none.lines[0], "  % Tot      0.00");

    // A cell: formula weight, F000, density and volume per heavy atom.
    FormulaWeight cell = formula_weight({{"C ", 6}, {"H ", 6}}, 100.0f);
    EXPECT_EQ(cell.lines[4], "  Cell Formula Wt      78.114");
    EXPECT_EQ(cell.lines[5], "  F000       42.0");
    EXPECT_EQ(cell.lines[6].substr(0, 39), "  The calculated density is       1.297");
    EXPECT_EQ(cell.lines[7].substr(0, 39), "  Atomic Volume per NonH Atom is  16.67");
}

TEST(UniqueNames, TheCommandRelabelsTheJobAndLogsTheFormula) {
    TestSession t;
    run_on_water(t, "menu 40044\n");
    // No carbon: hydrogen is already second, so the order stays as met.
    EXPECT_EQ(t.tk.status(9), "O   1 H   2 ");
    const std::string xyz = read_file(t.scratch() + "/water.xyz");
    EXPECT_NE(xyz.find("  O1 "), std::string::npos);
    EXPECT_NE(xyz.find("  H2 "), std::string::npos);
    const std::string geo = read_file(t.scratch() + "/water.geo");
    EXPECT_NE(geo.find("O   1 H   2\n  % O       88.81\n  % H       11.19\n  % Tot    100.00\n"), std::string::npos);
    EXPECT_EQ(read_file(t.scratch() + "/fort.19"), "    O     1\n    H     2\n");
}
