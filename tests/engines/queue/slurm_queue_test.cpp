// zentol-queue against a real single-node Slurm that the test configures and
// starts itself in a temporary directory (munged, slurmctld, slurmd, no
// accounting: sacct is unavailable and the states come from squeue and the
// jobs' exit files). Skipped, saying why, where the daemons cannot start.
#include <netinet/in.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <set>
#include <thread>

#include <gtest/gtest.h>

#include "engines/queue/child_process.h"
#include "engines/queue/queue_log.h"
#include "queue_fixture.h"
#include "session/openers.h"
#include "text/fixed_format.h"
#include "toolkit/files.h"

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

std::string short_host() {
    char name[256] = {};
    gethostname(name, sizeof name - 1);
    std::string host = name;
    return host.substr(0, host.find('.'));
}

bool poll_until(int seconds, const std::function<bool()>& done) {
    for (int k = 0; k < seconds * 4; ++k) {
        if (done()) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(250));
    }
    return false;
}

// munged, slurmctld and slurmd on this host, stopped again when it goes.
class LocalSlurm {
public:
    explicit LocalSlurm(const std::string& dir) : dir_(dir) { why_ = start(); }
    ~LocalSlurm() { stop(); }
    bool up() const { return why_.empty(); }
    const std::string& why() const { return why_; }

private:
    std::string dir_, why_;
    bool munge_started_ = false, slurm_started_ = false;

    std::string sock() const { return dir_ + "/munge/munge.sock"; }
    std::string conf() const { return dir_ + "/slurm.conf"; }

    std::string start() {
        if (geteuid() != 0) return "Slurm test needs root (SlurmUser=root)";
        for (const char* p : {"munged", "slurmctld", "slurmd", "sbatch", "squeue", "sinfo", "scontrol"})
            if (on_path(p).empty() && !runnable(std::string("/usr/sbin/") + p))
                return std::string(p) + " is not installed (slurm-wlm, munge)";
        if (std::string why = start_munge(); !why.empty()) return why;
        write_conf();
        setenv("SLURM_CONF", conf().c_str(), 1);
        slurm_started_ = true;
        std::string out, err;
        if (run_capture({sbin("slurmctld"), "-f", conf()}, &out, &err, 30) != 0) return "slurmctld did not start: " + err;
        if (run_capture({sbin("slurmd"), "-f", conf()}, &out, &err, 30) != 0) return "slurmd did not start: " + err;
        const bool idle = poll_until(40, [] {
            std::string state;
            return run_capture({"sinfo", "-h", "-o", "%t"}, &state, nullptr, 10) == 0 &&
                   text::trim(state).substr(0, 4) == "idle";
        });
        if (!idle) return "the Slurm node did not come up: " + tail(dir_ + "/log/slurmd.log");
        return "";
    }

    static std::string sbin(const std::string& name) {
        const std::string path = on_path(name);
        return path.empty() ? "/usr/sbin/" + name : path;
    }

    static std::string tail(const std::string& path) {
        const std::string text = read_file(path);
        return text.size() > 600 ? text.substr(text.size() - 600) : text;
    }

    std::string start_munge() {
        std::filesystem::create_directories(dir_ + "/munge");
        std::filesystem::permissions(dir_ + "/munge", std::filesystem::perms::owner_all);
        const std::string key = dir_ + "/munge/munge.key";
        if (run_capture({"dd", "if=/dev/urandom", "of=" + key, "bs=1024", "count=1"}, nullptr, nullptr, 10) != 0)
            return "no munge key could be made";
        std::filesystem::permissions(key, std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
        std::string err;
        munge_started_ = true;
        if (run_capture({sbin("munged"), "-f", "--key-file=" + key, "--socket=" + sock(),
                         "--pid-file=" + dir_ + "/munge/munged.pid", "--log-file=" + dir_ + "/munge/munged.log",
                         "--seed-file=" + dir_ + "/munge/seed"},
                        nullptr, &err, 20) != 0)
            return "munged did not start: " + err;
        if (!poll_until(10, [&] { return std::filesystem::exists(sock()); })) return "munged made no socket";
        return "";
    }

    void write_conf() {
        for (const char* sub : {"state", "spool", "log"}) std::filesystem::create_directories(dir_ + "/" + sub);
        const std::string host = short_host(), d = dir_;
        const long cpus = std::max(1L, sysconf(_SC_NPROCESSORS_ONLN));
        write_file(conf(), "ClusterName=zentoltest\nSlurmctldHost=" + host +
                               "\nSlurmUser=root\nSlurmdUser=root\n"
                               "SlurmctldPort=" + std::to_string(free_port()) +
                               "\nSlurmdPort=" + std::to_string(free_port()) +
                               "\nAuthType=auth/munge\nAuthInfo=socket=" + sock() + "\nStateSaveLocation=" + d +
                               "/state\nSlurmdSpoolDir=" + d + "/spool\nSlurmctldPidFile=" + d +
                               "/slurmctld.pid\nSlurmdPidFile=" + d + "/slurmd.pid\nSlurmctldLogFile=" + d +
                               "/log/slurmctld.log\nSlurmdLogFile=" + d +
                               "/log/slurmd.log\nProctrackType=proctrack/linuxproc\nTaskPlugin=task/none\n"
                               "SelectType=select/cons_tres\nSelectTypeParameters=CR_Core\nReturnToService=2\n"
                               "JobAcctGatherType=jobacct_gather/none\nAccountingStorageType=accounting_storage/none\n"
                               "JobCompType=jobcomp/none\nMpiDefault=none\nSlurmctldTimeout=30\nSlurmdTimeout=30\n"
                               "NodeName=" + host + " CPUs=" + std::to_string(cpus) +
                               " State=UNKNOWN\nPartitionName=zentol Nodes=" + host +
                               " Default=YES MaxTime=INFINITE State=UP\n");
    }

    // A daemon that has ended but not been reaped (its parent is init) is
    // gone too.
    static bool alive(pid_t pid) {
        if (kill(pid, 0) != 0) return false;
        const auto stat = files::read_lines("/proc/" + std::to_string(pid) + "/stat");
        if (!stat || stat->empty()) return false;
        const std::size_t paren = (*stat)[0].rfind(") ");
        return paren == std::string::npos || (*stat)[0].substr(paren + 2, 1) != "Z";
    }

    static void kill_pid_file(const std::string& path, int grace_seconds) {
        const auto lines = files::read_lines(path);
        auto pid = lines && !lines->empty() ? text::read_i(text::trim((*lines)[0])) : std::nullopt;
        if (!pid || *pid <= 1) return;
        const auto p = static_cast<pid_t>(*pid);
        if (!poll_until(grace_seconds, [&] { return !alive(p); })) kill(p, SIGTERM);
        if (!poll_until(10, [&] { return !alive(p); })) kill(p, SIGKILL);
    }

    void stop() {
        if (slurm_started_) {
            run_capture({"scontrol", "shutdown"}, nullptr, nullptr, 15);
            // scontrol shutdown ends both daemons; they are given 5 s.
            kill_pid_file(dir_ + "/slurmd.pid", 5);
            kill_pid_file(dir_ + "/slurmctld.pid", 5);
            unsetenv("SLURM_CONF");
        }
        if (munge_started_) kill_pid_file(dir_ + "/munge/munged.pid", 0);
    }
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
