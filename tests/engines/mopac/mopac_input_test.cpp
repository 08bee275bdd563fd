// The MOPAC deck for each case the two engine generations tell apart, and
// the plot files.
#include "engines/mopac/mopac_input.h"

#include <gtest/gtest.h>

#include "engines/mopac/mopac_plot.h"
#include "text/text_lines.h"
#include "session/store_ops.h"

using namespace zentol;

namespace {

MopacOptions options(int method, int charge, int multiplicity, int run_type) {
    return {.method = method, .charge = charge, .multiplicity = multiplicity, .run_type = run_type};
}

// Water, O1 bonded to H2 and H3.
void water(Store& st) {
    const char* labels[] = {"O1", "H2", "H3"};
    const float y[] = {0, 0.7572f, -0.7572f}, z[] = {0.1173f, -0.4692f, -0.4692f};
    for (int i = 1; i <= 3; ++i)
        st.atom_label[i] = make_label(labels[i - 1]), st.atom_rec[i] = {0, y[i - 1], z[i - 1], 0, 0, 0};
    st.natoms = 3, st.nbonds = 2;
    st.bond_a[1] = st.bond_a[2] = 1, st.bond_b[1] = 2, st.bond_b[2] = 3;
}

}  // namespace

TEST(MopacDeck, HeaderLineOneForEachCase) {
    struct Case { MopacOptions o; int version; const char* line; };
    MopacOptions flags6 = options(4, 0, 1, 2), geo = options(4, 0, 1, 2), uhf = options(7, 0, 2, 2);
    flags6.geo_ok = flags6.mm_ok = geo.geo_ok = true;
    uhf.scf = 2;
    const Case cases[] = {
        // The spin words stop at triplets.
        {options(5, -10, 4, 2), kMopac6, " PM3  CHARGE=-10 GRAPH DENSITY ESR VECTORS XYZ"},
        {flags6, kMopac6, " AM1  CHARGE=  0 SINGLET GRAPH DENSITY GEO-OK MMOK VECTORS XYZ"},
        // The 2016 generation: GRAPHF, ALLVEC with GEO-OK, and what the
        // open-source MOPAC needs (DISP, 1SCF, the open-shell words).
        {options(10, 1, 1, 1), kMopac2016, " PM6-DH2X  CHARGE=  1 SINGLET GRAPHF DENSITY VECTORS XYZ DISP 1SCF"},
        {geo, kMopac2016, " AM1  CHARGE=  0 SINGLET ALLVEC GRAPHF DENSITY GEO-OK VECTORS XYZ DISP"},
        {options(7, 0, 2, 2), kMopac2016, " PM7  CHARGE=  0 DOUBLET GRAPHF DENSITY ESR VECTORS XYZ DISP RHF"},
        {uhf, kMopac2016, " PM7  CHARGE=  0 DOUBLET GRAPHF DENSITY ESR VECTORS XYZ DISP UHF"},
        {options(7, 0, 3, 1), kMopac2016, " PM7  CHARGE=  0 TRIPLET GRAPHF DENSITY ESR VECTORS XYZ DISP OPEN(2,2) 1SCF"},
        // Quartets and above say their multiplicity and run UHF, RHF chosen or not.
        {options(7, 0, 9, 2), kMopac2016, " PM7  CHARGE=  0 NONET GRAPHF DENSITY ESR VECTORS XYZ DISP UHF"},
    };
    for (Case c : cases) EXPECT_EQ(mopac_header(c.o, c.version, "ptest")[0], c.line);
    // Force constants come from a second job on the optimised geometry.
    MopacOptions force = options(7, 0, 1, 3);
    EXPECT_EQ(mopac_header(force, kMopac2016, "ptest"),
              (std::vector<std::string>{" PM7  CHARGE=  0 SINGLET GRAPHF DENSITY VECTORS XYZ DISP",
                                        " Mopac run for ptest", " *********************"}));
    EXPECT_EQ(force.run_type, 2) << "a force run goes on as an optimisation";
    EXPECT_EQ(mopac_force_job(options(7, 0, 5, 2), "PM7")[1], " PM7  CHARGE=  0 QUINTET UHF OLDGEO FORCE XYZ");
}

// What an engine generation cannot run is refused with the reason; Mopac 6
// takes every multiplicity of the dialog.
TEST(MopacDeck, RefusalsSayWhy) {
    EXPECT_EQ(mopac_refusal(options(7, 0, 9, 2), kMopac2016, true), "");
    EXPECT_EQ(mopac_refusal(options(4, 0, 12, 2), kMopac6, false), "");
    EXPECT_EQ(mopac_refusal(options(7, 0, 10, 2), kMopac2016, true), "MOPAC takes multiplicities up to 9 (NONET)");
    EXPECT_EQ(mopac_refusal(options(1, 0, 1, 2), kMopac2016, true),
              "MOPAC 2016 and later do not know PDG: choose another method");
    EXPECT_EQ(mopac_refusal(options(7, 0, 1, 2), kMopac6, false), "PM7 needs MOPAC 2016 or later: check Mopac2016");
}

TEST(MopacDeck, InternalCoordinatesForShortMoleculesUnderMopac6) {
    Store st;
    water(st);
    const int none[4] = {0, 0, 0, 0};
    MopacOptions energy = options(4, 0, 1, 1), optimise = options(4, 0, 1, 2);
    // Distances 1-2 and 2-3, the angle 1-2-3; the flag is the run type less 1.
    EXPECT_EQ(mopac_atom_table(st, optimise, kMopac6, none),
              (std::vector<std::string>{"O1  ", "H2       0.95778  1", "H3       1.51440  1    37.76008  1"}));
    EXPECT_EQ(mopac_atom_table(st, energy, kMopac6, none)[1], "H2       0.95778  0");
    st.natoms = 1;
    EXPECT_EQ(mopac_atom_table(st, optimise, kMopac6, none),
              std::vector<std::string>{"O1       0.00000  1     0.00000  1     0.00000  1"});
    // The 2016 generation always has Cartesian lines, with bare element labels.
    st.natoms = 3;
    EXPECT_EQ(mopac_atom_table(st, optimise, kMopac2016, none)[1], "H        0.00000  1     0.75720  1    -0.46920  1");
}

// The control file is checked whole where the map program reads it (MopacPlot).
TEST(MopacPlotFiles, AtomsAndViewerFiles) {
    Store st;
    water(st);
    EXPECT_EQ(plot_atoms_file(st), (std::vector<std::string>{"    3", "O1      0.000000    0.000000    0.117300",
                                                             "H2      0.000000    0.757200   -0.469200",
                                                             "H3      0.000000   -0.757200   -0.469200"}));
    const auto pdb = plot_pdb(st);
    ASSERT_EQ(pdb.size(), 4u + 3u + 2u + 1u);
    EXPECT_EQ(pdb[0], "CRYST1    1.000    1.000    1.000  90.00  90.00  90.00");
    EXPECT_EQ(pdb[5], "HETATM    2 H2   UNK     0       0.000   0.757  -0.469  1.00  0.00           H");
    EXPECT_EQ(pdb[7], "CONECT    1    2");
    EXPECT_EQ(pdb.back(), "END");
}

TEST(MopacPlotFiles, GraphFileFromTheMgfHead) {
    const std::vector<std::string> mgf{
        "    2 MOPAC-Graphical data Version 22.0.6",
        "   1    0.0000000   0.0000000   0.0000000   0.0000",
        "   1    0.7400000   0.0000000   0.0000000   0.0000",
        "  1.0  1.0",
        "  1.0  1.0",
        " ORBITAL 2 1a    -20.5000",
        " 0.70710678D+00 0.70710678D+00",
        " ORBITAL 0 2a      4.2500",
        " 0.70710678D+00-0.70710678D+00",
        " Keywords: PM7  CHARGE=  0 SINGLET GRAPHF",
        " ORBITAL 2 3a    -99.0000"};
    const text::TextLines lines = text::TextLines::from_lines(mgf);
    const auto head = mgf_head(lines.views());
    ASSERT_EQ(head.size(), 9u);
    const auto graph = graph_file_from_mgf(read_mop2016_vectors(head));
    EXPECT_EQ(graph, (std::vector<std::string>{"     2     0     2     1", "   1    0.000000    0.000000    0.000000",
                                               "   1    0.740000    0.000000    0.000000",
                                               " ORBITAL    1  2   -20.50000", "    0.70710678    0.70710678",
                                               " ORBITAL    2  0     4.25000", "    0.70710678   -0.70710678"}));
}
