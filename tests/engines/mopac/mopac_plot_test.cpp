// Mopac mode with a fake engine replaying recorded runs: the orbital plot
// and its hand-over to orbview and back, Mopac 6's fixed file names, and
// listings or graph files cut short.
#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include <gtest/gtest.h>

#include "engines/runner.h"
#include "engines/session_checks.h"
#include "session/session.h"
#include "support/test_support.h"
#include "toolkit/files.h"

using namespace zentol;
using namespace zentol::testing;

namespace {

std::string tool(const std::string& name) { return std::string(ZENTOL_TEST_DATA) + "/../engines/mopac/" + name; }

// The recorded files the fake engine hands out, for one test ("" for none).
struct FakeRun {
    FakeRun(const std::string& out, const std::string& mgf, const std::string& dens = "") {
        setenv("FAKE_MOPAC_OUT", out.c_str(), 1);
        setenv("FAKE_MOPAC_MGF", mgf.c_str(), 1);
        setenv("FAKE_MOPAC_DENS", dens.c_str(), 1);
    }
    ~FakeRun() {
        for (const char* name : {"FAKE_MOPAC_OUT", "FAKE_MOPAC_MGF", "FAKE_MOPAC_DENS"}) unsetenv(name);
    }
};

// Engines of a test: the fake MOPAC as the 2016 generation (or as Mopac 6),
// and the map programs and orbview when asked for.
void use_fakes(TestSession& t, bool mopac6, bool map_programs, bool orbview) {
    t.s.engines.values[mopac6 ? "mopac6" : "mopac2016"] = tool("fake_mopac.sh");
    t.s.engines.values[mopac6 ? "mopac2016" : "mopac6"] = "";
    for (const char* name : {"orbgrid", "orbgrids", "orbview"}) {
        const bool wanted = std::string(name) == "orbview" ? orbview : map_programs;
        const std::string link = t.dir / name;
        if (wanted) std::filesystem::create_symlink(tool("fake_plot.sh"), link);
        t.s.engines.values[name] = wanted ? link : "";
    }
}

// A Mopac 6 run: the recorded listing, a graph file and a density file.
FakeRun mopac6_run(const TestSession& t) {
    write_file(t.dir / "for013", "orbital graph\n");
    write_file(t.dir / "dens", "density\n");
    return FakeRun(test_data("mopac/m6_water_style.lst"), t.dir / "for013", t.dir / "dens");
}

// An AM1 Energy run under Mopac 6 with the Density plot type, then the plot.
const char kMopac6DensityPlot[] = "menu 40014\nmenu 40023\ndialog 107 button:3 1057=1 1054=1 1088=1\nmenu 40010\n"
                                  "dialog 110 ok\nmenu 40001\n";

}  // namespace

TEST(MopacPlot, NeedsAnEnergyRunAndSaysWhichProgramIsMissing) {
    TestSession t;
    use_fakes(t, false, false, false);
    FakeRun run(test_data("mopac/m22_water_optF.out"), "");
    // Plot after an optimisation, then after an Energy run whose grid of 20
    // steps the dialog refuses: the map program is not installed.
    run_on_water(t, std::string("menu 40014\nmenu 40023\ndialog 107 button:3 1077=1 1055=1\nmenu 40010\n") +
                        "menu 40023\ndialog 107 button:3 1077=1 1054=1\nmenu 40010\ndialog 110 ok 1102=20\nmenu 40001\n");
    EXPECT_TRUE(transcript_has(t, "status 9: Run an Energy Calculation"));
    EXPECT_TRUE(transcript_has(t, "dialog 110 field 1102 refused"));
    ASSERT_EQ(t.tk.message_boxes().size(), 1u);
    EXPECT_NE(t.tk.message_boxes()[0].find("The orbital map program is not installed"), std::string::npos);
    EXPECT_FALSE(t.s.flags.plot_exit);
}

TEST(MopacPlot, TheMapIsMadeAndOrbviewTakesOver) {
    TestSession t;
    use_fakes(t, false, true, true);
    FakeRun run(test_data("mopac/m22_water_E_DISP.out"), test_data("mopac/m22_water_E.mgf"));
    // LUMO: the H.O.M.O of water is orbital 4, the plot is of orbital 5.
    run_on_water(t, "menu 40014\nmenu 40023\ndialog 107 button:3 1077=1 1054=1\nmenu 40010\ndialog 110 ok 1052=1\n"
                    "menu 40001\n");
    EXPECT_TRUE(t.tk.message_boxes().empty());
    EXPECT_TRUE(t.s.flags.plot_exit);
    const std::string dir = t.scratch();
    EXPECT_EQ(read_file(dir + "/seen.kew"), "graph.dat\n    5  M.O.\n   64  Grid Steps\n"
                                            "    0  0 M.O., 1 Spin Density, 2 Density\n    4  H.O.M.O\nwater  Job\n");
    // graph.dat from the graph file: 3 atoms, 6 basis functions, 6 orbitals.
    EXPECT_EQ(read_file(dir + "/seen.graph").substr(0, 25), "     3     6     6     4\n");
    // The session ended for orbview, whose files stay for it.
    EXPECT_TRUE(transcript_has(t, "orbview water 1 MOPAC 05"));
    for (const char* name : {"pppmap.atl", "pppmap.bgl", "water_mo.pdb", "graph.dat"})
        EXPECT_TRUE(file_present(dir + "/" + name)) << name;
    EXPECT_NE(read_file(dir + "/water.geo").find(" Mopac 2016"), std::string::npos);

    // orbview starts us again with MOPA 05: into Mopac mode, the log continued,
    // the next plot without a new run; without orbview the mode goes on.
    TestSession back;
    use_fakes(back, false, true, false);
    std::filesystem::copy(dir, back.scratch(), std::filesystem::copy_options::overwrite_existing |
                                                   std::filesystem::copy_options::recursive);
    std::filesystem::remove(back.scratch() + "/pppmap.atl");
    run_on_molecule(back, "water.xyz", "menu 40010\ndialog 110 ok 1101=3\nmenu 40001\n", {"MOPA", "05"});
    EXPECT_TRUE(transcript_has(back, "menu 30004"));
    EXPECT_EQ(read_file(back.scratch() + "/seen.kew").substr(0, 15), "graph.dat\n    3");
    ASSERT_EQ(back.tk.message_boxes().size(), 1u);
    EXPECT_NE(back.tk.message_boxes()[0].find("The orbital viewer is not installed"), std::string::npos);
    EXPECT_FALSE(back.s.flags.plot_exit);
    EXPECT_NE(read_file(back.scratch() + "/water.geo").find(" Mopac Energy calculation"), std::string::npos);
}

// Where the reading stops is the listing tests' business; here the session
// says so and keeps the molecule.
TEST(MopacMode, AListingCutShort) {
    const auto lines = test_data_lines("mopac/m22_water_E_DISP.out");
    TestSession t;
    use_fakes(t, false, false, false);
    // Cut in the eigenvectors.
    files::write_lines(t.dir / "cut.out", std::vector<std::string>(lines.begin(), lines.begin() + 150));
    FakeRun run(t.dir / "cut.out", "");
    run_on_water(t, "menu 40014\nmenu 40023\ndialog 107 button:3 1077=1 1055=1\nmenu 40001\n");
    ASSERT_EQ(t.tk.message_boxes().size(), 1u);
    EXPECT_NE(t.tk.message_boxes()[0].find("Convergence Fault or NO parameters/file"), std::string::npos);
    EXPECT_EQ(t.s.store.natoms, 3);
    EXPECT_NEAR(t.s.store.atom_rec[2][kY] - t.s.store.atom_rec[1][kY], 0.763239f, 1e-5);
}

// Dialog 107 with only a Mopac 6 installed: each refusal says why, and an
// IR-Hessian run replaces an older IR list.
TEST(MopacNewInput, TheDialogsRulesUnderMopac6) {
    TestSession t;
    use_fakes(t, true, false, false);
    write_file(t.scratch() + "/water_ir.lst", "old\n");
    run_on_water(t, "menu 40014\nmenu 40023\ndialog 107 button:1 1057=1 1039=1\n"
                    "menu 40023\ndialog 107 button:1 1077=1 1072=1\ndialog 107 button:1 1057=1 1072=1 1048=1\n"
                    "menu 40001\n");
    EXPECT_EQ(std::count(t.tk.dialogs_shown().begin(), t.tk.dialogs_shown().end(), 107), 3);
    // No dihedral stored for a profile; PM7 with the Mopac2016 box but no engine.
    ASSERT_EQ(t.tk.message_boxes().size(), 2u);
    EXPECT_NE(t.tk.message_boxes()[0].find("No Dihedral Stored"), std::string::npos);
    EXPECT_EQ(t.tk.message_boxes()[1],
              "PM7 needs MOPAC 2016 or later, which is not installed: set \"mopac2016\" in engines.def");
    const auto deck = files::read_lines(t.scratch() + "/water.inp").value_or(std::vector<std::string>{"none"});
    EXPECT_EQ(deck[0], " AM1  CHARGE=  0 SINGLET GRAPH DENSITY FORCE VECTORS XYZ");
    EXPECT_FALSE(file_present(t.scratch() + "/water_ir.lst"));
    EXPECT_FALSE(file_present(t.scratch() + "/MOP2016.TXT"));
}

TEST(MopacMode, RunBeforeAnyNewInputRunsTheLastDeck) {
    TestSession t;
    use_fakes(t, false, false, false);
    FakeRun run(test_data("mopac/m22_water_optF.out"), "");
    const std::string last = " PM3  CHARGE=  0 SINGLET GRAPHF DENSITY VECTORS XYZ DISP\n kept\n ***\nO 0 1 0 1 0 1\n";
    write_file(t.scratch() + "/water.inp", last);
    run_on_water(t, "menu 40014\nmenu 40006\nmenu 40001\n");
    EXPECT_EQ(read_file(t.scratch() + "/deck.seen"), last);
}

// Dialog 107 opens with the last method chosen, also on the next visit of
// the mode (from the job's last deck).
TEST(MopacNewInput, TheDialogOpensWithTheLastMethod) {
    TestSession t;
    use_fakes(t, false, false, false);
    run_on_water(t, "menu 40014\nmenu 40023\ndialog 107 button:1 1057=1\nmenu 40001\n"
                    "menu 40014\nmenu 40023\ndialog 107 button:1 1072=1\nmenu 40001\n");
    EXPECT_EQ(read_file(t.scratch() + "/water.inp").substr(0, 5), " AM1 ");
    EXPECT_TRUE(t.tk.message_boxes().empty());
}

// UpDate on a listing the user made with MOPAC 21 without DISP: no energy
// in eV at all, so the heat of formation is the result.
TEST(MopacMode, UpDateReadsAListingWithOnlyTheHeatOfFormation) {
    TestSession t;
    use_fakes(t, false, false, false);
    const std::string job = t.scratch() + "/propane";
    std::filesystem::copy_file(test_data("mopac/m21_propane_vectors.out"), job + ".lst");
    run_on_molecule(t, "mopac/propane.xyz", "menu 40014\nmenu 40007\nexpose\nmenu 40001\n");
    EXPECT_TRUE(t.tk.message_boxes().empty()) << t.tk.message_boxes()[0];
    EXPECT_TRUE(transcript_has(t, "status 9: PM7  HoF -23.07796 kcal/mol  -96.56 kJ/mol  structure updated"));
    EXPECT_TRUE(holds(read_file(job + ".geo"), " Heat of Formation =       -23.07796 kcal/mol      -96.55818 kJ/mol"));
    // The structure turned 2 degrees about x; the store centres it.
    const auto& first = t.s.store.atom_rec[1];
    const auto& last = t.s.store.atom_rec[t.s.store.natoms];
    const float dx = -3.962897209f + 2.479386294f, dy = 0.460650646f - 1.948915792f, dz = 0.698689570f - 0.111908676f;
    EXPECT_NEAR(last[kX] - first[kX], dx, 1e-4);
    EXPECT_NEAR(last[kY] - first[kY], dy * 0.99939084f - dz * 0.0348995f, 1e-4);
    EXPECT_NEAR(last[kZ] - first[kZ], dy * 0.0348995f + dz * 0.99939084f, 1e-4);
}

TEST(MopacMode, Mopac6RunsWithItsFixedNamesAndDensityGraph) {
    TestSession t;
    use_fakes(t, true, true, false);
    const FakeRun run = mopac6_run(t);
    run_on_water(t, kMopac6DensityPlot);
    const std::string dir = t.scratch();
    // Internal coordinates, as Mopac 6 reads them from INPUT.
    const auto deck = lines_of(dir + "/deck.seen");
    ASSERT_EQ(deck.size(), 6u);
    EXPECT_EQ(deck[0], " AM1  CHARGE=  0 SINGLET GRAPH DENSITY VECTORS XYZ");
    EXPECT_EQ(deck[3], "O");
    EXPECT_NE(read_file(dir + "/water.geo").find("       6     6.00000"), std::string::npos);
    EXPECT_EQ(read_file(dir + "/seen.graph"), "orbital graph\ndensity\n");
    EXPECT_NE(read_file(dir + "/seen.kew").find("    2  0 M.O., 1 Spin"), std::string::npos);
}

// The real map program (its cubes are the map tests' business) on a graph
// file it cannot map.
TEST(MopacPlot, AMapThatCannotBeMadeIsSaidAndTheModeGoesOn) {
    TestSession t;
    use_fakes(t, true, true, true);
    for (const char* name : {"orbgrid", "orbgrids"}) {
        std::filesystem::remove(t.dir / name);
        std::filesystem::create_symlink(ZENTOL_ORBGRID_PROGRAM, t.dir / name);
    }
    const FakeRun run = mopac6_run(t);
    run_on_water(t, kMopac6DensityPlot);
    ASSERT_EQ(t.tk.message_boxes().size(), 1u);
    EXPECT_NE(t.tk.message_boxes()[0].find("The map program made no map."), std::string::npos);
    EXPECT_NE(t.tk.message_boxes()[0].find("a Mopac 6 graph file cannot be mapped"), std::string::npos);
    EXPECT_FALSE(t.s.flags.plot_exit);
    EXPECT_FALSE(transcript_has(t, "orbview water"));
}
