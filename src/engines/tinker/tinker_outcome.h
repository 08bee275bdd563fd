// Whether a Tinker run gave what it was run for, judged from ZENTOL.LOG.
// Tinker's exit code says little (a run that stops on undefined parameters
// ends with 0), so the log is read: an empty log, an "Undefined" block, a
// Fortran runtime error or a crash, or simply no result line each get a
// message naming the problem, with the last lines of the log.
#pragma once

#include <string>
#include <vector>

namespace zentol {

struct Session;

enum class TinkerProblem {
    None,
    EmptyLog,          // nothing written, or only the banner
    UndefinedAtom,     // "Undefined Atom Types or Classes"
    Undefined,         // missing bond, angle, torsion ... parameters
    NoParameterFile,   // the key file's force field was not found
    RuntimeError,      // "Fortran runtime error: ..." (input ran out, a bad number ...)
    Crashed,           // killed by a signal, glibc's abort messages
    NoResult,          // ran through but printed no result line
};

struct TinkerOutcome {
    TinkerProblem problem = TinkerProblem::None;
    std::string detail;   // the log line that shows it, trimmed
    bool ok() const { return problem == TinkerProblem::None; }
};

// Judges a log. `result_keys`: a run is good when some line holds one of
// them (" Final Function Value", "Frame Number" ...); empty when any log
// free of the problems above is good.
TinkerOutcome judge_tinker_log(const std::vector<std::string>& log, const std::vector<std::string>& result_keys);

// The last lines worth showing: at most `count` non-blank lines, without a
// Fortran backtrace's "#0 0x..." frames.
std::vector<std::string> last_log_lines(const std::vector<std::string>& log, std::size_t count = 8);

// The message of a failed run of a program, lines joined by "\r".
std::string tinker_failure_text(const std::string& program, const TinkerOutcome& outcome,
                                const std::vector<std::string>& log);

// Reads ZENTOL.LOG, and on failure shows the message. True when the run was good.
bool check_tinker_run(Session& s, const std::string& program, const std::vector<std::string>& result_keys);

// The result keys of each program.
extern const std::vector<std::string> kMinimizeResult;    // " Final Function Value"
extern const std::vector<std::string> kTrajectoryResult;  // "Frame Number"
extern const std::vector<std::string> kVibrateResult;     // " Vibra"
extern const std::vector<std::string> kSpacefillResult;   // "Total Area", "Total Volume"
extern const std::vector<std::string> kEnergyResult;      // " Total Potential Energy"

}  // namespace zentol
