#include "toolkit/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <signal.h>

#include <cerrno>
#include <cstring>

#include <cstdio>

#include <algorithm>
#include <filesystem>

#include "text/fixed_format.h"

namespace fs = std::filesystem;

namespace zentol::files {

namespace {

std::pair<fs::path, std::string> split(const std::string& name) {
    fs::path p(name);
    fs::path dir = p.parent_path();
    if (dir.empty()) dir = ".";
    return {dir, p.filename().string()};
}

}  // namespace

bool matches(const std::string& name, const std::string& pattern) {
    // Iterative glob with one backtrack point for '*'.
    std::size_t n = 0, p = 0, star = std::string::npos, mark = 0;
    auto lower = [](char c) { return (c >= 'A' && c <= 'Z') ? char(c + 32) : c; };
    auto one = [&](std::size_t at, std::size_t& width) {   // does pattern[at] take name[n]?
        width = 1;
        if (pattern[at] == '\\' && at + 1 < pattern.size()) {
            width = 2;
            return lower(pattern[at + 1]) == lower(name[n]);
        }
        return pattern[at] == '?' || lower(pattern[at]) == lower(name[n]);
    };
    while (n < name.size()) {
        std::size_t width = 1;
        if (p < pattern.size() && pattern[p] == '*') {
            star = p++;
            mark = n;
        } else if (p < pattern.size() && one(p, width)) {
            ++n, p += width;
        } else if (star != std::string::npos) {
            p = star + 1;
            n = ++mark;
        } else {
            return false;
        }
    }
    while (p < pattern.size() && pattern[p] == '*') ++p;
    return p == pattern.size();
}

std::string escape_pattern(const std::string& literal) {
    std::string out;
    for (char c : literal) {
        if (c == '*' || c == '?' || c == '\\') out += '\\';
        out += c;
    }
    return out;
}

std::string resolve(const std::string& name) {
    std::error_code ec;
    if (name.empty() || fs::exists(name, ec)) return name;
    auto [dir, leaf] = split(name);
    fs::directory_iterator it(dir, ec), end;
    for (; !ec && it != end; it.increment(ec)) {
        std::string candidate = it->path().filename().string();
        if (text::equals_nocase(candidate, leaf)) {
            fs::path parent = fs::path(name).parent_path();
            return (parent / candidate).string();
        }
    }
    return name;
}

bool exists(const std::string& name) {
    std::error_code ec;
    return fs::is_regular_file(resolve(name), ec);
}

long long size(const std::string& name) {
    std::error_code ec;
    auto s = fs::file_size(resolve(name), ec);
    return ec ? -1 : static_cast<long long>(s);
}

std::optional<std::string> read_text(const std::string& name) {
    // One allocation of the file's size and one read, not a stream copy.
    std::FILE* f = std::fopen(resolve(name).c_str(), "rb");
    if (!f) return std::nullopt;
    std::string all;
    struct stat st {};
    if (::fstat(::fileno(f), &st) == 0 && S_ISREG(st.st_mode)) all.resize(static_cast<std::size_t>(st.st_size));
    std::size_t got = all.empty() ? 0 : std::fread(all.data(), 1, all.size(), f);
    all.resize(got);
    char chunk[65536];   // a file that grew since, or one that has no size (a pipe)
    while (std::size_t n = std::fread(chunk, 1, sizeof chunk, f)) all.append(chunk, n);
    bool failed = std::ferror(f) != 0;
    std::fclose(f);
    if (failed) return std::nullopt;
    return all;
}

std::optional<text::TextLines> read_text_lines(const std::string& name) {
    auto bytes = read_text(name);
    if (!bytes) return std::nullopt;
    return text::TextLines::from_bytes(std::move(*bytes));
}

std::vector<std::string> split_lines(const std::string& content) {
    // Decoded and split as a file is: the fuzzers and in-memory readers see
    // exactly what a reader of the same bytes on disk would.
    return text::TextLines::from_bytes(std::string(content)).strings();
}

std::optional<std::vector<std::string>> read_lines(const std::string& name) {
    // The one reader of text files: decoded and split the same way for every
    // caller, whichever engine or editor wrote the file.
    auto lines = read_text_lines(name);
    if (!lines) return std::nullopt;
    return lines->strings();
}

namespace {

// Temporary files are hidden beside their target: .<name>.zentol-tmp<pid>.
constexpr char kTempMark[] = ".zentol-tmp";

std::string reason(int err) { return std::error_code(err, std::generic_category()).message(); }

bool fail(std::string* why, const std::string& text) {
    if (why) *why = text;
    return false;
}

// Where a write to `name` really goes: an existing file under any spelling,
// and through a symbolic link to the file it names, so the link stays a link.
fs::path write_target(const std::string& name) {
    fs::path target = resolve(name);
    std::error_code ec;
    for (int hops = 0; hops < 40 && fs::is_symlink(target, ec); ++hops) {
        fs::path next = fs::read_symlink(target, ec);
        if (ec) break;
        target = next.is_absolute() ? next : target.parent_path() / next;
    }
    return target;
}

bool write_all(int fd, const char* data, std::size_t size) {
    while (size > 0) {
        ssize_t n = ::write(fd, data, size);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return false;
        data += n;
        size -= static_cast<std::size_t>(n);
    }
    return true;
}

}  // namespace

bool write_atomic(const std::string& name, const std::string& content, std::string* why) {
    const fs::path target = write_target(name);
    const std::string temp = (target.parent_path() / ("." + target.filename().string() + kTempMark)).string() +
                             std::to_string(::getpid());
    // A file that exists keeps its permissions; a new one gets the usual ones.
    struct stat old {};
    bool existed = ::stat(target.c_str(), &old) == 0;
    int fd = ::open(temp.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, existed ? (old.st_mode & 07777) : 0666);
    if (fd < 0) return fail(why, reason(errno));
    if (existed) (void)::fchmod(fd, old.st_mode & 07777);
    bool ok = write_all(fd, content.data(), content.size());
    int err = errno;
    if (ok && ::fsync(fd) != 0) ok = false, err = errno;
    if (::close(fd) != 0 && ok) ok = false, err = errno;
    if (ok && ::rename(temp.c_str(), target.c_str()) != 0) ok = false, err = errno;
    if (!ok) {
        ::unlink(temp.c_str());
        return fail(why, reason(err ? err : EIO));
    }
    return true;
}

bool write_lines(const std::string& name, const std::vector<std::string>& lines, std::string* why) {
    std::string content;
    for (const auto& l : lines) content.append(l).push_back('\n');
    return write_atomic(name, content, why);
}

bool append_line(const std::string& name, const std::string& line, std::string* why) {
    int fd = ::open(write_target(name).c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
    if (fd < 0) return fail(why, reason(errno));
    std::string record = line + "\n";
    bool ok = write_all(fd, record.data(), record.size());
    int err = errno;
    if (::close(fd) != 0 && ok) ok = false, err = errno;
    return ok || fail(why, reason(err ? err : EIO));
}

std::vector<std::string> list(const std::string& dir, const std::string& pattern) {
    std::vector<std::string> names;
    std::error_code ec;
    fs::directory_iterator it(dir.empty() ? "." : dir, ec), end;
    for (; !ec && it != end; it.increment(ec)) {
        std::error_code ec2;
        if (!it->is_regular_file(ec2)) continue;
        std::string leaf = it->path().filename().string();
        if (matches(leaf, pattern)) names.push_back(leaf);
    }
    std::sort(names.begin(), names.end());
    return names;
}

void remove(const std::string& pattern) {
    auto [dir, leaf] = split(pattern);
    for (const auto& name : list(dir.string(), leaf)) {
        std::error_code ec;
        fs::remove(dir / name, ec);
    }
}

void remove_stale_temporaries(const std::string& dir) {
    std::error_code ec;
    for (fs::directory_iterator it(dir.empty() ? "." : dir, ec), end; !ec && it != end; it.increment(ec)) {
        std::string leaf = it->path().filename().string();
        std::size_t mark = leaf.rfind(kTempMark);
        if (leaf.empty() || leaf[0] != '.' || mark == std::string::npos) continue;
        std::string pid = leaf.substr(mark + std::strlen(kTempMark));
        if (pid.empty() || pid.find_first_not_of("0123456789") != std::string::npos) continue;
        // Only a writer that is gone: a live one is about to rename its file.
        if (::kill(static_cast<pid_t>(std::stol(pid)), 0) == 0 || errno == EPERM) continue;
        std::error_code gone;
        fs::remove(it->path(), gone);
    }
}

void remove_file(const std::string& name) {
    std::error_code ec;
    fs::remove(resolve(name), ec);
}

bool copy(const std::string& from, const std::string& to, std::string* why) {
    // Read whole and written through a temporary file: a copy onto a job
    // file is either the old file or the new one, never a torn mixture.
    auto content = read_text(from);
    if (!content) return fail(why, "cannot read " + from);
    return write_atomic(to, *content, why);
}

std::string current_dir() {
    std::error_code ec;
    return fs::current_path(ec).string();
}

bool change_dir(const std::string& path) {
    std::error_code ec;
    fs::current_path(path, ec);
    return !ec;
}

void make_dir(const std::string& path) {
    std::error_code ec;
    fs::create_directory(path, ec);
}

bool make_dirs(const std::string& path) {
    std::error_code ec;
    fs::create_directories(path, ec);
    return fs::is_directory(path, ec);
}

}  // namespace zentol::files
