#include "engines/tinker/tinker_movie.h"

#include <algorithm>
#include <cmath>
#include <memory>

#include "engines/runner.h"
#include "engines/tinker/tinker_decks.h"
#include "engines/tinker/tinker_outcome.h"
#include "session/job_files.h"
#include "session/session.h"
#include "session/store_ops.h"
#include "structure_files/ins_file.h"
#include "structure_files/xyz_file.h"
#include "text/fixed_format.h"
#include "toolkit/files.h"
#include "toolkit/process.h"
#include "toolkit/toolkit.h"

namespace zentol {

std::string vibration_frame_file(const std::string& job, int vibration) {
    const std::string n = std::to_string(std::clamp(vibration, 0, 999));
    return job + "." + std::string(3 - n.size(), '0') + n;
}

std::vector<std::string> movie_batch(const Session& s) {
    const std::string dir = tinker_dir(s);
    const std::string path = "PATH=\"$PATH\":" + process::shell_quote(dir.empty() ? "." : dir) + "; export PATH";
    return {path, path, shell_line(tinker_program(s, "vibrate"), {}, {answer_file_name, log_file_name}) + " 2>&1", " "};
}

namespace {

// The frames of the file, natoms + 1 lines each, shown one by one and
// kept as movie frames.
void play_frames(Session& s, const std::vector<std::string>& lines) {
    Store& st = s.store;
    const std::size_t per_frame = static_cast<std::size_t>(st.natoms) + 1;
    auto frame = std::make_unique<Store>();
    int number = 0;
    for (std::size_t at = 0; per_frame > 1 && at + per_frame <= lines.size() && number < 99; at += per_frame) {
        const std::vector<std::string> chunk(lines.begin() + static_cast<long>(at),
                                             lines.begin() + static_cast<long>(at + per_frame));
        int charge = 0, multiplicity = 1;
        if (parse_xyz(chunk, *frame, nullptr, charge, multiplicity) != kXyzRead || frame->natoms != st.natoms) break;
        for (int i = 1; i <= st.natoms; ++i)
            for (int c = kX; c <= kZ; ++c) st.atom_rec[i][c] = frame->atom_rec[i][c];
        prepare_display(s);
        draw_scene(s);
        s.tk.wait_hundredths(static_cast<int>(s.tinker.tk_movie_delay));
        ++number;
        files::write_atomic("MV" + std::string(number < 10 ? "0" : "") + std::to_string(number) + ".INS",
                            format_ins(st, s.job.name));
    }
}

}  // namespace

void tinker_movie(Session& s) {
    Toolkit& tk = s.tk;
    const std::string xyz = job_file(s, ".xyz"), backup = job_file(s, ".bak");
    // The movie plays over the job's structure: without a whole backup it
    // does not start.
    if (std::string why; !files::copy(xyz, backup, &why)) {
        tk.WMessageBox(kButtonsOk, MessageIcon::Stop, 1, "Cannot write " + backup + ":\r" + why + "\rNo movie.", "Tinker");
        return;
    }
    tk.WDialogLoad(105);
    tk.WDialogPutInteger(1101, std::lround(s.tinker.tk_vib_number));
    tk.WDialogPutReal(1071, 0.3);
    tk.WDialogShow(1);
    const bool ok = tk.last_button() == 1;
    const int vibration = std::min(999, static_cast<int>(tk.WDialogGetInteger(1101)));
    const float amplitude = static_cast<float>(tk.WDialogGetReal(1071));
    tk.WDialogUnload();
    if (!ok) return;
    s.tinker.tk_vib_number = static_cast<float>(vibration);
    tk.WindowOutStatusBar(status_message_field, "Animating");
    animate_answers(files::resolve(xyz), vibration, amplitude).save(answer_file_name);
    write_command_file(command_file_name, movie_batch(s));
    // Tinker never overwrites: the first run's frames would be read again.
    remove_frame_files(s.job.name);
    run_blocking(s, shell_line(command_file_name));
    files::remove("MV*.INS");
    s.flags.movie_made = true;
    if (check_tinker_run(s, "vibrate", kVibrateResult))
        if (auto frames = files::read_lines(vibration_frame_file(s.job.name, vibration))) play_frames(s, *frames);
    if (std::string why; !files::copy(backup, xyz, &why))
        tk.WMessageBox(kButtonsOk, MessageIcon::Stop, 1,
                       "Cannot write " + xyz + ":\r" + why + "\rThe structure before the movie is kept in " + backup,
                       "Tinker");
    int status = 0;
    read_job_xyz(s, status);
    save_and_reload(s);
    tk.WindowOutStatusBar(status_message_field, " ");
}

}  // namespace zentol
