// zentol-queue against a real single-node Slurm that local_slurm.sh
// configures and starts in a temporary directory (no accounting: sacct is
// unavailable and the states come from squeue and the jobs' exit files).
// Skipped, saying why, where the daemons cannot start.
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <functional>
#include <set>
#include <thread>

#include <gtest/gtest.h>

#include "engines/queue/child_process.h"
#include "queue_fixture.h"
#include "text/fixed_format.h"

using namespace zentol;
using namespace zentol::testing;

namespace {

int free_port() {
    const int fd = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in a{};
    a.sin_family = AF_INET;
    a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t len = sizeof a;
    int port = 0;
    if (bind(fd, reinterpret_cast<sockaddr*>(&a), sizeof a) == 0 &&
        getsockname(fd, reinterpret_cast<sockaddr*>(&a), &len) == 0)
        port = ntohs(a.sin_port);
    close(fd);
    return port;
}

bool poll_until(int seconds, const std::function<bool()>& done) {
    for (int k = 0; k < seconds * 4; ++k) {
        if (done()) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(250));
    }
    return false;
}

// local_slurm.sh's daemons, stopped again when it goes.
class LocalSlurm {
public:
    explicit LocalSlurm(const std::string& dir) : dir_(dir) {
        std::string out;
        if (run_capture({"sh", script(), "start", dir, std::to_string(free_port()), std::to_string(free_port())}, &out,
                        nullptr, 120) != 0)
            why_ = out.empty() ? "local_slurm.sh failed" : std::string(text::trim(out));
        setenv("SLURM_CONF", (dir + "/slurm.conf").c_str(), 1);
    }
    ~LocalSlurm() {
        run_capture({"sh", script(), "stop", dir_}, nullptr, nullptr, 60);
        unsetenv("SLURM_CONF");
    }
    bool up() const { return why_.empty(); }
    const std::string& why() const { return why_; }

private:
    static std::string script() { return std::string(ZENTOL_TEST_DATA) + "/../engines/queue/local_slurm.sh"; }
    std::string dir_, why_;
};

int count_of(const std::string& text, const std::string& part) {
    int n = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++n;
    return n;
}

}  // namespace

TEST(SlurmQueue, ThreeJobsAreSubmittedRunAndReportedDone) {
    QueueFixture f;
    LocalSlurm slurm(f.dir / "slurm");
    if (!slurm.up()) GTEST_SKIP() << "No local Slurm for this test: " << slurm.why();
    f.write_engines_def("queue_backend slurm\nqueue_partition zentol\nqueue_time_limit 5\n");
    const long cpus = std::max(1L, sysconf(_SC_NPROCESSORS_ONLN));
    const std::string a = f.orca_job("alpha", cpus >= 2 ? 2 : 1), b = f.orca_job("beta"), c = f.firefly_job("gamma");
    const std::string bad = f.orca_job("bad");
    const std::string structure = read_file(a + "/alpha.xyz");

    std::string out;
    ASSERT_EQ(f.run({f.orca_queue, f.firefly_queue}, &out), 0) << out;
    EXPECT_EQ(count_of(out, "as Slurm job"), 4) << out;
    EXPECT_TRUE(lines_of(f.orca_queue).empty());
    const std::string log = read_file(f.dir / "work/orca/queue.log");
    EXPECT_NE(log.find("submitted   slurm "), std::string::npos) << log;
    EXPECT_NE(log.find(std::string(", cores ") + (cpus >= 2 ? "2" : "1")), std::string::npos) << log;

    // --status asks the cluster (no accounting: squeue and the exit files)
    // and logs the ends.
    const bool ended = poll_until(120, [&] {
        f.run({"--status", f.orca_queue, f.firefly_queue}, &out);
        return count_of(out, "\n  done ") + count_of(out, "\n  failed ") >= 4;
    });
    ASSERT_TRUE(ended) << out;
    EXPECT_EQ(count_of(out, "\n  done "), 3) << out;
    EXPECT_EQ(count_of(out, "\n  failed "), 1) << out;
    const std::string ends = read_file(f.dir / "work/orca/queue.log");
    EXPECT_NE(ends.find(", exit 3"), std::string::npos) << ends;

    // The jobs ran in their own directories, and the steps after the run
    // left the files as the modes do.
    std::set<std::string> started;
    for (const std::string& line : f.started()) started.insert(line);
    EXPECT_EQ(started, (std::set<std::string>{a + "/alpha.ino", b + "/beta.ino", c + "/gamma.inp", bad + "/bad.ino"}));
    EXPECT_TRUE(read_file(a + "/alpha.out") == read_file(test_data("orca/orca6.0_dihedral_final.xyz")));
    EXPECT_EQ(read_file(a + "/alpha.xyz"), structure);
    EXPECT_TRUE(read_file(c + "/gamma.pun") == read_file(test_data("firefly/gamessus2018_dvb_opt.dat")));

    // Asked again, the finished jobs are not logged twice.
    f.run({"--status", f.orca_queue}, &out);
    EXPECT_EQ(count_of(read_file(f.dir / "work/orca/queue.log"), " done "), 2);
}
