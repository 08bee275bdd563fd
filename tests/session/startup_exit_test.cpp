// Whole sessions, start to exit, on the scripted toolkit in a temporary root.
#include <gtest/gtest.h>

#include <filesystem>

#include "session/config.h"
#include "session/display_loop.h"
#include "session/jobs.h"
#include "session_helpers.h"
#include "toolkit/files.h"

using namespace zentol;
using namespace zentol::testing;
namespace fs = std::filesystem;

namespace {

bool transcript_has(const TestSession& t, const std::string& text) {
    for (const auto& line : t.tk.transcript())
        if (line.find(text) != std::string::npos) return true;
    return false;
}

}  // namespace

TEST(StartupExit, FirstStartWithNoWordsOpensPtestInScratchAndLeavesNoFiles) {
    TestSession t;
    fs::current_path(t.dir.path());
    write_file(t.scratch() + "/ptest.xyz", "stale\n");   // ptest.* is cleared at start
    run_words(t, {}, "menu 40039\n");
    const std::string cfg = t.s.inst.cfgset;
    EXPECT_EQ(read_file(cfg + "/zentol.def"), t.s.inst.default_library + "\n" + t.scratch() + "\n   1\n");
    EXPECT_EQ(read_file(cfg + "/dir1.def"), t.scratch() + "\n");
    EXPECT_EQ(read_file(cfg + "/DIR.DEF"), t.scratch() + "\n");
    EXPECT_TRUE(file_present(cfg + "/RASCOL.DEF"));
    EXPECT_TRUE(file_present(cfg + "/engines.def"));
    EXPECT_EQ(t.s.job.name, "ptest");
    EXPECT_EQ(t.tk.window_title(), std::string("ptest - ") + kWindowTitle);
    for (const auto& [field, text] : {std::pair{1, "Job"}, {2, "1:ptest"}, {3, "Atoms"}, {5, "Bonds"}, {7, "Ent"}})
        EXPECT_EQ(t.tk.status(field), text) << field;
    EXPECT_EQ(t.tk.dialogs_shown(), std::vector<int>{128});
    EXPECT_FLOAT_EQ(t.s.flags.zoom, 1.1f);
    EXPECT_TRUE(t.tk.closed());
    // An empty job leaves nothing behind in the scratch directory.
    EXPECT_TRUE(files::list(t.scratch(), "ptest.*").empty());
    EXPECT_EQ(files::list(t.scratch(), "*.xyz").size(), 0u);
    auto mru = files::read_lines(cfg + "/mrul.def");
    ASSERT_TRUE(mru);
    EXPECT_EQ(mru->size(), 10u);
    EXPECT_EQ((*mru)[0], t.scratch() + "/ptest.xyz");
    EXPECT_EQ((*mru)[1], " ");
}

TEST(StartupExit, FilePathStartLoadsTheMoleculeAndSavesItAtExit) {
    TestSession t;
    std::string dir = t.dir / "jobs/Water Job";
    fs::create_directories(dir);
    fs::copy_file(test_data("water.xyz"), dir + "/water.xyz");
    write_file(dir + "/ZENTOL.BAT", "old\n");
    write_file(dir + "/water.key", "PARAMETERS c:\\exem\\mm3\nneighbor-list\n");
    run_words(t, {dir + "/water.xyz"}, "menu 40041\nmenu 40041\nkey R\n");
    EXPECT_EQ(t.s.store.natoms, 3);
    EXPECT_EQ(t.s.store.nbonds, 2);
    for (const auto& [field, text] : {std::pair{4, "   3"}, {6, "   2"}, {10, "Display Idle"}})
        EXPECT_EQ(t.tk.status(field), text) << field;
    EXPECT_NEAR(t.s.flags.zoom, 0.8f, 1e-6);
    EXPECT_EQ(read_file(dir + "/water.geo"), " Zentol water\n");
    EXPECT_EQ(read_file(dir + "/water.key"), "parameters " + t.s.inst.root + "/exem/mm3\nneighbor-list\n");
    EXPECT_TRUE(file_present(dir + "/water.ins"));
    EXPECT_EQ(read_file(dir + "/water.agl"), read_file(dir + "/water.ins"));
    EXPECT_TRUE(file_present(dir + "/water.bgl"));
    EXPECT_FALSE(file_present(dir + "/ZENTOL.BAT"));
    EXPECT_FALSE(file_present(dir + "/SYMMOL.INP"));
    EXPECT_EQ(read_file(t.s.inst.cfgset + "/dir1.def"), dir + "\n");
    // The saved molecule is centred but keeps its shape.
    auto lines = files::read_lines(dir + "/water.xyz");
    ASSERT_TRUE(lines && lines->size() == 4);
    EXPECT_EQ((*lines)[0], "     3 water chamul   0   1");
}

TEST(StartupExit, RecentListOfTenDropsTheOldestAndKeepsOneEntryPerJob) {
    TestSession t;
    std::vector<std::string> old;
    for (int k = 1; k <= 10; ++k) old.push_back("/old/job" + std::to_string(k) + ".xyz");
    files::write_lines(t.s.inst.cfgset + "/mrul.def", old);
    run_on_water(t, "");
    auto mru = *files::read_lines(t.s.inst.cfgset + "/mrul.def");
    EXPECT_EQ(mru.front(), t.scratch() + "/water.xyz");
    EXPECT_EQ(mru[1], "/old/job1.xyz");
    EXPECT_EQ(mru.back(), "/old/job9.xyz");
    EXPECT_EQ(t.tk.menu_string(40067), t.scratch() + "/water.xyz");

    // The same job again stays once, at the top.
    t.s.job.name = "job5";
    t.s.job.mru[5] = files::current_dir() + "/job5.xyz";
    remember_job(t.s);
    remember_job(t.s);
    EXPECT_EQ(t.s.job.mru[1], files::current_dir() + "/job5.xyz");
    EXPECT_EQ(t.s.job.mru[2], t.scratch() + "/water.xyz");
    EXPECT_EQ(t.s.job.mru[6], "/old/job5.xyz");
}

TEST(StartupExit, InsOnlyJobIsRefusedAndCancelledChoiceEndsTheSession) {
    TestSession t;
    start_in(t, t.scratch());
    write_file(t.scratch() + "/cryst.ins", "TITL  cryst\n");
    run_words(t, {"cryst", "1"}, "file cancel\n");
    ASSERT_EQ(t.tk.message_boxes().size(), 1u);
    EXPECT_EQ(t.tk.message_boxes()[0],
              "An INS file exists for the Current Jobname\rMove or Delete this INS file or Choose\ranother Jobname");
    EXPECT_TRUE(transcript_has(t, "file chooser \"Find the XYZ Input File\": cancelled"));
    EXPECT_TRUE(file_present(t.scratch() + "/cryst.ins"));   // the other program's file stays
    EXPECT_TRUE(t.tk.closed());
}

TEST(StartupExit, LibraryIsProtectedBelowExpert) {
    TestSession t;
    std::string lib = t.dir / "work/MyLibrary2";
    fs::create_directories(lib);
    fs::copy_file(test_data("water.xyz"), lib + "/water.xyz");
    start_in(t, lib);
    write_file(t.s.inst.cfgset + "/zentol.def", t.s.inst.default_library + "\n" + t.scratch() + "\n 2\n");
    fs::copy_file(test_data("water.xyz"), t.scratch() + "/water.xyz");
    run_words(t, {"water", "1"}, "file " + t.scratch() + "/water.xyz\n");
    ASSERT_FALSE(t.tk.message_boxes().empty());
    EXPECT_EQ(t.tk.message_boxes()[0].substr(0, 41), "Zentol will not open files in the Library");
    EXPECT_EQ(files::current_dir(), t.scratch());   // the chosen file's directory
    EXPECT_EQ(t.s.store.natoms, 3);
    EXPECT_EQ(t.tk.status(7), "Adv");
}

TEST(StartupExit, UnreadableOrShortZentolDefIsMended) {
    TestSession t;
    std::string def = t.s.inst.cfgset + "/zentol.def";
    fs::remove(def);
    run_words(t, {});
    EXPECT_EQ(t.tk.status(7), "");   // could not be read: level unknown, treated as Entry
    EXPECT_EQ(read_file(def), t.s.inst.default_library + "\n" + t.scratch() + "\n   1\n");
    TestSession u;
    write_file(u.s.inst.cfgset + "/zentol.def", "/my/lib\n");
    run_words(u, {});
    EXPECT_EQ(read_file(u.s.inst.cfgset + "/zentol.def"), "/my/lib\n" + u.scratch() + "\n   1\n");
    EXPECT_EQ(u.s.job.library_dir, "/my/lib");
}

TEST(StartupExit, DamagedXyzIsReportedAndLeftAsItWas) {
    TestSession t;
    start_in(t, t.scratch());
    const std::string damaged = "     5 broken\n     1  C      0.000000    0.000000    0.000000     1\n";
    write_file(t.scratch() + "/broken.xyz", damaged);
    run_words(t, {"broken", "1"}, "menu 40039\n");
    ASSERT_EQ(t.tk.message_boxes().size(), 1u);
    EXPECT_EQ(t.tk.message_boxes()[0],
              "Input broken.xyz file error\rbroken.xyz line 3: the file ends after 1 of its atoms\rThe file is left as it is.");
    EXPECT_EQ(read_file(t.scratch() + "/broken.xyz"), damaged);
    EXPECT_EQ(t.tk.pending_messages(), 1u);   // no display loop was run
    EXPECT_TRUE(t.tk.closed());
}

TEST(StartupExit, ClosePathRemovesMarkedBondsBeforeTheFinalSave) {
    TestSession t;
    run_on_water(t, "");
    // Mark an extra bond O1-H2 twice over and close again by hand.
    Store& st = t.s.store;
    st.nbr(2, 2) = 3, st.conn_count(2) = 2;
    st.nbr(3, 2) = 2, st.conn_count(3) = 2;
    st.marked_bond_count = 1;
    st.marked_bonds[1] = {2, 3};
    t.s.flags.bgl_written = false;
    close_path(t.s);
    EXPECT_EQ(st.marked_bond_count, 0);
    EXPECT_EQ(st.nbonds, 2);
    auto lines = *files::read_lines("water.xyz");
    EXPECT_EQ(lines[2].substr(47), "    21     1");
    EXPECT_EQ(read_file("water.bgl"), "           1           2\n           1           3\n");
}

TEST(StartupExit, DynamicsFilesFollowTheSetupBox) {
    TestSession t;
    t.s.job.name = "dyn";
    for (const char* f : {"dyn.001", "dyn.123", "dyn.dyn", "dyn.xyz", "MV1.INS", "mv2.ins"}) write_file(f, "x\n");
    purge_job_files(t.s, false, true);
    EXPECT_EQ(files::list(".", "*"), (std::vector<std::string>{"dyn.xyz"}));
    write_file("dyn.001", "x\n");
    purge_job_files(t.s, true, false);
    EXPECT_TRUE(file_present("dyn.001"));
}

TEST(StartupExit, JobStatusClassifies) {
    TestSession t;
    EXPECT_EQ(job_status(t.s, "ptest"), kStatusPtestInScratch);
    EXPECT_EQ(job_status(t.s, "new"), 3);
    write_file("a.xyz", "");
    EXPECT_EQ(job_status(t.s, "a"), 1);
    write_file("A.INS", "");
    EXPECT_EQ(job_status(t.s, "a"), 0);
    std::string other = t.dir / "elsewhere";
    fs::create_directories(other);
    fs::current_path(other);
    EXPECT_EQ(job_status(t.s, "ptest"), 3);   // ptest elsewhere is an ordinary job
    std::string lib = t.dir / "library/sub/LIBRARY";
    fs::create_directories(lib);
    fs::current_path(lib);
    EXPECT_EQ(job_status(t.s, "x"), 23);
}
