// Firefly mode headless, with a fake engine that replays recorded listings
// and punch files: New Input, the run, the update, the queue, the loads of
// an empty job, and the leaving clean-up.
#include "engines/firefly/firefly_mode.h"

#include <cstdlib>
#include <filesystem>

#include <gtest/gtest.h>

#include "engines/runner.h"
#include "engines/session_checks.h"
#include "session/openers.h"
#include "session/session.h"
#include "structure_files/geo_log.h"
#include "support/test_support.h"
#include "toolkit/files.h"

using namespace zentol;
using namespace zentol::testing;

namespace {

// The recorded listing (under tests/data/firefly) and punch file the fake
// engine hands out, for one test.
struct FakeFirefly {
    FakeFirefly(TestSession& t, const std::string& listing, const std::string& punch = "") {
        t.s.engines.values["firefly"] = std::string(ZENTOL_TEST_DATA) + "/../engines/firefly/fake_firefly.sh";
        setenv("FAKE_FIREFLY_LST", test_data("firefly/" + listing).c_str(), 1);
        if (!punch.empty()) setenv("FAKE_FIREFLY_PUN", punch.c_str(), 1);
    }
    ~FakeFirefly() {
        unsetenv("FAKE_FIREFLY_LST");
        unsetenv("FAKE_FIREFLY_PUN");
    }
};

}  // namespace

TEST(FireflyMode, OptimisationRunBringsTheGeometryBack) {
    TestSession t;
    FakeFirefly fake(t, "firefly8.0_h2o_opt.log");
    run_on_water(t, "menu 40015\nmenu 40023\ndialog 116 button:3 1055=1\nmenu 40001\n");
    const std::string job = t.scratch() + "/water";
    EXPECT_TRUE(t.tk.message_boxes().empty()) << t.tk.message_boxes()[0];
    // The deck the engine got (the molecule centred on entering the mode),
    // and its words: one core, no -np.
    const auto deck = lines_of(t.scratch() + "/deck.seen");
    ASSERT_EQ(deck.size(), 13u);
    EXPECT_EQ(deck[1], " RUNTYP=OPTIMIZE ICHARG=0 MULT=1 $END");
    EXPECT_EQ(deck[9], "O     8.0     0.00000     0.00000     0.39754");
    EXPECT_EQ(read_file(t.scratch() + "/args.seen"), "-i water.inp -o water.lst\n");
    EXPECT_NEAR(t.s.store.atom_rec[1][kZ] - t.s.store.atom_rec[2][kZ], -0.1012186 - 0.5345801, 1e-5);
    EXPECT_TRUE(status_shows(t, "Firefly running"));
    EXPECT_TRUE(status_shows(t, "Firefly finished structure updated"));
    const std::string geo = read_file(job + ".geo");
    for (const char* part : {"Firefly run for water", " INPUT CARD> $contrl", "EQUILIBRIUM GEOMETRY LOCATED",
                             "       6    16.67786 L.U.M.O\n       5   -10.66142 H.O.M.O",
                             " TOTAL ENERGY =       -74.96590 HARTREES", "Structure updated"})
        EXPECT_NE(geo.find(part), std::string::npos) << part;
    EXPECT_EQ(lines_of(job + "_chg.log"), (std::vector<std::string>{"#Firefly 3-21G Mulliken atom charges",
                                                                   "O            -0.3305", "H             0.1653",
                                                                   "H             0.1653"}));
    // The summary: five cards, the equilibrium record, its coordinates, the energy.
    const auto txt = lines_of(job + ".txt");
    ASSERT_EQ(txt.size(), 5u + 1 + 6 + 2);
    EXPECT_EQ(txt[6], " COORDINATES OF ALL ATOMS ARE (ANGS)");
    EXPECT_EQ(txt[12], " TOTAL ENERGY =       -74.9659012157 HARTREES");
    EXPECT_EQ(txt[13], "                  -196822.95865 kJ/mol");
    // Leaving removes the engine's files, not the deck or the listing.
    EXPECT_TRUE(file_present(job + ".inp"));
    EXPECT_TRUE(file_present(job + ".lst"));
    EXPECT_FALSE(file_present(job + ".pun"));
}

TEST(FireflyMode, EnergyRunsAndFailedRunsKeepTheMolecule) {
    struct Case { const char *listing, *run; bool fault; };   // run: the run type's radio field
    for (const Case c : {Case{"firefly8.0_h2o_opt.log", "1054", false},
                         Case{"firefly8.0_dvb_uhf_sp_scf_unconverged.out", "1054", true},
                         Case{"firefly8.0_dvb_opt_unconverged.out", "1055", true}}) {
        SCOPED_TRACE(c.listing);
        TestSession t;
        FakeFirefly fake(t, c.listing);
        run_on_water(t, std::string("menu 40015\nmenu 40023\ndialog 116 button:3 ") + c.run + "=1\nmenu 40001\n");
        EXPECT_EQ(box_says(t, "Convergence Fault or NO parameters/file"), c.fault);
        EXPECT_NEAR(t.s.store.atom_rec[2][kY] - t.s.store.atom_rec[1][kY], 0.763239f, 1e-5);
        if (!c.fault) {
            EXPECT_TRUE(status_shows(t, "-2039.81390 eV"));
            EXPECT_TRUE(holds(read_file(t.scratch() + "/water.geo"),
                              "Firefly Energy calculation\n Final Energy =      -74.96175 Hartrees    -2039.81390 eV"));
        }
        // An optimisation without its equilibrium leaves no charges behind.
        if (std::string(c.run) == "1055") { EXPECT_FALSE(file_present(t.scratch() + "/water_chg.log")); }
    }
}

TEST(FireflyMode, MissingPrograms) {
    // No engine: field 9 names it and its key; the mode goes on, and the
    // map says which sibling is missing.
    TestSession t;
    t.s.engines.values["firefly"] = t.dir / "no-firefly";
    t.s.engines.values["gridmap"] = "";
    write_file(t.scratch() + "/water.kew", "  1  1  64\n");
    write_file(t.scratch() + "/water.pun", "x\n");
    run_on_water(t, "menu 40015\nmenu 40006\nmenu 40011\nfile " + t.scratch() +
                        "/water.pun\nmenu 40023\ndialog 116 ok\nmenu 40001\n");
    EXPECT_TRUE(status_shows(t, "Firefly is not installed: set \"firefly\" in "));
    EXPECT_TRUE(box_says(t, "gridmap is not installed"));
    EXPECT_TRUE(file_present(t.scratch() + "/water.inp"));
}

TEST(FireflyMode, QueueTakesEachJobOnce) {
    TestSession t;
    run_on_water(t, "menu 40015\nmenu 40010\nmenu 40023\ndialog 116 ok\nmenu 40010\nmenu 40010\nmenu 40001\n");
    EXPECT_EQ(lines_of(t.s.inst.default_scratch + "/../firefly/qfirefly.txt"),
              std::vector<std::string>{t.scratch() + "/water.inp"});
    // The first try had no deck and said nothing; the others both did.
    int said = 0;
    for (const std::string& m : t.tk.message_boxes()) said += m == "water.inp Added to Q";
    EXPECT_EQ(said, 2);
    run_on_water(t, "menu 40015\nmenu 40013\nmsgbox yes\nmenu 40001\n");
    EXPECT_FALSE(file_present(t.s.inst.default_scratch + "/../firefly/qfirefly.txt"));
}

TEST(FireflyMode, RefusalsLeaveTheOlderDeck) {
    TestSession t;
    write_file(t.scratch() + "/water.inp", "older deck\n");
    run_on_water(t, "menu 40015\n"
                    "menu 40023\ndialog 116 ok 1058=1 1022=1\n"                // AM1 plot
                    "menu 40023\ndialog 116 ok 1022=0 1049=1\n"                // AM1 Raman
                    "menu 40023\ndialog 116 ok 1077=1 1054=1 1039=1\n"         // no dihedral
                    "menu 40023\ndialog 116 ok 1039=0 1027=2\nmsgbox no\n"    // doublet, stays RHF
                    "menu 40001\n");
    const auto& boxes = t.tk.message_boxes();
    ASSERT_EQ(boxes.size(), 4u);
    EXPECT_EQ(boxes[0], "Firefly orbital plots only available\rat HF 3-21G and above.\r"
                        "Use Mopac for Semi-Empirical orbital plots");
    EXPECT_EQ(boxes[1], "Raman intensity calculation not available\rbelow HF and dft level");
    EXPECT_EQ(boxes[2], "No Dihedral Stored");
    EXPECT_EQ(boxes[3], "Multiplicity > 1 and RHF selected\rDo you want to swiich to UHF?");
    const auto deck = lines_of(t.scratch() + "/water.inp");
    EXPECT_EQ(deck.at(0), " $CONTRL SCFTYP=RHF MAXIT=500");
    EXPECT_EQ(deck.at(1), " RUNTYP=ENERGY ICHARG=0 MULT=2 $END");
}

TEST(FireflyMode, RamanTakesTheHessianAndOrbitalPlotsWriteTheirNumbers) {
    // A Raman deck, then the script given; the deck written last.
    auto raman = [](TestSession& t, bool hessian, const std::string& more) {
        if (hessian)
            std::filesystem::copy_file(test_data("firefly/gamessus2018_nh3_ts_hessian.dat"), t.scratch() + "/water.pun");
        run_on_water(t, "menu 40015\nmenu 40023\ndialog 116 ok 1049=1\n" + more + "menu 40001\n");
        return lines_of(t.scratch() + "/water.inp");
    };
    TestSession r;
    const auto deck = raman(r, true, "");
    ASSERT_GT(deck.size(), 20u);   // the group with its rows
    EXPECT_EQ(deck[13], " $HESS");
    EXPECT_EQ(deck.back().substr(0, 5), " $END");
    // Water has ten electrons: the H.O.M.O is 5, the L.U.M.O was asked for.
    TestSession t;
    const auto plot = raman(t, true, "menu 40023\ndialog 116 ok 1022=1 1025=1\ndialog 110 ok 1052=1 1102=48\n");
    EXPECT_TRUE(t.tk.message_boxes().empty());
    EXPECT_EQ(lines_of(t.scratch() + "/water.kew"), std::vector<std::string>{"           6           5          48"});
    EXPECT_EQ(plot.at(6), " $CUBE MESH=regular $END");
    EXPECT_EQ(plot.at(7), " $ELDENS IEDEN=1 ICORBS(1)=   6,   5 $END");
    TestSession none;
    EXPECT_EQ(raman(none, false, "").size(), 13u);
    EXPECT_TRUE(box_says(none, "The sequence Opt, IR/Hessian, Raman\rNo HESSIAN matrix available\rmust be used"));
}

TEST(FireflyMode, EmptyJobLoadsTheListingOrThePunchFile) {
    TestSession t;
    std::filesystem::copy_file(test_data("firefly/firefly8.2_exam12_opt.out"), t.scratch() + "/empty.lst");
    run_on_molecule(t, "firefly/empty.xyz", "menu 40015\nmsgbox yes\nmenu 40001\n");
    ASSERT_EQ(t.s.store.natoms, 4);
    // CARBON and HYDROGEN as typed become the elements of their charges.
    EXPECT_EQ(label_text(t.s.store.atom_label[1]).substr(0, 2), "C ");
    EXPECT_EQ(label_text(t.s.store.atom_label[3]).substr(0, 2), "H ");
    EXPECT_GT(t.s.store.nbonds, 0);
    // No listing: the punch file, then PUNCH copied to it.
    TestSession p;
    std::filesystem::copy_file(test_data("firefly/gamessus2018_dvb_opt.dat"), p.scratch() + "/PUNCH");
    run_on_molecule(p, "firefly/empty.xyz", "menu 40015\nmsgbox yes\nmenu 40001\n");
    EXPECT_EQ(p.tk.message_boxes().front(), "Attempt to load molecule from Firefly empty.pun file?");
    EXPECT_EQ(p.s.store.natoms, 10);
    EXPECT_NEAR(p.s.store.atom_rec[1][kX] - p.s.store.atom_rec[2][kX], -1.4168673 + 0.4900322, 1e-5);
}

TEST(FireflyMode, PunchGeometryWithLpun) {
    TestSession t;
    // A punch file of the water molecule, as an optimisation writes it.
    const std::string punch = t.dir / "water.dat";
    write_file(punch, "----- RESULTS FROM SUCCESSFUL RHF      GEOMETRY SEARCH -----\n"
                      "----- COORDS, ORBS, GRADIENT, AND APPROX. HESSIAN -----\n"
                      " COORDINATES OF SYMMETRY UNIQUE ATOMS (ANGS)\n"
                      "   ATOM   CHARGE       X              Y              Z\n"
                      " ------------------------------------------------------------\n"
                      " O           8.0   0.0000000000   0.0000000000  -0.1000000000\n"
                      " H           1.0   0.0000000000   0.7500000000   0.5000000000\n"
                      " H           1.0   0.0000000000  -0.7500000000   0.5000000000\n");
    FakeFirefly fake(t, "firefly8.0_h2o_opt.log", punch);
    run_on_water(t, "menu 40015\nmenu 40023\ndialog 116 button:3 1055=1 1012=1\nmenu 40001\n");
    EXPECT_TRUE(box_says(t, "Equilibrium Geometry Loaded from PUNCH"));
    EXPECT_NEAR(t.s.store.atom_rec[2][kY] - t.s.store.atom_rec[3][kY], 1.5f, 1e-5);
    EXPECT_NE(read_file(t.scratch() + "/water.geo").find(" Goemetry Loaded from PUNCH file"), std::string::npos);
}

// The listing cut anywhere: what was read stays, the molecule keeps its
// atoms, nothing crashes.
TEST(FireflyMode, CutListingsKeepTheMolecule) {
    TestSession t;
    run_on_water(t, "");
    std::filesystem::current_path(t.scratch());
    const auto whole = lines_of(test_data("firefly/firefly8.0_h2o_opt.log"));
    const auto before = t.s.store.atom_rec[2];
    for (std::size_t end = 1; end < whole.size(); end += 97) {
        files::write_lines("water.lst", std::vector<std::string>(whole.begin(), whole.begin() + static_cast<long>(end)));
        t.tk.load_script("");
        ff_update(t.s, 2);
        ASSERT_EQ(t.s.store.natoms, 3);
        if (end < 1230) {
            EXPECT_EQ(t.s.store.atom_rec[2], before);
        }
    }
}

// A rotation profile in Z-matrix form, made by the installed MOPAC: the
// first half holds the frozen dihedral, the second the Z-matrix of each
// step; the sweep runs the engine once a step and draws the profile.
TEST(FireflyZmatrixRun, RotationProfileHalvesAndFrozenDihedral) {
    if (on_path("mopac").empty()) GTEST_SKIP() << "no mopac on PATH";
    TestSession t;
    FakeFirefly fake(t, "firefly8.0_h2o_opt.log");
    t.s.engines.values["mopac6"] = "";
    t.s.engines.values["mopac2016"] = "mopac";
    run_on_molecule(t, "tinker/butane.xyz", "");
    std::filesystem::current_path(t.scratch());
    open_job_log(t.s, true, "");
    write_file("IDHED.DAT", "           1           2           3           4\n");
    t.s.view.marks.count = 2;
    t.s.opt.bond_rot_step = 20;
    t.tk.load_script("dialog 116 ok 1037=1 1039=1 1055=1\n");
    ASSERT_EQ(ff_new_input(t.s), 1);
    const auto head = lines_of("pppgamet.tmp"), tail = lines_of("pppgameb.tmp");
    ASSERT_EQ(head.size(), 9u);
    EXPECT_NE(head[4].find(" IFREEZ(1)="), std::string::npos);
    EXPECT_EQ(tail.size(), 15u);   // 14 atoms and " $END"
    auto whole = head;
    whole.insert(whole.end(), tail.begin(), tail.end());
    EXPECT_EQ(lines_of("butane.inp"), whole);
    EXPECT_NE(read_file("butane.geo").find("Dihedral frozen is "), std::string::npos);
    EXPECT_FALSE(file_present("OUTPUT"));   // the converter's listing
    t.tk.load_script("msgbox no\n");
    run_firefly(t.s);
    EXPECT_EQ(lines_of("runs.seen").size(), 19u);
    ASSERT_TRUE(t.tk.last_chart());
    EXPECT_EQ(t.tk.last_chart()->points.size(), 19u);
    EXPECT_NE(read_file("butane.geo").find(" Firefly Bond Rotation Profile for butane"), std::string::npos);
}

// WFN on: the wavefunction from the punch file, the DGrid deck and the
// converters after the run.
TEST(FireflyMode, WavefunctionRunPreparesDgrid) {
    if (on_path("dos2unix").empty()) GTEST_SKIP() << "no dos2unix";
    TestSession t;
    FakeFirefly fake(t, "firefly8.0_h2o_opt.log", test_data("firefly/gamessus2018_nh3_ts_hessian.dat"));
    const std::string elf = t.dir / "elf_input_gen", dgrid = t.dir / "dgrid-5.1";
    write_file(elf, "#!/bin/sh\nprintf 'x\\r\\n' > run_$1\n");
    write_file(dgrid, "#!/bin/sh\n");
    for (const std::string& p : {elf, dgrid}) std::filesystem::permissions(p, std::filesystem::perms::owner_all);
    t.s.engines.values["elf_input_gen"] = elf;
    t.s.engines.values["dgrid51"] = dgrid;
    run_on_water(t, "menu 40015\nmenu 40023\ndialog 116 button:3 1072=1 1099=1\nmenu 40001\n");
    EXPECT_EQ(lines_of(t.scratch() + "/deck.seen")[0], " $CONTRL DFTTYP=B3LYP SCFTYP=RHF MAXIT=500 AIMPAC=1");
    EXPECT_FALSE(read_file(t.scratch() + "/water.wfn").empty());
    EXPECT_TRUE(file_present(t.scratch() + "/water_D.inp"));
    // job.txt lists the atoms for the converter.
    const auto txt = lines_of(t.scratch() + "/water.txt");
    ASSERT_EQ(txt.size(), 4u);
    EXPECT_EQ(txt[0], "   3");
}
