#include "engines/tinker/tinker_decks.h"

#include <cctype>
#include <cmath>

#include "session/openers.h"
#include "session/session.h"
#include "text/fixed_format.h"
#include "toolkit/files.h"
#include "toolkit/toolkit.h"

namespace zentol {

namespace {

long long nearest(float v) { return std::llround(v); }

}  // namespace

std::string tinker_dir(const Session& s) { return std::string(text::trim(s.engines.get("tinker_dir"))); }

std::string tinker_program(const Session& s, const std::string& name) {
    // Tinker's own build names its programs "minimize.x" and so on;
    // packages and hand installs drop the ".x". Both are taken, from the
    // configured directory first, then from PATH.
    const std::string dir = tinker_dir(s);
    for (const std::string& leaf : {name, name + ".x"})
        if (!dir.empty() && runnable(dir + "/" + leaf)) return dir + "/" + leaf;
    for (const std::string& leaf : {name, name + ".x"})
        if (std::string found = on_path(leaf); !found.empty()) return found;
    return "";
}

std::string missing_tinker_program(const Session& s) {
    for (const char* name : kTinkerPrograms)
        if (tinker_program(s, name).empty()) return name;
    return "";
}

bool tinker_installed(const Session& s) { return missing_tinker_program(s).empty(); }

std::vector<std::string> tinker_batch(const Session& s, const std::string& program, bool blank_line,
                                      const std::string& answers) {
    // Standard error goes into the log too: a Fortran runtime error or a
    // crash is then read there, like the rest of the run.
    std::vector<std::string> lines{shell_line(tinker_program(s, program), {}, {answers, log_file_name}) + " 2>&1"};
    if (blank_line) lines.emplace_back(" ");
    return lines;
}

AnswerFile minimize_answers(const std::string& job_xyz, float rms) {
    AnswerFile a;
    a.write_answer_line(job_xyz).write_answer_line(static_cast<double>(rms));
    return a;
}

bool analyze_asks_for_atoms(const std::string& analysis_types) {
    for (char c : analysis_types) {
        const char u = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        if (u == 'A' || u == 'P' || u == 'C') return true;
    }
    return false;
}

AnswerFile analyze_answers(const std::string& job_xyz, char qualifier) {
    AnswerFile a;
    a.write_answer_line(job_xyz);
    if (qualifier == 'E') {
        a.write_answer_line("E");
        return a;
    }
    // Any other qualifier stands in place of the file name's first letter.
    std::string line = job_xyz;
    if (!line.empty()) line[0] = qualifier;
    a.write_answer_line(line);
    // Tinker takes every letter of that line it knows, in either case; an
    // A, P or C (the qualifier's or the name's) makes it ask which atoms to
    // list, and without an answer it stops on the end of its input.
    if (analyze_asks_for_atoms(line)) a.write_answer_line("ALL");
    return a;
}

AnswerFile dynamic_answers(const std::string& job_xyz, const TinkerSettings& t) {
    AnswerFile a;
    const long long type = nearest(t.tk_dyn_type);
    a.write_answer_line(job_xyz)
        .write_answer_line(nearest(t.tk_dyn_steps))
        .write_answer_line(static_cast<double>(t.tk_dyn_step))
        .write_answer_line(static_cast<double>(t.tk_dyn_dump))
        .write_answer_line(type);
    if (type == 2 || type == 4) a.write_answer_line(static_cast<double>(t.tk_dyn_temp));
    // The pressure is the cell the cooling curve shares.
    if (type == 3 || type == 4) a.write_answer_line(static_cast<double>(t.tk_curve));
    return a;
}

char curve_letter(float curve) {
    char c = 'L';
    if (curve > 2.5f) c = 'E';
    if (curve > 1.5f) c = 'S';   // tested second, so 3.0 gives S
    return c;
}

AnswerFile anneal_answers(const std::string& job_xyz, const TinkerSettings& t) {
    AnswerFile a;
    a.write_answer_line(job_xyz)
        .write_answer_line(std::string(text::trim((text::FreeRecord() << t.tk_anneal_t0 << t.tk_anneal_t1).str())))
        .write_answer_line(nearest(t.tk_anneal_equil))
        .write_answer_line(nearest(t.tk_anneal_cool))
        .write_answer_line(std::string(1, curve_letter(t.tk_curve)))
        .write_answer_line(static_cast<double>(t.tk_anneal_step), 10, 4)
        .write_answer_line(static_cast<double>(t.tk_anneal_dump), 10, 4)
        .write_answer_line(static_cast<double>(t.tk_anneal_mass), 10, 4);
    return a;
}

AnswerFile vibrate_answers(const std::string& job_xyz, float vibration) {
    AnswerFile a;
    a.write_answer_line(job_xyz)
        .write_answer_line(std::string(text::trim(text::format_i(nearest(vibration), 5))))
        .write_answer_line("0");
    return a;
}

AnswerFile spacefill_answers(const std::string& job_xyz, int kind, float probe_radius) {
    AnswerFile a;
    a.write_answer_line(job_xyz).write_answer_line(kind);
    if (kind == 2 || kind == 3) a.write_answer_line(static_cast<double>(probe_radius), 4, 1);
    a.write_answer_line("Y").write_answer_line("N");
    return a;
}

AnswerFile animate_answers(const std::string& job_xyz, int vibration, float amplitude) {
    AnswerFile a;
    a.write_answer_line(job_xyz)
        .write_answer_line(vibration)
        .write_answer_line(static_cast<double>(amplitude), 4, 2)
        .write_blank_line();
    return a;
}

bool run_tinker(Session& s, const std::string& program, const AnswerFile& answers, const std::string& answer_name) {
    answers.save(answer_name);
    write_command_file(command_file_name, tinker_batch(s, program, true, answer_name));
    return run_blocking(s, shell_line(command_file_name));
}

}  // namespace zentol
