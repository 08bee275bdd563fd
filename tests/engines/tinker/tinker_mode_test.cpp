// Tinker mode in whole headless sessions, the Tinker programs played by
// fake_tinker.sh replaying real Tinker 26.2 runs on butane.
#include "engines/tinker/tinker_mode.h"

#include <cmath>
#include <cstdlib>
#include <filesystem>

#include <gtest/gtest.h>

#include "session/startup.h"
#include "structure_files/xyz_file.h"
#include "support/test_support.h"
#include "toolkit/files.h"

using namespace zentol;
using namespace zentol::testing;

namespace {

using Lines = std::vector<std::string>;

float bond(const Store& st, int a, int b) {
    float sum = 0;
    for (int c = 0; c < 3; ++c) sum += (st.atom_rec[a][c] - st.atom_rec[b][c]) * (st.atom_rec[a][c] - st.atom_rec[b][c]);
    return std::sqrt(sum);
}

// A session on butane with the fake Tinker programs installed.
struct TinkerSession {
    TinkerSession() {
        namespace fs = std::filesystem;
        const std::string bin = t.dir / "tinker";
        fs::create_directories(bin);
        const std::string fake = std::string(ZENTOL_TEST_DATA) + "/../engines/tinker/fake_tinker.sh";
        for (const char* name : {"minimize", "optimize", "analyze", "dynamic", "anneal", "vibrate", "spacefill"})
            fs::copy_file(fake, bin + "/" + name);
        t.s.engines.values["tinker_dir"] = bin;
        setenv("FAKE_TINKER_DATA", test_data("tinker").c_str(), 1);
    }
    void run(const std::string& script) {
        write_file(t.s.inst.cfgset + "/dir1.def", t.scratch() + "\n");
        std::filesystem::copy_file(test_data("tinker/butane.xyz"), t.scratch() + "/butane.xyz",
                                   std::filesystem::copy_options::overwrite_existing);
        t.tk.load_script(script);
        run_program(t.s, {"zentol", "butane", "1"});
    }
    std::string file(const std::string& name) const { return read_file(t.scratch() + "/" + name); }
    Lines lines(const std::string& name) const {
        return files::read_lines(t.scratch() + "/" + name).value_or(Lines{});
    }

    TestSession t;
};

}  // namespace

TEST(TinkerMode, MinimizeTakesTheNewStructureKeepsTheLabelsAndLogsTheEnergy) {
    TinkerSession ts;
    ts.run("menu 40013\nmenu 40008\nmenu 40001\nclose\n");
    EXPECT_EQ(ts.lines("answers.minimize"), (Lines{"butane.xyz", "9.99999978E-03"}));
    EXPECT_NE(ts.file("butane.geo").find(" Tinker energy =         3.08660 kcal/mol"), std::string::npos);
    EXPECT_FALSE(file_present(ts.t.scratch() + "/butane.xyz_2"));
    EXPECT_NE(ts.file("butane.xyz").find("  C1  "), std::string::npos);   // the job's labels, not Tinker's symbols
    EXPECT_NEAR(bond(ts.t.s.store, 1, 2), 1.534059, 1e-4);                // the minimised structure
}

TEST(TinkerMode, WithoutTinkerTheButtonSaysWhatIsMissing) {
    TinkerSession ts;
    ts.t.s.engines.values["tinker_dir"] = ts.t.dir / "nowhere";
    ts.run("menu 40013\nkey 258\nexpose\nmenu 40008\nclose\n");
    EXPECT_TRUE(ts.t.tk.message_boxes().empty());
    EXPECT_FALSE(file_present(ts.t.scratch() + "/ZENTOL.BAT"));
    // The message stands through a turn and an uncovering of the window,
    // and goes with the next command.
    const auto& seen = ts.t.tk.field9_when_asked();
    ASSERT_GE(seen.size(), 5u);
    const std::string said = "Tinker's minimize is not installed: set \"tinker_dir\" in " +
                             ts.t.s.inst.cfgset + "/engines.def";
    EXPECT_EQ(seen[1], said);   // asked for the key, the expose and the next command
    EXPECT_EQ(seen[2], said);
    EXPECT_EQ(seen[3], said);
    EXPECT_NE(seen[4], said);
}

TEST(TinkerMode, DynamicsCutsTheArchiveAndReplaysItsFrames) {
    TinkerSession ts;
    ts.run("menu 40013\nmenu 40030\ndialog 109 ok\nmsgbox no\nmenu 40001\nclose\n");
    EXPECT_EQ(ts.lines("answers.dynamic"), (Lines{"butane.xyz", "3000", "1.00000000", "0.100000001", "1"}));
    EXPECT_TRUE(file_present(ts.t.scratch() + "/MV30.INS"));   // 30 frames shown and kept
    EXPECT_FALSE(file_present(ts.t.scratch() + "/MV31.INS"));
    EXPECT_FLOAT_EQ(ts.t.s.tinker.tk_dyn_done, 1.0f);
    EXPECT_FLOAT_EQ(ts.t.s.tinker.tk_dyn_stale, 0.0f);
    EXPECT_NE(ts.file("butane.xyz").find("  C1  "), std::string::npos);
}

TEST(TinkerMode, TheAutomaticCycleAnnealsAndMinimisesUntilTheCountIsUsed) {
    TinkerSession ts;
    ts.t.s.tinker.tk_auto_cycles = 2;
    ts.t.s.tinker.tk_movie_delay = 0;
    ts.run("menu 40013\nmenu 40012\nmenu 40001\nclose\n");
    EXPECT_FLOAT_EQ(ts.t.s.tinker.tk_auto_cycles, 0.0f);
    const std::string geo = ts.file("butane.geo");
    EXPECT_NE(geo.find(" Auto Anneal\n"), std::string::npos);
    EXPECT_NE(geo.find("Cycle   1\n"), std::string::npos);
    EXPECT_NE(geo.find("Cycle   2\n"), std::string::npos);
    EXPECT_NE(geo.rfind(" Tinker energy ="), geo.find(" Tinker energy ="));   // two energies
    EXPECT_EQ(ts.lines("answers.anneal")[4], "L");
    EXPECT_TRUE(ts.t.tk.message_boxes().empty());   // no questions on the way
}

TEST(TinkerMode, VibrateShowsTheModeAndPutsTheStructureBack) {
    TinkerSession ts;
    ts.run("menu 40013\nmenu 40027\ndialog 105 ok 1101=7\nmenu 40001\nclose\n");
    EXPECT_EQ(ts.lines("answers.vibrate"), (Lines{"butane.xyz", "7", "0.30", " "}));
    EXPECT_TRUE(file_present(ts.t.scratch() + "/MV07.INS"));
    EXPECT_FALSE(file_present(ts.t.scratch() + "/MV08.INS"));
    EXPECT_TRUE(ts.t.s.flags.movie_made);
    EXPECT_FLOAT_EQ(ts.t.s.tinker.tk_vib_number, 7.0f);
    // The job's own structure is back (the exit keeps it centred as seen).
    Store original;
    int q = 0, m = 1;
    parse_xyz(*files::read_lines(test_data("tinker/butane.xyz")), original, nullptr, q, m);
    EXPECT_NEAR(bond(ts.t.s.store, 1, 2), bond(original, 1, 2), 1e-4);
}

TEST(TinkerMode, SpacefillAndAnalyzeLeaveTheirResultsInTheLog) {
    TinkerSession ts;
    ts.run("menu 40013\nmenu 40028\ndialog 108 ok 1052=1\nmenu 40021\nmenu 40001\nclose\n");
    EXPECT_EQ(ts.lines("answers.spacefill"), (Lines{"butane.xyz", "2", "1.4", "Y", "N"}));
    EXPECT_EQ(ts.lines("answers.analyze"), (Lines{"butane.xyz", "E"}));
}
