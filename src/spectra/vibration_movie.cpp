#include "spectra/vibration_movie.h"

#include <algorithm>

#include "engines/runner.h"
#include "session/session.h"
#include "session/store_ops.h"
#include "structure_files/ins_file.h"
#include "text/fixed_format.h"
#include "toolkit/files.h"
#include "toolkit/toolkit.h"

namespace zentol {

namespace {

constexpr int kDialog = 117;
constexpr int kModeField = 1085, kAmplitudeField = 1101, kStepsField = 1031;
constexpr int kCycles = 4;
constexpr int kFrameDelay = 5;   // hundredths of a second

struct Choice {
    int row = 0;
    int amplitude = 5;
};

// Dialog 117; row 0 when it was cancelled.
Choice ask_mode(Toolkit& tk, const std::vector<std::string>& rows) {
    tk.WDialogLoad(kDialog);
    tk.WDialogPutMenu(kModeField, rows, 1);
    tk.WDialogPutInteger(kAmplitudeField, 5);
    tk.WDialogPutCheckBox(kStepsField, 0);
    tk.WDialogShow(1);
    Choice c;
    if (tk.last_button() == 1) {
        c.row = tk.WDialogGetMenu(kModeField);
        c.amplitude = static_cast<int>(std::clamp<long long>(tk.WDialogGetInteger(kAmplitudeField), 1, 10));
    }
    tk.WDialogUnload();
    if (c.row < 1 || c.row > static_cast<int>(rows.size())) c.row = 0;
    return c;
}

void show_frame(Session& s) {
    prepare_display(s);
    draw_scene(s);
    s.tk.wait_hundredths(kFrameDelay);
}

// The four cycles; the frames of the first one written as MVnn.INS.
void play(Session& s, const VibrationMode& mode, int divisor) {
    Store& st = s.store;
    const int atoms = std::min(st.natoms, static_cast<int>(mode.displacement.size()));
    const std::vector<int> steps = cycle_steps();
    for (int cycle = 0; cycle < kCycles; ++cycle) {
        for (std::size_t f = 0; f < steps.size(); ++f) {
            const double factor = static_cast<double>(steps[f]) / divisor;
            for (int i = 1; i <= atoms; ++i)
                for (int c = 0; c < 3; ++c)
                    st.atom_rec[i][c] += static_cast<float>(factor * mode.displacement[static_cast<std::size_t>(i - 1)][c]);
            show_frame(s);
            if (cycle == 0) files::write_atomic(movie_frame_name(static_cast<int>(f) + 1), format_ins(st, s.job.name));
        }
    }
}

void offer_copy(Session& s) {
    if (s.tk.WMessageBox(kButtonsYesNo, MessageIcon::Question, 1, "Save movie files to another folder?", "Movie") != 1)
        return;
    std::string dir = files::current_dir();
    if (!s.tk.WSelectDir(dir, "Select a DIR for movie files") || dir.empty()) return;
    files::remove(dir + "/MV*.INS");
    std::vector<std::string> failed;
    for (const std::string& name : files::list(files::current_dir(), "MV*.INS"))
        if (!files::copy(name, dir + "/" + name)) failed.push_back(name);
    if (!failed.empty())
        s.tk.WMessageBox(kButtonsOk, MessageIcon::Exclamation, 1,
                         "Could not copy " + failed.front() + " to\r" + dir, "Movie");
}

}  // namespace

bool movie_atom_limit_ok(Session& s) {
    if (s.store.natoms <= kMovieAtomLimit) return true;
    s.tk.WMessageBox(kButtonsOk, MessageIcon::Exclamation, 1, "The atom limit for animation is 35", "Movie");
    return false;
}

std::vector<std::string> movie_rows(const std::vector<VibrationMode>& modes) {
    std::vector<std::string> rows;
    for (std::size_t k = 0; k < modes.size() && k < static_cast<std::size_t>(kMovieListRows); ++k)
        rows.push_back(text::format_f(modes[k].frequency, 9, 2) + text::format_f(modes[k].intensity, 10, 5) +
                       text::format_i(static_cast<long long>(k + 1), 5));
    return rows;
}

int movie_divisor(int amplitude) { return 155 - 8 * std::clamp(amplitude, 1, 10); }

std::vector<int> cycle_steps() {
    std::vector<int> steps;
    for (int quarter = 0; quarter < 4; ++quarter)
        for (int k = 1; k <= 10; ++k) steps.push_back(quarter == 0 || quarter == 3 ? k : -k);
    return steps;
}

std::string movie_frame_name(int frame) {
    return "MV" + std::string(frame < 10 ? "0" : "") + std::to_string(frame) + ".INS";
}

std::vector<VibrationMode> modes_in_molecule_frame(const Session& s, std::vector<VibrationMode> modes,
                                                   const std::vector<Point3>& engine_atoms) {
    const Store& st = s.store;
    if (static_cast<int>(engine_atoms.size()) != st.natoms) return modes;
    std::vector<Point3> here;
    for (int i = 1; i <= st.natoms; ++i) here.push_back({st.atom_rec[i][kX], st.atom_rec[i][kY], st.atom_rec[i][kZ]});
    const Matrix3 r = best_rotation(engine_atoms, here);
    for (VibrationMode& m : modes)
        for (Point3& d : m.displacement) d = rotate(r, d);
    return modes;
}

void play_vibration_movie(Session& s, const std::vector<VibrationMode>& modes, const std::vector<Point3>& engine_atoms) {
    const Choice choice = ask_mode(s.tk, movie_rows(modes));
    if (choice.row == 0) return;
    s.tk.WindowOutStatusBar(status_message_field, "Animating Vibrations");
    files::remove("MV*.INS");
    // The molecule as it is shown is the one that moves, with the engine's
    // displacements turned into its frame; it is put back afterwards
    // exactly as it was.
    s.flags.view_action = 10;
    prepare_display(s);
    const std::vector<std::array<float, 6>> backup(s.store.atom_rec.begin(), s.store.atom_rec.end());
    const VibrationMode mode = modes_in_molecule_frame(s, {modes[static_cast<std::size_t>(choice.row - 1)]},
                                                       engine_atoms)[0];
    play(s, mode, movie_divisor(choice.amplitude));
    s.flags.movie_made = true;
    std::copy(backup.begin(), backup.end(), s.store.atom_rec.begin());
    prepare_display(s);
    draw_scene(s);
    offer_copy(s);
    s.tk.WindowOutStatusBar(status_message_field, " ");
}

}  // namespace zentol
