#include "engines/tinker/atom_charges.h"

#include <algorithm>

#include "session/session.h"
#include "structure_files/geo_log.h"
#include "text/fixed_format.h"
#include "toolkit/files.h"
#include "toolkit/toolkit.h"

namespace zentol {

namespace {

constexpr std::size_t kKeyLinesSearched = 5000;
constexpr int kCommentDialog = 122;
constexpr int kCommentField = 1001;

}  // namespace

std::string charge_key_line(int atom, double charge) {
    return "CHARGE " + text::format_i(-atom, 5) + text::format_f(charge, 10, 4);
}

std::vector<std::string> charge_key_lines(const std::vector<std::string>& side_log, int natoms) {
    std::vector<std::string> out;
    for (int i = 1; i <= natoms && i < static_cast<int>(side_log.size()); ++i) {
        std::string line = side_log[static_cast<std::size_t>(i)];
        line.replace(0, std::min<std::size_t>(4, line.size()), std::min<std::size_t>(4, line.size()), ' ');
        auto value = text::read_reals(line, 1);
        if (!value || value->empty()) break;
        out.push_back(charge_key_line(i, (*value)[0]));
    }
    return out;
}

bool key_has_charges(const std::vector<std::string>& key) {
    const std::size_t n = std::min(key.size(), kKeyLinesSearched);
    for (std::size_t k = 0; k < n; ++k)
        if (key[k].compare(0, 6, "CHARGE") == 0) return true;
    return false;
}

void add_atom_charges(Session& s) {
    auto side_log = files::read_lines(job_file(s, "_chg.log"));
    if (!side_log) return;
    const std::string key_name = job_file(s, ".key");
    auto key = files::read_lines(key_name);
    if (!key || key_has_charges(*key)) return;
    for (std::string& line : charge_key_lines(*side_log, s.store.natoms)) key->push_back(std::move(line));
    files::write_lines(key_name, *key);
}

void add_comment(Session& s) {
    Toolkit& tk = s.tk;
    if (!tk.WDialogLoad(kCommentDialog)) return;
    tk.WDialogShow(1);
    const bool ok = tk.last_button() == 1;
    const std::string comment = tk.WDialogGetString(kCommentField);
    tk.WDialogUnload();
    if (!ok) return;
    log_line(s, "");
    log_line(s, (text::FreeRecord() << text::sanitise_text(comment)).str());
}

}  // namespace zentol
