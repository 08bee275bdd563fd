// The program killed at any moment (kill -9) while it saves the job or
// replays Tinker dynamics frames over it: whatever it leaves must read.
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <random>

#include "session/store_ops.h"
#include "structure_files/xyz_file.h"
#include "support/test_support.h"
#include "toolkit/files.h"

using namespace zentol;
using namespace zentol::testing;
namespace fs = std::filesystem;

namespace {

struct Installation {
    TempDir dir;
    std::string job_dir = dir / "job";

    Installation() {
        fs::create_directories(job_dir);
        write_file(dir / "root/cfgset/dir1.def", job_dir + "\n");
        write_file(dir / "root/cfgset/zentol.def", dir / "work/library\n" + dir / "work/scratch\n   1\n");
        const std::string bin = dir / "tinker";
        fs::create_directories(bin);
        const std::string fake = std::string(ZENTOL_TEST_DATA) + "/../engines/tinker/fake_tinker.sh";
        for (const char* name : {"minimize", "optimize", "analyze", "dynamic", "anneal", "vibrate", "spacefill"})
            fs::copy_file(fake, bin + "/" + name);
        write_file(dir / "root/cfgset/engines.def", "tinker_dir " + bin + "\nmm3_params " + bin + "/mm3\n");
    }

    // Runs the program on the job with the script; kills it after `after`
    // microseconds unless it ended first. Returns true when it was killed.
    bool run(const std::string& job, const std::string& script, long after) {
        write_file(dir / "script", script);
        pid_t child = ::fork();
        if (child == 0) {
            ::setenv("ZENTOL_ROOT", (dir / "root").c_str(), 1);
            ::setenv("ZENTOL_WORK", (dir / "work").c_str(), 1);
            ::setenv("FAKE_TINKER_DATA", test_data("tinker").c_str(), 1);
            if (!freopen("/dev/null", "w", stdout)) _exit(3);
            ::execl(ZENTOL_PROGRAM, ZENTOL_PROGRAM, "--headless", "--script", (dir / "script").c_str(), job.c_str(), "1",
                    static_cast<char*>(nullptr));
            _exit(127);
        }
        auto deadline = std::chrono::steady_clock::now() + std::chrono::microseconds(after);
        int status = 0;
        while (std::chrono::steady_clock::now() < deadline) {
            if (::waitpid(child, &status, WNOHANG) == child) return false;   // it ended first
            ::usleep(200);
        }
        ::kill(child, SIGKILL);
        ::waitpid(child, &status, 0);
        return WIFSIGNALED(status);
    }
};

void kill_loop(const std::string& job, const std::string& script, int natoms, int trials) {
    Installation inst;
    fs::copy_file(test_data("tinker/butane.xyz"), inst.job_dir + "/" + job + ".xyz");
    // How long a whole run takes, so that kills fall anywhere inside one.
    const auto start = std::chrono::steady_clock::now();
    inst.run(job, script, 60'000'000);
    const long whole = std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - start).count();
    std::mt19937 rng(2026);
    int killed = 0;
    for (int trial = 0; trial < trials; ++trial) {
        killed += inst.run(job, script, static_cast<long>(rng() % static_cast<unsigned>(whole + 1)));
        // The job's .xyz reads, with the atoms it should have.
        auto lines = files::read_lines(inst.job_dir + "/" + job + ".xyz");
        ASSERT_TRUE(lines) << "trial " << trial;
        auto st = std::make_unique<Store>();
        element_lookup(*st, nullptr, "", kLookupConfirmAll);
        int q = 0, m = 1;
        ASSERT_EQ(parse_xyz(*lines, *st, nullptr, q, m), kXyzRead) << "trial " << trial;
        EXPECT_EQ(st->natoms, natoms) << "trial " << trial;
    }
    EXPECT_GT(killed, trials / 3);   // most kills landed inside a run
}

}  // namespace

TEST(KillAnyTime, SavesLeaveAJobFileThatReads) {
    // Turns and redraws: every redraw writes the job's files again.
    std::string script;
    for (int k = 0; k < 40; ++k) script += "key 258\nmenu 40060\n";
    kill_loop("butane", script + "close\n", 14, 20);
}

TEST(KillAnyTime, ADynamicsReplayLeavesAJobFileThatReads) {
    kill_loop("butane", "menu 40013\nmenu 40030\ndialog 109 ok\nmsgbox no\nmenu 40001\nclose\n", 14, 20);
}
