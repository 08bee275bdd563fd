// File operations of the logic. Names are resolved case-insensitively within
// their directory, so "PTEST.XYZ", "ptest.xyz" and "Ptest.Xyz" meet the same
// file; a new file is created with the spelling it was given.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "text/text_lines.h"

namespace zentol::files {

// The existing file whose name matches case-insensitively (an exact match
// first), or the name itself when none exists.
std::string resolve(const std::string& name);

bool exists(const std::string& name);
long long size(const std::string& name);            // -1 when there is no such file
std::optional<std::string> read_text(const std::string& name);
// Lines without their line ends, decoded as read_text_lines does (a
// byte-order mark read, carriage returns dropped); nullopt when the file
// can't be read. For the readers that keep lines of their own.
std::optional<std::vector<std::string>> read_lines(const std::string& name);
// The same split of a text already in memory.
std::vector<std::string> split_lines(const std::string& content);
// An engine's output: read once into one buffer, decoded by its byte-order
// mark, carriage returns dropped, split into line views.
std::optional<text::TextLines> read_text_lines(const std::string& name);

// Writes the whole file through a temporary file, flushed to the disk
// before it is renamed over the old one, so a killed process or a full disk
// never leaves a torn or empty file behind. An existing file keeps its
// permissions, and a symbolic link stays a link: the file it names is
// replaced. On failure nothing of the old file is lost and *why (when
// given) says what went wrong ("No space left on device").
bool write_atomic(const std::string& name, const std::string& content, std::string* why = nullptr);
bool write_lines(const std::string& name, const std::vector<std::string>& lines, std::string* why = nullptr);
bool append_line(const std::string& name, const std::string& line, std::string* why = nullptr);

// Deletes the files matching a pattern (* and ? wildcards, in the last
// component only, case-insensitive). No error when nothing matches.
void remove(const std::string& pattern);
// Deletes the temporary files that a killed writer left in a folder (a
// writer still running keeps its own).
void remove_stale_temporaries(const std::string& dir);

// Deletes one file (any spelling), never treating its name as a pattern.
void remove_file(const std::string& name);
// A name with the pattern characters of `remove`/`list` escaped, so that a
// job name always means itself inside a pattern ("w?ter" + ".*").
std::string escape_pattern(const std::string& literal);
// Copies through write_atomic: the target is the old file or the whole new one.
bool copy(const std::string& from, const std::string& to, std::string* why = nullptr);
// Names (not paths) of the files in dir matching the pattern, sorted.
std::vector<std::string> list(const std::string& dir, const std::string& pattern);

std::string current_dir();
bool change_dir(const std::string& path);
void make_dir(const std::string& path);            // failure ignored
bool make_dirs(const std::string& path);

// Case-insensitive wildcard match of a whole name: * any run, ? one
// character, a backslash takes the next character literally.
bool matches(const std::string& name, const std::string& pattern);

}  // namespace zentol::files
