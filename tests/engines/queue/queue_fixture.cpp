#include "queue_fixture.h"

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <thread>

#include "engines/queue/queue_log.h"
#include "engines/queue_file.h"
#include "toolkit/files.h"

namespace zentol::testing {

namespace {

std::string engine_tool(const std::string& engine, const std::string& name) {
    return std::string(ZENTOL_TEST_DATA) + "/../engines/" + engine + "/" + name;
}

// The fake engine behind a wrapper that notes each start, can be slowed
// down (QUEUE_TEST_SLEEP) and fails for decks whose name begins "bad".
std::string wrapper(const std::string& order, const std::string& fake, const std::string& deck_word) {
    return "#!/bin/sh\n"
           "echo \"$PWD/" + deck_word + "\" >>'" + order + "'\n"
           "[ -n \"$QUEUE_TEST_SLEEP\" ] && sleep \"$QUEUE_TEST_SLEEP\"\n"
           "case \"" + deck_word + "\" in bad*) exit 3 ;; esac\n"
           "exec '" + fake + "' \"$@\"\n";
}

void write_program(const std::string& path, const std::string& text) {
    write_file(path, text);
    std::filesystem::permissions(path, std::filesystem::perms::owner_all);
}

}  // namespace

std::string queue_program() { return ZENTOL_QUEUE_PROGRAM; }

std::vector<std::string> lines_of(const std::string& path) {
    return files::read_lines(path).value_or(std::vector<std::string>{});
}

bool wait_for_text(const std::string& path, const std::string& text, int seconds) {
    for (int k = 0; k < seconds * 20; ++k) {
        if (auto t = files::read_text(path); t && t->find(text) != std::string::npos) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    return false;
}

QueueFixture::QueueFixture()
    : root(dir / "inst"), orca_queue(dir / "work/orca/qorca.txt"), firefly_queue(dir / "work/firefly/qfirefly.txt"),
      order(dir / "order.txt") {
    std::filesystem::create_directories(root + "/cfgset");
    std::filesystem::create_directories(dir / "bin");
    write_program(dir / "bin/orca", wrapper(order, engine_tool("orca", "fake_orca.sh"), "$1"));
    write_program(dir / "bin/firefly", wrapper(order, engine_tool("firefly", "fake_firefly.sh"), "$2"));
    write_engines_def();
    setenv("ZENTOL_ROOT", root.c_str(), 1);
    setenv("ZENTOL_WORK", (dir / "work").c_str(), 1);
    setenv("FAKE_ORCA_LST", test_data("orca/orca5.0_cl2_opt_numfreq_crlf.out").c_str(), 1);
    setenv("FAKE_ORCA_XYZ", test_data("orca/orca6.0_dihedral_final.xyz").c_str(), 1);
    setenv("FAKE_FIREFLY_LST", test_data("firefly/firefly8.0_h2o_opt.log").c_str(), 1);
    setenv("FAKE_FIREFLY_PUN", test_data("firefly/gamessus2018_dvb_opt.dat").c_str(), 1);
}

QueueFixture::~QueueFixture() {
    for (const char* name : {"ZENTOL_ROOT", "ZENTOL_WORK", "FAKE_ORCA_LST", "FAKE_ORCA_XYZ", "FAKE_FIREFLY_LST", "FAKE_FIREFLY_PUN",
                             "QUEUE_TEST_SLEEP"})
        unsetenv(name);
}

void QueueFixture::write_engines_def(const std::string& more) {
    write_file(root + "/cfgset/engines.def", "orca " + (dir / "bin/orca") + "\nfirefly " + (dir / "bin/firefly") + "\n" + more);
}

std::string QueueFixture::orca_job(const std::string& name, int cores) {
    const std::string jobdir = dir / ("jobs/" + name);
    std::filesystem::create_directories(jobdir);
    std::string deck = " ! RHF B3LYP def2-TZVP\n";
    if (cores > 1) deck += " %PAL NPROC " + std::to_string(cores) + "\n end\n";
    write_file(jobdir + "/" + name + ".ino", deck + " * xyz 0 1\n Cl 0 0 0\n *\n");
    write_file(jobdir + "/" + name + ".xyz", "     1  " + name + "\n     1  Cl     0.000000    0.000000    0.000000    12\n");
    add_to_queue(orca_queue, jobdir + "/" + name + ".ino");
    return jobdir;
}

std::string QueueFixture::firefly_job(const std::string& name, int cores) {
    const std::string jobdir = dir / ("jobs/" + name);
    std::filesystem::create_directories(jobdir);
    write_file(jobdir + "/" + name + ".inp", " $CONTRL SCFTYP=RHF $END\n $DATA\n" + name + "\nC1\n $END\n");
    write_file(jobdir + "/" + name + ".lst", "an old listing\n");
    add_to_queue(firefly_queue, jobdir + "/" + name + ".inp", cores);
    return jobdir;
}

pid_t QueueFixture::start(const std::vector<std::string>& words) {
    const pid_t pid = fork();
    if (pid == 0) {
        std::vector<char*> argv;
        const std::string program = queue_program();
        argv.push_back(const_cast<char*>(program.c_str()));
        for (const auto& w : words) argv.push_back(const_cast<char*>(w.c_str()));
        argv.push_back(nullptr);
        execv(program.c_str(), argv.data());
        _exit(127);
    }
    return pid;
}

int QueueFixture::wait_for(pid_t pid, int seconds) {
    int status = 0;
    for (int k = 0; k < seconds * 20; ++k) {
        if (waitpid(pid, &status, WNOHANG) == pid) return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    kill(pid, SIGKILL);
    waitpid(pid, &status, 0);
    return -1;
}

int QueueFixture::run(const std::vector<std::string>& words, std::string* out) {
    if (!out) return wait_for(start(words), 120);
    std::string line = "'" + queue_program() + "'";
    for (const auto& w : words) line += " '" + w + "'";
    const std::string capture = dir / "run.out";
    const int status = std::system((line + " >'" + capture + "' 2>&1").c_str());
    *out = read_file(capture);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::vector<std::string> QueueFixture::started() const { return lines_of(order); }

std::vector<std::string> QueueFixture::log_statuses(const std::string& queue) const {
    std::vector<std::string> r;
    for (const QueueEvent& e : read_queue_log(queue))
        r.push_back(e.status + " " + std::filesystem::path(e.deck).filename().string());
    return r;
}

}  // namespace zentol::testing
