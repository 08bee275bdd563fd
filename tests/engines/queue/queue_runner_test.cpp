// zentol-queue with the local back end, run for real on the fake ORCA and
// Firefly of the mode tests.
#include <signal.h>

#include <set>

#include <gtest/gtest.h>

#include "engines/queue/queue_runner.h"
#include "engines/queue_file.h"
#include "queue_fixture.h"
#include "toolkit/files.h"

using namespace zentol;
using namespace zentol::testing;

using Lines = std::vector<std::string>;

// ORCA jobs run in the order queued, each in its own directory, and leave
// what Update reads: ORCA's geometry as job.out and the job's own structure
// file back in its place. A failing engine is logged with its exit status
// and the next job runs; records that are no deck are logged as failed and
// dropped.
TEST(QueueRunner, RunsOrcaJobsInOrderAndLogsEachEnd) {
    QueueFixture f;
    const std::string a = f.orca_job("bad"), b = f.orca_job("beta", 4);
    add_to_queue(f.orca_queue, f.dir / "jobs/missing/missing.ino");
    add_to_queue(f.orca_queue, "notes.txt");
    const std::string c = f.orca_job("gamma");
    const std::string structure = read_file(b + "/beta.xyz");
    EXPECT_EQ(f.run({f.orca_queue}), 0);
    EXPECT_EQ(f.started(), (Lines{a + "/bad.ino", b + "/beta.ino", c + "/gamma.ino"}));
    EXPECT_TRUE(lines_of(f.orca_queue).empty());
    EXPECT_TRUE(read_file(b + "/beta.out") == read_file(test_data("orca/orca6.0_dihedral_final.xyz")));
    EXPECT_EQ(read_file(b + "/beta.xyz"), structure);
    EXPECT_FALSE(file_present(b + "/old_beta.xyz"));
    const auto events = f.log_statuses(f.orca_queue);
    EXPECT_EQ(Lines(events.begin() + 5, events.end()),
              (Lines{"running bad.ino", "failed bad.ino", "running beta.ino", "done beta.ino", "failed missing.ino",
                     "failed notes.txt", "running gamma.ino", "done gamma.ino"}));
    const std::string log = read_file(f.dir / "work/orca/queue.log");
    EXPECT_NE(log.find("running     cores 4"), std::string::npos) << log;   // the deck's %PAL
    EXPECT_NE(log.find("failed      exit 3, "), std::string::npos) << log;
    EXPECT_NE(log.find("no such deck"), std::string::npos) << log;

    std::string out;
    EXPECT_EQ(f.run({"--status", f.orca_queue}, &out), 0);
    EXPECT_NE(out.find("(no job waiting)"), std::string::npos) << out;
    EXPECT_NE(out.find("done"), std::string::npos) << out;
}

// Firefly runs with the cores the mode had when the job was queued, and
// the punch file is kept as job.pun, as the mode's Run does.
TEST(QueueRunner, RunsFireflyJobsWithTheirCoresAndKeepsThePunchFile) {
    QueueFixture f;
    const std::string a = f.firefly_job("one", 4), b = f.firefly_job("two");
    EXPECT_EQ(f.run({}), 0);   // both queues of the installation
    EXPECT_EQ(f.started(), (Lines{a + "/one.inp", b + "/two.inp"}));
    EXPECT_EQ(read_file(a + "/args.seen"), "-i one.inp -o one.lst -np 4\n");
    EXPECT_EQ(read_file(b + "/args.seen"), "-i two.inp -o two.lst\n");
    EXPECT_TRUE(read_file(a + "/one.pun") == read_file(test_data("firefly/gamessus2018_dvb_opt.dat")));

    // A job queued by hand has no cores on record: queue_cores, else 1.
    QueueFixture g;
    g.write_engines_def("queue_cores 2\n");
    const std::string c = g.firefly_job("three");
    files::remove_file(g.dir / "work/firefly/queue.log");
    EXPECT_EQ(g.run({g.firefly_queue}), 0);
    EXPECT_EQ(read_file(c + "/args.seen"), "-i three.inp -o three.lst -np 2\n");
}

// Without the engine nothing is taken: the record stays, the runner says
// why and ends with 1.
TEST(QueueRunner, AMissingEngineLeavesTheQueueAlone) {
    QueueFixture f;
    f.write_engines_def("orca\n");
    f.orca_job("alpha");
    std::string out;
    EXPECT_EQ(f.run({f.orca_queue}, &out), 1);
    EXPECT_NE(out.find("ORCA is not installed: set \"orca\" in engines.def"), std::string::npos) << out;
    EXPECT_EQ(lines_of(f.orca_queue).size(), 1u);
    EXPECT_TRUE(f.started().empty());
}

// SIGTERM in the middle of a job: the engine is ended, the job logged as
// interrupted and put back first, the structure file restored; no record
// is lost. Meanwhile a second runner on the queue does nothing.
TEST(QueueRunner, SigtermMidQueueLosesNoEntry) {
    QueueFixture f;
    const std::string a = f.orca_job("alpha"), b = f.orca_job("beta"), c = f.orca_job("gamma");
    const std::string structure = read_file(a + "/alpha.xyz");
    setenv("QUEUE_TEST_SLEEP", "60", 1);
    const pid_t runner = f.start({"--watch", f.orca_queue});
    ASSERT_TRUE(wait_for_text(f.order, "alpha.ino", 30));
    // A second runner leaves the queue to the first.
    std::string out;
    EXPECT_EQ(f.run({f.orca_queue}, &out), 3);
    EXPECT_NE(out.find("another runner is working through"), std::string::npos) << out;
    kill(runner, SIGTERM);
    EXPECT_EQ(QueueFixture::wait_for(runner, 40), 0);
    EXPECT_EQ(lines_of(f.orca_queue), (Lines{a + "/alpha.ino", b + "/beta.ino", c + "/gamma.ino"}));
    const auto events = f.log_statuses(f.orca_queue);
    ASSERT_FALSE(events.empty());
    EXPECT_EQ(events.back(), "interrupted alpha.ino");
    EXPECT_EQ(read_file(a + "/alpha.xyz"), structure);
    EXPECT_FALSE(file_present(a + "/old_alpha.xyz"));

    // The next runner starts with the interrupted job.
    unsetenv("QUEUE_TEST_SLEEP");
    EXPECT_EQ(f.run({f.orca_queue}), 0);
    EXPECT_EQ(f.started(), (Lines{a + "/alpha.ino", a + "/alpha.ino", b + "/beta.ino", c + "/gamma.ino"}));
    EXPECT_TRUE(lines_of(f.orca_queue).empty());
}

// Takes under the queue's lock never hand one record out twice.
TEST(QueueRunner, ConcurrentTakesHandEachRecordOutOnce) {
    TempDir d;
    const std::string q = d / "qorca.txt";
    for (int k = 0; k < 20; ++k) add_to_queue(q, "/jobs/j" + std::to_string(k) + ".ino");
    std::vector<pid_t> takers(4);
    for (pid_t& pid : takers)
        if ((pid = fork()) == 0) {
            while (auto r = take_first_record(q, nullptr)) files::append_line(d / "taken.txt", *r);
            _exit(0);
        }
    for (pid_t pid : takers) QueueFixture::wait_for(pid, 30);
    const Lines taken = lines_of(d / "taken.txt");
    EXPECT_EQ(taken.size(), 20u);
    EXPECT_EQ(std::set<std::string>(taken.begin(), taken.end()).size(), 20u);
}
