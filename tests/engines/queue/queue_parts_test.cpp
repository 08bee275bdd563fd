// The runner's parts: queue.log lines, the cores of a deck, the records it
// accepts, the batch script and what Slurm's commands print.
#include <cstdlib>

#include <gtest/gtest.h>

#include "engines/queue/queue_job.h"
#include "engines/queue/queue_log.h"
#include "engines/queue/queue_runner.h"
#include "engines/queue/slurm_backend.h"
#include "engines/queue_file.h"
#include "queue_fixture.h"
#include "toolkit/files.h"

using namespace zentol;
using namespace zentol::testing;

TEST(QueueLog, LinesKeepTheirColumnsAndReadBack) {
    const std::string line = format_queue_event({"2026-11-23 12:31:04", "running", "cores 4", "/home/ann/my jobs/w.ino"});
    EXPECT_EQ(line, "2026-11-23 12:31:04 running     cores 4                      /home/ann/my jobs/w.ino");
    auto back = parse_queue_event(line);
    ASSERT_TRUE(back);
    EXPECT_EQ(format_queue_event(*back), line);
    EXPECT_FALSE(parse_queue_event("2026-11-23 12:31:04 running"));
}

TEST(QueueJob, RecordsDecksAndCores) {
    auto orca = queued_job(" /home/ann/jobs/Water.INO ", nullptr);
    ASSERT_TRUE(orca);
    EXPECT_EQ(orca->engine, QueueEngine::Orca);
    std::string why;
    EXPECT_FALSE(queued_job("jobs/w.ino", &why));
    EXPECT_EQ(why, "not a full path");

    // " %PAL NPROC n" on one line is what the runner tests queue.
    EXPECT_EQ(orca_deck_cores({"! B3LYP", "%pal", "  nprocs 8", "end"}), 8);
    EXPECT_EQ(orca_deck_cores({"! B3LYP def2-SVP PAL6"}), 6);
    EXPECT_EQ(orca_deck_cores({"%pal nprocs many end"}), 1);
}

TEST(QueueFile, FolderBesideScratchAndOneRecordAJob) {
    EXPECT_EQ(queue_directory("/home/ann/zentol/scratch", "orca"), "/home/ann/zentol/orca");
    EXPECT_EQ(queue_directory("/home/ann/zentol/scratch/", "firefly"), "/home/ann/zentol/firefly");

    TempDir dir;
    std::string queue = dir / "orca/qorca.txt";
    EXPECT_EQ(add_to_queue(queue, "/Jobs/water.ino"), 1);
    EXPECT_EQ(add_to_queue(queue, "/JOBS/WATER.INO"), 0);    // the same job in other capitals
    EXPECT_EQ(add_to_queue(queue, "/Jobs/water.inx"), 0);    // the last character is not compared
    EXPECT_EQ(add_to_queue(queue, "/Jobs/water2.ino"), 1);
    EXPECT_EQ(read_file(queue), "/Jobs/water.ino\n/Jobs/water2.ino\n");
}

TEST(QueueFile, TakingAndPuttingBackKeepOrderAndSkipBlanks) {
    TempDir d;
    const std::string q = d / "q/qorca.txt";
    write_file(q, "\n/j/a.ino\n  \n/j/b.ino\n");
    EXPECT_EQ(take_first_record(q, nullptr), "/j/a.ino");
    EXPECT_EQ(lines_of(q), std::vector<std::string>{"/j/b.ino"});
    EXPECT_TRUE(put_back_record(q, "/j/a.ino"));
    EXPECT_TRUE(put_back_record(q, "/J/A.INO"));
    EXPECT_EQ(lines_of(q), (std::vector<std::string>{"/j/a.ino", "/j/b.ino"}));

    // Queued again, the newest cores count, whatever the case; a job
    // queued without cores has none on record.
    add_to_queue(q, "/j/c.inp", 3);
    add_to_queue(q, "/J/C.INP", 5);
    add_to_queue(q, "/j/d.inp");
    EXPECT_EQ(queued_cores(read_queue_log(q), "/j/c.inp"), 5);
    EXPECT_FALSE(queued_cores(read_queue_log(q), "/j/d.inp"));

    EXPECT_FALSE(queue_runner_busy(q));
    QueueLock runner(runner_lock_file(q), false);
    ASSERT_TRUE(runner.held());
    EXPECT_TRUE(queue_runner_busy(q));
}

TEST(SlurmBackend, BatchScriptRunsTheModesLineAndWritesTheExitFile) {
    QueuedJob job;
    job.deck = "/home/ann/jobs/w.ino", job.dir = "/home/ann/jobs", job.name = "w", job.cores = 4;
    const auto script = slurm_batch_script(job, "'/opt/orca/orca' 'w.ino' >'w.lst'", {"after"}, {"short", "1:00:00"},
                                           "/home/ann/zentol/orca/slurm");
    EXPECT_EQ(script, (std::vector<std::string>{"#!/bin/sh", "#SBATCH --job-name=w", "#SBATCH --nodes=1",
                                                "#SBATCH --ntasks=4",
                                                "#SBATCH --output=/home/ann/zentol/orca/slurm/%j.out",
                                                "#SBATCH --partition=short", "#SBATCH --time=1:00:00",
                                                "exit_file='/home/ann/zentol/orca/slurm/'\"$SLURM_JOB_ID.exit\"",
                                                "cd '/home/ann/jobs' || { echo 1 >\"$exit_file.new\"; mv "
                                                "\"$exit_file.new\" \"$exit_file\"; exit 1; }",
                                                "'/opt/orca/orca' 'w.ino' >'w.lst'", "status=$?", "after",
                                                "echo \"$status\" >\"$exit_file.new\" && mv \"$exit_file.new\" "
                                                "\"$exit_file\"",
                                                "exit \"$status\""}));
    EXPECT_EQ(parse_sbatch_id("77;cluster2\n"), "77");
    EXPECT_FALSE(parse_sbatch_id("sbatch: error: invalid partition\n"));

    // sacct, which the Slurm test's cluster has not.
    const auto a = parse_sacct("12|COMPLETED|0:0\n13|FAILED|3:0\n14|CANCELLED by 0|0:15\n15|RUNNING|0:0\n");
    EXPECT_TRUE(a.at("12").ended);
    EXPECT_EQ(a.at("13").exit_status, 3);
    EXPECT_EQ(a.at("14").state, "CANCELLED");
    EXPECT_FALSE(a.at("15").ended);
}

// The shell steps after a cluster run leave what the mode leaves after its
// run (the local runner's share is in the runner tests).
TEST(SlurmBackend, ShellStepsAfterTheRunLeaveWhatTheModesLeave) {
    TempDir d;
    files::change_dir(d.path());
    for (const QueueEngine engine : {QueueEngine::Orca, QueueEngine::Firefly}) {
        const bool orca = engine == QueueEngine::Orca;
        QueuedJob job;
        job.engine = engine, job.dir = d.path(), job.name = orca ? "o" : "f", job.deck = d / (orca ? "o.ino" : "f.inp");
        write_file(job.deck, "deck\n");
        write_file(orca ? "o.xyz" : "punch", "before\n");
        prepare_queued_run(job);
        EXPECT_TRUE(orca || !file_present("punch")) << "a stale punch would be kept";
        write_file(orca ? "o.lst" : "PUNCH", "output\n");
        if (orca) write_file("o.xyz", "engine geometry\n");
        std::string script;
        for (const auto& line : finish_queued_run_script(job)) script += line + "\n";
        write_file("after.sh", script);
        ASSERT_EQ(std::system("sh after.sh"), 0) << script;
    }
    EXPECT_EQ(read_file("o.xyz"), "before\n");
    EXPECT_EQ(read_file("o.out"), "engine geometry\n");
    EXPECT_FALSE(file_present("old_o.xyz"));
    EXPECT_EQ(read_file("f.pun"), "output\n");
}
