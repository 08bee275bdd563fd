// What each Tinker run is told: the command file ZENTOL.BAT and the answer
// file that stands in for a user at the program's prompts, one answer a
// line in the program's own order.
#pragma once

#include <string>
#include <vector>

#include "engines/runner.h"

namespace zentol {

struct Session;
struct TinkerSettings;

// The Tinker programs the mode needs, as they are named in the Tinker
// directory (engines.def: tinker_dir) or on PATH, with or without Tinker's
// own ".x".
inline constexpr const char* kTinkerPrograms[] = {"minimize", "optimize", "analyze", "dynamic",
                                                  "anneal",   "vibrate",  "spacefill"};

// The configured Tinker directory, "" when none is set.
std::string tinker_dir(const Session& s);
// Every needed program present and executable in the Tinker directory.
bool tinker_installed(const Session& s);
// The first Tinker program that cannot be found, or "".
std::string missing_tinker_program(const Session& s);
// Full path of one Tinker program.
std::string tinker_program(const Session& s, const std::string& name);

// ZENTOL.BAT of one run: "<dir>/minimize <ZENTOL.INP >ZENTOL.LOG 2>&1" (each
// word quoted), then, where the run has one, a line of a single blank.
std::vector<std::string> tinker_batch(const Session& s, const std::string& program, bool blank_line = true,
                                      const std::string& answers = answer_file_name);

// The answer files. `job_xyz` is the job's structure file as it stands on
// disk ("butane.xyz").
AnswerFile minimize_answers(const std::string& job_xyz, float rms);
AnswerFile analyze_answers(const std::string& job_xyz, char qualifier);
// ANALYZE asks "List Atoms for which Output is Desired" after analysis
// types that hold A, P or C in either case.
bool analyze_asks_for_atoms(const std::string& analysis_types);
AnswerFile dynamic_answers(const std::string& job_xyz, const TinkerSettings& t);
AnswerFile anneal_answers(const std::string& job_xyz, const TinkerSettings& t);
AnswerFile vibrate_answers(const std::string& job_xyz, float vibration);
AnswerFile spacefill_answers(const std::string& job_xyz, int kind, float probe_radius);
// The movie pass of a vibration: number, amplitude, then a blank line.
AnswerFile animate_answers(const std::string& job_xyz, int vibration, float amplitude);

// The cooling-curve letter of a tk_curve value: L, S above 1.5, E above
// 2.5 - tested in that order, so that 3.0 gives S.
char curve_letter(float curve);

// Writes ZENTOL.BAT and the answers, then runs the batch file and waits.
// False when the run could not be started (an over-long line).
bool run_tinker(Session& s, const std::string& program, const AnswerFile& answers,
                const std::string& answer_name = answer_file_name);

}  // namespace zentol
