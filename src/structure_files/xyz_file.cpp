#include "structure_files/xyz_file.h"

#include <algorithm>

#include "session/session.h"
#include "session/store_ops.h"
#include "text/fixed_format.h"
#include "toolkit/files.h"
#include "toolkit/toolkit.h"

namespace zentol {

using text::format_f;
using text::format_i;

std::string format_xyz(const Store& st, const std::string& job_name, int charge, int multiplicity) {
    std::string out = text::format_i(st.natoms, 6) + " " + job_name + " chamul" + format_i(charge, 4) +
                      format_i(multiplicity, 4);
    out = std::string(text::trim_right(out)) + "\n";
    for (int i = 1; i <= st.natoms; ++i) {
        const auto& r = st.atom_rec[i];
        std::string line = format_i(i, 6) + "  " + label_text(st.atom_label[i]) + format_f(r[kX], 11, 6) +
                           format_f(r[kY], 12, 6) + format_f(r[kZ], 12, 6);
        // Type plus the neighbours the atom has, at most 7: a hole in the
        // slots is skipped rather than written as 0 in front of a real bond.
        line += format_i(st.conn_type(i), 6);
        int written = 0;
        for (int slot = 1; slot <= kMaxNeighbours && written < kMaxNeighbours - 1; ++slot) {
            int j = st.nbr(i, slot);
            if (j < 1 || j > st.natoms) continue;
            line += format_i(j, 6);
            ++written;
        }
        out += std::string(text::trim_right(line)) + "\n";
    }
    return out;
}

namespace {

// The tail " chamul  q  m" is found from the line's end, so a job name may
// hold anything, "chamul" included.
void read_title_tail(const std::string& title, int& charge, int& multiplicity) {
    std::string low = text::lower_case(text::trim_right(title));
    auto number = [&](std::size_t from) { return text::read_i(std::string_view(low).substr(from, 4)); };
    std::size_t len = low.size();
    if (len >= 10 && low.compare(len - 10, 6, "chamul") == 0) {
        if (auto q = number(len - 4)) charge = static_cast<int>(*q);
    } else if (len >= 14 && low.compare(len - 14, 6, "chamul") == 0) {
        auto q = number(len - 8), m = number(len - 4);
        if (q) charge = static_cast<int>(*q);
        if (m) multiplicity = static_cast<int>(*m);
    }
}

void normalise_label(Label& l) {
    std::string_view v(l.data(), 4);
    if (text::starts_with_nocase(v, "BX") || text::starts_with_nocase(v, "CEN")) {
        for (char& c : l) c = (c >= 'a' && c <= 'z') ? char(c - 32) : c;
        return;
    }
    if (l[0] >= 'a' && l[0] <= 'z') l[0] = char(l[0] - 32);
    if (l[1] >= 'A' && l[1] <= 'Z') l[1] = char(l[1] + 32);
}

bool refuse(XyzProblem* problem, int line, int atom, std::string why) {
    if (problem) *problem = {line, atom, std::move(why)};
    return false;
}

// The field is the writer's Fw.6 and the value fits it.
bool fits(double v, int w) { return text::format_f(v, w, 6).find('*') == std::string::npos; }

bool parse_connectivity(std::string_view line, Store& st, int i, int file_atoms, XyzProblem* problem) {
    std::string_view tail = line.size() > 47 ? line.substr(47) : std::string_view();
    for (int c = 1; c <= 11; ++c) st.conn[c][i] = 0;
    int want = std::min(text::count_words(tail), 1 + kMaxNeighbours);
    if (want == 0) return refuse(problem, i + 1, i, "the row ends before the atom type");
    auto values = text::read_ints(tail, want);
    if (!values || static_cast<int>(values->size()) < want)
        return refuse(problem, i + 1, i, "the type and the neighbours must be whole numbers");
    for (int k = 0; k < want; ++k) {
        long long v = (*values)[k];
        if (k == 0 && (v < -99999 || v > 999999))
            return refuse(problem, i + 1, i, "the atom type " + std::to_string(v) + " does not fit its column");
        if (k > 0 && (v < 0 || v > file_atoms))
            return refuse(problem, i + 1, i,
                          "neighbour " + std::to_string(v) + " is not one of the " + std::to_string(file_atoms) +
                              " atoms of the file");
        st.conn[1 + k][i] = static_cast<int>(v);
    }
    int count = 0;
    for (int slot = 1; slot <= kMaxNeighbours; ++slot) {
        if (st.nbr(i, slot) > 0) ++count;
        if (st.nbr(i, slot) > kMaxAtoms) st.nbr(i, slot) = 0;   // cut with the molecule; still counted
    }
    st.conn_count(i) = count;
    st.conn[kConnMark2][i] = 2;
    return true;
}

bool parse_atom_line(std::string_view line, Store& st, Toolkit* tk, int i, int file_atoms, float lo[3], float hi[3],
                     XyzProblem* problem) {
    std::string fx = text::column_field(line, 13, 11), fy = text::column_field(line, 24, 12),
                fz = text::column_field(line, 36, 12);
    if (text::trim(fx).empty() || text::trim(fy).empty() || text::trim(fz).empty())
        return refuse(problem, i + 1, i, "the row ends before its coordinates");
    auto x = text::read_f(fx, 6);
    auto y = text::read_f(fy, 6);
    auto z = text::read_f(fz, 6);
    if (!x || !y || !z) return refuse(problem, i + 1, i, "a coordinate is not a number");
    if (!fits(*x, 11) || !fits(*y, 12) || !fits(*z, 12))
        return refuse(problem, i + 1, i, "a coordinate lies beyond what the file's columns hold");
    Label l = make_label(text::column_field(line, 9, 4));
    for (char& c : l) c = (static_cast<unsigned char>(c) < 32) ? ' ' : c;
    normalise_label(l);
    auto& r = st.atom_rec[i];
    r = {static_cast<float>(*x), static_cast<float>(*y), static_cast<float>(*z), 0, 0, 0};
    std::string_view lv(l.data(), 4);
    if (lv[0] == 'B' && lv[1] == 'X' && lv[2] >= '1' && lv[2] <= '8') {
        auto& corner = st.atom_rec[kBoxCornerBase + (lv[2] - '0')];
        corner = {r[kX], r[kY], r[kZ], 0, 0, 0};
        st.box_corner_count += 1;
    }
    st.atom_label[i] = l;
    r[kRadius] = element_lookup(st, tk, lv, kLookupRadius);
    for (int a = 0; a < 3; ++a) {
        lo[a] = std::min(lo[a], r[a]);
        hi[a] = std::max(hi[a], r[a]);
    }
    return parse_connectivity(line, st, i, file_atoms, problem);
}

void set_axis_rows(Store& st, const float hi[3]) {
    st.atom_rec[kAxisOriginRow] = {0, 0, 0, 0, 0, 0};
    for (int a = 0; a < 3; ++a) {
        auto& tip = st.atom_rec[kAxisOriginRow + 1 + a];
        tip = {0, 0, 0, 0, 0, 0};
        tip[a] = 1.05f * hi[a];
    }
}

}  // namespace

std::string XyzProblem::text(const std::string& file) const {
    if (line > 0) return file + " line " + std::to_string(line) + ": " + why;
    return "atom " + std::to_string(atom) + ": " + why;
}

int unwritable_atom(const Store& st, XyzProblem* problem) {
    for (int i = 1; i <= st.natoms; ++i) {
        const auto& r = st.atom_rec[i];
        bool ok = fits(r[kX], 11) && fits(r[kY], 12) && fits(r[kZ], 12) && st.conn_type(i) >= -99999 &&
                  st.conn_type(i) <= 999999;
        if (ok) continue;
        if (problem) {
            *problem = {0, i, ""};
            problem->why = "atom " + std::to_string(i) + " (" + std::string(text::trim(label_text(st.atom_label[i]))) +
                           ") at " + text::format_f(r[kX], 12, 3) + text::format_f(r[kY], 12, 3) +
                           text::format_f(r[kZ], 12, 3) + " lies beyond what a .xyz file holds";
        }
        return i;
    }
    return 0;
}

int parse_xyz(const std::vector<std::string>& lines, Store& st, Toolkit* tk, int& charge, int& multiplicity,
              XyzProblem* problem) {
    st.natoms = st.natoms_file = st.nbonds = 0;
    st.box_corner_count = 0;
    st.big_molecule = false;
    if (lines.empty()) return refuse(problem, 1, 0, "the file is empty"), kXyzDamaged;
    std::string title = lines[0].substr(0, std::min<std::size_t>(lines[0].size(), 120));
    auto count = text::read_i(text::column_field(title, 1, 6));
    if (!count || *count < 0 || (*count == 0 && title.find('-') < 6))
        return refuse(problem, 1, 0, "the title does not begin with the number of atoms"), kXyzDamaged;
    if (*count == 0 && lines.size() > 1 && !text::trim(lines[1]).empty())
        return refuse(problem, 1, 0, "the title says 0 atoms but atom rows follow"), kXyzDamaged;
    read_title_tail(title, charge, multiplicity);
    st.natoms_file = static_cast<int>(std::min<long long>(*count, 1000000));
    int n = std::min(st.natoms_file, kMaxAtoms);
    st.big_molecule = n > kBigMolecule;
    st.hide_atoms = st.big_molecule;
    float lo[3] = {1000, 1000, 1000}, hi[3] = {-1000, -1000, -1000};
    for (int i = 1; i <= n; ++i) {
        if (i >= static_cast<int>(lines.size())) {
            refuse(problem, i + 1, i, "the file ends after " + std::to_string(i - 1) + " of its atoms");
            return st.natoms = i - 1, kXyzDamaged;
        }
        std::string_view line(lines[i]);
        line = line.substr(0, std::min<std::size_t>(line.size(), 120));
        if (!parse_atom_line(line, st, tk, i, st.natoms_file, lo, hi, problem)) return st.natoms = i - 1, kXyzDamaged;
    }
    set_axis_rows(st, hi);
    st.natoms = n;
    rebuild_bond_list(st);
    return kXyzRead;
}

namespace {

void finish_read(Session& s, int& status) {
    Store& st = s.store;
    if (status == kXyzDamaged) {
        // A damaged file is left as it is on disk: nothing half-read is kept,
        // so the exit sequence neither rewrites nor deletes it.
        st.natoms = 0;
        s.flags.xyz_damaged = true;
        rebuild_bond_list(st);
    }
    for (int i = 1; i <= st.natoms; ++i) st.disp_label[i] = st.atom_label[i];
}

}  // namespace

void read_job_xyz(Session& s, int& status, XyzProblem* problem) {
    Store& st = s.store;
    st.natoms = st.natoms_file = st.nbonds = 0;
    st.box_corner_count = 0;
    auto lines = files::read_lines(job_file(s, ".xyz"));
    if (!lines) {
        status = kXyzMissing;
        rebuild_bond_list(st);
        return;
    }
    status = parse_xyz(*lines, st, &s.tk, s.flags.total_charge, s.flags.spin_multiplicity, problem);
    finish_read(s, status);
    if (status == kXyzRead && st.natoms_file > kMaxAtoms) {
        s.flags.cut_on_load = 1;
        s.tk.WMessageBox(kButtonsOk, MessageIcon::Exclamation, 1,
                         job_file(s, ".xyz") + " holds " + std::to_string(st.natoms_file) + " atoms; Zentol keeps the first " +
                             std::to_string(kMaxAtoms) + ".\rThe file is not written over until you say so.",
                         "Zentol");
    }
}

void reload_from_text(Session& s, const std::string& xyz_text) {
    std::vector<std::string> lines;
    std::size_t start = 0;
    while (start < xyz_text.size()) {
        std::size_t end = xyz_text.find('\n', start);
        if (end == std::string::npos) end = xyz_text.size();
        lines.push_back(xyz_text.substr(start, end - start));
        start = end + 1;
    }
    int status = parse_xyz(lines, s.store, &s.tk, s.flags.total_charge, s.flags.spin_multiplicity);
    finish_read(s, status);
}

}  // namespace zentol
