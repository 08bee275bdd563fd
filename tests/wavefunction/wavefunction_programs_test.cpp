// The outside wavefunction programs: the Multiwfn actions run by a fake that
// replays recorded Multiwfn 3.8 runs (CH4, Li2+, Ni(CO)4), and the DGrid batch
// and deck with DGrid and the converters as fake programs.
#include <cstdlib>
#include <filesystem>

#include <gtest/gtest.h>

#include "session/openers.h"
#include "session/session.h"
#include "session/startup.h"
#include "support/test_support.h"
#include "toolkit/files.h"
#include "wavefunction/dgrid.h"
#include "wavefunction/multiwfn.h"
#include "wavefunction/multiwfn_answers.h"

using namespace zentol;
using namespace zentol::testing;

namespace {

using Lines = std::vector<std::string>;

text::TextLines data(const std::string& name) {
    auto lines = files::read_text_lines(test_data("multiwfn/" + name));
    EXPECT_TRUE(lines.has_value()) << name;
    return lines.value_or(text::TextLines{});
}

// A CH4 job in the scratch folder with its Molden file, the fake Multiwfn
// replaying the runs of `molecule`.
struct MultiwfnJob {
    explicit MultiwfnJob(const std::string& molecule = "ch4") {
        const std::string fake = std::string(ZENTOL_TEST_DATA) + "/../wavefunction/fake_multiwfn.sh";
        t.s.engines.values["multiwfn"] = fake;
        t.s.engines.values["editor"] = "";
        setenv("FAKE_MWFN_DATA", test_data("multiwfn/" + molecule).c_str(), 1);
        t.s.job.name = "job";
        t.s.store.natoms = 5;
        std::filesystem::copy_file(test_data("multiwfn/" + molecule + "/job.molden.input"),
                                   t.scratch() + "/job.molden.input");
    }
    ~MultiwfnJob() { unsetenv("FAKE_MWFN_DATA"); }
    // The answers the fake was given in its n-th run.
    Lines answers(int n) const { return files::read_lines("answers." + std::to_string(n)).value_or(Lines{}); }
    int runs() const {
        int n = 0;
        while (files::exists("answers." + std::to_string(n + 1))) ++n;
        return n;
    }
    void act(int action, const std::string& list = "", float threshold = 50.0f) {
        t.s.multiwfn.orbital_list = list;
        t.s.multiwfn.mloba_threshold = threshold;
        multiwfn_action(t.s, action);
    }
    TestSession t;
};

// An executable script in the test's directory.
std::string program(TestSession& t, const std::string& name, const std::string& body) {
    const std::string path = t.dir / name;
    write_file(path, "#!/bin/sh\n" + body);
    std::filesystem::permissions(path, std::filesystem::perms::owner_all);
    return path;
}

bool said(const TestSession& t, const std::string& part) {
    for (const auto& line : t.tk.transcript())
        if (line.find(part) != std::string::npos) return true;
    return false;
}

}  // namespace

// The answer files are checked as the fake Multiwfn received them, in the
// actions' tests below.
TEST(MultiwfnAnswers, OrbitalListsAndBasinLists) {
    EXPECT_EQ(parse_orbital_list(" 41, 43-45 "), (std::vector<int>{41, 43, 44, 45}));
    EXPECT_FALSE(parse_orbital_list("HOMO").has_value());
    EXPECT_FALSE(parse_orbital_list("6-4").has_value());
    EXPECT_FALSE(parse_orbital_list(",").has_value());
    // Ni(CO)4 has both kinds of basin; CH4 (the ELF action below) 2-synaptic ones only.
    EXPECT_EQ(topmod_second_answers(read_basin_lists(data("nico4/topmod.lst"))).lines(),
              (Lines{"17", "1", "9", "2", "12", "-5", "b", "1,4,7,8,15,16,21,22", "2,3,5,6,9,10,13,14"}));
    EXPECT_EQ(topmod_second_answers(BasinLists{"6-12", "1-5,13", "", true, false}).lines().back(), "1-5,13");
}

TEST(MultiwfnAnswers, HirshfeldChargeLogAndTheValenceSection) {
    // The CH4 log whole: the tool-bar session below.
    EXPECT_EQ(hirshfeld_charge_log(data("nico4/job.chg"), 9)->at(1), "Ni    -0.115588");
    EXPECT_FALSE(hirshfeld_charge_log(text::TextLines::from_lines({"C  cut"}), 1).has_value());
    // Without core potentials the Molden file needs no valence section.
    EXPECT_EQ(valence_section(data("ch4/job.molden.input"), 0), Lines{});
}

TEST(MultiwfnActions, CubesCompositionsAndTheDOrbitalKey) {
    MultiwfnJob j;
    j.act(2, "4,5,6");
    ASSERT_EQ(j.runs(), 5);
    EXPECT_EQ(j.answers(1), (Lines{"200", "3", "4,5,6", "3", "1", "0", "q"}));
    EXPECT_EQ(j.answers(3), (Lines{"8", "1", "005"}));
    EXPECT_EQ(j.answers(5), (Lines{"8", "1", "  4", "  5", "  6", "q"}));
    for (const char* f : {"orb000004.cub", "004.LST", "006.LST", "orb_comp.lst"}) EXPECT_TRUE(files::exists(f)) << f;
    for (const char* f : {"cubes.txt", "dorb.txt", "orb_comp1.lst"}) EXPECT_FALSE(files::exists(f)) << f;
    const Lines comp = files::read_lines("orb_comp.lst").value();
    EXPECT_EQ(Lines(comp.begin(), comp.begin() + 6), d_orbital_key());
    EXPECT_NE(read_file("orb_comp.lst").find(" Orbital:     6"), std::string::npos);
    EXPECT_TRUE(said(j.t, "editor: " + j.t.scratch() + "/orb_comp.lst"));
    EXPECT_EQ(j.t.tk.dialogs_shown(), std::vector<int>{114});

    // Eight orbitals or more: no file of their own, all in the composition.
    MultiwfnJob k;
    k.act(2, "1-8");
    EXPECT_EQ(k.runs(), 2);
    EXPECT_FALSE(files::exists("001.LST"));
    // An empty or unreadable list runs nothing.
    k.act(2, "");
    k.act(2, "HOMO");
    EXPECT_EQ(k.runs(), 2);
}

TEST(MultiwfnActions, ElfLobaPotentialAndSpin) {
    MultiwfnJob j;
    std::filesystem::create_directories(j.t.scratch() + "/job-folder");
    std::filesystem::rename(j.t.scratch() + "/job.molden.input", j.t.scratch() + "/job-folder/job.molden.input");
    std::filesystem::current_path(j.t.scratch() + "/job-folder");
    j.act(3);
    EXPECT_EQ(j.answers(2), (Lines{"17", "1", "9", "2", "12", "-5", "b", "4", "1-3,5"}));
    // Away from the scratch folder the viewer's files are copied there.
    for (const char* f : {"basinsyn.cub", "basinfunc.cub", "basinsyn.vmd"})
        EXPECT_TRUE(file_present(j.t.scratch() + "/" + f)) << f;
    EXPECT_EQ(j.t.tk.message_boxes().back(), "VMD files in " + j.t.scratch());

    j.act(4, "", 35.5f);
    EXPECT_EQ(j.answers(3)[4], "35.500");
    EXPECT_EQ(files::read_lines("rloba.txt"), files::read_lines("loba.txt"));
    const Lines bat = files::read_lines("rloba.bat").value();
    ASSERT_EQ(bat.size(), 3u);
    EXPECT_NE(bat[0].find("job.molden.input"), std::string::npos);
    EXPECT_NE(bat[0].find("<'rloba.txt' >'rloba.lst'"), std::string::npos) << bat[0];
    EXPECT_EQ(bat[1], "cat rloba.txt rloba.lst > rloba2.lst");
    EXPECT_NE(read_file("loba.lst").find("Oxidation state of atom   1(C ) : -4"), std::string::npos);

    write_file("job_orca.pdb", "CRYST1\n");
    j.act(5);
    for (const char* f : {"mol1_orca1.pdb", "vtx1.pdb", "esp.vmd"})
        EXPECT_TRUE(file_present(j.t.scratch() + "/" + f)) << f;

    // A singlet has no spin density: nothing runs.
    j.act(7);
    EXPECT_EQ(j.runs(), 4);
    j.t.s.flags.spin_multiplicity = 2;
    j.act(7);
    EXPECT_EQ(j.runs(), 5);
    EXPECT_TRUE(files::exists("spindensity.cub"));
    EXPECT_FALSE(files::exists("spind.txt"));
    EXPECT_EQ(j.t.tk.message_boxes().back(), "Open job_orca.pdb and spindensity.cub usoing Chimera");
}

TEST(MultiwfnActions, AnOpenShellLobaRunSwitchesTheCompositionOff) {
    MultiwfnJob j("li2cation");
    j.act(4);
    EXPECT_EQ(j.answers(1)[1], "-9");
    EXPECT_NE(read_file("loba.lst").find("The sum of oxidation states:     1"), std::string::npos);
}

// orca_2mkl's file of a Y atom with the def2 core of 28 electrons.
TEST(MultiwfnActions, AMoldenFileWithCorePotentialsIsMadeReadable) {
    MultiwfnJob j("y_ecp");
    j.t.s.store.natoms = 1;
    j.act(6);
    const Lines edited = files::read_lines("job.molden.input").value();
    EXPECT_EQ(Lines(edited.begin() + 6, edited.begin() + 9), (Lines{"[Nval]", "Y 11", "[GTO]"}));
    EXPECT_EQ(files::read_lines("job_chg.log")->at(1), "Y      0.000000");
    j.act(6);   // once there, nothing is added
    EXPECT_EQ(files::read_lines("job.molden.input"), edited);
    // A charge that does not fit: said, and nothing runs.
    MultiwfnJob k("y_ecp");
    k.t.s.flags.total_charge = 2;
    k.act(6);
    EXPECT_EQ(k.runs(), 0);
    EXPECT_NE(k.t.tk.message_boxes().back().find("[Nval]"), std::string::npos);
}

TEST(MultiwfnActions, WithoutTheProgramOrTheMoldenFileNothingRuns) {
    MultiwfnJob j;
    // A program of 100 bytes or less is no Multiwfn.
    j.t.s.engines.values["multiwfn"] = program(j.t, "Multiwfn", "exit 0\n");
    multiwfn_command(j.t.s);
    EXPECT_TRUE(j.t.tk.dialogs_shown().empty());
    EXPECT_NE(j.t.tk.status(9).find("\"multiwfn\""), std::string::npos);

    MultiwfnJob k;
    files::remove("job.molden.input");
    k.t.tk.load_script("dialog 127 ok 1048=1\n");
    multiwfn_command(k.t.s);
    EXPECT_EQ(k.t.tk.dialogs_shown(), std::vector<int>{127});
    EXPECT_EQ(k.runs(), 0);
    EXPECT_NE(k.t.tk.status(9).find("job.molden.input"), std::string::npos);
    // The manual is a document of its own key.
    k.t.tk.load_script("dialog 127 ok 1050=1\n");
    multiwfn_command(k.t.s);
    EXPECT_NE(k.t.tk.message_boxes().back().find("\"multiwfn_manual\""), std::string::npos);
}

// The tool-bar command in a whole session: dialog 127, then the action.
TEST(MultiwfnActions, TheToolBarCommandInASession) {
    MultiwfnJob j;
    TestSession& t = j.t;
    write_file(t.scratch() + "/ch4.molden.input", read_file(test_data("multiwfn/ch4/job.molden.input")));
    write_file(t.scratch() + "/ch4.xyz", "     5 ch4 chamul   0   1\n"
                                         "     1  C     -1.375000    0.410714    0.000000     1     2     3     4     5\n"
                                         "     2  H     -1.018345   -0.598096    0.000000     5     1\n"
                                         "     3  H     -1.018327    0.915112    0.873652     5     1\n"
                                         "     4  H     -1.018327    0.915112   -0.873652     5     1\n"
                                         "     5  H     -2.445000    0.410727    0.000000     5     1\n");
    write_file(t.s.inst.cfgset + "/dir1.def", t.scratch() + "\n");
    t.tk.load_script("menu 40084\ndialog 127 ok 1048=1\n");
    run_program(t.s, {"zentol", "ch4", "1"});
    EXPECT_EQ(files::read_lines(t.scratch() + "/ch4_chg.log"),
              (Lines{"#Orca hirshfeld charges", "C     -0.109250", "H      0.027310", "H      0.027314", "H      0.027314",
                     "H      0.027312"}));
    EXPECT_TRUE(said(t, "dialog 114 shown"));
}

TEST(Dgrid, TheNewestVersionGetsTheBatchAndTheConvertersRunAlways) {
    if (on_path("dos2unix").empty()) GTEST_SKIP() << "no dos2unix";
    struct Case { bool v50, v51; };
    for (const Case c : {Case{true, false}, Case{true, true}, Case{false, false}}) {
        SCOPED_TRACE(std::to_string(c.v50) + std::to_string(c.v51));
        TestSession t;
        // elf_input_gen writes run_<job> with CRLF ends; dos2unix (Debian's) makes them LF.
        t.s.engines.values["elf_input_gen"] = program(t, "elf_input_gen", "printf 'dgrid %s\\r\\n' \"$1\" > run_$1\n");
        t.s.engines.values["dos2unix"] = "dos2unix";
        t.s.engines.values["dgrid50"] = c.v50 ? program(t, "dgrid-5.0", "exit 0\n") : "";
        t.s.engines.values["dgrid51"] = c.v51 ? program(t, "dgrid-5.1", "exit 0\n") : "";
        // Without the wavefunction nothing at all happens.
        EXPECT_FALSE(dgrid_prepare(t.s, "water"));
        EXPECT_FALSE(file_present(t.scratch() + "/run_water"));
        write_file(t.scratch() + "/water.wfn", "wavefunction\n");
        EXPECT_TRUE(dgrid_prepare(t.s, "water"));
        EXPECT_EQ(file_present(t.scratch() + "/water_D.inp"), c.v50);
        if (c.v50) {
            const std::string newest = t.dir / (c.v51 ? "dgrid-5.1" : "dgrid-5.0");
            EXPECT_EQ(read_file(t.scratch() + "/water_D.bat"), "'" + newest + "' 'water.wfn'\n");
            EXPECT_EQ(read_file(t.scratch() + "/water_D.inp").substr(0, 8), "::water\n");
        }
        EXPECT_EQ(t.tk.message_boxes().size(), c.v50 || c.v51 ? 0u : 1u);
        EXPECT_EQ(read_file(t.scratch() + "/run_water"), "dgrid water\n");
    }
}
