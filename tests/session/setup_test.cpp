// Setup: the display and Tinker pages of dialog 106, answered from scripts.
#include "session/setup_dialog.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "display/colours.h"
#include "session/setup_file.h"
#include "support/test_support.h"
#include "toolkit/files.h"

using namespace zentol;
using namespace zentol::testing;

TEST(Setup, AnswersGoToTheOptionsByTheirRules) {
    TestSession t;
    t.s.job.name = "s";
    two_carbons(t.s.store, 1.54f);
    t.tk.load_script(
        "dialog 106 ok 1014=40 1011=s 1055=1 1052=1 1067=0.5 1101=3\n"
        "dialog 106 ok 1011=x 1071=250 1022=0\n"
        "dialog 106 cancel 1014=90\n");
    EXPECT_TRUE(run_setup(t.s).palette_changed);
    EXPECT_FLOAT_EQ(t.s.tinker.tk_curve, 2.0f);        // the letter raised first
    EXPECT_TRUE(t.s.opt.keep_dyn_files);               // the box was offered ticked
    EXPECT_EQ(t.tk.status(7), "Adv");
    EXPECT_EQ(files::read_lines(t.s.inst.cfgset + "/zentol.def")->at(2), "           2");
    EXPECT_EQ(t.s.store.nbonds, 1);                     // bonds found again by distance

    run_setup(t.s);
    EXPECT_FLOAT_EQ(t.s.tinker.tk_curve, 2.0f);        // another letter keeps the old curve
    EXPECT_FLOAT_EQ(t.s.opt.view_distance, 100.0f);    // above 100 becomes 100
    EXPECT_FALSE(t.s.opt.keep_dyn_files);

    EXPECT_FALSE(run_setup(t.s).confirmed);            // Cancel changes nothing
    EXPECT_FLOAT_EQ(t.s.opt.atom_size, 0.4f);
}

// A damaged file keeps the defaults it cannot read.
TEST(Setup, ChoicesSurviveARestart) {
    TestSession t;
    run_on_water(t, "menu 40004\ndialog 106 ok 1014=40 1036=1 1078=0.4 1101=3 1053=1\nclose\n");
    TestSession again;
    std::filesystem::copy_file(t.s.inst.cfgset + "/setup.def", again.s.inst.cfgset + "/setup.def");
    run_on_water(again, "close\n");
    EXPECT_FLOAT_EQ(again.s.opt.atom_size, 0.4f);
    EXPECT_TRUE(again.s.opt.labels_on);
    EXPECT_FLOAT_EQ(again.s.tinker.tk_auto_cycles, 3.0f);
    EXPECT_EQ(again.s.opt.palette_choice, 3);

    Options o;
    TinkerSettings k;
    read_setup_lines({"atom_size 9e9", "labels_on yes", "bond_width", "palette_choice 7", "tk_curve 2", "junk 1"}, o, k);
    EXPECT_FLOAT_EQ(o.atom_size, 1.0f);    // held within its range
    EXPECT_FALSE(o.labels_on);             // not a number: the default stays
    EXPECT_EQ(o.palette_choice, 3);
    EXPECT_FLOAT_EQ(k.tk_curve, 2.0f);
}

TEST(Setup, ColouringByMoleculeLeavesTheBondsAlone) {
    TestSession t;
    two_carbons(t.s.store, 5.0f);
    t.s.store.nbr(1, 1) = 2, t.s.store.conn_count(1) = 1;
    t.tk.load_script("dialog 106 ok 1031=1\n");
    run_setup(t.s);
    EXPECT_EQ(t.s.store.conn_count(1), 1);
}

TEST(Setup, ChargeColoursNeedOneChargePerAtom) {
    TestSession t;
    t.s.job.name = "q";
    two_carbons(t.s.store, 1.54f);
    load_colour_map(t.s);
    t.s.opt.charge_colours = t.s.opt.charge_labels = true;
    write_file("q_chg.log", "#Mopac charges\nC1   -0.25\nC2    0.5\n");
    recolour_atoms(t.s);
    EXPECT_FLOAT_EQ(t.s.store.atom_colour[1], 16.0f + 8.0f);
    EXPECT_FLOAT_EQ(t.s.store.atom_charge[2], 0.5f);
    write_file("q_chg.log", "#Mopac charges\nC1   -0.5\n");   // one line too few
    recolour_atoms(t.s);
    EXPECT_FALSE(t.s.opt.charge_colours);
    EXPECT_FALSE(t.s.opt.charge_labels);
}
