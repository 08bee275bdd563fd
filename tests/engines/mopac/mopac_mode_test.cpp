// Mopac mode with the real engine: the MOPAC installed on the machine
// (Debian's open-source MOPAC) runs the deck written from dialog 107.
#include "engines/mopac/mopac_mode.h"
#include "engines/runner.h"

#include <filesystem>

#include <gtest/gtest.h>

#include "session/openers.h"
#include "session/startup.h"
#include "structure_files/geo_log.h"
#include "text/fixed_format.h"
#include "toolkit/toolkit.h"
#include "support/test_support.h"
#include "toolkit/files.h"

using namespace zentol;
using namespace zentol::testing;

namespace {

// The energies of the " Total Energy = " lines of a .GEO log, in eV.
std::vector<double> logged_energies(const std::string& geo) {
    std::vector<double> e;
    for (const std::string& line : files::read_lines(geo).value_or(std::vector<std::string>{}))
        if (line.rfind(" Total Energy = ", 0) == 0) e.push_back(text::read_f(line.substr(16, 15)).value_or(0));
    return e;
}

bool status_shows(const TestSession& t, const std::string& part) {
    for (const auto& [field, text] : t.tk.status_writes())
        if (field == status_message_field && text.find(part) != std::string::npos) return true;
    return false;
}

}  // namespace

// An Energy run, then an optimisation, on a closed shell, a cation, a doublet
// radical and a triplet, PM7 with the dialog's own charge and multiplicity.
TEST(MopacMode, EnergyAndOptimizeOnEachKindOfMolecule) {
    if (on_path("mopac").empty()) GTEST_SKIP() << "no mopac on PATH";
    struct Case {
        const char* job;
        int natoms;
        bool open_shell;
    };
    for (const Case c : {Case{"ethanol", 9, false}, Case{"ammonium", 5, false}, Case{"methyl", 4, true},
                         Case{"oxygen", 2, true}}) {
        SCOPED_TRACE(c.job);
        TestSession t;
        t.s.engines.values["mopac2016"] = "mopac";
        run_on_molecule(t, std::string("mopac/") + c.job + ".xyz",
                        "menu 40014\nmenu 40023\ndialog 107 button:3 1077=1 1054=1\n"
                        "menu 40023\ndialog 107 button:3 1077=1 1055=1\nmenu 40001\n");
        EXPECT_TRUE(t.tk.message_boxes().empty()) << t.tk.message_boxes()[0];
        EXPECT_TRUE(status_shows(t, " EV"));
        const std::string dir = t.scratch(), job = dir + "/" + c.job;
        // The deck of the last run: PM7 from the dialog, the open shell's words.
        const std::string deck = read_file(job + ".inp");
        EXPECT_EQ(deck.substr(0, 5), " PM7 ");
        EXPECT_EQ(deck.find(" OPEN(2,2)") != std::string::npos, std::string(c.job) == "oxygen");
        const std::string geo = read_file(job + ".geo");
        EXPECT_NE(geo.find(" Mopac Energy calculation"), std::string::npos) << geo;
        EXPECT_NE(geo.find(" Mopac Optimize calculation"), std::string::npos);
        EXPECT_NE(geo.find(" H.O.M.O"), std::string::npos);
        EXPECT_NE(geo.find(" L.U.M.O"), std::string::npos);
        EXPECT_NE(geo.find(" kJ/mol"), std::string::npos);
        // The optimisation goes down from the single point of the start.
        const auto energies = logged_energies(job + ".geo");
        ASSERT_EQ(energies.size(), 2u);
        EXPECT_LT(energies[0], -10.0);
        EXPECT_LE(energies[1], energies[0] + 1e-4);
        EXPECT_EQ(files::read_lines(job + "_chg.log").value_or(std::vector<std::string>{}).size(),
                  static_cast<std::size_t>(c.natoms + 1));
        const auto spins = files::read_lines(job + "_spn.log");
        EXPECT_EQ(spins.has_value(), c.open_shell);
        if (spins) {
            EXPECT_EQ(spins->size(), static_cast<std::size_t>(c.natoms + 1));
        }
        EXPECT_EQ(t.s.store.natoms, c.natoms);
    }
}

// MOPAC refuses a doublet with an even number of electrons: the run ends
// with the designed message and the molecule stays as it was.
TEST(MopacMode, AnEngineErrorLeavesTheMoleculeAsItWas) {
    if (on_path("mopac").empty()) GTEST_SKIP() << "no mopac on PATH";
    TestSession t;
    t.s.engines.values["mopac2016"] = "mopac";
    run_on_water(t, "menu 40014\nmenu 40023\ndialog 107 button:3 1077=1 1055=1 1027=2\nmenu 40001\n");
    ASSERT_EQ(t.tk.message_boxes().size(), 1u);
    EXPECT_NE(t.tk.message_boxes()[0].find("Convergence Fault or NO parameters/file"), std::string::npos);
    // Not turned, not moved: the hydrogens lie where they were about the oxygen.
    const auto& o = t.s.store.atom_rec[1];
    const auto& h = t.s.store.atom_rec[2];
    EXPECT_NEAR(h[kX] - o[kX], 0.0f, 1e-5);
    EXPECT_NEAR(h[kY] - o[kY], 0.763239f, 1e-5);
    EXPECT_NEAR(h[kZ] - o[kZ], -0.596309f, 1e-5);
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
    t.s.opt.bond_rot_step = 20;
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
    // 0 to 360 degrees in steps of 20: 19 points, shown as a chart.
    ASSERT_TRUE(t.tk.last_chart().has_value());
    EXPECT_EQ(t.tk.last_chart()->points.size(), 19u);
    // The four dihedral atoms are held, the others free: flags 0 and 1.
    const auto deck = files::read_lines(t.scratch() + "/butane.inp").value_or(std::vector<std::string>{});
    ASSERT_GE(deck.size(), 8u);
    EXPECT_EQ(deck[3].substr(0, 4), "C   ");
    EXPECT_EQ(deck[3].substr(deck[3].size() - 3), "  0");
    EXPECT_EQ(deck[7].substr(0, 4), "H   ");
    EXPECT_EQ(deck[7].substr(deck[7].size() - 3), "  1");
}
