#include "spectra/orca_replay.h"

#include <memory>

#include "engines/runner.h"
#include "session/session.h"
#include "session/store_ops.h"
#include "text/fixed_format.h"
#include "toolkit/files.h"
#include "toolkit/toolkit.h"

namespace zentol {

namespace {

constexpr int kFramesPerPlay = 20;
constexpr int kMaxRows = 100;

// The numbers after the first word of a record.
std::optional<std::vector<double>> after_first_word(std::string_view r, int count) {
    std::size_t i = r.find_first_not_of(' ');
    if (i == std::string_view::npos) return std::nullopt;
    i = r.find(' ', i);
    if (i == std::string_view::npos) return std::nullopt;
    auto v = text::read_reals(r.substr(i), count);
    if (!v || static_cast<int>(v->size()) < count) return std::nullopt;
    return v;
}

void put_coordinates(Store& st, const TrajectoryFrame& frame) {
    for (int i = 1; i <= st.natoms && i <= static_cast<int>(frame.size()); ++i)
        for (int k = 0; k < 3; ++k) st.atom_rec[i][k] = frame[i - 1][k];
}

void show(Session& s) {
    prepare_display(s);
    project_atoms(s);
    draw_scene(s);
}

// The molecule and its picture as they stood before the replay, turned
// as the user had turned them.
void restore(Session& s, const Store& backup) {
    s.store = backup;
    project_atoms(s);
    draw_scene(s);
}

// Which frames of a play move on the screen. Raman shows frames 5 to 16.
// IR tests the atom count instead of the frame, so only a molecule of 4 to
// 15 atoms moves; that difference between the two is kept as it is.
bool drawn(int kind, int frame, int natoms) {
    if (kind == 2) return frame >= 5 && frame <= 16;
    return natoms + 1 >= 5 && natoms + 1 <= 16;
}

void play(Session& s, int kind, const std::vector<TrajectoryFrame>& frames) {
    for (int round = 1; round <= (kind == 2 ? 3 : 2); ++round) {
        for (std::size_t f = 0; f < frames.size(); ++f) {
            put_coordinates(s.store, frames[f]);
            if (!drawn(kind, static_cast<int>(f) + 1, s.store.natoms)) continue;
            s.tk.wait_hundredths(10);
            show(s);
        }
    }
}

// The dialog until Cancel: the chosen row, or 0 on Cancel.
int choose_row(Session& s, const std::vector<std::string>& texts, int last) {
    Toolkit& tk = s.tk;
    tk.WDialogLoad(117);
    tk.WDialogPutMenu(1085, texts, texts.empty() ? 0 : std::max(1, last));
    tk.WDialogPutInteger(1101, 5);
    tk.WDialogPutCheckBox(1031, 0);
    tk.WDialogShow(1);
    const bool ok = tk.last_button() == 1;
    const int row = tk.WDialogGetMenu(1085);
    tk.WDialogUnload();
    return ok ? std::max(row, 0) : -1;
}

}  // namespace

std::vector<VibrationRow> read_vibration_rows(const text::TextLines& sticks) {
    std::vector<VibrationRow> rows;
    for (std::size_t r = 3; r < sticks.size() && rows.size() < kMaxRows; ++r) {
        if (sticks[r].substr(0, 5) == "  END") break;
        auto v = text::read_reals(sticks[r], 3);
        if (!v || v->size() < 2) break;
        rows.push_back({(*v)[0], (*v)[1], v->size() > 2 ? static_cast<int>((*v)[2]) : 0});
    }
    return rows;
}

std::string vibration_row_text(const VibrationRow& row, int n) {
    return text::format_f(row.frequency, 9, 2) + text::format_f(row.intensity, 15, 5) + text::format_i(n, 5);
}

int replay_mode(const std::vector<VibrationRow>& rows, int chosen) {
    if (chosen >= 1 && chosen <= static_cast<int>(rows.size()) && rows[chosen - 1].mode > 0)
        return rows[chosen - 1].mode;
    return chosen + 5;
}

std::string trajectory_file(const std::string& job, int mode) {
    const std::string n = std::to_string(std::max(0, mode));
    return job + ".hess.v" + std::string(n.size() < 3 ? 3 - n.size() : 0, '0') + n + ".xyz";
}

std::vector<TrajectoryFrame> read_trajectory(const text::TextLines& file, int natoms, bool& complete) {
    std::vector<TrajectoryFrame> frames;
    std::size_t at = 0;
    complete = false;
    while (frames.size() < kFramesPerPlay) {
        // A count record and a comment record, then one record an atom.
        if (at + 2 + natoms > file.size()) return frames;
        TrajectoryFrame frame;
        for (int i = 0; i < natoms; ++i) {
            auto v = after_first_word(file[at + 2 + i], 3);
            if (!v) return frames;
            frame.push_back({static_cast<float>((*v)[0]), static_cast<float>((*v)[1]), static_cast<float>((*v)[2])});
        }
        frames.push_back(std::move(frame));
        at += 2 + natoms;
    }
    complete = true;
    return frames;
}

void orca_replay(Session& s, int kind) {
    auto sticks = files::read_text_lines(job_file(s, kind == 2 ? "_ra.lst" : "_ir.lst"));
    if (!sticks) return;
    const std::vector<VibrationRow> rows = read_vibration_rows(*sticks);
    std::vector<std::string> texts;
    for (std::size_t k = 0; k < rows.size(); ++k) texts.push_back(vibration_row_text(rows[k], static_cast<int>(k) + 1));
    const auto backup = std::make_unique<Store>(s.store);
    int row = 1;
    while ((row = choose_row(s, texts, row)) >= 0) {
        auto file = files::read_text_lines(trajectory_file(s.job.name, replay_mode(rows, row)));
        bool complete = false;
        const auto frames = file ? read_trajectory(*file, s.store.natoms, complete) : std::vector<TrajectoryFrame>{};
        // A missing or broken IR trajectory stops the replay; a Raman one
        // plays what it has.
        if (!file || (kind == 1 && !complete)) {
            restore(s, *backup);
            s.tk.WMessageBox(kButtonsOk, MessageIcon::Exclamation, 1, "Check LST file to troubleshoot", "Orca");
            return;
        }
        s.tk.WindowOutStatusBar(status_message_field, "Animating Vibrations");
        play(s, kind, frames);
        restore(s, *backup);
        s.tk.WindowOutStatusBar(status_message_field, " ");
    }
}

}  // namespace zentol
