// zentol-queue [--watch [--interval SECONDS]] [QUEUE_FILE...]
// zentol-queue --status [QUEUE_FILE...]
//
// The queue runner of the ORCA and Firefly jobs that Zentol queues
// (AddtoOrcaQ, ADDtoFireflyQ). Without a queue file it works through both
// queues of the installation ($ZENTOL_ROOT, and the scratch folder named
// in cfgset/zentol.def): <work>/orca/qorca.txt and
// <work>/firefly/qfirefly.txt. Each deck runs in its own directory exactly
// as the mode's Run starts it, one job at a time, or is handed to Slurm
// with sbatch when cfgset/engines.def says "queue_backend slurm". Every
// step goes to queue.log beside the queue file.
//
// SIGTERM or SIGINT stops the runner: a job in progress is ended, logged
// "interrupted" and put back at the head of its queue.
// Exit status: 0 done, 1 a job could not be started (it stays queued),
// 2 bad command line, 3 another runner is working through the queues.
#include <csignal>
#include <iostream>
#include <string>
#include <vector>

#include "engines/queue/queue_runner.h"
#include "engines/queue_file.h"
#include "session/config.h"
#include "text/fixed_format.h"
#include "toolkit/files.h"

namespace {

volatile std::sig_atomic_t stop_requested = 0;

extern "C" void on_stop(int) { stop_requested = 1; }

struct Options {
    bool watch = false;
    bool status = false;
    int interval = 10;
    std::vector<std::string> queues;
};

void usage(std::ostream& os) {
    os << "usage: zentol-queue [--watch [--interval SECONDS]] [QUEUE_FILE...]\n"
          "       zentol-queue --status [QUEUE_FILE...]\n"
          "  runs the ORCA and Firefly jobs queued by Zentol one at a time, each in its\n"
          "  own directory, and records every job in queue.log beside the queue file\n"
          "  --watch     keep watching the queues for new jobs (stop with SIGTERM or Ctrl+C)\n"
          "  --interval  seconds between two looks at empty queues (default 10)\n"
          "  --status    show the waiting jobs and the last state of each job\n"
          "  Without QUEUE_FILE: <work>/orca/qorca.txt and <work>/firefly/qfirefly.txt.\n"
          "  With \"queue_backend slurm\" in cfgset/engines.def the jobs go to sbatch.\n";
}

// 0 to go on, -1 after --help, otherwise the exit status.
int parse_options(int argc, char** argv, Options& o) {
    for (int k = 1; k < argc; ++k) {
        const std::string word = argv[k];
        bool ok = true;
        if (word == "-h" || word == "--help") {
            usage(std::cout);
            return -1;
        }
        if (word == "--watch" || word == "-w") o.watch = true;
        else if (word == "--status" || word == "-s") o.status = true;
        else if (word == "--interval" && k + 1 < argc) {
            auto n = zentol::text::read_i(argv[++k]);
            ok = n && *n >= 1 && *n <= 3600;
            if (ok) o.interval = static_cast<int>(*n);
        } else if (word.empty() || word[0] == '-') ok = false;
        else o.queues.push_back(word);
        if (!ok) {
            usage(std::cerr);
            return 2;
        }
    }
    return 0;
}

std::vector<std::string> default_queues(const zentol::Installation& inst) {
    auto lines = zentol::files::read_lines(inst.cfgset + "/zentol.def");
    std::string scratch = inst.default_scratch;
    if (lines) scratch = zentol::parse_zentol_def(*lines, inst.default_library, inst.default_scratch).scratch;
    return {zentol::queue_directory(scratch, "orca") + "/qorca.txt",
            zentol::queue_directory(scratch, "firefly") + "/qfirefly.txt"};
}

// SIGTERM and SIGINT stop the runner; a closed terminal (SIGHUP) does
// not, nor the engine, which inherits the ignored signal: a queue runs on
// after the window or shell that started it has gone.
void catch_stops() {
    struct sigaction sa {};
    sa.sa_handler = on_stop;
    sigemptyset(&sa.sa_mask);
    for (int sig : {SIGTERM, SIGINT}) sigaction(sig, &sa, nullptr);
    signal(SIGHUP, SIG_IGN);
}

}  // namespace

int main(int argc, char** argv) {
    Options o;
    if (int status = parse_options(argc, argv, o)) return status < 0 ? 0 : status;
    const zentol::Installation inst = zentol::locate_installation();
    zentol::QueueRunner r;
    r.queue_files = o.queues.empty() ? default_queues(inst) : o.queues;
    for (std::string& q : r.queue_files)
        if (!q.empty() && q[0] != '/') q = zentol::files::current_dir() + "/" + q;
    r.engines = zentol::read_engines_def(inst);
    r.watch = o.watch;
    r.watch_seconds = o.interval;
    r.stop = &stop_requested;
    r.out = &std::cout;
    r.err = &std::cerr;
    if (o.status) return zentol::print_queue_status(r);
    catch_stops();
    return zentol::run_queues(r);
}
