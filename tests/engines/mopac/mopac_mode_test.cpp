// Mopac mode with the real engine: the MOPAC installed on the machine
// (Debian's open-source MOPAC) runs the deck written from dialog 107.
#include "engines/mopac/mopac_mode.h"
#include "engines/runner.h"
#include "engines/session_checks.h"

#include <filesystem>

#include <gtest/gtest.h>

#include "session/openers.h"
#include "structure_files/geo_log.h"
#include "text/fixed_format.h"
#include "toolkit/toolkit.h"
#include "support/test_support.h"
#include "toolkit/files.h"

using namespace zentol;
using namespace zentol::testing;

namespace {

void use_real_mopac(TestSession& t) { t.s.engines.values["mopac2016"] = "mopac"; }

// The energies of the " Total Energy = " lines of a .GEO log, in eV.
std::vector<double> logged_energies(const std::string& geo) {
    std::vector<double> e;
    for (const std::string& line : lines_of(geo))
        if (line.rfind(" Total Energy = ", 0) == 0) e.push_back(text::read_f(line.substr(16, 15)).value_or(0));
    return e;
}

// What the message field showed when Mopac mode was left (menu 30001 loaded).
std::string message_on_leaving(const TestSession& t) {
    std::string shown, on_leaving;
    for (const std::string& line : t.tk.transcript()) {
        if (line == "menu 30001") on_leaving = shown;
        if (line.rfind("status 9: ", 0) == 0) shown = line.substr(10);
    }
    return on_leaving;
}

// The orbital number on the last line of a .GEO log that ends in `mark`.
int marked_orbital(const std::string& geo, const std::string& mark) {
    int number = 0;
    for (const std::string& line : lines_of(geo))
        if (line.ends_with(mark)) number = static_cast<int>(text::read_i(line.substr(0, 8)).value_or(0));
    return number;
}

// The molecule of tests/data/<file> opened as the job of a session that has
// ended, the scratch directory current and the .GEO log open.
void open_molecule(TestSession& t, const std::string& file) {
    use_real_mopac(t);
    run_on_molecule(t, file, "");
    std::filesystem::current_path(t.scratch());
    open_job_log(t.s, true, "");
}

// A PM7 Energy run of the 2016 generation on the open job, run_mopac's own.
MopacState pm7_energy_run(TestSession& t, const std::string& job, bool bond_rotation = false) {
    MopacState m;
    m.version = kMopac2016;
    m.options.method = 7;
    m.options.run_type = 1;
    m.options.bond_rotation = bond_rotation;
    files::write_lines("mopac.inp", mopac_header(m.options, m.version, job));
    run_mopac(t.s, m);
    return m;
}

}  // namespace

// An Energy run, then an optimisation, of a cation: PM7 with the dialog's
// own charge.
TEST(MopacMode, EnergyThenOptimize) {
    if (on_path("mopac").empty()) GTEST_SKIP() << "no mopac on PATH";
    TestSession t;
    use_real_mopac(t);
    // The optimisation runs PM7 without choosing it again (the result says
    // PM7); a key and a redraw after the run leave the result on screen.
    run_on_molecule(t, "mopac/ammonium.xyz",
                    "menu 40014\nmenu 40023\ndialog 107 button:3 1077=1 1054=1\n"
                    "menu 40023\ndialog 107 button:3 1055=1\nkey 258\nexpose\nmenu 40001\n");
    EXPECT_TRUE(t.tk.message_boxes().empty()) << t.tk.message_boxes()[0];
    const std::string job = t.scratch() + "/ammonium";
    EXPECT_NE(read_file(job + ".geo").find(" Mopac Optimize calculation"), std::string::npos);
    // The optimisation goes down from the single point of the start.
    const auto energies = logged_energies(job + ".geo");
    ASSERT_EQ(energies.size(), 2u);
    EXPECT_LT(energies[0], -10.0);
    EXPECT_LE(energies[1], energies[0] + 1e-4);
    // The result stays on screen: the optimised energy in eV and kJ/mol.
    const std::string result = message_on_leaving(t);
    EXPECT_EQ(result.rfind("PM7  " + std::string(text::trim(text::format_f(energies[1], 20, 5))) + " eV  ", 0), 0u)
        << result;
    EXPECT_TRUE(result.ends_with(" kJ/mol  structure updated")) << result;
    EXPECT_EQ(lines_of(job + "_chg.log").size(), 6u);
    EXPECT_FALSE(file_present(job + "_spn.log"));
}

// Open shells: the H.O.M.O mark stands on the highest occupied level (RHF:
// doubly and singly occupied levels; UHF: the alpha electrons). Quartets and
// above run UHF as the multiplicity asked.
TEST(MopacMode, OrbitalMarksAndSpinStatesOfOpenShells) {
    if (on_path("mopac").empty()) GTEST_SKIP() << "no mopac on PATH";
    struct Case {
        const char* job;
        bool uhf_chosen, uhf_run;
        const char* spin;   // the spin state the listing must say
        int homo, lumo;
    };
    const Case cases[] = {
        {"oxygen", false, false, "TRIPLET", 7, 8},   // 5 doubly and 2 singly occupied levels
        {"methylene", true, true, "TRIPLET", 4, 5},
        {"nitrogen", false, true, "QUARTET", 4, 0},   // all four alpha levels occupied: no L.U.M.O
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.job);
        TestSession t;
        use_real_mopac(t);
        run_on_molecule(t, std::string("mopac/") + c.job + ".xyz",
                        std::string("menu 40014\nmenu 40023\ndialog 107 button:3 1077=1 1054=1") +
                            (c.uhf_chosen ? " 1052=1" : "") + "\nmenu 40001\n");
        EXPECT_TRUE(t.tk.message_boxes().empty()) << t.tk.message_boxes()[0];
        const std::string job = t.scratch() + "/" + c.job;
        const std::string listing = read_file(job + ".lst");
        EXPECT_NE(listing.find("SPIN STATE DEFINED AS A " + std::string(c.spin)), std::string::npos);
        EXPECT_EQ(listing.find("UHF CALCULATION, NO. OF ALPHA ELECTRONS") != std::string::npos, c.uhf_run);
        // The listing's table; the graph file's marks end in a full stop.
        EXPECT_EQ(marked_orbital(job + ".geo", " H.O.M.O"), c.homo);
        EXPECT_EQ(marked_orbital(job + ".geo", " L.U.M.O"), c.lumo);
        EXPECT_EQ(lines_of(job + "_spn.log").size(), static_cast<std::size_t>(t.s.store.natoms + 1));
    }
}

// Without ALLVEC MOPAC writes only HOMO-8 to HOMO+7 to the graph file (and
// the listing) of a molecule with more than 16 orbitals: graph.dat keeps the
// listing's numbers, so the map program is handed the H.O.M.O it asks for.
TEST(MopacMode, GraphFileOrbitalsKeepTheListingsNumbers) {
    if (on_path("mopac").empty()) GTEST_SKIP() << "no mopac on PATH";
    TestSession t;
    open_molecule(t, "mopac/acetone.xyz");
    const MopacState m = pm7_energy_run(t, "acetone");
    EXPECT_EQ(m.homo_index, 12);
    EXPECT_EQ(m.first_orbital, 4);
    const auto graph = lines_of("graph.dat");
    ASSERT_FALSE(graph.empty());
    EXPECT_EQ(text::read_i(graph[0].substr(18, 6)).value_or(0), 12);
    std::vector<long long> numbers;
    for (const std::string& line : graph)
        if (line.starts_with(" ORBITAL")) numbers.push_back(text::read_i(line.substr(8, 5)).value_or(0));
    ASSERT_EQ(numbers.size(), 16u);
    EXPECT_EQ(numbers.front(), 4);
    EXPECT_EQ(numbers.back(), 19);
    // The .GEO log numbers the graph file's table the same way.
    EXPECT_EQ(marked_orbital("acetone.geo", " H.O.M.O."), 12);
}

TEST(MopacMode, AMissingEngineIsAConvergenceFault) {
    TestSession t;
    t.s.engines.values["mopac2016"] = t.dir / "no-mopac";
    run_on_water(t, "menu 40014\nmenu 40023\ndialog 107 button:3 1057=1 1054=1\nmenu 40001\n");
    ASSERT_EQ(t.tk.message_boxes().size(), 1u);
    EXPECT_NE(t.tk.message_boxes()[0].find("Convergence Fault or NO parameters/file"), std::string::npos);
    // The message field says which program is missing and where it is set.
    EXPECT_EQ(message_on_leaving(t), "MOPAC is not installed: set \"mopac2016\" in engines.def");
}

TEST(MopacMode, ABondRotationProfileWithTheRealEngine) {
    if (on_path("mopac").empty()) GTEST_SKIP() << "no mopac on PATH";
    TestSession t;
    open_molecule(t, "tinker/butane.xyz");
    // The C-C-C-C dihedral stored as MarkBond leaves it.
    write_file("IDHED.DAT", "           1           2           3           4\n");
    t.s.view.marks.count = 2;
    t.s.opt.bond_rot_step = 20;
    t.tk.load_script("msgbox no\n");
    pm7_energy_run(t, "butane", true);
    const std::string geo = read_file(t.scratch() + "/butane.geo");
    EXPECT_NE(geo.find(" Mopac Bond Rotation Profile for butane"), std::string::npos) << geo;
    // 0 to 360 degrees in steps of 20: 19 points, shown as a chart.
    ASSERT_TRUE(t.tk.last_chart().has_value());
    EXPECT_EQ(t.tk.last_chart()->points.size(), 19u);
    // The four dihedral atoms (the carbons) are held, the others free.
    const auto deck = lines_of(t.scratch() + "/butane.inp");
    ASSERT_GE(deck.size(), 8u);
    EXPECT_TRUE(deck[3].starts_with("C   ") && deck[3].ends_with("  0")) << deck[3];
    EXPECT_TRUE(deck[7].starts_with("H   ") && deck[7].ends_with("  1")) << deck[7];
}
