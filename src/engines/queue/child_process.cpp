#include "engines/queue/child_process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <optional>
#include <thread>

extern char** environ;

namespace zentol {

namespace {

using Clock = std::chrono::steady_clock;

int decode_status(int status) {
    if (WIFEXITED(status)) return WEXITSTATUS(status);
    if (WIFSIGNALED(status)) return 128 + WTERMSIG(status);
    return -1;
}

long long seconds_since(Clock::time_point start) {
    return std::chrono::duration_cast<std::chrono::seconds>(Clock::now() - start).count();
}

}  // namespace

ChildResult run_line_stoppable(const std::string& line, const std::string& dir, const volatile std::sig_atomic_t* stop,
                               int grace_seconds) {
    ChildResult r;
    const auto start = Clock::now();
    const pid_t pid = fork();
    if (pid < 0) return r;
    if (pid == 0) {
        setpgid(0, 0);
        if (chdir(dir.c_str()) != 0) _exit(127);
        execl("/bin/sh", "sh", "-c", line.c_str(), static_cast<char*>(nullptr));
        _exit(127);
    }
    setpgid(pid, pid);   // also here: a stop may come before the child has run
    r.started = true;
    std::optional<Clock::time_point> term_sent;
    int status = 0;
    for (;;) {
        const pid_t w = waitpid(pid, &status, WNOHANG);
        if (w == pid) break;
        if (w < 0 && errno != EINTR) return r;
        if (stop && *stop && !term_sent) {
            kill(-pid, SIGTERM);
            term_sent = Clock::now();
            r.stopped = true;
        } else if (term_sent && Clock::now() - *term_sent > std::chrono::seconds(grace_seconds)) {
            kill(-pid, SIGKILL);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    r.exit_status = decode_status(status);
    r.seconds = seconds_since(start);
    return r;
}

namespace {

// Reads both pipes until they close or the time is up.
bool drain(int out_fd, int err_fd, std::string* out, std::string* err, Clock::time_point deadline) {
    pollfd fds[2] = {{out_fd, POLLIN, 0}, {err_fd, POLLIN, 0}};
    std::string* sinks[2] = {out, err};
    int open_pipes = 2;
    char buf[4096];
    while (open_pipes > 0) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
        if (left <= 0) return false;
        if (poll(fds, 2, static_cast<int>(left)) < 0 && errno != EINTR) return false;
        for (int k = 0; k < 2; ++k) {
            if (fds[k].fd < 0 || !(fds[k].revents & (POLLIN | POLLHUP | POLLERR))) continue;
            const ssize_t n = read(fds[k].fd, buf, sizeof buf);
            if (n > 0) {
                if (sinks[k]) sinks[k]->append(buf, static_cast<std::size_t>(n));
            } else if (n == 0 || errno != EINTR) {
                fds[k].fd = -1;
                --open_pipes;
            }
        }
    }
    return true;
}

}  // namespace

int run_capture(const std::vector<std::string>& argv, std::string* out, std::string* err, int timeout_seconds) {
    int out_pipe[2], err_pipe[2];
    if (pipe2(out_pipe, O_CLOEXEC) != 0) return -1;
    if (pipe2(err_pipe, O_CLOEXEC) != 0) {
        close(out_pipe[0]), close(out_pipe[1]);
        return -1;
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, out_pipe[1], 1);
    posix_spawn_file_actions_adddup2(&actions, err_pipe[1], 2);
    std::vector<char*> words;
    for (const auto& w : argv) words.push_back(const_cast<char*>(w.c_str()));
    words.push_back(nullptr);
    pid_t pid = 0;
    const int spawned = posix_spawnp(&pid, words[0], &actions, nullptr, words.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(out_pipe[1]), close(err_pipe[1]);
    bool in_time = false;
    if (spawned == 0) in_time = drain(out_pipe[0], err_pipe[0], out, err, Clock::now() + std::chrono::seconds(timeout_seconds));
    close(out_pipe[0]), close(err_pipe[0]);
    if (spawned != 0) return -1;
    if (!in_time) kill(pid, SIGKILL);
    int status = 0;
    while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    return in_time ? decode_status(status) : -1;
}

}  // namespace zentol
