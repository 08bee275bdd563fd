// The ICONC files as text: the iterated inputc deck, the energy file and
// listing readers on good and spoilt input, and the lines the runs log.
// The plain deck is checked whole by the mode tests.
#include "engines/iconc/iconc_deck.h"

#include <gtest/gtest.h>

using namespace zentol;

namespace {

using Lines = std::vector<std::string>;

IconcAtom atom(const char* label, float x, float y, float z, bool metal = false) {
    IconcAtom a;
    a.label = make_label(label);
    a.x = x, a.y = y, a.z = z;
    a.metal = metal;
    return a;
}

// A carbonyl on a metal with a ring centroid CN1 beside it, the metal not
// first, and a second metal last.
std::vector<IconcAtom> complex_atoms() {
    return {atom("O1", 0, 0, 3.05f), atom("FE1", 0, 0, 0, true), atom("CN1", 0, 1.6f, 0), atom("C1", 0, 0, 1.9f),
            atom("NI2", -2.5f, 0, 0, true)};
}

text::TextLines lines_of(const Lines& l) { return text::TextLines::from_lines(l); }

}  // namespace

TEST(IconcDeck, IterationNamesTheMetalsFirstThenOtherAtoms) {
    // Three asked for, two metals: the first other atom of the deck fills up.
    const Lines deck = iconc_deck(complex_atoms(), {0, true, 3});
    EXPECT_EQ(Lines(deck.begin() + 13, deck.end()), (Lines{"Y", "1", "B", "B", "3", "FE1", "NI2", "O1", "Y", "9"}));
}

TEST(IconcDeck, LabelsFoldToCapitalsAndDigitsAndOnlyTheDBlockIsIterated) {
    EXPECT_EQ(label_text(fold_label("c-2")), "C 2 ");
    EXPECT_EQ(label_text(fold_label("h_a'")), "H A ");
    for (int z : {21, 30, 39, 48, 71, 80}) EXPECT_TRUE(is_transition_metal(z)) << z;
    for (int z : {20, 31, 38, 49, 57, 70, 81}) EXPECT_FALSE(is_transition_metal(z)) << z;
}

// A good file is read by the mode tests, and a missing one gives zero there.
TEST(IconcResults, TheTotalIsTheFourthNumberOfTheFourthLineAndAnythingElseIsZero) {
    const Lines head{" ICONC ENERGIES (EV)", " STAB REP ONE TOTAL", " ----"};
    auto with = [&](const std::string& fourth) {
        Lines l = head;
        l.push_back(fourth);
        return read_iconc_energy(lines_of(l));
    };
    // The label columns may hold anything, numbers included.
    EXPECT_DOUBLE_EQ(with("12345678901234567890 1.0 2.0 3.0 -4.5D+01"), -45.0);
    EXPECT_EQ(with(" TOTAL ENERGY (EV)   ****** NaN overflow"), 0.0);
    EXPECT_EQ(with(" TOTAL ENERGY (EV)      1.0 2.0 3.0"), 0.0);
    EXPECT_EQ(read_iconc_energy(lines_of(head)), 0.0);
    // CR LF line ends read the same.
    EXPECT_DOUBLE_EQ(read_iconc_energy(text::TextLines::from_bytes("a\r\nb\r\nc\r\n" + std::string(20, 'x') +
                                                                   " 1 2 3 -7.25\r\n")),
                     -7.25);
}

TEST(IconcResults, LevelsAndNetChargesComeFromTheListingUpToWhereItEnds) {
    const Lines listing{" ICONC", " ENERGY LEVELS (eV)", "    1     -15.20000    2.0000", "",
                        "    2     -12.70000    1.0000", "    3      -8.40000    0.0000",
                        " SUM OF ONE-ELECTRON ENERGIES =  -108.5", "ATOM      NET CHG.",
                        "FE            0.6000", "C            -0.2500", "O", "H            -0.1000"};
    const Lines levels = iconc_level_list(lines_of(listing));
    ASSERT_EQ(levels.size(), 3u);
    EXPECT_EQ(levels[2], "    3      -8.40000    0.0000");
    EXPECT_EQ(iconc_occupied_levels(levels), 2);
    // The short line ends the table: what came before it is kept.
    EXPECT_EQ(iconc_net_charges(lines_of(listing), 4), (std::vector<double>{0.6, -0.25}));
    EXPECT_TRUE(iconc_net_charges(lines_of({" no table"}), 4).empty());
    // Spread over the molecule: the dummy centre and the atoms past the
    // table's end have none.
    EXPECT_EQ(charges_per_atom(complex_atoms(), {0.1, 0.6, -0.3}), (std::vector<double>{0.1, 0.6, 0, -0.3, 0}));
}

TEST(IconcResults, LogStatusAndChartKeepTheirColumnsAndRanges) {
    EXPECT_EQ(iconc_energy_log(-98.5),
              (Lines{" ICONC energy", " Total Energy =      -98.50000 eV        -9503.72374 kJ/mol"}));
    EXPECT_EQ(iconc_energy_status(-98.5), "   -98.50000 eV");
    EXPECT_EQ(scan_log_line(make_label("FE"), make_label("H"), 1, 3, 1.64, -99.75),
              "FE  H       1   3    1.640          -99.75000000             -9624.329");
    EXPECT_EQ(optimise_final_line(-99.5),
              " STABILIZATION + REPULSION  optimized =       -99.50000                  =       -9600.208 kJ/mol");
    const Chart c = scan_chart({{1.7, -99.1}, {1.8, -99.6}, {1.9, -99.4}}, make_label("FE"), make_label("H3"));
    EXPECT_EQ((std::vector<double>{c.x_min, c.x_max, c.y_min, c.y_max}), (std::vector<double>{1.7, 1.9, -99.6, -99.1}));
    EXPECT_EQ(scan_minimum({}), 0);
}
