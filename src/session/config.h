// The installation tree and the small configuration files under cfgset/.
#pragma once

#include <array>
#include <string>
#include <utility>
#include <vector>

#include "session/session.h"

namespace zentol {

// $ZENTOL_ROOT (default ~/.local/share/zentol) with bin/ and cfgset/; the
// working trees under $ZENTOL_WORK (default ~/zentol); shipped data from
// $ZENTOL_DATA or the build's data directory.
Installation locate_installation();
Installation installation_at(const std::string& root, const std::string& work, const std::string& data_dir);

// Creates what is missing on a first start: the directories, zentol.def
// with the default working trees at Entry level, the shipped colour files,
// engines.def with its defaults.
void prepare_installation(const Installation& inst);

std::string default_engines_def(const Installation& inst);
EngineConfig parse_engines_def(const std::vector<std::string>& lines);
EngineConfig read_engines_def(const Installation& inst);

std::string cfg_path(const Session& s, const std::string& name);   // <cfgset>/<name>

// zentol.def: library directory, scratch directory, user level. A file that
// can't be read or is short is rewritten with what was read (defaults where
// the file was missing).
void read_zentol_def(Session& s);
// What the lines of zentol.def say, starting from the given folders: a
// folder line that is not a full path keeps the folder given and is listed
// in `refused` (which folder, the text it named); `complete` is false when
// the file must be written again (short, damaged, or a folder refused).
struct ZentolDef {
    std::string library, scratch;
    int level = 1;
    bool complete = false;
    std::vector<std::pair<std::string, std::string>> refused;
};
ZentolDef parse_zentol_def(const std::vector<std::string>& lines, const std::string& library,
                           const std::string& scratch);
// Copies the helper programs built beside the program into bin/ when they
// are missing there or older.
void install_programs(const Installation& inst, const std::string& program_dir);
// Copies the shipped library molecules that the library directory lacks.
void install_library(const std::string& shipped, const std::string& library_dir);
void write_user_level(Session& s);
std::string zentol_def_text(const std::string& library, const std::string& scratch, int level);

// One-line directory files: dir<N>.def and DIR.DEF.
std::string dir_def_name(const Session& s);    // "dir<N>.def"
std::string read_dir_file(const Session& s, const std::string& name);
// The folder of a dir file's lines: the first line when it is a full path.
std::string dir_from_lines(const std::vector<std::string>& lines);
void write_dir_file(const Session& s, const std::string& name, const std::string& dir);

// mrul.def: the recent-job list, newest first.
void read_mru(Session& s);
// Entries 1..10 of the list from the file's lines; entry 0 stays empty.
std::array<std::string, kRecentJobs + 1> parse_mru(const std::vector<std::string>& lines);
void write_mru(const Session& s);

// Status field 9 shows a long directory as its first 16 characters, "/../"
// and its last 17.
std::string short_directory(const std::string& dir);

std::string level_name(int level);   // "Ent", "Adv", "Exp", "" for 0

}  // namespace zentol
