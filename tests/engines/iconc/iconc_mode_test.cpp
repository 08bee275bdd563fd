// ICONC mode in whole headless sessions, inputc and iconc played by
// fake_inputc.sh (which checks every deck) and fake_iconc.sh (whose energy
// is a Morse curve of the distance between deck atoms 1 and 2, lowest at
// 2.0 Angstrom).
#include "engines/iconc/iconc_mode.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>

#include <gtest/gtest.h>

#include "engines/iconc/iconc_runs.h"
#include "engines/session_checks.h"
#include "session/startup.h"
#include "support/test_support.h"
#include "text/fixed_format.h"
#include "toolkit/files.h"

using namespace zentol;
using namespace zentol::testing;

namespace {

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

// Fe with three hydrogens and a Cp ring, whose centroid "Cn" is atom 2;
// the bond Fe1-H3 stored for the scan.
const char* const kBuildComplex =
    "key B\ndialog 102 ok 1021=Fe 1048=1\npress atom 2\ndialog 102 ok 1021=C 1077=1\n"
    "menu 40026\ndialog 124 ok 1051=1\npress atom 1\npress atom 3\nmenu 40056\n";

// Fe-H 1.6 apart, lanthanum, and a dummy centre on the iron.
const char* const kFeLaJob =
    "     4 felah chamul   0   1\n"
    "     1  Fe     0.000000    0.000000    0.000000     1     2     4\n"
    "     2  H      1.600000    0.000000    0.000000     5     1\n"
    "     3  La     0.000000    3.500000    0.000000     1\n"
    "     4  Cn1    0.000000   -1.700000    0.000000   240     1\n";

double morse(double r) {
    const double m = 1 - std::exp(-1.5 * (r - 2.0));
    return -100 + 2 * m * m;
}

float distance(const Store& st, int a, int b) {
    float sum = 0;
    for (int c = 0; c < 3; ++c) sum += (st.atom_rec[a][c] - st.atom_rec[b][c]) * (st.atom_rec[a][c] - st.atom_rec[b][c]);
    return std::sqrt(sum);
}

struct IconcSession {
    IconcSession() {
        bin = t.dir / "iconc";
        fs::create_directories(bin);
        const std::string fakes = std::string(ZENTOL_TEST_DATA) + "/../engines/iconc/";
        fs::copy_file(fakes + "fake_inputc.sh", bin + "/inputc");
        fs::copy_file(fakes + "fake_iconc.sh", bin + "/iconc");
        for (const char* table : kIconcTables) write_file(bin + "/" + table, "table\n");
        t.s.engines.values["iconc_dir"] = bin;
        unsetenv("FAKE_ICONC_ENERTOT");
    }
    // The empty default job, grown in Build mode by the script.
    void run_built(const std::string& script) {
        fs::current_path(t.dir.path());
        t.tk.load_script(kBuildComplex + script);
        run_program(t.s, {"zentol"});
    }
    // The job felah, its bond Fe-H stored when asked.
    void run_job(const std::string& script, bool bond_stored = true) {
        write_file(t.s.inst.cfgset + "/dir1.def", t.scratch() + "\n");
        write_file(t.scratch() + "/felah.xyz", kFeLaJob);
        if (bond_stored) write_file(t.scratch() + "/ICONV.DAT", "           1           2\n");
        t.tk.load_script(script);
        run_program(t.s, {"zentol", "felah", "1"});
    }
    // One run of dialog 111 on felah, the given fields set, then leave.
    void run_once(const std::string& fields, bool bond_stored = true) {
        run_job("menu 40052\nmenu 40006\ndialog 115 ok\ndialog 111 button:3" + fields + "\nmenu 40001\n", bond_stored);
    }
    bool has(const std::string& name) const { return file_present(t.scratch() + "/" + name); }
    std::string file(const std::string& name) const { return read_file(t.scratch() + "/" + name); }
    Lines lines(const std::string& name) const { return files::read_lines(t.scratch() + "/" + name).value_or(Lines{}); }
    // Every deck inputc was given, in order.
    std::vector<Lines> decks() const {
        std::vector<Lines> out(1);
        for (const std::string& l : lines("fake_decks.txt")) {
            if (l == "----") out.emplace_back();
            else out.back().push_back(l);
        }
        out.pop_back();
        return out;
    }
    std::vector<double> energies() const {
        std::vector<double> out;
        for (const std::string& l : lines("fake_energies.txt")) out.push_back(*text::read_f(l));
        return out;
    }
    int dialogs(int id) const { return std::count(t.tk.dialogs_shown().begin(), t.tk.dialogs_shown().end(), id); }
    bool wrote_status(const std::string& text) const {
        for (const auto& [field, written] : t.tk.status_writes())
            if (written.find(text) != std::string::npos) return true;
        return false;
    }
    // The programs named one by one instead of by their directory.
    void name_programs(const std::string& iconc) {
        t.s.engines.values.erase("iconc_dir");
        t.s.engines.values["inputc"] = bin + "/inputc";
        t.s.engines.values["iconc"] = iconc;
    }

    TestSession t;
    std::string bin;
};

}  // namespace

TEST(IconcMode, EnergyScanAndOptimisationOnAComplexBuiltInBuildMode) {
    IconcSession is;
    is.run_built(
        "menu 40052\nmenu 40023\ndialog 115 ok 1001=FE2\n"
        "menu 40006\ndialog 111 button:3\n"
        "menu 40006\ndialog 111 button:3 1054=1\nmsgbox no\n"
        "menu 40006\ndialog 111 button:3 1055=1 1016=1\n"
        "menu 40001\nclose\n");
    const Store& st = is.t.s.store;
    ASSERT_EQ(st.natoms, 15);
    EXPECT_EQ(is.dialogs(115), 1);   // one metal, one name

    // The energy run: 14 atoms (the centroid left out), iteration switched
    // on by the metal, which goes by the name given for it.
    const std::vector<Lines> decks = is.decks();
    ASSERT_FALSE(decks.empty());
    const Lines& first = decks.front();
    EXPECT_EQ(first[3], "  14");
    EXPECT_EQ(first[5], "FE2");
    EXPECT_EQ(Lines(first.end() - 8, first.end()), (Lines{"Y", "1", "B", "B", "1", "FE2", "Y", "9"}));
    const std::vector<double> e = is.energies();
    const std::string geo = is.file("ptest.geo");
    EXPECT_NE(geo.find(" Total Energy =" + text::format_f(e[0], 15, 5) + " eV"), std::string::npos);
    EXPECT_NE(geo.find(" ENERGY LEVELS (eV)\n    1     -15.20000    2.0000\n"), std::string::npos);
    const Lines charges = is.lines("ptest_chg.log");
    ASSERT_EQ(charges.size(), 16u);
    EXPECT_EQ(charges[0], "#ICONC atom charges");
    EXPECT_EQ(charges[1], "Fe            0.6000");
    EXPECT_EQ(charges[2].substr(0, 2), "Cn");
    EXPECT_EQ(charges[2].substr(4), "          0.0000");

    // The scan: 60 steps of 0.04 from the built Fe-H length, the minimum at
    // the Morse curve's.
    ASSERT_EQ(decks.size(), e.size());   // every deck passed inputc's checks
    ASSERT_GT(e.size(), 61u);
    const std::optional<Chart>& chart = is.t.tk.last_chart();
    ASSERT_TRUE(chart);
    ASSERT_EQ(chart->points.size(), 60u);
    const double start = chart->points[0].x - 0.04;
    int best = 1;
    for (int k = 1; k <= 60; ++k)
        if (morse(start + 0.04 * k) < morse(start + 0.04 * best)) best = k;
    EXPECT_EQ(chart->title, "FE2-H Min at step " + std::to_string(best));
    EXPECT_NEAR(chart->points[59].x - chart->points[0].x, 59 * 0.04, 1e-3);
    EXPECT_NE(geo.find("FE2 H       1   3" + text::format_f(chart->points[best - 1].x, 9, 3)), std::string::npos);

    // The optimisation starts from the built molecule again and goes down
    // to the curve's floor, moving the two atoms the energy depends on.
    EXPECT_DOUBLE_EQ(e[61], e[0]);
    EXPECT_LT(e.back(), -99.99);
    EXPECT_NEAR(distance(st, 1, 3), 2.0, 0.05);
    EXPECT_NE(geo.find(" STABILIZATION + REPULSION  optimized = " + text::format_f(e.back(), 15, 5)), std::string::npos);
    EXPECT_TRUE(is.wrote_status("Optimization Finished"));

    // Leaving took the run's files and the copied tables away.
    for (const char* gone : {"inputc.inp", "inputc.lst", "iconcinp.kar", "iconc.out", "ENERTOT.DAT", "atomdef.dat"})
        EXPECT_FALSE(is.has(gone)) << gone;
    EXPECT_TRUE(is.has("ptest.lst"));
}

TEST(IconcMode, EscEndsTheScanWithTheDoneStepsPlottedAndStepsStopAtSixty) {
    IconcSession is;
    // Two programs a run: Esc after the fourth run of the scan.
    is.run_job("menu 40052\nmenu 40023\ndialog 115 ok\nmenu 40006\ndialog 111 button:3 1054=1 1031=1 1102=70\n"
               "after 8 runs key 27\nmsgbox no\nmenu 40001\nclose\n");
    EXPECT_TRUE(is.wrote_status("Step   4"));
    ASSERT_TRUE(is.t.tk.last_chart());
    EXPECT_EQ(is.t.tk.last_chart()->points.size(), 4u);
    EXPECT_EQ(is.decks().size(), 4u);
    EXPECT_TRUE(transcript_has(is.t, "field 1102 refused"));
    // The lowest of the four steps, towards the curve's bottom, is the last:
    // Apply Scan takes it into the molecule.
    EXPECT_EQ(is.t.tk.last_chart()->title, "FE-H Min at step 4");
    EXPECT_TRUE(is.wrote_status("B-Scan Min.at   1.760 see .GEO"));
    EXPECT_NEAR(distance(is.t.s.store, 1, 2), 1.76, 1e-4);
    EXPECT_NEAR(distance(is.t.s.store, 1, 3), 3.5, 1e-4);   // only the hydrogen moved
}

TEST(IconcMode, NewInputAsksOnlyForTheDBlockMetalAndLeavesTheCentreOut) {
    IconcSession is;
    is.run_job("menu 40052\nmenu 40023\ndialog 115 ok 1001=fe\nmenu 40006\ndialog 111 ok\n"
               "menu 40006\ndialog 111 button:3 1051=1\nmenu 40001\n");
    EXPECT_EQ(is.dialogs(115), 1);   // iron, not lanthanum
    // Save wrote the deck and ran nothing; the run's deck has the labels
    // folded to capitals and the molecule centred as on the screen.
    EXPECT_TRUE(is.wrote_status("Iconc input saved"));
    ASSERT_EQ(is.decks().size(), 1u);
    EXPECT_EQ(is.decks()[0], (Lines{"1", "ICONCINP", "PTEST", "   3", "  0", "FE", "H", "LA",
                                    "    -0.40000    -0.45000     0.00000", "     1.20000    -0.45000     0.00000",
                                    "    -0.40000     3.05000     0.00000", "N"}));
}

// An optimisation that gains less than Ediff, or nothing because the run
// left no energy file (worth zero), moves no atom.
TEST(IconcMode, AnOptimisationThatGainsTooLittleLeavesEveryCoordinate) {
    {
        IconcSession is;
        // Steps of 0.01 near the bottom of the curve gain less than 1 eV.
        setenv("FAKE_ICONC_RE", "1.6", 1);
        is.run_once(" 1055=1 1016=1 1071=0.01 1008=1");
        unsetenv("FAKE_ICONC_RE");
        // A start run, then each of Fe, H and La tried both ways on each axis.
        EXPECT_EQ(is.decks().size(), 1u + 3u * 3u * 2u);
        EXPECT_NEAR(distance(is.t.s.store, 1, 2), 1.6, 1e-4);
        EXPECT_NEAR(distance(is.t.s.store, 1, 3), 3.5, 1e-4);
        EXPECT_NE(is.file("felah.geo").find("  1  1"), std::string::npos);
    }
    IconcSession is;
    setenv("FAKE_ICONC_ENERTOT", "none", 1);
    is.run_once(" 1055=1 1016=1");
    unsetenv("FAKE_ICONC_ENERTOT");
    EXPECT_TRUE(is.wrote_status("Optimization Finished"));
    EXPECT_NE(is.file("felah.geo").find("  0  0                0.00000000"), std::string::npos);
    EXPECT_NEAR(distance(is.t.s.store, 1, 2), 1.6, 1e-4);
}

TEST(IconcMode, MissingProgramsAreNamedAndTheModeIsNotEntered) {
    IconcSession is;
    is.name_programs(is.t.dir / "nowhere/iconc");
    is.run_job("menu 40052\n");
    EXPECT_EQ(is.t.tk.status(9).find("ICONC: program iconc not found, set \"iconc\" or \"iconc_dir\" in"), 0u);
    for (const std::string& line : is.t.tk.transcript()) EXPECT_NE(line, "menu 30005");

    // Named one by one, the tables are looked for beside the engine.
    IconcSession named;
    named.name_programs(named.bin + "/iconc");
    named.run_once("");
    ASSERT_EQ(named.decks().size(), 1u);
    EXPECT_NEAR(named.energies()[0], morse(1.6), 1e-6);
}

TEST(IconcMode, NothingRunsWithoutABondAtomsOrTables) {
    {
        IconcSession is;
        is.run_once(" 1054=1", false);
        EXPECT_EQ(is.t.tk.message_boxes(), Lines{"No Bond Stored"});
        EXPECT_TRUE(is.decks().empty());
    }
    {
        IconcSession is;
        fs::current_path(is.t.dir.path());
        is.t.tk.load_script("menu 40052\nmenu 40023\nmenu 40006\nmenu 40001\nclose\n");
        run_program(is.t.s, {"zentol"});
        EXPECT_TRUE(is.wrote_status("No atoms for Iconc"));
        EXPECT_EQ(is.dialogs(111), 0);
        EXPECT_FALSE(is.has("inputc.inp"));
    }
    IconcSession is;
    fs::remove(is.bin + "/voi.dat");
    is.run_once("");
    ASSERT_FALSE(is.t.tk.message_boxes().empty());
    EXPECT_EQ(is.t.tk.message_boxes().back().find("Cannot find voi.dat in " + is.bin), 0u);
    EXPECT_TRUE(is.decks().empty());
}

// The plot control file goes with the session, so it is read here, after
// an energy run alone.
TEST(IconcRuns, TheEnergyRunOffersThePlotUpToTheHighestOccupiedLevel) {
    IconcSession is;
    Store& st = is.t.s.store;
    st.natoms = 2;
    st.atom_label[1] = make_label("Fe");
    st.atom_label[2] = make_label("H");
    is.t.s.job.name = "feh";
    IconcState state;
    state.programs = find_iconc_programs(is.t.s);
    state.atoms = {IconcAtom{make_label("FE"), 0, 0, 0, true}, IconcAtom{make_label("H"), 1.8f, 0, 0, false}};
    ASSERT_TRUE(copy_iconc_tables(is.t.s, state));
    iconc_energy_run(is.t.s, state);
    EXPECT_FLOAT_EQ(st.atom_charge[2], -0.6f);
    const Lines control = is.lines("pppmap.KEW");
    ASSERT_EQ(control.size(), 5u);
    EXPECT_EQ(control[1], "    3  M.O.");
    EXPECT_EQ(control[4], "    3  H.O.M.O");
}
