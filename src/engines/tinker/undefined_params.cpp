#include "engines/tinker/undefined_params.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <optional>

#include "building/geometry.h"
#include "building/vec3.h"
#include "engines/runner.h"
#include "engines/tinker/tinker_log.h"
#include "session/molecule_store.h"
#include "session/session.h"
#include "text/fixed_format.h"
#include "toolkit/files.h"
#include "toolkit/toolkit.h"

namespace zentol {

const std::vector<std::string> kUndefinedAtomMessage = {
    "The Structure contains Undefined Atom(s)", "Use Edit.LOG to Examine the Undefined items",
    "You may be able to copy from an existing type", "or create a suitable new type"};
const char kUndefinedKeyUpdated[] = "All Undefined Torsions set to 0, key File Updated";

namespace {

constexpr int kDialog = 118;
constexpr int kTitleField = 1002, kCaptionField = 1005, kForceField = 1008, kDescriptionField = 1018,
              kValueField = 1071;
constexpr float kDegrees = 57.29578f;
constexpr double kAngleForceDefault = 1.0;

bool begins(const std::string& line, const char* key) { return line.rfind(key, 0) == 0; }

// A Fortran read of a short line sees blanks past its end.
bool begins_with_four_blanks(const std::string& line) {
    for (std::size_t k = 0; k < 4; ++k)
        if (k < line.size() && line[k] != ' ') return false;
    return true;
}

bool all_digits(const std::string& w) {
    return !w.empty() && std::all_of(w.begin(), w.end(), [](unsigned char c) { return std::isdigit(c) != 0; });
}

std::vector<std::string> words_of(const std::string& line) {
    std::vector<std::string> words;
    std::size_t at = 0;
    while ((at = line.find_first_not_of(' ', at)) != std::string::npos) {
        const std::size_t end = line.find(' ', at);
        words.push_back(line.substr(at, end == std::string::npos ? std::string::npos : end - at));
        at = end;
    }
    return words;
}

// Tinker 26 writes a row as its type, then each atom as number, '-' and
// name, then the classes (here as the shifted line, without the leading
// blank):
//   "4-Ring          1-B       2-C            26   56"
//   "Angle-OP        4-C       1-B       2-C       5-C          56   26   56    2"
// For two and three atoms that puts the numbers where the older layout had
// them (atoms in columns 13-17, 23-27, 33-37, classes after 11 more
// columns), but the four-atom rows of out-of-plane bends and torsions carry
// their classes two columns further left. So a row is read by its words:
// the atoms are the numbers in front of each "-name", the classes the
// trailing numbers. A row that does not read that way is read by the fixed
// columns of the older layout.
bool read_by_words(const std::string& line, int n, UndefRow& r) {
    const std::vector<std::string> words = words_of(line);
    std::vector<int> atoms;
    for (std::size_t k = 1; k < words.size() && static_cast<int>(atoms.size()) < n; ++k) {
        const std::size_t dash = words[k].find('-');
        if (dash == std::string::npos || dash == 0) continue;
        const std::string number = words[k].substr(0, dash);
        if (!all_digits(number)) continue;
        atoms.push_back(static_cast<int>(text::read_i(number).value_or(0)));
    }
    if (static_cast<int>(atoms.size()) < n || static_cast<int>(words.size()) < n + 1) return false;
    std::vector<int> classes;
    for (std::size_t k = words.size() - static_cast<std::size_t>(n); k < words.size(); ++k) {
        if (!all_digits(words[k])) return false;
        classes.push_back(static_cast<int>(text::read_i(words[k]).value_or(0)));
    }
    for (int k = 0; k < n; ++k) {
        r[static_cast<std::size_t>(k)] = atoms[static_cast<std::size_t>(k)];
        r[static_cast<std::size_t>(4 + k)] = classes[static_cast<std::size_t>(k)];
    }
    return true;
}

bool read_by_columns(const std::string& line, int n, UndefRow& r) {
    const int first_class = 13 + 10 * (n - 1) + 5 + 11;
    for (int k = 0; k < 2 * n; ++k) {
        const int column = k < n ? 13 + 10 * k : first_class + 5 * (k - n);
        auto v = text::read_i(text::column_field(line, column, 5));
        if (!v) return false;
        r[static_cast<std::size_t>(k < n ? k : 4 + k - n)] = static_cast<int>(*v);
    }
    return true;
}

// 1 for a plain row (its own word), 2 and 3 for the rows of four- and
// five-membered rings, 4 for three-membered ones, 0 for anything else.
// Tinker 26 lists cyclopropane's bonds and angles as
//   " 3-Ring          1-C       2-C             22   22"
int kind_of(const std::string& row, const char* plain) {
    if (begins(row, plain)) return 1;
    if (begins(row, "4-Ri")) return 2;
    if (begins(row, "5-Ri")) return 3;
    if (begins(row, "3-Ri")) return 4;
    return 0;
}

class LogReader {
public:
    explicit LogReader(const std::vector<std::string>& log) : log_(log), shift_(log_shift(log)) {}
    bool read(std::string& line) {
        if (next_ >= log_.size()) return false;
        line = shifted(log_[next_++], shift_);
        return true;
    }

private:
    const std::vector<std::string>& log_;
    bool shift_;
    std::size_t next_ = 0;
};

// Each block starts on its first row and returns whether the scan goes on.
struct Scanner {
    LogReader in;
    UndefScan out;
    UndefTable t;
    std::string line;

    bool log_ended() {
        out.ended_in_block = true;
        return false;
    }
    void take(UndefSection section, int kind, int width) {
        const int n = remove_duplicates(t, t.count, width);
        for (int i = 0; i < n; ++i) out.entries.push_back({section, kind, t.row[static_cast<std::size_t>(i)]});
    }

    // Plain rows follow one another; a ring row stands alone, and ring rows
    // after plain ones end the block.
    bool bonds() {
        const int kind = kind_of(line, "Bond");
        if (kind == 0) return true;
        do {
            t.read_row(line, 2);
            if (!in.read(line)) return log_ended();
        } while (begins(line, "Bond"));
        take(UndefSection::Bond, kind, 2);
        return true;
    }

    // All rows up to the blank line, whatever their type; the first row
    // decides the kind of them all. A later run that still misses the plain
    // angles then asks for them.
    bool angles() {
        const int kind = kind_of(line, "Angl");
        if (kind == 0) return true;
        do {
            t.read_row(line, 3);
            if (!in.read(line)) return log_ended();
        } while (!begins_with_four_blanks(line));
        take(UndefSection::Angle, kind, 3);
        return true;
    }

    // One row only, the first.
    bool out_of_plane() {
        if (!begins(line, "Angle-OP")) return true;
        t.read_row(line, 4);
        out.key_changed = true;
        if (!in.read(line)) return log_ended();
        out.entries.push_back({UndefSection::OutOfPlane, 1, t.row[0]});
        return true;
    }

    // Tinker lists torsions last, so the scan ends here either way.
    bool torsions() {
        const int kind = kind_of(line, "Tors");
        if (kind == 0) return false;
        do {
            t.read_row(line, 4);
            if (!in.read(line)) return log_ended();
        } while (begins(line, "Tors"));
        take(UndefSection::Torsion, kind, 4);
        out.key_changed = true;
        return false;
    }

    void run() {
        while (in.read(line)) {
            t.clear();
            if (!begins(line, "Undefined")) continue;
            if (begins(line, "Undefined Atom")) {
                out.undefined_atom = true;
                return;
            }
            // The keys are compared over 25 characters; any other block
            // is tried as bonds.
            bool (Scanner::*block)() = &Scanner::bonds;
            if (begins(line, "Undefined Angle Bending P")) block = &Scanner::angles;
            else if (begins(line, "Undefined Out-of-Plane Be")) block = &Scanner::out_of_plane;
            else if (begins(line, "Undefined Torsional Param")) block = &Scanner::torsions;
            // Heading, blank, column titles, blank: the fourth line after
            // the heading is the first row.
            for (int k = 0; k < 4; ++k)
                if (!in.read(line)) {
                    log_ended();
                    return;
                }
            if (!(this->*block)()) return;
        }
    }
};

int atom_index(int atom) { return std::clamp(atom, 0, kMaxAtoms); }

float distance(const Store& st, int a, int b) {
    return static_cast<float>(zentol::distance(atom_position(st.atom_rec[static_cast<std::size_t>(atom_index(a))]),
                                               atom_position(st.atom_rec[static_cast<std::size_t>(atom_index(b))])));
}

// The angle a-b-c at b, in degrees; 0 when two atoms coincide.
float angle_at(const Store& st, int a, int b, int c) {
    auto at = [&](int i) { return atom_position(st.atom_rec[static_cast<std::size_t>(atom_index(i))]); };
    return static_cast<float>(zentol::angle(at(a), at(b), at(c), 0.0));
}

int type_of(const Store& st, int atom) { return st.conn_type(atom_index(atom)); }

std::string label_and_type(const Store& st, int atom, const char* open) {
    return label_text(st.atom_label[static_cast<std::size_t>(atom_index(atom))]) + open +
           text::format_i(type_of(st, atom), 4) + ")";
}

const char* ring_suffix(int kind) { return kind == 2 ? "4" : kind == 3 ? "5" : kind == 4 ? "3" : ""; }

void tell_tinker(Session& s, const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& l : lines) text += (text.empty() ? "" : "\r") + l;
    s.tk.WMessageBox(kButtonsOk, MessageIcon::Exclamation, 1, text, "Tinker");
}

// Dialog 118 for a bond, an angle or the out-of-plane bend; the key line,
// or nothing when the dialog is cancelled: that entry is skipped and the
// others are still asked for. `last_force` carries the force constant of
// the dialog before, which the out-of-plane bend is offered.
std::optional<std::string> ask_entry(Session& s, const UndefEntry& e, std::optional<double>& last_force) {
    const Store& st = s.store;
    const UndefRow& r = e.row;
    Toolkit& tk = s.tk;
    tk.WDialogLoad(kDialog);
    tk.WDialogPutString(kTitleField, undefined_title(e));
    tk.WDialogPutString(kDescriptionField, undefined_description(st, e));
    switch (e.section) {
        case UndefSection::Bond:
            tk.WDialogPutString(kCaptionField, "Length");
            tk.WDialogPutReal(kValueField, distance(st, r[0], r[1]));
            tk.WDialogPutReal(kForceField, 10.0);
            break;
        case UndefSection::Angle:
            tk.WDialogPutString(kCaptionField, "Angle");
            tk.WDialogPutReal(kValueField, angle_at(st, r[0], r[1], r[2]));
            tk.WDialogPutReal(kForceField, kAngleForceDefault);
            break;
        default:
            // The force constant of the dialog before; when none came before
            // in this pass, the angle's default, whose dialogs it follows.
            tk.WDialogPutString(kCaptionField, "");
            tk.WDialogFieldState(kValueField, 0);
            tk.WDialogPutReal(kForceField, last_force.value_or(kAngleForceDefault));
            break;
    }
    tk.WDialogShow(1);
    const bool ok = tk.last_button() == 1;
    const double value = tk.WDialogGetReal(kValueField);
    const double force = tk.WDialogGetReal(kForceField);
    tk.WDialogUnload();
    if (!ok) return std::nullopt;
    last_force = force;
    switch (e.section) {
        case UndefSection::Bond: return bond_key_line(e.kind, type_of(st, r[0]), type_of(st, r[1]), force, value);
        case UndefSection::Angle:
            return angle_key_line(e.kind, type_of(st, r[0]), type_of(st, r[1]), type_of(st, r[2]), force, value);
        default: return opbend_key_line(r, force);
    }
}

}  // namespace

bool read_undefined_row(const std::string& line, int n, UndefRow& r) {
    n = std::clamp(n, 1, 4);
    return read_by_words(line, n, r) || read_by_columns(line, n, r);
}

void UndefTable::read_row(const std::string& line, int n) {
    read_undefined_row(line, n, row[static_cast<std::size_t>(std::min(count, kRows - 1))]);
    count = std::min(count + 1, kRows);
}

void normalise_row(UndefRow& r, int width) {
    if (width == 2 && r[4] > r[5]) std::swap(r[4], r[5]);
    if (width == 3 && r[4] > r[6]) std::swap(r[4], r[6]);
    if (width == 4 && r[4] > r[7]) {
        std::reverse(r.begin(), r.begin() + 4);
        std::reverse(r.begin() + 4, r.end());
    }
}

int remove_duplicates(UndefTable& t, int n, int width) {
    n = std::clamp(n, 0, UndefTable::kRows);
    width = std::clamp(width, 1, 4);
    auto& rows = t.row;
    for (int i = 0; i < n; ++i) normalise_row(rows[static_cast<std::size_t>(i)], width);
    for (int i = 0; i < n; ++i) {
        const UndefRow& first = rows[static_cast<std::size_t>(i)];
        if (first[4] == 0) continue;
        for (int j = i + 1; j < n; ++j) {
            UndefRow& later = rows[static_cast<std::size_t>(j)];
            if (std::equal(first.begin() + 4, first.begin() + 4 + width, later.begin() + 4))
                std::fill(later.begin() + 4, later.end(), 0);
        }
    }
    for (int i = 0; i < n;) {
        if (rows[static_cast<std::size_t>(i)][4] == 0 && rows[static_cast<std::size_t>(i)][5] == 0) {
            std::move(rows.begin() + i + 1, rows.begin() + n, rows.begin() + i);
            rows[static_cast<std::size_t>(n - 1)] = UndefRow{};
            --n;
        } else {
            ++i;
        }
    }
    t.count = n;
    return n;
}

UndefScan scan_undefined(const std::vector<std::string>& log) {
    if (log.size() < 5) return {};
    Scanner scan{LogReader(log), {}, {}, {}};
    scan.run();
    return scan.out;
}

std::string undefined_title(const UndefEntry& e) {
    const std::string ring = e.kind == 1 ? "" : std::string(ring_suffix(e.kind)) + "-";
    switch (e.section) {
        case UndefSection::Bond: return ring + "Bond-Stretch";
        case UndefSection::Angle: return ring + "Angle-Bend";
        case UndefSection::OutOfPlane: return "Angle-OP";
        case UndefSection::Torsion: return ring + "Torsion";
    }
    return {};
}

std::string undefined_description(const Store& st, const UndefEntry& e) {
    const UndefRow& r = e.row;
    if (e.section == UndefSection::OutOfPlane)
        // The third atom's bracket stands "( ", as users of the dialog know it.
        return label_and_type(st, r[0], " (") + " " + label_and_type(st, r[1], " (") + " " +
               label_and_type(st, r[2], "( ") + " " + label_and_type(st, r[3], " (");
    const int n = e.section == UndefSection::Bond ? 2 : e.section == UndefSection::Angle ? 3 : 4;
    std::string d;
    for (int k = 0; k < n; ++k) d += (k ? "   " : "") + label_and_type(st, r[static_cast<std::size_t>(k)], " (");
    return d;
}

std::string bond_key_line(int kind, int type_a, int type_b, double force, double length) {
    return text::pad_right(std::string("bond") + ring_suffix(kind), 10) + text::format_i(type_a, 5) +
           text::format_i(type_b, 5) + text::blanks(4) + text::format_f(force, 11, 4) + text::format_f(length, 11, 4);
}

std::string angle_key_line(int kind, int type_a, int type_b, int type_c, double force, double angle) {
    return text::pad_right(std::string("angle") + ring_suffix(kind), 10) + text::format_i(type_a, 5) +
           text::format_i(type_b, 5) + text::format_i(type_c, 5) + text::format_f(force, 10, 3) +
           text::format_f(angle, 11, 3);
}

std::string opbend_key_line(const UndefRow& r, double force) {
    std::string line = text::pad_right("opbend", 9);
    for (int k = 4; k < 8; ++k) line += text::format_i(r[static_cast<std::size_t>(k)], 5);
    return line + text::format_f(force, 6, 2);
}

std::string torsion_key_line(int kind, const UndefRow& r) {
    std::string line = text::pad_right(std::string("torsion") + ring_suffix(kind), 9);
    for (int k = 4; k < 8; ++k) line += text::format_i(r[static_cast<std::size_t>(k)], 5);
    return line + "      0.000 0.0 1    0.000 180.0 2    0.000 0.0";
}

void undefined_parameters_command(Session& s) {
    const auto log = files::read_lines(log_file_name);
    if (!log || log->size() < 5) return;
    const UndefScan scan = scan_undefined(*log);

    std::vector<std::string> added;
    std::optional<double> last_force;
    for (const UndefEntry& e : scan.entries) {
        if (e.section == UndefSection::Torsion) {
            added.push_back(torsion_key_line(e.kind, e.row));
        } else if (auto line = ask_entry(s, e, last_force)) {
            added.push_back(*line);
        }
    }
    if (!added.empty()) {
        const std::string key = job_file(s, ".key");
        std::vector<std::string> lines = files::read_lines(key).value_or(std::vector<std::string>{});
        lines.insert(lines.end(), added.begin(), added.end());
        files::write_lines(key, lines);
    }
    // One message at the end: after the torsions, after an out-of-plane
    // bend, and when the log broke off inside a block, even if no torsion
    // was touched.
    if (scan.undefined_atom) tell_tinker(s, kUndefinedAtomMessage);
    else if (scan.announce()) tell_tinker(s, {kUndefinedKeyUpdated});
}

}  // namespace zentol
