#include "engines/tinker/tinker_runs.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <ctime>
#include <filesystem>
#include <memory>

#include "engines/runner.h"
#include "engines/tinker/tinker_decks.h"
#include "engines/tinker/tinker_job.h"
#include "engines/tinker/tinker_log.h"
#include "engines/tinker/tinker_movie.h"
#include "engines/tinker/tinker_outcome.h"
#include "session/job_files.h"
#include "session/jobs.h"
#include "session/session.h"
#include "session/store_ops.h"
#include "structure_files/geo_log.h"
#include "structure_files/ins_file.h"
#include "structure_files/xyz_file.h"
#include "text/fixed_format.h"
#include "toolkit/files.h"
#include "toolkit/toolkit.h"

namespace zentol {

namespace {

void calculating(Session& s) {
    s.tk.WindowOutStatusBar(status_message_field, "Calculating");
    s.flags.pg_aligned = false;
    clear_status_results(s);
}

void blank_message(Session& s) { s.tk.WindowOutStatusBar(status_message_field, " "); }

// The display copy pulled back into the store, then the files rewritten.
void refresh_files(Session& s) {
    s.flags.view_action = 10;
    prepare_display(s);
    save_and_reload(s);
}

std::vector<std::string> log_lines() { return files::read_lines(log_file_name).value_or(std::vector<std::string>{}); }

// A structure file written by Tinker becomes the job's structure, written
// over the job's file as it is spelled on disk: read to be sure first, so
// that a bad file never replaces a good one.
bool load_structure(Session& s, const std::string& path) {
    auto lines = files::read_lines(path);
    if (!lines) return false;
    auto probe = std::make_unique<Store>();
    int charge = s.flags.total_charge, multiplicity = s.flags.spin_multiplicity;
    if (parse_xyz(*lines, *probe, nullptr, charge, multiplicity) != kXyzRead || probe->natoms == 0) return false;
    const int before = s.store.natoms;
    std::vector<Label> labels(s.store.atom_label.begin(), s.store.atom_label.begin() + before + 1);
    const std::string target = tinker_names(s).told;
    std::string why;
    if (path != target && !files::copy(path, target, &why)) {
        s.tk.WMessageBox(kButtonsOk, MessageIcon::Stop, 1, "Cannot write " + target + ":\r" + why, "Tinker");
        return false;
    }
    int status = 0;
    s.store.natoms = 0;
    read_job_xyz(s, status);
    if (status != kXyzRead) return false;
    keep_job_labels(s.store, before, labels);
    return true;
}

// Tinker's new structure, under whatever name it took, becomes the job's;
// the file itself goes, so that no later run mistakes it for its own.
void take_result(Session& s, const TinkerNames& names) {
    const std::string result = tinker_result_file(names);
    if (result.empty()) return;
    if (!load_structure(s, result))
        s.tk.WMessageBox(kButtonsOk, MessageIcon::Exclamation, 1,
                         "Tinker's new structure " + result + " cannot be read: the structure stays as it was.",
                         "Tinker");
    else
        std::filesystem::remove(result);
    save_and_reload(s);
}

// The frames and the archive of a trajectory, in every spelling; its
// restart file too when `also_restart`.
void delete_frames(Session& s, bool also_restart) {
    remove_frame_files(s.job.name);
    files::remove(files::escape_pattern(s.job.name) + ".arc");
    if (also_restart) files::remove(files::escape_pattern(s.job.name) + ".dyn");
}

std::string movie_frame_name(int n) { return "MV" + std::string(n < 10 ? "0" : "") + std::to_string(n) + ".INS"; }

// Shows the frames one after the other, each kept as a movie frame; the
// question "Replay" runs them again. False when a frame cannot be read.
bool replay(Session& s, const std::vector<std::string>& frames, int delay, const char* failure, bool ask) {
    while (true) {
        files::remove("MV*.INS");
        for (std::size_t i = 0; i < frames.size(); ++i) {
            s.tk.WindowOutStatusBar(status_message_field, frames[i]);
            if (!load_structure(s, frames[i])) {
                s.tk.WMessageBox(kButtonsOk, MessageIcon::Exclamation, 1, failure, "Tinker");
                blank_message(s);
                return false;
            }
            s.tk.wait_hundredths(delay);
            save_and_reload(s);
            files::write_atomic(movie_frame_name(static_cast<int>(i) + 1), format_ins(s.store, s.job.name));
        }
        if (!ask || !ask_yes_no(s, "Replay")) break;
    }
    return true;
}

void finish_trajectory(Session& s) {
    s.tinker.tk_dyn_stale = 0.0f;
    blank_message(s);
    s.tinker.tk_dyn_done = 1.0f;
}

// The frames of a run: numbered files when the engine wrote them, else
// its archive cut into such files.
std::vector<std::string> run_frames(Session& s) {
    std::vector<std::string> frames = frame_files(s.job.name);
    const std::string archive = job_file(s, ".arc");
    if (frames.empty() && files::exists(archive)) {
        cut_archive(archive, s.job.name, s.store.natoms);
        frames = frame_files(s.job.name);
    }
    return frames;
}

std::string two_digits(int v) { return (v < 10 ? "0" : "") + std::to_string(v); }

std::string time_stamp() {
    const std::time_t now = std::time(nullptr);
    std::tm t{};
    localtime_r(&now, &t);
    return std::to_string(t.tm_mday) + "-" + std::to_string(t.tm_mon + 1) + "-" + std::to_string(t.tm_year + 1900) +
           " " + two_digits(t.tm_hour) + ":" + two_digits(t.tm_min) + ":" + two_digits(t.tm_sec);
}

}  // namespace

std::string frame_name(const std::string& job, int counter) {
    const int c = std::min(counter, 99);
    return job + (c < 10 ? ".00" : ".0") + std::to_string(c);
}

std::vector<std::vector<std::string>> archive_frames(const std::vector<std::string>& lines, int natoms,
                                                     int max_frames) {
    std::vector<std::vector<std::string>> frames;
    if (natoms < 1) return frames;
    const std::size_t per_frame = static_cast<std::size_t>(natoms) + 1;
    for (std::size_t at = 0; at + per_frame <= lines.size() && static_cast<int>(frames.size()) < max_frames;
         at += per_frame)
        frames.emplace_back(lines.begin() + static_cast<long>(at), lines.begin() + static_cast<long>(at + per_frame));
    return frames;
}

int cut_archive(const std::string& archive, const std::string& job, int natoms) {
    auto lines = files::read_lines(archive);
    if (!lines) return 0;
    const auto frames = archive_frames(*lines, natoms);
    for (std::size_t k = 0; k < frames.size(); ++k) files::write_lines(frame_name(job, static_cast<int>(k) + 1), frames[k]);
    return static_cast<int>(frames.size());
}

std::vector<std::string> frame_files(const std::string& job) {
    std::vector<std::string> names = files::list(".", job + ".0*");
    std::sort(names.begin(), names.end());
    if (names.size() > 99) names.resize(99);
    return names;
}

void keep_job_labels(Store& st, int natoms_before, const std::vector<Label>& labels_before) {
    if (st.natoms != natoms_before || static_cast<int>(labels_before.size()) <= natoms_before) return;
    for (int i = 1; i <= st.natoms; ++i)
        if (element_symbol(label_text(st.atom_label[i])) != element_symbol(label_text(labels_before[static_cast<std::size_t>(i)])))
            return;
    for (int i = 1; i <= st.natoms; ++i) st.atom_label[i] = labels_before[static_cast<std::size_t>(i)];
}

std::string energy_status_text(double energy) { return text::format_f(energy, 15, 2) + " kcal/mol"; }

std::string energy_log_line(double energy) {
    const float e = static_cast<float>(energy);
    return " Tinker energy = " + text::format_f(e, 15, 5) + " kcal/mol" + text::format_f(e * 4.184f, 15, 5) + " kJ/mol";
}

double minimize_run(Session& s) {
    refresh_files(s);
    calculating(s);
    const TinkerNames names = prepare_tinker_run(s);
    const std::string program = s.tinker.tk_optimize > 0.5f ? "optimize" : "minimize";
    run_tinker(s, program, minimize_answers(names.told, s.tinker.tk_min_rms));
    take_result(s, names);
    blank_message(s);
    // Undefined parameters, an error or no energy: said, with the log's end.
    if (!check_tinker_run(s, program, kMinimizeResult)) return kNoTinkerEnergy;
    const double energy = final_function_value(log_lines());
    if (energy < -999.0) return energy;
    s.tk.WindowOutStatusBar(status_message_field, energy_status_text(energy));
    log_line(s, energy_log_line(energy));
    return energy;
}

void analyze_run(Session& s) {
    write_job_files(s);
    calculating(s);
    const char qualifier = static_cast<char>(std::clamp(std::lround(s.tinker.tk_qualifier), 32L, 126L));
    run_tinker(s, "analyze", analyze_answers(prepare_tinker_run(s).told, qualifier));
    blank_message(s);
    // E and A print the total energy; the other analyses only their tables.
    const char q = static_cast<char>(std::toupper(static_cast<unsigned char>(qualifier)));
    check_tinker_run(s, "analyze", q == 'E' || q == 'A' ? kEnergyResult : std::vector<std::string>{});
}

void spacefill_run(Session& s) {
    Toolkit& tk = s.tk;
    tk.WDialogLoad(108);
    tk.WDialogPutRadioButton(1051);
    tk.WDialogPutCheckBox(1031, 1);
    tk.WDialogPutReal(1071, 1.4);
    tk.WDialogShow(1);
    const bool ok = tk.last_button() == 1;
    const int kind = std::max(1, tk.WDialogGetRadioButton(1051));
    const float probe = static_cast<float>(tk.WDialogGetReal(1071));
    tk.WDialogUnload();
    if (!ok) return;
    write_job_files(s);
    run_tinker(s, "spacefill", spacefill_answers(prepare_tinker_run(s).told, kind, probe), spacefill_answer_file_name);
    tk.WindowOutStatusBar(status_message_field, "Calculating");
    blank_message(s);
    check_tinker_run(s, "spacefill", kSpacefillResult);
}

namespace {

// The key file sets a periodic box: Tinker offers the constant-pressure
// simulations only then ("a-axis 30.0" and friends).
bool key_defines_box(const Session& s) {
    for (const std::string& line : files::read_lines(job_file(s, ".key")).value_or(std::vector<std::string>{})) {
        const std::string_view t = text::trim(line);
        const std::string_view word = t.substr(0, t.find_first_of(" \t"));
        if (text::equals_nocase(word, "a-axis")) return true;
    }
    return false;
}

constexpr char kNoBoxMessage[] =
    "Simulation types 3 and 4 keep the pressure constant and need a periodic box,\r"
    "which the key file does not set (a line \"a-axis\" with the box edge in Angstrom).\r"
    "Choose type 1 or 2, or add the box with Edit.KEY.";

bool show_dynamics_options(Session& s) {
    Toolkit& tk = s.tk;
    TinkerSettings& t = s.tinker;
    tk.WDialogLoad(109);
    tk.WDialogPutInteger(1101, std::lround(t.tk_dyn_steps));
    tk.WDialogPutReal(1071, t.tk_dyn_step);
    tk.WDialogPutReal(1008, t.tk_dyn_dump);
    tk.WDialogPutInteger(1102, std::lround(t.tk_dyn_type));
    tk.WDialogPutReal(1073, t.tk_dyn_temp);
    tk.WDialogPutReal(1074, t.tk_curve);
    tk.WDialogShow(1);
    const bool ok = tk.last_button() == 1;
    if (ok) {
        t.tk_dyn_steps = static_cast<float>(tk.WDialogGetInteger(1101));
        t.tk_dyn_step = static_cast<float>(tk.WDialogGetReal(1071));
        t.tk_dyn_dump = static_cast<float>(tk.WDialogGetReal(1008));
        t.tk_dyn_type = static_cast<float>(tk.WDialogGetInteger(1102));
        t.tk_dyn_temp = static_cast<float>(tk.WDialogGetReal(1073));
        t.tk_curve = static_cast<float>(tk.WDialogGetReal(1074));
    }
    tk.WDialogUnload();
    return ok;
}

// Dialog 109 until its values can run: without a periodic box Tinker would
// read the pressure as a menu choice and run out of answers, so types 3
// and 4 are refused with a word and the dialog comes again.
bool ask_dynamics_options(Session& s) {
    while (show_dynamics_options(s)) {
        const long type = std::lround(s.tinker.tk_dyn_type);
        if ((type != 3 && type != 4) || key_defines_box(s)) return true;
        s.tk.WMessageBox(kButtonsOk, MessageIcon::Exclamation, 1, kNoBoxMessage, "DYNAMICS Options");
    }
    return false;
}

enum class Pass { Good, Failed, LeaveMode };

// Anneal steps 1 to 4: the run and its frames shown; `ask` offers replays.
// A run without frames is told and shows nothing.
Pass anneal_pass(Session& s, bool ask) {
    const int delay = static_cast<int>(s.tinker.tk_movie_delay);
    refresh_files(s);
    // Tinker appends to an archive that is there: each run starts a new one.
    delete_frames(s, restart_is_stale(s));
    calculating(s);
    run_tinker(s, "anneal", anneal_answers(prepare_tinker_run(s).told, s.tinker));
    if (!check_tinker_run(s, "anneal", kTrajectoryResult)) {
        blank_message(s);
        return Pass::Failed;
    }
    const std::vector<std::string> frames = run_frames(s);
    if (frames.empty()) return Pass::Good;
    s.flags.sphere_slices = 8;
    const bool ok = replay(s, frames, delay, "Anneal Failure", ask);
    s.flags.sphere_slices = 32;
    if (ok) draw_scene(s);
    return ok ? Pass::Good : Pass::LeaveMode;
}

}  // namespace

bool dynamics_run(Session& s) {
    refresh_files(s);
    delete_frames(s, restart_is_stale(s));
    if (!ask_dynamics_options(s)) return true;
    calculating(s);
    run_tinker(s, "dynamic", dynamic_answers(prepare_tinker_run(s).told, s.tinker));
    if (!check_tinker_run(s, "dynamic", kTrajectoryResult)) {
        blank_message(s);
        return true;
    }
    const std::vector<std::string> frames = run_frames(s);
    if (!frames.empty() && !replay(s, frames, 25, "Dynamics Failure", true)) return false;
    finish_trajectory(s);
    return true;
}

bool anneal_run(Session& s) {
    const Pass pass = anneal_pass(s, true);
    if (pass == Pass::LeaveMode) return false;
    if (pass == Pass::Good) finish_trajectory(s);
    return true;
}

bool auto_anneal(Session& s) {
    TinkerSettings& t = s.tinker;
    const int top = static_cast<int>(std::lround(t.tk_auto_cycles)) + 1;
    log_line(s, " Auto Anneal");
    while (t.tk_auto_cycles > 0.5f) {
        log_line(s, time_stamp());
        const int cycle = top - static_cast<int>(std::lround(t.tk_auto_cycles));
        s.tk.WindowOutStatusBar(status_cycle_field, text::format_i(cycle, 3));
        log_line(s, "Cycle" + text::format_i(cycle, 4));
        const Pass pass = anneal_pass(s, false);
        if (pass == Pass::LeaveMode) return false;
        if (pass == Pass::Failed) return true;
        t.tk_dyn_stale = 0.0f;
        t.tk_dyn_done = 1.0f;
        // The minimised structure is not where the trajectory ended: the
        // next cycle's anneal starts from it, not from job.dyn.
        const double energy = minimize_run(s);
        s.tk.WindowOutStatusBar(status_cycle_field, text::format_i(cycle, 3));
        if (energy < -999.0) return true;
        t.tk_auto_cycles -= 1.0f;
    }
    log_line(s, time_stamp());
    clear_status_results(s);
    return true;
}

void vibrate_run(Session& s) {
    delete_frames(s, true);
    write_job_files(s);
    calculating(s);
    run_tinker(s, "vibrate", vibrate_answers(prepare_tinker_run(s).told, s.tinker.tk_vib_number));
    blank_message(s);
    if (!check_tinker_run(s, "vibrate", kVibrateResult)) return;
    if (vibrate_succeeded(log_lines())) tinker_movie(s);
}

}  // namespace zentol
