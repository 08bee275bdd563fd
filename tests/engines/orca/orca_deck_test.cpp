// The three forms of the ORCA deck and the choices that change them.
#include <gtest/gtest.h>

#include "engines/orca/orca_input.h"
#include "support/test_support.h"

using namespace zentol;

namespace {

Store water() {
    Store st;
    st.natoms = st.natoms_file = 3;
    st.atom_label[1] = make_label("O");
    st.atom_label[2] = make_label("H1");
    st.atom_label[3] = make_label("H2");
    st.atom_rec[1] = {0, 0, 0.119262f, 0, 0, 0};
    st.atom_rec[2] = {0, 0.763239f, -0.477047f, 0, 0, 0};
    st.atom_rec[3] = {0, -0.763239f, -0.477047f, 0, 0, 0};
    return st;
}

struct Deck {
    std::vector<std::string> lines;
    bool opt_requested = false;
    std::string scf;
};

Deck deck_for(const OrcaInput& in, const std::string& scf_before = "", bool opt_before = false) {
    Deck d;
    d.opt_requested = opt_before;
    OrcaDeckWords w = orca_deck_words(in, orca_keyword_table(), scf_before, d.opt_requested);
    d.scf = w.scf;
    d.lines = orca_deck(in, w, "water", water());
    return d;
}

std::string joined(const std::vector<std::string>& lines) {
    std::string all;
    for (const auto& l : lines) all += l + "\n";
    return all;
}

const char* const kAtoms =
    " * xyz            0           1\n"
    "O      0.0000   0.0000   0.1193\n"
    "H1     0.0000   0.7632  -0.4770\n"
    "H2     0.0000  -0.7632  -0.4770\n"
    " *\n";

}  // namespace

TEST(OrcaDeck, FormAForAnOptimisationWithTheDialogsDefaults) {
    const Deck d = deck_for(OrcaInput{});
    EXPECT_EQ(joined(d.lines), std::string(" # Orca input from Brevan / Zentol\n"
                                           " # water\n"
                                           " ! RHF wB97X-D3 6-31G**\n"
                                           " ! OPT TightSCF Pmodel AIM\n"
                                           " %maxcore 1024\n") +
                                   kAtoms);
    EXPECT_TRUE(d.opt_requested);
}

TEST(OrcaDeck, FormAWithIrRamanCoresAndAnOpenShell) {
    OrcaInput in;
    in.run_type = 1;
    in.method = 4;
    in.basis = 3;
    in.wfn = false;
    in.multiplicity = 2;
    in.cores = 2;
    in.spectrum_on = true;
    in.spectrum = 2;
    const Deck d = deck_for(in);
    EXPECT_FALSE(d.opt_requested);
    ASSERT_GE(d.lines.size(), 11u);
    EXPECT_EQ(d.lines[2], " ! UHF MP2 def2-TZVP");
    EXPECT_EQ(d.lines[3], " ! SP TightSCF Pmodel");
    EXPECT_EQ(d.lines[4], " !numfreq");
    EXPECT_EQ(d.lines[5], " %maxcore 1024");
    EXPECT_EQ(d.lines[6], " %PAL NPROC            2");
    EXPECT_EQ(d.lines[7], " end");
    EXPECT_EQ(d.lines[8], " %elprop Polar 1");
    EXPECT_EQ(d.lines[9], " end");
    EXPECT_EQ(d.lines[10], " * xyz            0           2");

    // IR asks for frequencies only; one core gives no %PAL block.
    in.spectrum = 1;
    in.cores = 1;
    const std::string ir = joined(deck_for(in).lines);
    EXPECT_NE(ir.find(" !numfreq\n"), std::string::npos);
    EXPECT_EQ(ir.find("%elprop"), std::string::npos);
    EXPECT_EQ(ir.find("%PAL"), std::string::npos);
}

// With the check box off a Raman choice left in the radio group asks for
// nothing.
TEST(OrcaDeck, SpectrumOffWithRamanSelectedAsksForNoFrequencies) {
    OrcaInput in;
    in.spectrum_on = false;
    in.spectrum = 2;
    const std::string deck = joined(deck_for(in).lines);
    EXPECT_EQ(deck.find("numfreq"), std::string::npos);
    EXPECT_EQ(deck.find("%elprop"), std::string::npos);
}

TEST(OrcaDeck, FormBIsTheSameWhateverTheMethodBasisRunAndCores) {
    OrcaInput b3lyp;
    b3lyp.method = 1;
    b3lyp.spectrum_on = true;
    b3lyp.spectrum = 3;
    OrcaInput other = b3lyp;
    other.method = 2;
    other.basis = 4;
    other.run_type = 1;
    other.cores = 8;
    other.wfn = false;
    const Deck a = deck_for(b3lyp), b = deck_for(other);
    EXPECT_EQ(a.lines, b.lines);
    EXPECT_EQ(joined(a.lines), std::string(" # Orca input from Brevan / Zentol\n"
                                           " !B3LYP DEF2-TZVP CPCM(HEXANE)\n"
                                           "%TDDFT\n"
                                           "   NROOTS   30\n"
                                           "END\n") +
                                   kAtoms);
}

TEST(OrcaDeck, FormCOverridesEverythingAndKeepsTheOptimisationFlagAsTheRunSays) {
    OrcaInput in;
    in.method = 3;
    in.run_type = 1;
    in.spectrum = 2;
    in.cores = 4;
    const Deck d = deck_for(in);
    EXPECT_EQ(joined(d.lines), std::string(" # Orca input from Brevan / Zentol\n"
                                           " # water\n"
                                           " # The method can be AM1 PM3 ZNDDO_1 ZNDDO_2 etc.\n"
                                           " %method\n"
                                           " Method  AM1 end\n"
                                           " ! opt\n") +
                                   kAtoms);
    EXPECT_FALSE(d.opt_requested);
    in.run_type = 2;
    EXPECT_TRUE(deck_for(in).opt_requested);
    // Once set in a stay, an Energy deck does not clear it.
    in.method = 2;
    in.run_type = 1;
    EXPECT_TRUE(deck_for(in, "RHF", true).opt_requested);
}

TEST(OrcaDeck, AMultiplicityBelowOneKeepsTheLastScfWord) {
    OrcaInput in;
    in.multiplicity = 0;
    const Deck d = deck_for(in, "UHF");
    EXPECT_EQ(d.lines[2], " ! UHF wB97X-D3 6-31G**");
    EXPECT_EQ(d.lines[d.lines.size() - 5], " * xyz            0           0");
}

TEST(OrcaDeck, AnEmptyMoleculeClosesTheCoordinateBlockAtOnce) {
    OrcaInput in;
    bool opt = false;
    OrcaDeckWords w = orca_deck_words(in, orca_keyword_table(), "", opt);
    const auto lines = orca_deck(in, w, "none", Store{});
    ASSERT_GE(lines.size(), 2u);
    EXPECT_EQ(lines[lines.size() - 2], " * xyz            0           1");
    EXPECT_EQ(lines.back(), " *");
}
