// Mopac mode with the real engine: the MOPAC installed on the machine
// (Debian's open-source MOPAC) runs the deck written from dialog 107.
#include "engines/mopac/mopac_mode.h"

#include <filesystem>

#include <gtest/gtest.h>

#include "session/openers.h"
#include "session/startup.h"
#include "structure_files/geo_log.h"
#include "support/test_support.h"
#include "toolkit/files.h"

using namespace zentol;
using namespace zentol::testing;

TEST(MopacMode, AnOptimisationWithTheRealEngineUpdatesTheJob) {
    if (on_path("mopac").empty()) GTEST_SKIP() << "no mopac on PATH";
    TestSession t;
    t.s.engines.values["mopac2016"] = "mopac";
    // PM7, Optimize, Run Mopac.
    run_on_water(t, "menu 40014\nmenu 40023\ndialog 107 button:3 1077=1 1055=1\nmenu 40001\n");
    const std::string dir = t.scratch();
    const std::string deck = read_file(dir + "/water.inp");
    EXPECT_EQ(deck.substr(0, deck.find('\n')), " PM7  CHARGE=  0 SINGLET GRAPHF DENSITY VECTORS XYZ DISP");
    EXPECT_NE(deck.find("\nO        0.00000  1"), std::string::npos);   // bare element labels
    const std::string geo = read_file(dir + "/water.geo");
    EXPECT_NE(geo.find(" Mopac Optimize calculation"), std::string::npos) << geo;
    EXPECT_NE(geo.find(" Total Energy = "), std::string::npos);
    EXPECT_NE(geo.find(" H.O.M.O"), std::string::npos);
    const auto charges = files::read_lines(dir + "/water_chg.log");
    ASSERT_TRUE(charges);
    EXPECT_EQ((*charges)[0], "#MOP atom charges");
    EXPECT_EQ(charges->size(), 4u);
    EXPECT_TRUE(t.tk.message_boxes().empty());
}

TEST(MopacMode, AMissingEngineIsAConvergenceFault) {
    TestSession t;
    t.s.engines.values["mopac2016"] = t.dir / "no-mopac";
    run_on_water(t, "menu 40014\nmenu 40023\ndialog 107 button:3 1057=1 1054=1\nmenu 40001\n");
    ASSERT_EQ(t.tk.message_boxes().size(), 1u);
    EXPECT_NE(t.tk.message_boxes()[0].find("Convergence Fault or NO parameters/file"), std::string::npos);
}

TEST(MopacMode, ABondRotationProfileWithTheRealEngine) {
    if (on_path("mopac").empty()) GTEST_SKIP() << "no mopac on PATH";
    TestSession t;
    t.s.engines.values["mopac2016"] = "mopac";
    write_file(t.s.inst.cfgset + "/dir1.def", t.scratch() + "\n");
    std::filesystem::copy_file(test_data("tinker/butane.xyz"), t.scratch() + "/butane.xyz");
    t.tk.load_script("");
    run_program(t.s, {"zentol", "butane", "1"});
    std::filesystem::current_path(t.scratch());
    open_job_log(t.s, true, "");
    // The C-C-C-C dihedral stored as MarkBond leaves it.
    write_file("IDHED.DAT", "           1           2           3           4\n");
    t.s.view.marks.count = 2;
    t.s.opt.bond_rot_step = 90;
    MopacState m;
    m.version = kMopac2016;
    m.options.method = 7;
    m.options.run_type = 1;
    m.options.bond_rotation = true;
    files::write_lines("mopac.inp", mopac_header(m.options, m.version, "butane"));
    t.tk.load_script("msgbox no\n");
    run_mopac(t.s, m);
    const std::string geo = read_file(t.scratch() + "/butane.geo");
    EXPECT_NE(geo.find(" Mopac Bond Rotation Profile for butane"), std::string::npos) << geo;
    EXPECT_NE(geo.find("Dihedral     Rel.kJ/mol  Total Energy EV"), std::string::npos);
    EXPECT_NE(geo.find(" Minimum at "), std::string::npos);
    // The four dihedral atoms are held, the others free: flags 0 and 1.
    const auto deck = files::read_lines(t.scratch() + "/butane.inp").value_or(std::vector<std::string>{});
    ASSERT_GE(deck.size(), 8u);
    EXPECT_EQ(deck[3].substr(0, 4), "C   ");
    EXPECT_EQ(deck[3].substr(deck[3].size() - 3), "  0");
    EXPECT_EQ(deck[7].substr(0, 4), "H   ");
    EXPECT_EQ(deck[7].substr(deck[7].size() - 3), "  1");
}
