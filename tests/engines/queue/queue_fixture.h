// A temporary installation for the queue runner: engines.def naming
// wrappers around the fake ORCA and Firefly of the mode tests, job
// directories with their decks, and the real zentol-queue program started
// on them.
#pragma once

#include <signal.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "engines/queue/queue_log.h"
#include "engines/queue_file.h"
#include "engines/session_checks.h"
#include "support/test_support.h"
#include "toolkit/files.h"

namespace zentol::testing {

inline std::string queue_program() { return ZENTOL_QUEUE_PROGRAM; }

// Polls until the file holds the text, up to `seconds`.
inline bool wait_for_text(const std::string& path, const std::string& text, int seconds) {
    for (int k = 0; k < seconds * 20; ++k) {
        if (auto t = files::read_text(path); t && t->find(text) != std::string::npos) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    return false;
}

struct QueueFixture {
    TempDir dir;
    std::string root = dir / "inst";                               // $ZENTOL_ROOT of the runner
    std::string orca_queue = dir / "work/orca/qorca.txt";
    std::string firefly_queue = dir / "work/firefly/qfirefly.txt";
    std::string order = dir / "order.txt";   // each engine start appends the deck it was given

    QueueFixture() {
        std::filesystem::create_directories(root + "/cfgset");
        std::filesystem::create_directories(dir / "bin");
        write_program(dir / "bin/orca", wrapper("orca/fake_orca.sh", "$1"));
        write_program(dir / "bin/firefly", wrapper("firefly/fake_firefly.sh", "$2"));
        write_engines_def();
        setenv("ZENTOL_ROOT", root.c_str(), 1);
        setenv("ZENTOL_WORK", (dir / "work").c_str(), 1);
        setenv("FAKE_ORCA_LST", test_data("orca/orca5.0_cl2_opt_numfreq_crlf.out").c_str(), 1);
        setenv("FAKE_ORCA_XYZ", test_data("orca/orca6.0_dihedral_final.xyz").c_str(), 1);
        setenv("FAKE_FIREFLY_LST", test_data("firefly/firefly8.0_h2o_opt.log").c_str(), 1);
        setenv("FAKE_FIREFLY_PUN", test_data("firefly/gamessus2018_dvb_opt.dat").c_str(), 1);
    }
    ~QueueFixture() {
        for (const char* name : {"ZENTOL_ROOT", "ZENTOL_WORK", "FAKE_ORCA_LST", "FAKE_ORCA_XYZ", "FAKE_FIREFLY_LST",
                                 "FAKE_FIREFLY_PUN", "QUEUE_TEST_SLEEP"})
            unsetenv(name);
    }

    // engines.def: the wrappers, plus the extra lines.
    void write_engines_def(const std::string& more = "") {
        write_file(root + "/cfgset/engines.def",
                   "orca " + (dir / "bin/orca") + "\nfirefly " + (dir / "bin/firefly") + "\n" + more);
    }

    // jobs/<name>/<name>.ino (.inp, with its cores on record) and for ORCA
    // its structure file, queued; the job's directory.
    std::string orca_job(const std::string& name, int cores = 1) {
        const std::string jobdir = job_dir(name);
        std::string deck = " ! RHF B3LYP def2-TZVP\n";
        if (cores > 1) deck += " %PAL NPROC " + std::to_string(cores) + "\n end\n";
        write_file(jobdir + "/" + name + ".ino", deck + " * xyz 0 1\n Cl 0 0 0\n *\n");
        write_file(jobdir + "/" + name + ".xyz", "     1  " + name + "\n     1  Cl     0.000000    0.000000    0.000000    12\n");
        add_to_queue(orca_queue, jobdir + "/" + name + ".ino");
        return jobdir;
    }
    std::string firefly_job(const std::string& name, int cores = 1) {
        const std::string jobdir = job_dir(name);
        write_file(jobdir + "/" + name + ".inp", " $CONTRL SCFTYP=RHF $END\n $DATA\n" + name + "\nC1\n $END\n");
        add_to_queue(firefly_queue, jobdir + "/" + name + ".inp", cores);
        return jobdir;
    }

    // Starts zentol-queue and returns at once.
    pid_t start(const std::vector<std::string>& words) {
        const pid_t pid = fork();
        if (pid == 0) {
            const std::string program = queue_program();
            std::vector<char*> argv{const_cast<char*>(program.c_str())};
            for (const auto& w : words) argv.push_back(const_cast<char*>(w.c_str()));
            argv.push_back(nullptr);
            execv(program.c_str(), argv.data());
            _exit(127);
        }
        return pid;
    }
    // Waits up to `seconds` for the process; its exit status, -1 on time out.
    static int wait_for(pid_t pid, int seconds) {
        int status = 0;
        for (int k = 0; k < seconds * 20; ++k) {
            if (waitpid(pid, &status, WNOHANG) == pid)
                return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        }
        kill(pid, SIGKILL);
        waitpid(pid, &status, 0);
        return -1;
    }
    // Runs zentol-queue with the words to its end; its exit status.
    int run(const std::vector<std::string>& words, std::string* out = nullptr) {
        if (!out) return wait_for(start(words), 120);
        std::string line = "'" + queue_program() + "'";
        for (const auto& w : words) line += " '" + w + "'";
        const std::string capture = dir / "run.out";
        const int status = std::system((line + " >'" + capture + "' 2>&1").c_str());
        *out = read_file(capture);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    std::vector<std::string> started() const { return lines_of(order); }
    // "status deck-leaf" of each line of the queue's log.
    std::vector<std::string> log_statuses(const std::string& queue) const {
        std::vector<std::string> r;
        for (const QueueEvent& e : read_queue_log(queue))
            r.push_back(e.status + " " + std::filesystem::path(e.deck).filename().string());
        return r;
    }

private:
    std::string job_dir(const std::string& name) {
        const std::string jobdir = dir / ("jobs/" + name);
        std::filesystem::create_directories(jobdir);
        return jobdir;
    }
    // The fake engine behind a wrapper that notes each start, can be slowed
    // down (QUEUE_TEST_SLEEP) and fails for decks whose name begins "bad".
    std::string wrapper(const std::string& fake, const std::string& deck_word) const {
        return "#!/bin/sh\n"
               "echo \"$PWD/" + deck_word + "\" >>'" + order + "'\n"
               "[ -n \"$QUEUE_TEST_SLEEP\" ] && sleep \"$QUEUE_TEST_SLEEP\"\n"
               "case \"" + deck_word + "\" in bad*) exit 3 ;; esac\n"
               "exec '" + std::string(ZENTOL_TEST_DATA) + "/../engines/" + fake + "' \"$@\"\n";
    }
    static void write_program(const std::string& path, const std::string& text) {
        write_file(path, text);
        std::filesystem::permissions(path, std::filesystem::perms::owner_all);
    }
};

}  // namespace zentol::testing
