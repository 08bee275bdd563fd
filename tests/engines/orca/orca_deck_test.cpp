// The three forms of the ORCA deck and the choices that change them.
#include <gtest/gtest.h>

#include "engines/orca/orca_input.h"
#include "support/test_support.h"

using namespace zentol;

namespace {

Store water() {
    Store st;
    st.natoms = st.natoms_file = 3;
    const char* labels[] = {"O", "H1", "H2"};
    const float y[] = {0, 0.763239f, -0.763239f}, z[] = {0.119262f, -0.477047f, -0.477047f};
    for (int i = 1; i <= 3; ++i)
        st.atom_label[i] = make_label(labels[i - 1]), st.atom_rec[i] = {0, y[i - 1], z[i - 1], 0, 0, 0};
    return st;
}

// The deck joined into one text, and whether it asked for an optimisation.
struct Deck {
    std::string text;
    bool opt_requested = false;
};

Deck deck_for(const OrcaInput& in, const std::string& scf_before = "", bool opt_before = false) {
    Deck d{"", opt_before};
    for (const auto& l : orca_deck(in, orca_deck_words(in, orca_keyword_table(), scf_before, d.opt_requested),
                                   "water", water()))
        d.text += l + "\n";
    return d;
}

const std::string kHead = " # Orca input from Brevan / Zentol\n";
const std::string kAtoms = " * xyz            0           1\n"
                           "O      0.0000   0.0000   0.1193\n"
                           "H1     0.0000   0.7632  -0.4770\n"
                           "H2     0.0000  -0.7632  -0.4770\n"
                           " *\n";

}  // namespace

TEST(OrcaDeck, FormAWithTheDialogsDefaultsAndWithIrRamanCoresAndAnOpenShell) {
    const Deck defaults = deck_for(OrcaInput{});
    EXPECT_EQ(defaults.text,
              kHead + " # water\n ! RHF wB97X-D3 6-31G**\n ! OPT TightSCF Pmodel AIM\n %maxcore 1024\n" + kAtoms);
    EXPECT_TRUE(defaults.opt_requested);

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
    EXPECT_EQ(d.text, kHead + " # water\n ! UHF MP2 def2-TZVP\n ! SP TightSCF Pmodel\n !numfreq\n %maxcore 1024\n"
                              " %PAL NPROC            2\n end\n %elprop Polar 1\n end\n * xyz            0           2\n" +
                          kAtoms.substr(kAtoms.find('\n') + 1));

    // IR asks for frequencies only.
    in.spectrum = 1;
    const std::string ir = deck_for(in).text;
    EXPECT_NE(ir.find(" !numfreq\n"), std::string::npos);
    EXPECT_EQ(ir.find("%elprop"), std::string::npos);
    // With the check box off a Raman choice left in the radio group asks for nothing.
    in.spectrum_on = false;
    in.spectrum = 2;
    const std::string off = deck_for(in).text;
    EXPECT_EQ(off.find("numfreq"), std::string::npos);
    EXPECT_EQ(off.find("%elprop"), std::string::npos);
}

// The UV spectrum's TD-DFT deck is fixed whatever the method, basis, run and cores.
TEST(OrcaDeck, FormBIsTheFixedTdDftDeck) {
    OrcaInput in;
    in.method = 2;
    in.basis = 4;
    in.cores = 8;
    in.spectrum_on = true;
    in.spectrum = 3;
    EXPECT_EQ(deck_for(in).text, kHead + " !B3LYP DEF2-TZVP CPCM(HEXANE)\n%TDDFT\n   NROOTS   30\nEND\n" + kAtoms);
}

TEST(OrcaDeck, FormCOverridesEverythingAndKeepsTheOptimisationFlagAsTheRunSays) {
    OrcaInput in;
    in.method = 3;
    in.run_type = 1;
    in.spectrum = 2;
    in.cores = 4;
    const Deck d = deck_for(in);
    EXPECT_EQ(d.text, kHead + " # water\n # The method can be AM1 PM3 ZNDDO_1 ZNDDO_2 etc.\n %method\n Method  AM1 end\n"
                              " ! opt\n" + kAtoms);
    EXPECT_FALSE(d.opt_requested);
    // Once set in a stay, an Energy deck does not clear it.
    in.method = 2;
    in.run_type = 1;
    EXPECT_TRUE(deck_for(in, "RHF", true).opt_requested);
}

TEST(OrcaDeck, ALowMultiplicityKeepsTheLastScfWord) {
    OrcaInput in;
    in.multiplicity = 0;
    EXPECT_NE(deck_for(in, "UHF").text.find(" ! UHF wB97X-D3 6-31G**\n"), std::string::npos);
}
