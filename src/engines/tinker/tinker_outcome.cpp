#include "engines/tinker/tinker_outcome.h"

#include "engines/runner.h"
#include "session/molecule_store.h"
#include "session/session.h"
#include "text/fixed_format.h"
#include "toolkit/files.h"
#include "toolkit/toolkit.h"

namespace zentol {

const std::vector<std::string> kMinimizeResult = {"Final Function Value"};
const std::vector<std::string> kTrajectoryResult = {"Frame Number"};
const std::vector<std::string> kVibrateResult = {"Vibrational Frequencies", "Vibrational Normal Mode"};
const std::vector<std::string> kSpacefillResult = {"Total Area", "Total Volume"};
const std::vector<std::string> kEnergyResult = {"Total Potential Energy"};

namespace {

bool holds(const std::string& line, const char* text) { return line.find(text) != std::string::npos; }

std::string trimmed(const std::string& line) { return std::string(text::trim(line)); }

// A heading without its colon: "Undefined Bond Stretching Parameters".
std::string heading(const std::string& line) {
    std::string t = trimmed(line);
    if (!t.empty() && t.back() == ':') t = std::string(text::trim_right(t.substr(0, t.size() - 1)));
    return t;
}

// Tinker's banner: the lines up to its last row of '#'. A log of nothing
// more never got to the first question.
bool only_banner(const std::vector<std::string>& log) {
    for (const std::string& line : log) {
        const std::string t = trimmed(line);
        if (t.empty() || t.find_first_not_of("#") == std::string::npos) continue;
        if (t.front() == '#' && t.back() == '#') continue;   // "###  Tinker  ---  Software Tools ...  ###"
        return false;
    }
    return true;
}

// A crash: the C library's abort texts and gfortran's signal report,
// "free(): invalid next size (normal)" / "Program received signal SIGABRT".
bool crash_line(const std::string& line) {
    return holds(line, "Program received signal") || holds(line, "double free or corruption") ||
           holds(line, "free(): ") || holds(line, "Segmentation fault") || holds(line, "malloc(): ") ||
           holds(line, "corrupted size");
}

bool has_result(const std::vector<std::string>& log, const std::vector<std::string>& keys) {
    if (keys.empty()) return true;
    for (const std::string& line : log)
        for (const std::string& key : keys)
            if (holds(line, key.c_str())) return true;
    return false;
}

}  // namespace

TinkerOutcome judge_tinker_log(const std::vector<std::string>& log, const std::vector<std::string>& result_keys) {
    for (const std::string& line : log) {
        const std::string t = trimmed(line);
        if (t.rfind("Undefined Atom", 0) == 0) return {TinkerProblem::UndefinedAtom, heading(t)};
        if (t.rfind("Undefined ", 0) == 0) return {TinkerProblem::Undefined, heading(t)};
    }
    for (const std::string& line : log)
        if (crash_line(line)) return {TinkerProblem::Crashed, trimmed(line)};
    for (const std::string& line : log)
        if (holds(line, "Fortran runtime error")) {
            // Out of answers while the force field was asked for: the key
            // file's parameters line names no file.
            for (const std::string& l : log)
                if (holds(l, "Enter Potential Parameter File Name")) return {TinkerProblem::NoParameterFile, trimmed(l)};
            return {TinkerProblem::RuntimeError, trimmed(line)};
        }
    if (only_banner(log)) return {TinkerProblem::EmptyLog, ""};
    if (!has_result(log, result_keys)) return {TinkerProblem::NoResult, result_keys.front()};
    return {};
}

std::vector<std::string> last_log_lines(const std::vector<std::string>& log, std::size_t count) {
    std::vector<std::string> out;
    for (auto it = log.rbegin(); it != log.rend() && out.size() < count; ++it) {
        const std::string t = std::string(text::trim_right(*it));
        const std::string bare = trimmed(t);
        if (bare.empty()) continue;
        // a backtrace's frames: "#0  0x7f49c3c218c2 in ???", "at ./signal/..."
        if (bare.size() > 1 && bare[0] == '#' && bare[1] >= '0' && bare[1] <= '9') continue;
        if (bare.rfind("at ", 0) == 0) continue;
        out.insert(out.begin(), t);
    }
    return out;
}

std::string tinker_failure_text(const std::string& program, const TinkerOutcome& outcome,
                                const std::vector<std::string>& log) {
    std::vector<std::string> lines;
    const std::string who = "Tinker's " + program;
    switch (outcome.problem) {
        case TinkerProblem::None: return "";
        case TinkerProblem::EmptyLog:
            lines = {who + " wrote nothing into " + std::string(log_file_name) + ":",
                     "it stopped before its first question (a crash or a program that does not run)."};
            break;
        case TinkerProblem::UndefinedAtom:
            lines = {who + " stopped: the molecule has an atom type MM3 does not define.",
                     "Use Edit.LOG to Examine the Undefined items; set the types with Edit.XYZ."};
            break;
        case TinkerProblem::Undefined:
            lines = {who + " stopped: MM3 lacks parameters for this molecule (" + outcome.detail + ").",
                     "Repeated use of Undefined and Optimize may work"};
            break;
        case TinkerProblem::NoParameterFile:
            lines = {who + " stopped: the force field file of the key file's \"parameters\" line was not found.",
                     "Set \"mm3_params\" in engines.def to Tinker's mm3.prm (without .prm)."};
            break;
        case TinkerProblem::RuntimeError:
            lines = {who + " stopped with an error: " + outcome.detail};
            if (holds(outcome.detail, "End of file")) lines.push_back("It asked a question that its answer file does not hold.");
            break;
        case TinkerProblem::Crashed: lines = {who + " crashed: " + outcome.detail}; break;
        case TinkerProblem::NoResult:
            lines = {who + " gave no result: its log holds no \"" + outcome.detail + "\"."};
            break;
    }
    const auto tail = last_log_lines(log);
    if (!tail.empty()) {
        lines.emplace_back("");
        lines.push_back(std::string(log_file_name) + " ends:");
        lines.insert(lines.end(), tail.begin(), tail.end());
    }
    std::string text;
    for (const std::string& l : lines) text += (text.empty() ? "" : "\r") + l;
    return text;
}

namespace {

// Tinker 26 crashes on an atom of type 0 before it says a word: the atoms
// that have it are named.
std::string type_zero_atoms(const Store& st) {
    std::string names;
    int count = 0;
    for (int i = 1; i <= st.natoms; ++i) {
        if (st.conn_type(i) != 0) continue;
        if (++count <= 5) names += (names.empty() ? "" : ", ") + std::string(text::trim(label_text(st.atom_label[i])));
    }
    if (count > 5) names += ", ...";
    return names;
}

}  // namespace

bool check_tinker_run(Session& s, const std::string& program, const std::vector<std::string>& result_keys) {
    const std::vector<std::string> log = files::read_lines(log_file_name).value_or(std::vector<std::string>{});
    const TinkerOutcome outcome = judge_tinker_log(log, result_keys);
    if (outcome.ok()) return true;
    std::string text = tinker_failure_text(program, outcome, log);
    const std::string zero = type_zero_atoms(s.store);
    if (!zero.empty() && (outcome.problem == TinkerProblem::Crashed || outcome.problem == TinkerProblem::EmptyLog))
        text = text.substr(0, text.find('\r')) + "\rThese atoms have type 0, which MM3 does not define: " + zero +
               " (Edit.XYZ sets the types)." + (text.find('\r') == std::string::npos ? "" : text.substr(text.find('\r')));
    s.tk.WMessageBox(kButtonsOk, MessageIcon::Exclamation, 1, text, "Tinker");
    return false;
}

}  // namespace zentol
