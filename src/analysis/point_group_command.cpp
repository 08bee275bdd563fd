#include "analysis/point_group_command.h"

#include <cmath>

#include "engines/runner.h"
#include "session/openers.h"
#include "session/session.h"
#include "session/store_ops.h"
#include "structure_files/geo_log.h"
#include "structure_files/ins_file.h"
#include "structure_files/xyz_file.h"
#include "text/fixed_format.h"
#include "toolkit/files.h"
#include "toolkit/toolkit.h"

namespace zentol {

std::optional<PointGroupAnswer> read_point_group_answer(const std::vector<std::string>& lines) {
    for (const std::string& line : lines) {
        if (text::count_words(line) < 2) continue;
        PointGroupAnswer a;
        a.group = text::pad_right(line.substr(0, std::min<std::size_t>(7, line.size())), 7);
        const std::string rest = line.size() > 7 ? line.substr(7) : "";
        auto value = text::read_reals(rest, 1);
        a.deviation = value && !value->empty() ? std::fabs((*value)[0]) : 0.0;
        if (a.deviation > 0.91) a.deviation = 0.9;
        return a;
    }
    return std::nullopt;
}

std::string point_group_text(const PointGroupAnswer& a) {
    return "Point Group = " + a.group + text::format_f(a.deviation, 8, 4);
}

std::vector<std::array<double, 3>> read_symmetrised(const std::vector<std::string>& lines, int natoms) {
    std::vector<std::array<double, 3>> rows;
    for (int i = 1; i <= natoms && i <= static_cast<int>(lines.size()); ++i) {
        std::string line = lines[static_cast<std::size_t>(i - 1)];
        line.replace(0, std::min<std::size_t>(6, line.size()), std::string(std::min<std::size_t>(6, line.size()), ' '));
        auto xyz = text::read_reals(line, 3);
        if (!xyz || xyz->size() < 3) break;
        rows.push_back({(*xyz)[0], (*xyz)[1], (*xyz)[2]});
    }
    return rows;
}

void point_group_command(Session& s) {
    if (s.store.natoms <= 2) return;
    write_job_files(s);
    s.tk.WindowOutStatusBar(9, "Calculating");
    const std::string program = engine_command(s, "symmol");
    if (program.empty()) {
        s.tk.WindowOutStatusBar(9, " ");
        return tell_missing(s, "The point-group program", "symmol");
    }
    // One run does both steps: the symmetry search and the alignment.
    run_blocking(s, shell_line(program, {}));
    auto aligned = files::read_lines("MOL_AL.TXT");
    if (!aligned) return;
    const bool molecule_aligned = !aligned->empty() && (*aligned)[0].rfind("  The molecule", 0) == 0;
    auto out = files::read_lines("SYMMOL.OUT");
    auto answer = out ? read_point_group_answer(*out) : std::nullopt;
    if (!answer) return;
    s.flags.symmetry_found = answer->group.rfind("C1", 0) != 0;
    if (molecule_aligned) {
        const std::string text = point_group_text(*answer);
        s.tk.WindowOutStatusBar(9, text);
        log_line(s, text);
    }
    files::copy("SYMMOL.LST", "ZENTOL.LOG");
    for (const char* name : {"MOL_AL.TXT", "SYMMOL.LST", "SYMMOL.OUT", "SYMMOL.INP"}) files::remove(name);
}

void align_to_symmetry(Session& s) {
    if (!s.flags.symmetry_found) return;
    auto lines = files::read_lines("SYMMETRZ.OUT");
    if (!lines) return;
    Store& st = s.store;
    const auto rows = read_symmetrised(*lines, st.natoms);
    // Half an alignment would tear the molecule apart: every atom or none.
    if (static_cast<int>(rows.size()) != st.natoms) {
        s.tk.WMessageBox(kButtonsOk, MessageIcon::Exclamation, 1,
                         "SYMMETRZ.OUT gives coordinates for " + std::to_string(rows.size()) + " of the " +
                             std::to_string(st.natoms) + " atoms.\rThe molecule is left as it was.",
                         "Align");
        return;
    }
    for (int i = 1; i <= static_cast<int>(rows.size()); ++i) {
        const auto& xyz = rows[static_cast<std::size_t>(i - 1)];
        const float y = static_cast<float>(xyz[1]), z = static_cast<float>(xyz[2]);
        st.atom_rec[i][kX] = static_cast<float>(xyz[0]);
        // A turn of 2 degrees about x, so that nothing lies exactly edge-on.
        st.atom_rec[i][kY] = 0.99939084f * y - 0.0348995f * z;
        st.atom_rec[i][kZ] = 0.0348995f * y + 0.99939084f * z;
    }
    save_and_reload(s);
    s.tk.WindowOutStatusBar(9, "View down principal axis/symm op");
}

}  // namespace zentol
