// The Firefly deck: its records under each condition, the Z-matrix read
// from both MOPAC layouts, the frozen dihedral of a rotation profile.
#include "engines/firefly/firefly_deck.h"

#include <gtest/gtest.h>

#include "engines/firefly/firefly_zmatrix.h"
#include "session/session.h"
#include "support/test_support.h"

using namespace zentol;
using namespace zentol::testing;

TEST(FireflyDeck, DefaultDeckIsThirteenRecordsWithFixedFields) {
    const std::vector<std::string> expected{
        " $CONTRL SCFTYP=RHF MAXIT=500",
        " RUNTYP=ENERGY ICHARG=0 MULT=1 $END",
        " $BASIS GBASIS=N21  NGAUSS=3 NDFUNC=0 NPFUNC=0 diffsp=.f. diffs=.f. $END",
        " $SCF DIRSCF=.TRUE. $END",
        " $STATPT OPTTOL=0.00010 NSTEP= 500 $END",
        " $SYSTEM TIMLIM=60000 MEMORY= 30000000 $END",
        " $DATA",
        "water Firefly run",
        "C1"};
    // The MEMORY field of the dialog is not read into the deck.
    FireflySettings o;
    o.memory_mwords = 77;
    EXPECT_EQ(firefly_header(o, "water", 3), expected);
}

TEST(FireflyDeck, ContrlRunTypeAndBasisRecords) {
    FireflySettings o;
    o.method = 7;
    o.nd = o.np = 1;
    EXPECT_EQ(firefly_header(o, "j", 3)[2], " $BASIS GBASIS=N31  NGAUSS=6 NDFUNC=1 NPFUNC=1 diffsp=.f. diffs=.f. $END");
    o.dft = o.disp = o.wfn = true;
    o.scf_type = 2;
    o.maxit = 60;
    EXPECT_EQ(firefly_header(o, "j", 3)[0], " $CONTRL DFTTYP=B97D SCFTYP=UHF MAXIT=60 AIMPAC=1");
    // Semi-empirical methods never take the dft form.
    o.method = 4;
    EXPECT_EQ(firefly_header(o, "j", 3)[0], " $CONTRL SCFTYP=UHF MAXIT=60");
    EXPECT_EQ(firefly_header(o, "j", 3)[2], " $BASIS GBASIS=AM1 $END");

    o.run_type = 2;
    o.charge = -1;
    o.multiplicity = 2;
    o.zmat = true;
    EXPECT_EQ(firefly_header(o, "j", 2)[1], " RUNTYP=OPTIMIZE ICHARG=-1 MULT=2 COORD=ZMT NZVAR=0 $END");
    EXPECT_EQ(firefly_header(o, "j", 9)[1], " RUNTYP=OPTIMIZE ICHARG=-1 MULT=2 COORD=ZMT NZVAR=21 $END");
}

TEST(FireflyDeck, OptionalGroupsStandWhereTheyBelong) {
    FireflySettings o;
    o.chelpg = o.nbo = true;
    o.plot = 1;
    o.opt_tol = 0.00005f;
    o.max_steps = 50;
    o.time_limit = 600;
    const auto h = firefly_header(o, "job", 3);
    const std::vector<std::string> middle{" $STATPT OPTTOL=0.00005 NSTEP=  50 $END",
                                          " $ELPOT IEPOT=1 WHERE=PDC $END",
                                          " $PDC PTSEL=CHELPG $END",
                                          " $SYSTEM TIMLIM=  600 MEMORY= 30000000 $END",
                                          " $NBO CMO file=job archive $END",
                                          " $CUBE MESH=regular $END",
                                          " $ELDENS IEDEN=1 MORB=0 $END",
                                          " $DATA"};
    ASSERT_EQ(h.size(), 14u);
    EXPECT_EQ(std::vector<std::string>(h.begin() + 4, h.begin() + 12), middle);
    o.plot = 2;
    o.multiplicity = 2;
    EXPECT_EQ(firefly_header(o, "job", 3)[10],
              " $ELDENS IEDEN=1 spind=.t. diffd=.t. skiphf=.f. derivs(1)=0,1,2 $END");
}

TEST(FireflyDeck, TwoLetterElementAndFreeze) {
    TestSession t;
    two_carbons(t.s.store, 1.54f);
    t.s.store.atom_label[2] = make_label("Cl2");
    EXPECT_EQ(firefly_cartesian_atoms(t.s.store)[1], "Cl2  17.0     1.54000     0.00000     0.00000");
    EXPECT_EQ(freeze_coordinate(" $STATPT OPTTOL=0.00010 NSTEP= 500 $END", 6),
              " $STATPT OPTTOL=0.00010 NSTEP= 500 IFREEZ(1)=   6 $END");
}

// The open-source MOPAC's table (INT), atom 1 right below the header.
TEST(FireflyZmatrix, ReadsTheModernTableAndWritesConnections) {
    const auto listing = text::TextLines::from_lines({
        "  ATOM    CHEMICAL      BOND LENGTH      BOND ANGLE     TWIST ANGLE ",
        "   (I)                     NA:I           NB:NA:I       NC:NB:NA:I       NA    NB    NC ",
        "     1       C          0.00000000       0.0000000       0.0000000        0     0     0",
        "     2       C          1.51204056  *    0.0000000       0.0000000        1     0     0",
        "     3       O          1.43106147  *  107.7999305  *    0.0000000        2     1     0",
        "     4       H          0.97100249  *  105.3981632  *  180.0000000  *     3     2     1",
        "     5       H          1.09367726  *  110.2929832  * -120.3515718  *     2     1     3",
    });
    auto rows = read_internal_coordinates(listing, 5);
    ASSERT_TRUE(rows);
    // A table cut short is no table.
    EXPECT_FALSE(read_internal_coordinates(listing, 6));

    TestSession t;
    Store& st = t.s.store;
    for (const char* l : {"C1", "C2", "O3", "H4", "H5"}) st.atom_label[++st.natoms] = make_label(l);
    const std::vector<std::string> expected{"C",
                                            "C    1    1.512",
                                            "O    2    1.431   1  107.800",
                                            "H    3    0.971   2  105.398   1  180.000",
                                            "H    2    1.094   1  110.293   3 -120.352",
                                            " $END"};
    EXPECT_EQ(zmatrix_records(st, *rows), expected);
    // The dihedral about the bond C2-O3 is atom 4's: coordinate 3*4-6.
    auto frozen = find_frozen_dihedral(*rows, 3, 2);
    ASSERT_TRUE(frozen);
    EXPECT_EQ(frozen->coordinate, 6);
    EXPECT_EQ(frozen_dihedral_line(st, *frozen), "Dihedral frozen is H4   O3   C2   C1       4    3    2    1   180.000");
    EXPECT_FALSE(find_frozen_dihedral(*rows, 4, 5));
}

// Mopac 6 leaves the values and connections of the first atoms out, and a
// record stands between the header and atom 1.
TEST(FireflyZmatrix, ReadsTheMopac6LayoutWithItsGaps) {
    const auto listing = text::TextLines::from_lines({
        "   (I)              NA:I           NB:NA:I        NC:NB:NA:I     NA   NB   NC",
        "",
        "     1      C",
        "     2      O        1.13000 *",
        "     3      H        1.10000 *     120.00000 *                    1    2",
    });
    auto rows = read_internal_coordinates(listing, 3);
    ASSERT_TRUE(rows);
    EXPECT_EQ((*rows)[1].na, 1);
    EXPECT_NEAR((*rows)[1].length, 1.13, 1e-9);
    EXPECT_EQ((*rows)[2].na, 1);
    EXPECT_EQ((*rows)[2].nb, 2);
    EXPECT_NEAR((*rows)[2].angle, 120.0, 1e-9);
}
