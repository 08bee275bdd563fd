#include "engines/tinker/undefined_params.h"

#include <algorithm>
#include <cmath>

#include "engines/runner.h"
#include "engines/tinker/tinker_log.h"
#include "session/jobs.h"
#include "session/session.h"
#include "text/fixed_format.h"
#include "toolkit/files.h"
#include "toolkit/toolkit.h"

namespace zentol {

namespace {

constexpr int kMaxRows = 20;

// The rows of Tinker 26 are laid out by words, not by the columns older
// versions used:
//   " 4-Ring          1-B       2-C            26   56"
//   " Angle-OP        4-C       1-B       2-C       5-C          56   26   56    2"
// so a row is read as its type, the atoms ("1-B" gives atom 1) and the
// trailing class numbers.
UndefinedRow parse_row(const std::string& line) {
    UndefinedRow row;
    std::vector<std::string> words;
    std::size_t at = 0;
    while ((at = line.find_first_not_of(' ', at)) != std::string::npos) {
        const std::size_t end = line.find(' ', at);
        words.push_back(line.substr(at, end == std::string::npos ? std::string::npos : end - at));
        at = end;
    }
    if (words.empty()) return row;
    row.type = words[0];
    for (std::size_t k = 1; k < words.size(); ++k) {
        const std::size_t dash = words[k].find('-');
        if (dash != std::string::npos) {
            if (auto n = text::read_i(words[k].substr(0, dash)); n && row.natoms < 4) row.atoms[row.natoms++] = int(*n);
        } else if (auto n = text::read_i(words[k]); n && row.nclasses < 4) {
            row.classes[row.nclasses++] = int(*n);
        }
    }
    return row;
}

int kind_of(const std::string& type) { return type.rfind("4-Ri", 0) == 0 ? 2 : type.rfind("5-Ri", 0) == 0 ? 3 : 1; }

std::string described(const Store& st, const UndefinedRow& r, int n) {
    std::string d;
    for (int k = 0; k < n; ++k) {
        const int a = std::clamp(r.atoms[k], 0, kMaxAtoms);
        if (k) d += ")   ";
        d += label_text(st.atom_label[a]) + " (" + text::format_i(st.conn_type(a), 4);
    }
    return d + ")";
}

float distance(const Store& st, int a, int b) {
    float s = 0;
    for (int c = kX; c <= kZ; ++c) s += std::pow(st.atom_rec[a][c] - st.atom_rec[b][c], 2.0f);
    return std::sqrt(s);
}

float angle_at(const Store& st, int a, int b, int c) {
    const float ab = distance(st, a, b), bc = distance(st, b, c), ac = distance(st, a, c);
    if (ab == 0 || bc == 0) return 0;
    return std::acos(std::clamp((ab * ab + bc * bc - ac * ac) / (2 * ab * bc), -1.0f, 1.0f)) * 57.29578f;
}

// Dialog 118 for one entry; false when cancelled, and the entry is skipped.
bool ask(Session& s, const std::string& title, const std::string& description, float value, float force,
         bool has_value, float& value_out, float& force_out) {
    Toolkit& tk = s.tk;
    tk.WDialogLoad(118);
    tk.WDialogPutString(1002, title);
    tk.WDialogPutString(1018, description);
    tk.WDialogPutReal(1071, value);
    tk.WDialogFieldState(1071, has_value ? 1 : 0);
    tk.WDialogPutReal(1008, force);
    tk.WDialogShow(1);
    const bool ok = tk.last_button() == 1;
    value_out = static_cast<float>(tk.WDialogGetReal(1071));
    force_out = static_cast<float>(tk.WDialogGetReal(1008));
    tk.WDialogUnload();
    return ok;
}

const char* kind_suffix(int kind) { return kind == 2 ? "4" : kind == 3 ? "5" : ""; }
const char* title_prefix(int kind) { return kind == 2 ? "4-" : kind == 3 ? "5-" : ""; }

}  // namespace

std::vector<UndefinedBlock> scan_undefined(const std::vector<std::string>& log) {
    std::vector<UndefinedBlock> blocks;
    const bool shift = log_shift(log);
    for (std::size_t i = 0; i < log.size(); ++i) {
        const std::string line = shifted(log[i], shift);
        if (line.rfind("Undefined", 0) != 0) continue;
        UndefinedBlock b;
        b.kind = line.rfind("Undefined Atom", 0) == 0            ? UndefinedKind::Atom
                 : line.rfind("Undefined Angle Bending P", 0) == 0 ? UndefinedKind::Angle
                 : line.rfind("Undefined Out-of-Plane Be", 0) == 0 ? UndefinedKind::OutOfPlane
                 : line.rfind("Undefined Torsional Param", 0) == 0 ? UndefinedKind::Torsion
                                                                    : UndefinedKind::Bond;
        // The first row stands four lines below the heading; a blank line
        // ends the table.
        for (std::size_t k = i + 4; k < log.size() && !text::trim(log[k]).empty(); ++k) {
            UndefinedRow r = parse_row(shifted(log[k], shift));
            if (static_cast<int>(b.rows.size()) < kMaxRows) b.rows.push_back(r);
            else b.rows.back() = r;   // a longer table overwrites its last row
        }
        blocks.push_back(std::move(b));
    }
    return blocks;
}

void normalise(UndefinedRow& r, int width) {
    if (width == 2 && r.classes[0] > r.classes[1]) std::swap(r.classes[0], r.classes[1]);
    if (width == 3 && r.classes[0] > r.classes[2]) std::swap(r.classes[0], r.classes[2]);
    if (width == 4 && r.classes[0] > r.classes[3]) {
        std::reverse(r.classes, r.classes + 4);
        std::reverse(r.atoms, r.atoms + 4);
    }
}

std::vector<UndefinedRow> distinct_rows(std::vector<UndefinedRow> rows, int width) {
    std::vector<UndefinedRow> out;
    for (UndefinedRow& r : rows) {
        normalise(r, width);
        const bool seen = std::any_of(out.begin(), out.end(), [&](const UndefinedRow& o) {
            return kind_of(o.type) == kind_of(r.type) && std::equal(o.classes, o.classes + width, r.classes);
        });
        if (!seen && r.classes[0] != 0) out.push_back(r);
    }
    return out;
}

std::string bond_key_line(int kind, int type_a, int type_b, float force, float length) {
    return text::pad_right(std::string("bond") + kind_suffix(kind), 10) + text::format_i(type_a, 5) +
           text::format_i(type_b, 5) + "    " + text::format_f(force, 11, 4) + text::format_f(length, 11, 4);
}

std::string angle_key_line(int kind, const int types[3], float force, float angle) {
    return text::pad_right(std::string("angle") + kind_suffix(kind), 10) + text::format_i(types[0], 5) +
           text::format_i(types[1], 5) + text::format_i(types[2], 5) + text::format_f(force, 10, 3) +
           text::format_f(angle, 11, 3);
}

std::string opbend_key_line(const int classes[4], float force) {
    std::string l = text::pad_right("opbend", 9);
    for (int k = 0; k < 4; ++k) l += text::format_i(classes[k], 5);
    return l + text::format_f(force, 6, 2);
}

std::string torsion_key_line(int kind, const int classes[4]) {
    std::string l = text::pad_right(std::string("torsion") + kind_suffix(kind), 9);
    for (int k = 0; k < 4; ++k) l += text::format_i(classes[k], 5);
    return l + "      0.000 0.0 1    0.000 180.0 2    0.000 0.0";
}

namespace {

void key_lines_for(Session& s, const UndefinedBlock& b, std::vector<std::string>& key, bool& changed) {
    const Store& st = s.store;
    float value = 0, force = 0;
    auto type = [&](int atom) { return st.conn_type(std::clamp(atom, 0, kMaxAtoms)); };
    auto in_range = [&](const UndefinedRow& r, int n) {
        for (int k = 0; k < n; ++k)
            if (r.atoms[k] < 1 || r.atoms[k] > st.natoms) return false;
        return true;
    };
    if (b.kind == UndefinedKind::Bond)
        for (const UndefinedRow& r : distinct_rows(b.rows, 2)) {
            const int kind = kind_of(r.type);
            if (!in_range(r, 2)) continue;
            if (ask(s, std::string(title_prefix(kind)) + "Bond-Stretch", described(st, r, 2),
                    distance(st, r.atoms[0], r.atoms[1]), 10.0f, true, value, force))
                key.push_back(bond_key_line(kind, type(r.atoms[0]), type(r.atoms[1]), force, value));
        }
    if (b.kind == UndefinedKind::Angle)
        for (const UndefinedRow& r : distinct_rows(b.rows, 3)) {
            const int kind = kind_of(r.type);
            if (!in_range(r, 3)) continue;
            const int types[3] = {type(r.atoms[0]), type(r.atoms[1]), type(r.atoms[2])};
            if (ask(s, std::string(title_prefix(kind)) + "Angle-Bend", described(st, r, 3),
                    angle_at(st, r.atoms[0], r.atoms[1], r.atoms[2]), 1.0f, true, value, force))
                key.push_back(angle_key_line(kind, types, force, value));
        }
    if (b.kind == UndefinedKind::OutOfPlane && !b.rows.empty() && in_range(b.rows[0], 4)) {
        changed = true;
        if (ask(s, "Angle-OP", described(st, b.rows[0], 4), 0.0f, 0.0f, false, value, force))
            key.push_back(opbend_key_line(b.rows[0].classes, force));
    }
    if (b.kind == UndefinedKind::Torsion) {
        for (const UndefinedRow& r : distinct_rows(b.rows, 4)) key.push_back(torsion_key_line(kind_of(r.type), r.classes));
        changed = true;
    }
}

}  // namespace

void undefined_parameters_command(Session& s) {
    auto log = files::read_lines(log_file_name);
    if (!log || log->size() < 5) return;
    const std::vector<UndefinedBlock> blocks = scan_undefined(*log);
    std::vector<std::string> key = files::read_lines(job_file(s, ".key")).value_or(std::vector<std::string>{});
    bool changed = false;
    for (const UndefinedBlock& b : blocks) {
        if (b.kind == UndefinedKind::Atom) {
            tell(s, {"The Structure contains Undefined Atom(s)", "Use Edit.LOG to Examine the Undefined items",
                     "You may be able to copy from an existing type", "or create a suitable new type"});
            return;
        }
        key_lines_for(s, b, key, changed);
    }
    if (blocks.empty()) return;
    files::write_lines(job_file(s, ".key"), key);
    if (changed) tell(s, {"All Undefined Torsions set to 0, key File Updated"});
}

}  // namespace zentol
