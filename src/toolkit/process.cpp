#include "toolkit/process.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace zentol::process {

namespace {

bool start(const std::vector<std::string>& argv_words, bool wait) {
    std::vector<char*> argv;
    for (const auto& w : argv_words) argv.push_back(const_cast<char*>(w.c_str()));
    argv.push_back(nullptr);
    pid_t pid = 0;
    if (posix_spawnp(&pid, argv[0], nullptr, nullptr, argv.data(), environ) != 0) return false;
    if (wait) {
        int status = 0;
        while (waitpid(pid, &status, 0) < 0) {}
    }
    return true;
}

}  // namespace

std::string shell_quote(const std::string& word) {
    std::string out = "'";
    for (char c : word) out += (c == '\'') ? std::string("'\\''") : std::string(1, c);
    return out + "'";
}

bool run_shell(const std::string& command, bool wait) {
    if (wait) return start({"/bin/sh", "-c", command}, true);
    // Detached: the shell backgrounds the line and ends at once.
    return start({"/bin/sh", "-c", "( " + command + " ) </dev/null >/dev/null 2>&1 &"}, true);
}

bool spawn(const std::string& program, const std::vector<std::string>& args) {
    std::string line = "exec " + shell_quote(program);
    for (const auto& a : args) line += " " + shell_quote(a);
    if (access(program.c_str(), X_OK) != 0 && program.find('/') != std::string::npos) return false;
    return run_shell(line, false);
}

}  // namespace zentol::process
