// The engine runner: quoting, detached starts, line limits, answer files and
// command files whatever their case.
#include "engines/runner.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <chrono>

#include "support/test_support.h"
#include "toolkit/files.h"

using namespace zentol;
using namespace zentol::testing;

TEST(Runner, HostileNamesStayOneWord) {
    TestSession t;
    const std::string job = "a b;$(touch x)`touch y`'it''s' &> z";
    files::write_lines(job + ".in", {"answer"});
    EXPECT_TRUE(run_blocking(t.s, shell_line("sh", {"-c", "cat; echo \"$1\"", "sh", job}, {job + ".in", job + ".log"})));
    EXPECT_EQ(read_file(job + ".log"), "answer\n" + job + "\n");
    write_command_file(job + ".BAT", {"echo ran > ran.txt"});
    EXPECT_TRUE(run_blocking(t.s, shell_line(job + ".BAT")));
    EXPECT_TRUE(file_present("ran.txt"));
    for (const char* injected : {"x", "y", "z", "s"}) EXPECT_FALSE(file_present(injected)) << injected;
}

// That a blocking run waits, every engine test shows.
TEST(Runner, DetachedStartDoesNotWait) {
    TestSession t;
    auto start = std::chrono::steady_clock::now();
    run_detached(t.s, "sleep 0.5; echo late > late.txt");
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(400));
    for (int i = 0; i < 250 && !file_present("late.txt"); ++i) usleep(20000);
    EXPECT_TRUE(file_present("late.txt"));   // it did run, in the job directory
}

TEST(Runner, OverlongLineIsRefusedNotCut) {
    TestSession t;
    std::string fits = "touch fits #" + std::string(max_command_line - 12, 'p');
    EXPECT_TRUE(run_blocking(t.s, fits));
    EXPECT_TRUE(file_present("fits"));
    EXPECT_FALSE(run_blocking(t.s, fits + "p"));
    EXPECT_FALSE(run_detached(t.s, "touch cut #" + std::string(max_command_line, 'p')));
    ASSERT_EQ(t.tk.message_boxes().size(), 2u);
    EXPECT_EQ(t.tk.message_boxes()[0].rfind("Command line too long: 4097 characters", 0), 0u);
    EXPECT_EQ(t.tk.transcript().size(), 3u);   // the one run and the two messages: nothing else started
}

// Numbers as Fortran engines read them: the Tinker and Multiwfn answer tests.
TEST(Runner, AnswerLinesStayOneLineEach) {
    TestSession t;
    AnswerFile a;
    a.write_answer_line("water.xyz   ").write_answer_line("").write_answer_line("  kept").write_answer_line("two\nlines");
    ASSERT_TRUE(a.save(answer_file_name));
    EXPECT_EQ(*files::read_lines("ZENTOL.INP"), (std::vector<std::string>{"water.xyz", "", "  kept", "two lines"}));
}

TEST(Runner, CommandFilesMeetOtherSpellings) {
    TestSession t;
    write_file("zentol.bat", "echo stale > stale.txt\n");
    write_file("Zentol.Log", "old log\n");
    write_file("zentol.inp", "fresh\n");
    write_command_file(command_file_name, {shell_line("cat", {}, {answer_file_name, log_file_name}), " "});
    EXPECT_EQ(read_file("zentol.bat"), "'cat' <'zentol.inp' >'Zentol.Log'\n \n");   // no "#!" line added
    EXPECT_EQ(shell_line(command_file_name), "sh 'zentol.bat'");
    run_blocking(t.s, shell_line(command_file_name));
    EXPECT_EQ(read_file("Zentol.Log"), "fresh\n");
    EXPECT_FALSE(file_present("ZENTOL.BAT") || file_present("ZENTOL.LOG") || file_present("stale.txt"));
}
