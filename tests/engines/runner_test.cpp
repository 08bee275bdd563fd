// The engine runner: names that cannot inject commands, runs that really
// wait (or really don't), runaway lines refused whole, answers as Fortran
// engines read them, command files met whatever their case.
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

TEST(Runner, BlockingRunWaitsDetachedStartDoesNot) {
    TestSession t;
    write_command_file(command_file_name, {"sleep 0.3", "echo done > done.txt"});
    run_blocking(t.s, shell_line(command_file_name));
    EXPECT_EQ(read_file("done.txt"), "done\n");

    auto start = std::chrono::steady_clock::now();
    run_detached(t.s, "sleep 0.5; echo late > late.txt");
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(400));
    EXPECT_FALSE(file_present("late.txt"));
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
    usleep(200000);
    EXPECT_FALSE(file_present("cut"));
    EXPECT_EQ(t.tk.transcript().size(), 3u);   // the one run and the two messages
}

TEST(Runner, AnswerLinesAsTheEngineReadsThem) {
    TestSession t;
    AnswerFile a;
    a.write_answer_line("water.xyz   ").write_answer_line("").write_answer_line("  kept").write_answer_line("two\nlines");
    a.write_answer_line(42).write_answer_line(-7LL).write_answer_line(300.0).write_answer_line(0.01);
    a.write_answer_line(1.5, 10, 3);
    ASSERT_TRUE(a.save(answer_file_name));
    EXPECT_EQ(*files::read_lines("ZENTOL.INP"), (std::vector<std::string>{"water.xyz", "", "  kept", "two lines", "42",
                                                                         "-7", "300.000000", "9.99999978E-03", "1.500"}));
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

TEST(Runner, EngineLookup) {
    TestSession t;
    t.s.engines.values = {{"shell", "sh"}, {"gone", "/no/such/orca"}, {"odd", "no-such-engine-zentol"}};
    std::string sh = engine_command(t.s, "shell");
    EXPECT_TRUE(sh.size() > 3 && sh.substr(sh.size() - 3) == "/sh" && access(sh.c_str(), X_OK) == 0) << sh;
    for (const char* key : {"gone", "odd", "unset"}) EXPECT_FALSE(engine_available(t.s, key)) << key;
}
