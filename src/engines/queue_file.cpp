#include "engines/queue_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "engines/queue/queue_log.h"
#include "text/fixed_format.h"
#include "toolkit/files.h"

namespace zentol {

std::string queue_directory(const std::string& scratch_dir, const std::string& name) {
    std::filesystem::path scratch(scratch_dir);
    if (!scratch.has_filename()) scratch = scratch.parent_path();   // "…/scratch/"
    return (scratch.parent_path() / name).string();
}

int add_to_queue(const std::string& queue_file, const std::string& deck, int cores) {
    std::string entry(text::trim(deck));
    std::size_t compared = entry.empty() ? 0 : entry.size() - 1;
    std::string wanted = text::upper_case(entry.substr(0, compared));
    files::make_dirs(std::filesystem::path(queue_file).parent_path().string());
    QueueLock lock(queue_lock_file(queue_file), true);
    auto records = files::read_lines(queue_file).value_or(std::vector<std::string>{});
    int added = 1;
    for (const auto& record : records) {
        if (text::upper_case(record.substr(0, compared)) == wanted) added = 0;
    }
    if (added) {
        records.push_back(entry);
        if (!files::write_lines(queue_file, records)) return -1;
    }
    log_queue_event(queue_file, "queued", cores > 0 ? "cores " + std::to_string(cores) : "", entry);
    return added;
}

void delete_queue(const std::string& queue_file) {
    QueueLock lock(queue_lock_file(queue_file), true);
    files::remove_file(queue_file);
}

QueueLock::QueueLock(const std::string& lock_file, bool wait) {
    fd_ = ::open(lock_file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
    if (fd_ < 0) return;
    int r;
    do {
        r = ::flock(fd_, LOCK_EX | (wait ? 0 : LOCK_NB));
    } while (r != 0 && errno == EINTR && wait);
    held_ = r == 0;
}

QueueLock::~QueueLock() {
    if (fd_ >= 0) ::close(fd_);   // closing releases the lock
}

std::string queue_lock_file(const std::string& queue_file) { return queue_file + ".lock"; }
std::string runner_lock_file(const std::string& queue_file) { return queue_file + ".runner"; }

bool queue_runner_busy(const std::string& queue_file) {
    if (!files::exists(runner_lock_file(queue_file))) return false;
    return !QueueLock(runner_lock_file(queue_file), false).held();
}

}  // namespace zentol
