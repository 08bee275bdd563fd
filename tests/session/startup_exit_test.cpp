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

TEST(StartupExit, FirstStartWithNoWordsOpensPtestInScratchAndLeavesNoFiles) {
    TestSession t;
    fs::current_path(t.dir.path());
    run_words(t, {}, "menu 40039\n");
    const std::string cfg = t.s.inst.cfgset;
    EXPECT_EQ(read_file(cfg + "/zentol.def"), t.s.inst.default_library + "\n" + t.scratch() + "\n   1\n");
    EXPECT_EQ(read_file(cfg + "/dir1.def"), t.scratch() + "\n");
    EXPECT_EQ(read_file(cfg + "/DIR.DEF"), t.scratch() + "\n");
    EXPECT_EQ(t.s.job.name, "ptest");
    EXPECT_EQ(t.tk.window_title(), std::string("ptest - ") + kWindowTitle);
    for (const auto& [field, text] : {std::pair{1, "Job"}, {2, "1:ptest"}, {3, "Atoms"}, {5, "Bonds"}, {7, "Ent"}})
        EXPECT_EQ(t.tk.status(field), text) << field;
    EXPECT_EQ(t.tk.dialogs_shown(), std::vector<int>{128});
    EXPECT_TRUE(files::list(t.scratch(), "ptest.*").empty());   // an empty job leaves nothing behind
    const auto mru = *files::read_lines(cfg + "/mrul.def");
    EXPECT_EQ(mru, (std::vector<std::string>{t.scratch() + "/ptest.xyz", " ", " ", " ", " ", " ", " ", " ", " ", " "}));
}

TEST(StartupExit, FilePathStartLoadsTheMoleculeAndSavesItAtExit) {
    TestSession t;
    std::string dir = t.dir / "jobs/Water Job";
    write_file(dir + "/water.xyz", read_file(test_data("water.xyz")));
    write_file(dir + "/ZENTOL.BAT", "old\n");
    write_file(dir + "/water.key", "PARAMETERS c:\\exem\\mm3\nneighbor-list\n");
    run_words(t, {dir + "/water.xyz"}, "key R\n");
    EXPECT_EQ(t.tk.status(6), "   2");   // the atom count and the mode: tests/app/headless_session.sh
    EXPECT_EQ(read_file(dir + "/water.key"), "parameters " + t.s.inst.root + "/exem/mm3\nneighbor-list\n");
    EXPECT_TRUE(file_present(dir + "/water.ins"));
    EXPECT_EQ(read_file(dir + "/water.agl"), read_file(dir + "/water.ins"));
    EXPECT_TRUE(file_present(dir + "/water.bgl"));
    EXPECT_FALSE(file_present(dir + "/ZENTOL.BAT"));
    EXPECT_FALSE(file_present(dir + "/SYMMOL.INP"));
    EXPECT_EQ(read_file(t.s.inst.cfgset + "/dir1.def"), dir + "\n");
}

TEST(StartupExit, RecentListOfTenDropsTheOldest) {
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
}

// An .ins of another program asks for another job (cancelled here); a
// damaged .xyz is named and the display loop never runs.
TEST(StartupExit, AJobThatCannotOpenIsNamedLeftAsItWasAndTheSessionEnds) {
    const struct { std::string file, content, job, script, message; std::size_t unread; } cases[] = {
        {"cryst.ins", "TITL  cryst\n", "cryst", "file cancel\n",
         "An INS file exists for the Current Jobname\rMove or Delete this INS file or Choose\ranother Jobname", 0},
        {"broken.xyz", "     5 broken\n     1  C      0.000000    0.000000    0.000000     1\n", "broken", "menu 40039\n",
         "Input broken.xyz file error\rbroken.xyz line 3: the file ends after 1 of its atoms\rThe file is left as it is.", 1},
    };
    for (const auto& c : cases) {
        TestSession t;
        start_in(t, t.scratch());
        write_file(t.scratch() + "/" + c.file, c.content);
        run_words(t, {c.job, "1"}, c.script);
        EXPECT_EQ(t.tk.message_boxes(), std::vector<std::string>{c.message});
        EXPECT_EQ(read_file(t.scratch() + "/" + c.file), c.content);
        EXPECT_EQ(t.tk.pending_messages(), c.unread) << c.file;
        EXPECT_TRUE(t.tk.closed());
    }
}

TEST(StartupExit, LibraryIsProtectedBelowExpert) {
    TestSession t;
    std::string lib = t.dir / "work/MyLibrary2";
    write_file(lib + "/water.xyz", read_file(test_data("water.xyz")));
    start_in(t, lib);
    write_file(t.s.inst.cfgset + "/zentol.def", t.s.inst.default_library + "\n" + t.scratch() + "\n 2\n");
    fs::copy_file(test_data("water.xyz"), t.scratch() + "/water.xyz");
    run_words(t, {"water", "1"}, "file " + t.scratch() + "/water.xyz\n");
    ASSERT_FALSE(t.tk.message_boxes().empty());
    EXPECT_EQ(t.tk.message_boxes()[0].substr(0, 41), "Zentol will not open files in the Library");
    EXPECT_EQ(files::current_dir(), t.scratch());   // the chosen file's directory
    EXPECT_EQ(t.s.store.natoms, 3);
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
    EXPECT_EQ(files::read_lines("water.xyz")->at(2).substr(47), "    21     1");
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

// ptest is the scratch folder's throw-away job, cleared at start; a ptest
// anywhere else is an ordinary job of the user's.
TEST(StartupExit, PtestOutsideScratchIsAnOrdinaryJob) {
    TestSession t;
    EXPECT_EQ(job_status(t.s, "ptest"), kStatusPtestInScratch);
    fs::create_directories(t.dir / "elsewhere");
    fs::current_path(t.dir / "elsewhere");
    EXPECT_EQ(job_status(t.s, "ptest"), 3);
}
