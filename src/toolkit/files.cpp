#include "toolkit/files.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>

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
    while (n < name.size()) {
        if (p < pattern.size() && (pattern[p] == '?' || lower(pattern[p]) == lower(name[n]))) {
            ++n, ++p;
        } else if (p < pattern.size() && pattern[p] == '*') {
            star = p++;
            mark = n;
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

std::optional<std::vector<std::string>> read_lines(const std::string& name) {
    auto content = read_text(name);
    if (!content) return std::nullopt;
    std::vector<std::string> lines;
    std::size_t start = 0;
    while (start < content->size()) {
        std::size_t end = content->find('\n', start);
        if (end == std::string::npos) end = content->size();
        std::size_t stop = end;
        if (stop > start && (*content)[stop - 1] == '\r') --stop;
        lines.emplace_back(content->substr(start, stop - start));
        start = end + 1;
    }
    return lines;
}

bool write_atomic(const std::string& name, const std::string& content) {
    std::string target = resolve(name);
    std::string temp = target + ".tmp" + std::to_string(::getpid());
    {
        std::ofstream out(temp, std::ios::binary | std::ios::trunc);
        if (!out) return false;
        out << content;
        out.flush();
        if (!out) {
            std::error_code ec;
            fs::remove(temp, ec);
            return false;
        }
    }
    std::error_code ec;
    fs::rename(temp, target, ec);
    if (ec) fs::remove(temp, ec);
    return !ec;
}

bool write_lines(const std::string& name, const std::vector<std::string>& lines) {
    std::string content;
    for (const auto& l : lines) content += l + "\n";
    return write_atomic(name, content);
}

bool append_line(const std::string& name, const std::string& line) {
    std::ofstream out(resolve(name), std::ios::binary | std::ios::app);
    if (!out) return false;
    out << line << "\n";
    return static_cast<bool>(out);
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

bool copy(const std::string& from, const std::string& to) {
    std::error_code ec;
    fs::copy_file(resolve(from), resolve(to), fs::copy_options::overwrite_existing, ec);
    return !ec;
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
