// Mopac mode with the real engine: the MOPAC installed on the machine
// (Debian's open-source MOPAC) runs the deck written from dialog 107.
#include "engines/mopac/mopac_mode.h"
#include "engines/runner.h"

#include <filesystem>
#include <map>

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

std::vector<std::string> lines_of(const std::string& path) {
    return files::read_lines(path).value_or(std::vector<std::string>{});
}

void use_real_mopac(TestSession& t) { t.s.engines.values["mopac2016"] = "mopac"; }

// The energies of the " Total Energy = " lines of a .GEO log, in eV.
std::vector<double> logged_energies(const std::string& geo) {
    std::vector<double> e;
    for (const std::string& line : lines_of(geo))
        if (line.rfind(" Total Energy = ", 0) == 0) e.push_back(text::read_f(line.substr(16, 15)).value_or(0));
    return e;
}

// What the message field showed when Mopac mode was left (the Display menu
// loaded again).
std::string message_on_leaving(const TestSession& t) {
    std::string shown, on_leaving;
    for (const std::string& line : t.tk.transcript()) {
        if (line == "menu 30001") on_leaving = shown;
        if (line.rfind("status 9: ", 0) == 0) shown = line.substr(10);
    }
    return on_leaving;
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
        use_real_mopac(t);
        // The last method chosen comes back in the dialog: the optimisation
        // runs PM7 without choosing it again. A key and a redraw after the
        // run leave the result on screen.
        run_on_molecule(t, std::string("mopac/") + c.job + ".xyz",
                        "menu 40014\nmenu 40023\ndialog 107 button:3 1077=1 1054=1\n"
                        "menu 40023\ndialog 107 button:3 1055=1\nkey 258\nexpose\nmenu 40001\n");
        EXPECT_TRUE(t.tk.message_boxes().empty()) << t.tk.message_boxes()[0];
        const std::string job = t.scratch() + "/" + c.job;
        // The deck of the last run: PM7 from the dialog, the open shell's words.
        const std::string deck = read_file(job + ".inp");
        EXPECT_EQ(deck.substr(0, 5), " PM7 ");
        EXPECT_EQ(deck.find(" OPEN(2,2)") != std::string::npos, std::string(c.job) == "oxygen");
        const std::string geo = read_file(job + ".geo");
        EXPECT_NE(geo.find(" Mopac Energy calculation"), std::string::npos) << geo;
        EXPECT_NE(geo.find(" Mopac Optimize calculation"), std::string::npos);
        // The optimisation goes down from the single point of the start.
        const auto energies = logged_energies(job + ".geo");
        ASSERT_EQ(energies.size(), 2u);
        EXPECT_LT(energies[0], -10.0);
        // The result stays on screen: the optimised energy in eV and kJ/mol.
        const std::string result = message_on_leaving(t);
        EXPECT_EQ(result.rfind("PM7  " + std::string(text::trim(text::format_f(energies[1], 20, 5))) + " eV  ", 0), 0u)
            << result;
        EXPECT_TRUE(result.ends_with(" kJ/mol  structure updated")) << result;
        EXPECT_LE(energies[1], energies[0] + 1e-4);
        const std::size_t rows = static_cast<std::size_t>(c.natoms + 1);
        EXPECT_EQ(lines_of(job + "_chg.log").size(), rows);
        EXPECT_EQ(file_present(job + "_spn.log"), c.open_shell);
        EXPECT_EQ(lines_of(job + "_spn.log").size(), c.open_shell ? rows : 0u);
        EXPECT_EQ(t.s.store.natoms, c.natoms);
    }
}

namespace {

// The numbers behind the "=" of the first listing line holding `key`.
std::vector<double> numbers_after(const std::vector<std::string>& listing, const std::string& key, int count) {
    for (const std::string& line : listing) {
        const std::size_t at = line.find(key), eq = at == std::string::npos ? at : line.find('=', at);
        if (eq != std::string::npos)
            return text::read_reals(std::string_view(line).substr(eq + 1), count).value_or(std::vector<double>{});
    }
    return {};
}

int listing_count(const std::vector<std::string>& listing, const std::string& key) {
    const auto v = numbers_after(listing, key, 1);
    return v.empty() ? -1 : static_cast<int>(v[0]);
}

// The orbital numbers and energies the .GEO log marks (the listing's table,
// not the graph file's, whose mark ends in a full stop).
struct Marks {
    int homo = 0, lumo = 0;
    double homo_energy = 0, lumo_energy = 0;
};

Marks logged_marks(const std::string& geo) {
    Marks m;
    for (const std::string& line : lines_of(geo)) {
        const bool homo = line.ends_with(" H.O.M.O"), lumo = line.ends_with(" L.U.M.O");
        if (!homo && !lumo) continue;
        const int number = static_cast<int>(text::read_i(line.substr(0, 8)).value_or(0));
        const double energy = text::read_f(line.substr(8, 12)).value_or(0);
        (homo ? m.homo : m.lumo) = number;
        (homo ? m.homo_energy : m.lumo_energy) = energy;
    }
    return m;
}

}  // namespace

// Open shells with the real engine: the H.O.M.O mark stands on the highest
// occupied level the listing reports (its doubly and singly occupied levels
// for RHF with open levels, its alpha electrons for UHF) and the L.U.M.O on
// the next one up. Quartets and above run as the multiplicity asked.
TEST(MopacMode, OrbitalMarksAndSpinStatesOfOpenShells) {
    if (on_path("mopac").empty()) GTEST_SKIP() << "no mopac on PATH";
    struct Case {
        const char* job;
        bool uhf;          // UHF chosen in the dialog
        const char* spin;  // the spin state the listing must say
        int multiplicity;
    };
    const Case cases[] = {
        {"methylene", false, "TRIPLET", 3}, {"methylene", true, "TRIPLET", 3}, {"oxygen", false, "TRIPLET", 3},
        {"oxygen", true, "TRIPLET", 3},     {"fecl6", false, "SEXTET", 6},      {"nitrogen", false, "QUARTET", 4},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.job) + (c.uhf ? " UHF" : " RHF"));
        TestSession t;
        use_real_mopac(t);
        run_on_molecule(t, std::string("mopac/") + c.job + ".xyz",
                        std::string("menu 40014\nmenu 40023\ndialog 107 button:3 1077=1 1054=1") +
                            (c.uhf ? " 1052=1" : "") + "\nmenu 40001\n");
        EXPECT_TRUE(t.tk.message_boxes().empty()) << t.tk.message_boxes()[0];
        const std::string job = t.scratch() + "/" + c.job;
        const auto listing = lines_of(job + ".lst");
        ASSERT_FALSE(listing.empty());
        EXPECT_NE(read_file(job + ".lst").find("SPIN STATE DEFINED AS A " + std::string(c.spin)), std::string::npos);

        // The occupation as the listing states it at the start of the SCF.
        int highest = 0;
        const int alpha = listing_count(listing, "UHF CALCULATION, NO. OF ALPHA ELECTRONS");
        if (alpha > 0) {
            highest = alpha;
            EXPECT_EQ(alpha - listing_count(listing, "NO. OF BETA  ELECTRONS =") + 1, c.multiplicity);
        } else {
            EXPECT_FALSE(c.uhf || c.multiplicity > 3);
            highest = listing_count(listing, "RHF CALCULATION, NO. OF DOUBLY OCCUPIED LEVELS") +
                      listing_count(listing, "NO. OF SINGLY OCCUPIED LEVELS");
        }
        const Marks marks = logged_marks(job + ".geo");
        EXPECT_EQ(marks.homo, highest);
        // A nitrogen atom's four alpha levels are all occupied: no L.U.M.O.
        EXPECT_EQ(marks.lumo, std::string(c.job) == "nitrogen" ? 0 : highest + 1);
        // The listing's own "ALPHA SOMO LUMO" line of a UHF run, when it prints both.
        const auto somo_lumo = numbers_after(listing, "          ALPHA SOMO LUMO (EV)", 2);
        if (somo_lumo.size() == 2) {
            EXPECT_NEAR(marks.homo_energy, somo_lumo[0], 6e-4);
            EXPECT_NEAR(marks.lumo_energy, somo_lumo[1], 6e-4);
        }
    }
}

namespace {

// The molecule of tests/data/<file> opened as the job of a session that has
// ended, the scratch directory current and the .GEO log open.
void open_molecule(TestSession& t, const std::string& file, const std::string& job) {
    use_real_mopac(t);
    write_file(t.s.inst.cfgset + "/dir1.def", t.scratch() + "\n");
    std::filesystem::copy_file(test_data(file), t.scratch() + "/" + job + ".xyz");
    t.tk.load_script("");
    run_program(t.s, {"zentol", job, "1"});
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

// "Root No." numbers and energies of the first eigenvector section of a
// listing of the open-source MOPAC.
std::map<int, double> listing_orbitals(const std::vector<std::string>& listing) {
    std::map<int, double> out;
    for (std::size_t i = 0; i + 4 < listing.size(); ++i) {
        if (listing[i].find("NET ATOMIC CHARGES") != std::string::npos) break;
        if (listing[i].rfind("   Root No.", 0) != 0) continue;
        const auto roots = text::read_ints(std::string_view(listing[i]).substr(11), 8).value_or(std::vector<long long>{});
        const auto values = text::read_reals(listing[i + 4], 8).value_or(std::vector<double>{});
        for (std::size_t k = 0; k < roots.size() && k < values.size(); ++k) out[static_cast<int>(roots[k])] = values[k];
    }
    return out;
}

}  // namespace

// Without ALLVEC MOPAC writes only HOMO-8 to HOMO+7 to the graph file of a
// molecule with more than 16 orbitals, and its listing prints the same
// ones: graph.dat and the plot carry the listing's numbers, so the map
// program is handed the H.O.M.O it asks for.
TEST(MopacMode, GraphFileOrbitalsKeepTheListingsNumbers) {
    if (on_path("mopac").empty()) GTEST_SKIP() << "no mopac on PATH";
    for (const auto& [job, homo] : {std::pair{"acetone", 12}, std::pair{"benzene", 15}}) {
        SCOPED_TRACE(job);
        TestSession t;
        open_molecule(t, std::string("mopac/") + job + ".xyz", job);
        const MopacState m = pm7_energy_run(t, job);
        EXPECT_EQ(m.homo_index, homo);
        EXPECT_EQ(m.first_orbital, homo - 8);
        EXPECT_TRUE(m.energy_run);

        const auto printed = listing_orbitals(lines_of(std::string(job) + ".lst"));
        ASSERT_EQ(printed.size(), 16u);
        EXPECT_EQ(printed.begin()->first, homo - 8);
        const auto graph = lines_of("graph.dat");
        ASSERT_FALSE(graph.empty());
        EXPECT_EQ(text::read_i(graph[0].substr(18, 6)).value_or(0), homo);
        std::map<int, double> in_graph;
        for (const std::string& line : graph)
            if (line.rfind(" ORBITAL", 0) == 0)
                in_graph[static_cast<int>(text::read_i(line.substr(8, 5)).value_or(0))] =
                    text::read_f(line.substr(16, 12)).value_or(0);
        ASSERT_EQ(in_graph.size(), printed.size());
        for (const auto& [number, energy] : printed) EXPECT_NEAR(in_graph[number], energy, 6e-4) << number;
        // The .GEO log numbers the graph file's table the same way.
        int graph_homo = 0;
        for (const std::string& line : lines_of(std::string(job) + ".geo"))
            if (line.ends_with(" H.O.M.O.")) graph_homo = static_cast<int>(text::read_i(line.substr(0, 8)).value_or(0));
        EXPECT_EQ(graph_homo, homo);
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
    // The message field says which program is missing and where it is set.
    EXPECT_EQ(message_on_leaving(t), "MOPAC is not installed: set \"mopac2016\" in engines.def");
}

TEST(MopacMode, ABondRotationProfileWithTheRealEngine) {
    if (on_path("mopac").empty()) GTEST_SKIP() << "no mopac on PATH";
    TestSession t;
    open_molecule(t, "tinker/butane.xyz", "butane");
    // The C-C-C-C dihedral stored as MarkBond leaves it.
    write_file("IDHED.DAT", "           1           2           3           4\n");
    t.s.view.marks.count = 2;
    t.s.opt.bond_rot_step = 20;
    t.tk.load_script("msgbox no\n");
    pm7_energy_run(t, "butane", true);
    const std::string geo = read_file(t.scratch() + "/butane.geo");
    EXPECT_NE(geo.find(" Mopac Bond Rotation Profile for butane"), std::string::npos) << geo;
    EXPECT_NE(geo.find("Dihedral     Rel.kJ/mol  Total Energy EV"), std::string::npos);
    EXPECT_NE(geo.find(" Minimum at "), std::string::npos);
    // 0 to 360 degrees in steps of 20: 19 points, shown as a chart.
    ASSERT_TRUE(t.tk.last_chart().has_value());
    EXPECT_EQ(t.tk.last_chart()->points.size(), 19u);
    // The four dihedral atoms are held, the others free: flags 0 and 1.
    const auto deck = lines_of(t.scratch() + "/butane.inp");
    ASSERT_GE(deck.size(), 8u);
    EXPECT_EQ(deck[3].substr(0, 4), "C   ");
    EXPECT_EQ(deck[3].substr(deck[3].size() - 3), "  0");
    EXPECT_EQ(deck[7].substr(0, 4), "H   ");
    EXPECT_EQ(deck[7].substr(deck[7].size() - 3), "  1");
}
