// Run Queue in the modes: Orca mode queues the job and starts the installed
// zentol-queue, which runs on after the session (the files it leaves are
// the runner tests' business).
#include <cstdlib>
#include <filesystem>

#include <gtest/gtest.h>

#include "engines/runner.h"
#include "queue_fixture.h"
#include "toolkit/files.h"

using namespace zentol;
using namespace zentol::testing;

namespace {

// The fake ORCA, in engines.def and in the session.
void install_fake_orca(TestSession& t) {
    const std::string bin = t.dir / "orca-bin";
    std::filesystem::create_directories(bin);
    // The queued engine waits until the session has ended, as when the user
    // closes Zentol and the queue runs on.
    write_file(bin + "/orca", "#!/bin/sh\nn=0\nwhile [ ! -f '" + (t.dir / "go") +
                                  "' ] && [ $n -lt 300 ]; do sleep 0.1; n=$((n+1)); done\nexec '" +
                                  std::string(ZENTOL_TEST_DATA) + "/../engines/orca/fake_orca.sh' \"$@\"\n");
    std::filesystem::permissions(bin + "/orca", std::filesystem::perms::owner_all);
    t.s.engines.values["orca"] = bin + "/orca";
    write_file(t.s.inst.cfgset + "/engines.def", "orca " + bin + "/orca\n");
    write_file(t.s.inst.bin + "/orca.txt", "    1\n");
    std::filesystem::create_symlink(queue_program(), t.s.inst.bin + "/zentol-queue");
    setenv("FAKE_ORCA_LST", test_data("orca/orca5.0_cl2_opt_numfreq_crlf.out").c_str(), 1);
}

}  // namespace

TEST(RunQueueMenu, OrcaQueuesAndTheJobRunsInTheBackground) {
    TestSession t;
    install_fake_orca(t);
    run_on_molecule(t, "orca/chlorine.xyz",
                    "menu 40085\nmenu 40012\nmenu 40002\ndialog 125 ok\nmenu 40010\nmenu 40012\nmenu 40001\n");
    EXPECT_TRUE(status_shows(t, "The queue qorca.txt is empty"));
    EXPECT_TRUE(status_shows(t, "Queue runner started (queue.log)")) << t.tk.transcript().back();
    const std::string log = t.scratch() + "/../orca/queue.log";
    write_file(t.dir / "go", "");
    ASSERT_TRUE(wait_for_text(log, "done ", 60)) << read_file(log);
    EXPECT_TRUE(file_present(t.scratch() + "/chlorine.lst")) << read_file(log);
    unsetenv("FAKE_ORCA_LST");
}

// Firefly mode's entry says where the runner belongs when it is missing.
TEST(RunQueueMenu, FireflySaysWhenTheRunnerIsMissing) {
    TestSession t;
    t.s.engines.values["firefly"] = "true";
    run_on_water(t, "menu 40015\nmenu 40023\ndialog 116 ok\nmenu 40010\nmenu 40012\nmenu 40001\n");
    // PATH holds no zentol-queue in the test, and bin/ none either.
    EXPECT_TRUE(status_shows(t, "zentol-queue is not installed"));
    ASSERT_FALSE(t.tk.message_boxes().empty());
    EXPECT_NE(t.tk.message_boxes().back().find(t.s.inst.bin), std::string::npos);
}
