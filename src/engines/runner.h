// The one way an outside engine is started. The job directory is the current
// directory: the engine's input is written there as plain files, one line is
// run through /bin/sh, and the program blocks until the child has ended,
// repainting but swallowing input meanwhile. The exit code is never read:
// the files the engine leaves behind tell what happened.
//
// Command files (ZENTOL.BAT and friends) keep their names and line order but
// are /bin/sh scripts, run as "sh ZENTOL.BAT". Every word that comes from a
// job name, a path or a file's content is quoted, so no name can inject a
// command. docs/command-files.md maps each command-file form.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace zentol {

struct Session;

// Status-bar fields a run writes.
inline constexpr int status_mode_field = 10;     // the mode's name; "Calc." during a scan step
inline constexpr int status_message_field = 9;   // "Calculating", then the result line or a blank
inline constexpr int status_cycle_field = 8;     // cycle of a repeated job
inline constexpr int status_extra_field = 7;     // a further number

// Fixed scratch names of a Tinker run, shared by all Tinker programs: a run
// overwrites the log of the run before it.
inline constexpr char command_file_name[] = "ZENTOL.BAT";
inline constexpr char answer_file_name[] = "ZENTOL.INP";
inline constexpr char log_file_name[] = "ZENTOL.LOG";
inline constexpr char spacefill_answer_file_name[] = "ZENTOL2.inp";

// The longest line the runner starts. Nothing on Linux cuts a path, but a
// line this long is a runaway path or word: it is refused whole, never run
// cut short.
inline constexpr std::size_t max_command_line = 4096;

// Standard input and output of a command; empty for none. The names are met
// on disk whatever their case ("ZENTOL.LOG" rewrites an existing zentol.log).
struct Redirect {
    std::string input;
    std::string output;
};

// The line that runs a command file of the current directory, naming it as
// it is spelled on disk: "sh 'zentol.bat'" when the file is zentol.bat.
std::string shell_line(const std::string& command_file);

// The line that runs a program with its words, each word quoted, and its
// redirections; also one line of a command file.
std::string shell_line(const std::string& program, const std::vector<std::string>& words, const Redirect& io = {});

bool fits_command_line(const std::string& line);

// Runs a line hidden and returns when it has ended (Toolkit::IOsCommand with
// wait). A line over max_command_line is refused with a message box and not
// run; false then.
bool run_blocking(Session& s, const std::string& line);

// Starts a line and returns at once: help pages, viewers and the command
// window, whose children the program never looks at again. Over-long lines
// are refused as by run_blocking.
bool run_detached(Session& s, const std::string& line);

// Writes a command file, one line each, in the given order, with no "#!"
// line: it is run as "sh NAME". A file that exists under another spelling is
// replaced under that spelling.
bool write_command_file(const std::string& name, const std::vector<std::string>& lines);

// A single blank into status fields 7 and 8, before a run that prints a result.
void clear_status_results(Session& s);

// One engine dialogue (ZENTOL.INP, Multiwfn answers ...): one answer a line,
// the file written whole.
class AnswerFile {
public:
    // The text without its trailing blanks. Control characters become blanks,
    // so one answer never splits into two.
    AnswerFile& write_answer_line(std::string_view text);
    // A number written free-form, as a Fortran list-directed write gives it
    // (a real as a default real), its leading blanks stripped so that it
    // stands at column 1.
    AnswerFile& write_answer_line(long long value);
    AnswerFile& write_answer_line(int value) { return write_answer_line(static_cast<long long>(value)); }
    AnswerFile& write_answer_line(double value);
    // A blank line: one single blank.
    AnswerFile& write_blank_line() {
        lines_.emplace_back(" ");
        return *this;
    }
    // A number in an Fw.d field, leading blanks stripped.
    AnswerFile& write_answer_line(double value, int w, int d);

    const std::vector<std::string>& lines() const { return lines_; }
    // Replaces the file atomically; false when it could not be written.
    bool save(const std::string& name) const;

private:
    std::vector<std::string> lines_;
};

// The program configured for an engine in cfgset/engines.def (a bare name is
// looked up on PATH, a path must exist and be executable), or "" when it is
// missing.
std::string engine_command(const Session& s, const std::string& key);
bool engine_available(const Session& s, const std::string& key);

// The user's command window: the configured terminal, not waited for, in the
// job directory with path_dir (when not empty) added to PATH, so the mode's
// engines can be run by hand. A missing terminal gets a message.
void open_command_window(Session& s, const std::string& path_dir);

}  // namespace zentol
