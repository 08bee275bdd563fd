#include "engines/runner.h"

#include "session/openers.h"
#include "session/session.h"
#include "text/fixed_format.h"
#include "toolkit/files.h"
#include "toolkit/process.h"
#include "toolkit/toolkit.h"

namespace zentol {

namespace {

std::string whole_number(long long v) { return std::string(text::trim(text::format_i(v, 20))); }

// The line is refused whole: its length and its start are shown so the
// user can tell which path ran away.
bool refuse_if_too_long(Session& s, const std::string& line) {
    if (fits_command_line(line)) return true;
    constexpr std::size_t shown = 200;
    std::string head = text::sanitise_text(line.substr(0, shown));
    s.tk.WMessageBox(kButtonsOk, MessageIcon::Exclamation, 1,
                     "Command line too long: " + whole_number(static_cast<long long>(line.size())) +
                         " characters, the limit is " + whole_number(static_cast<long long>(max_command_line)) +
                         ".\rIt was not run:\r" + head + "...",
                     "Zentol");
    return false;
}

// A number line: leading and trailing blanks gone.
std::string number_line(const std::string& formatted) { return std::string(text::trim(formatted)); }

}  // namespace

std::string shell_line(const std::string& command_file) {
    return "sh " + process::shell_quote(files::resolve(command_file));
}

std::string shell_line(const std::string& program, const std::vector<std::string>& words, const Redirect& io) {
    std::string line = process::shell_quote(program);
    for (const auto& w : words) line += " " + process::shell_quote(w);
    if (!io.input.empty()) line += " <" + process::shell_quote(files::resolve(io.input));
    if (!io.output.empty()) line += " >" + process::shell_quote(files::resolve(io.output));
    return line;
}

bool fits_command_line(const std::string& line) { return line.size() <= max_command_line; }

bool run_blocking(Session& s, const std::string& line) {
    if (!refuse_if_too_long(s, line)) return false;
    s.tk.IOsCommand(line, true);
    return true;
}

bool run_detached(Session& s, const std::string& line) {
    if (!refuse_if_too_long(s, line)) return false;
    s.tk.IOsCommand(line, false);
    return true;
}

bool write_command_file(const std::string& name, const std::vector<std::string>& lines) {
    return files::write_lines(name, lines);
}

void clear_status_results(Session& s) {
    s.tk.WindowOutStatusBar(status_extra_field, " ");
    s.tk.WindowOutStatusBar(status_cycle_field, " ");
}

AnswerFile& AnswerFile::write_answer_line(std::string_view text) {
    std::string clean = text::sanitise_text(text);
    lines_.emplace_back(text::trim_right(clean));
    return *this;
}

AnswerFile& AnswerFile::write_answer_line(long long value) {
    text::FreeRecord r;
    r << value;
    lines_.push_back(number_line(r.str()));
    return *this;
}

AnswerFile& AnswerFile::write_answer_line(double value) {
    text::FreeRecord r;
    r << value;
    lines_.push_back(number_line(r.str()));
    return *this;
}

AnswerFile& AnswerFile::write_answer_line(double value, int w, int d) {
    lines_.push_back(number_line(text::format_f(value, w, d)));
    return *this;
}

bool AnswerFile::save(const std::string& name) const { return files::write_lines(name, lines_); }

std::string engine_command(const Session& s, const std::string& key) { return configured_program(s, key); }

bool engine_available(const Session& s, const std::string& key) { return !engine_command(s, key).empty(); }

void open_command_window(Session& s, const std::string& path_dir) {
    std::string terminal = engine_command(s, "terminal");
    if (terminal.empty()) return tell_missing(s, "A terminal", "terminal");
    std::string line;
    if (!path_dir.empty()) line = "PATH=\"$PATH\":" + process::shell_quote(path_dir) + "; export PATH; ";
    run_detached(s, line + "exec " + process::shell_quote(terminal));
}

}  // namespace zentol
