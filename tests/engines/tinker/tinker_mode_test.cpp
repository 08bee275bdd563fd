// Tinker mode in whole headless sessions, the Tinker programs played by
// fake_tinker.sh replaying real Tinker 26.2 runs on butane.
#include "engines/tinker/tinker_mode.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include <gtest/gtest.h>

#include "engines/session_checks.h"
#include "engines/tinker/tinker_decks.h"
#include "session/startup.h"
#include "tinker_test_util.h"
#include "toolkit/files.h"

using namespace zentol;
using namespace zentol::testing;

namespace {

constexpr const char* kPrograms[] = {"minimize", "optimize", "analyze", "dynamic", "anneal", "vibrate", "spacefill"};
const std::string kMinimize = "menu 40013\nmenu 40008\nmenu 40001\nclose\n";
const std::string kEnergyLine = " Tinker energy =         3.08660 kcal/mol       12.91433 kJ/mol";
constexpr float kMinimisedBond = 1.534059f;   // C1-C2 of the recorded minimize run

// A session on butane with the fake Tinker programs installed, named as
// given ("minimize" or Tinker's own "minimize.x").
struct TinkerSession {
    explicit TinkerSession(const std::string& suffix = "") {
        namespace fs = std::filesystem;
        fs::create_directories(bin);
        const std::string fake = std::string(ZENTOL_TEST_DATA) + "/../engines/tinker/fake_tinker.sh";
        for (const char* name : kPrograms) fs::copy_file(fake, bin + "/" + name + suffix);
        t.s.engines.values["tinker_dir"] = bin;
        setenv("FAKE_TINKER_DATA", test_data("tinker").c_str(), 1);
    }
    ~TinkerSession() {
        for (const char* name : kPrograms) unsetenv((std::string("FAKE_TINKER_CASE_") + name).c_str());
    }
    // A program replays a recorded failure of tests/data/tinker/<folder>.
    void fail_with(const std::string& program, const std::string& folder) {
        setenv(("FAKE_TINKER_CASE_" + program).c_str(), folder.c_str(), 1);
    }
    void put(const std::string& data_file, const std::string& as) {
        std::filesystem::copy_file(test_data(data_file), t.scratch() + "/" + as,
                                   std::filesystem::copy_options::overwrite_existing);
    }
    void run(const std::string& script, const std::string& job = "butane", const std::string& xyz = "butane.xyz") {
        write_file(t.s.inst.cfgset + "/dir1.def", t.scratch() + "\n");
        if (!has(xyz)) put("tinker/butane.xyz", xyz);
        t.tk.load_script(script);
        run_program(t.s, {"zentol", job, "1"});
    }
    bool has(const std::string& name) const { return file_present(t.scratch() + "/" + name); }
    std::string file(const std::string& name) const { return read_file(t.scratch() + "/" + name); }
    Lines lines(const std::string& name) const { return files::read_lines(t.scratch() + "/" + name).value_or(Lines{}); }
    // The files of the job directory whose names match, in any case.
    Lines files_like(const std::string& pattern) const { return files::list(t.scratch(), pattern); }
    const std::vector<std::string>& boxes() const { return t.tk.message_boxes(); }

    TestSession t;
    std::string bin = t.dir / "tinker";
};

}  // namespace

TEST(TinkerMode, MinimizeTakesTheNewStructureKeepsTheLabelsAndLogsTheEnergy) {
    TinkerSession ts;
    // Old versions beside the job (Tinker would write butane.xyz_4): a
    // leftover never stands in for the result.
    ts.put("tinker/butane.xyz", "butane.xyz_2");
    ts.put("tinker/butane.xyz", "butane.XYZ_3");
    ts.run(kMinimize);
    EXPECT_EQ(ts.lines("answers.minimize"), (Lines{"butane.xyz", "9.99999978E-03"}));
    EXPECT_TRUE(holds(ts.file("butane.geo"), kEnergyLine));
    EXPECT_EQ(ts.files_like("butane.xyz_*"), Lines{});
    EXPECT_TRUE(holds(ts.file("butane.xyz"), "  C1  "));   // the job's labels, not Tinker's symbols
    EXPECT_NEAR(bond_length(ts.t.s.store, 1, 2), kMinimisedBond, 1e-4);
    EXPECT_TRUE(ts.boxes().empty());
}

TEST(TinkerMode, WithoutTinkerTheButtonSaysWhatIsMissing) {
    TinkerSession ts;
    ts.t.s.engines.values["tinker_dir"] = ts.t.dir / "nowhere";
    ts.run(kMinimize);
    EXPECT_TRUE(ts.boxes().empty());
    EXPECT_FALSE(ts.has("ZENTOL.BAT"));
    const auto& seen = ts.t.tk.field9_when_asked();
    ASSERT_GE(seen.size(), 2u);
    EXPECT_EQ(seen[1], "Tinker's minimize is not installed: set \"tinker_dir\" in " + ts.t.s.inst.cfgset +
                           "/engines.def or put Tinker on PATH");
}

TEST(TinkerMode, DynamicsGoesOnFromItsRestartFileOnlyWhileTheStructureIsItsOwn) {
    TinkerSession ts;
    const std::string dynamics = "menu 40030\ndialog 109 ok\nmsgbox no\n";
    // Type 4 first: without a periodic box in the key file it is refused
    // and the dialog comes again.
    ts.run("menu 40013\nmenu 40030\ndialog 109 ok 1102=4\nmsgbox ok\ndialog 109 ok 1102=1\nmsgbox no\n" + dynamics +
           "menu 40008\n" + dynamics + "menu 40001\nclose\n");
    EXPECT_EQ(ts.lines("tinker.runs"), (Lines{"dynamic butane.xyz", "dynamic butane.xyz restarting",
                                              "minimize butane.xyz", "dynamic butane.xyz"}));
    ASSERT_EQ(ts.boxes().size(), 4u);   // the refusal, then the three Replay questions
    EXPECT_TRUE(holds(ts.boxes()[0], "need a periodic box")) << ts.boxes()[0];
    const auto& shown = ts.t.tk.dialogs_shown();
    EXPECT_EQ(std::count(shown.begin(), shown.end(), 109), 4);
    // The last run's archive cut and replayed: 30 frames shown and kept.
    EXPECT_EQ(ts.lines("answers.dynamic"), (Lines{"butane.xyz", "3000", "1.00000000", "0.100000001", "1"}));
    EXPECT_TRUE(ts.has("MV30.INS"));
    EXPECT_FALSE(ts.has("MV31.INS"));
}

TEST(TinkerMode, TheAutomaticCycleAnnealsAndMinimisesUntilTheCountIsUsed) {
    TinkerSession ts;
    ts.t.s.tinker.tk_auto_cycles = 2;
    ts.t.s.tinker.tk_movie_delay = 0;
    ts.run("menu 40013\nmenu 40012\nmenu 40001\nclose\n");
    const std::string geo = ts.file("butane.geo");
    for (const char* part : {" Auto Anneal\n", "Cycle   1\n", "Cycle   2\n"}) EXPECT_TRUE(holds(geo, part)) << part;
    EXPECT_NE(geo.rfind(" Tinker energy ="), geo.find(" Tinker energy ="));   // two energies
    EXPECT_TRUE(ts.boxes().empty());   // no questions on the way
    // Each anneal starts from the structure, never from the restart file of
    // the cycle before: the minimised structure is not where that ended.
    EXPECT_EQ(ts.lines("tinker.runs"), (Lines{"anneal butane.xyz", "minimize butane.xyz", "anneal butane.xyz",
                                              "minimize butane.xyz"}));
}

TEST(TinkerMode, VibrateSpacefillAndAnalyzeAnswerWhatTheProgramsAsk) {
    TinkerSession ts;
    ts.run("menu 40013\nmenu 40027\ndialog 105 ok 1101=7\nmenu 40028\ndialog 108 ok 1052=1\nmenu 40021\n"
           "menu 40001\nclose\n");
    EXPECT_EQ(ts.boxes(), Lines{"Delete movie files"});   // no failure, only the question on leaving
    // The seventh mode shown; the job's own structure is back (the exit
    // keeps it centred as seen).
    EXPECT_EQ(ts.lines("answers.vibrate"), (Lines{"butane.xyz", "7", "0.30", " "}));
    EXPECT_TRUE(ts.has("MV07.INS"));
    EXPECT_FALSE(ts.has("MV08.INS"));
    EXPECT_NEAR(bond_length(ts.t.s.store, 1, 2), bond_length(*store_of(tinker_lines("butane.xyz")), 1, 2), 1e-4);
    EXPECT_EQ(ts.lines("answers.spacefill"), (Lines{"butane.xyz", "2", "1.4", "Y", "N"}));
    EXPECT_EQ(ts.lines("answers.analyze"), (Lines{"butane.xyz", "E"}));
}

TEST(TinkerMode, AnUpperCaseJobKeepsTinkersResultUnderItsOwnSpelling) {
    TinkerSession ts;
    ts.put("tinker/butane.xyz", "BUTANE.XYZ");
    write_file(ts.t.scratch() + "/BUTANE.KEY", "parameters mm3\n#verbose\n");
    ts.run(kMinimize, "BUTANE", "BUTANE.XYZ");
    // Tinker was told the file as it stands, found its key under the name
    // it looks for, and wrote BUTANE.xyz, which became the job's structure.
    EXPECT_EQ(ts.lines("answers.minimize")[0], "BUTANE.XYZ");
    EXPECT_EQ(ts.files_like("butane.xyz*"), (Lines{"BUTANE.XYZ"}));
    EXPECT_EQ(ts.files_like("butane.key"), (Lines{"BUTANE.key"}));
    EXPECT_NEAR(bond_length(*store_of(ts.lines("BUTANE.XYZ")), 1, 2), kMinimisedBond, 1e-4);
    EXPECT_TRUE(holds(ts.file("BUTANE.geo"), kEnergyLine));
}

// Refused without a box: the restart session above.
TEST(TinkerMode, DynamicsTypeFourRunsWithAPeriodicBox) {
    TinkerSession ts;
    write_file(ts.t.scratch() + "/butane.key", "parameters mm3\n#verbose\na-axis 25.0\n");
    ts.run("menu 40013\nmenu 40030\ndialog 109 ok 1102=4\nmsgbox no\nmenu 40001\nclose\n");
    EXPECT_EQ(ts.lines("answers.dynamic").size(), 7u);
    EXPECT_EQ(ts.lines("tinker.runs"), (Lines{"dynamic butane.xyz"}));
}

TEST(TinkerMode, RunsThatStopOnUndefinedParametersSaySoAndShowNothing) {
    TinkerSession ts;
    const std::vector<std::string> programs = {"minimize", "dynamic", "anneal", "vibrate", "spacefill"};
    for (const std::string& program : programs) ts.fail_with(program, "undef_analyze_E");
    ts.run("menu 40013\nmenu 40008\nmenu 40030\ndialog 109 ok\nmenu 40012\nmenu 40027\nmenu 40028\ndialog 108 ok\n"
           "menu 40001\nclose\n");
    ASSERT_EQ(ts.boxes().size(), programs.size());
    for (std::size_t k = 0; k < programs.size(); ++k) {
        const std::string& box = ts.boxes()[k];
        const std::string first = "Tinker's " + programs[k] + " stopped: MM3 lacks parameters for this molecule "
                                  "(Undefined Bond Stretching Parameters).\rRepeated use of Undefined and Optimize may work";
        EXPECT_EQ(box.substr(0, first.size()), first);
        // The end of this run's log (its layout: TinkerOutcome).
        EXPECT_TRUE(holds(box, "\r\rZENTOL.LOG ends:\r Torsion         1-B       2-C       3-C      10-H")) << box;
    }
    EXPECT_FALSE(ts.has("MV01.INS"));   // no frames replayed
    EXPECT_FALSE(holds(ts.file("butane.geo"), "Tinker energy"));
}

TEST(TinkerMode, ACrashedRunIsToldWithTheEndOfItsLog) {
    // The chromium carbonyl example has an atom of type 0: Tinker 26.2
    // aborts before it writes more than its banner.
    TinkerSession ts;
    ts.fail_with("analyze", "badtype0_analyze_E");
    ts.put("../../examples/chromium-carbonyl.xyz", "chromium-carbonyl.xyz");
    ts.run("menu 40013\nmenu 40021\nmenu 40001\nclose\n", "chromium-carbonyl", "chromium-carbonyl.xyz");
    ASSERT_EQ(ts.boxes().size(), 1u);
    const std::string& box = ts.boxes()[0];
    EXPECT_EQ(box.rfind("Tinker's analyze crashed: double free or corruption (out)\r"
                        "These atoms have type 0, which MM3 does not define: Cr1 (Edit.XYZ sets the types).\r", 0), 0u)
        << box;
    EXPECT_TRUE(holds(box, "Program received signal SIGABRT: Process abort signal."));
    EXPECT_FALSE(holds(box, "0x7f49c3c218c2"));   // no backtrace frames
}

TEST(TinkerMode, TinkersOwnProgramNamesAndProgramsOnPath) {
    TinkerSession ts(".x");
    EXPECT_EQ(tinker_program(ts.t.s, "minimize"), ts.bin + "/minimize.x");
    EXPECT_TRUE(tinker_installed(ts.t.s));
    const std::string old_path = getenv("PATH") ? getenv("PATH") : "";
    ts.t.s.engines.values["tinker_dir"] = "";
    setenv("PATH", (ts.bin + ":" + old_path).c_str(), 1);
    const std::string found = tinker_program(ts.t.s, "minimize");
    setenv("PATH", old_path.c_str(), 1);
    EXPECT_EQ(found, ts.bin + "/minimize.x");
}
