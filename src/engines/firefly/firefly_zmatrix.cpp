#include "engines/firefly/firefly_zmatrix.h"

#include <algorithm>

#include "engines/runner.h"
#include "session/openers.h"
#include "session/session.h"
#include "session/store_ops.h"
#include "text/fixed_format.h"
#include "toolkit/files.h"
#include "toolkit/toolkit.h"

namespace zentol {

namespace {

// The words of a row, with MOPAC's optimisation marks "*" taken as blanks.
std::vector<std::string> row_words(std::string_view line) {
    std::vector<std::string> out;
    std::string word;
    for (char c : line) {
        if (c == ' ' || c == '*' || c == '\t') {
            if (!word.empty()) out.push_back(std::move(word));
            word.clear();
        } else {
            word += c;
        }
    }
    if (!word.empty()) out.push_back(std::move(word));
    return out;
}

// A table row: the atom number, the symbol, the values (they carry a
// decimal point) and the connection numbers behind them.
std::optional<ZmatRow> parse_row(std::string_view line, int atom) {
    const auto w = row_words(line);
    if (w.size() < 2 || text::read_i(w[0]).value_or(-1) != atom || text::read_f(w[1])) return std::nullopt;
    std::vector<double> values;
    std::vector<int> links;
    for (std::size_t k = 2; k < w.size(); ++k) {
        if (w[k].find('.') != std::string::npos) {
            auto v = text::read_f(w[k]);
            if (!v || !links.empty()) return std::nullopt;
            values.push_back(*v);
        } else {
            auto n = text::read_i(w[k]);
            if (!n) return std::nullopt;
            links.push_back(static_cast<int>(*n));
        }
    }
    const std::size_t wanted = static_cast<std::size_t>(std::min(atom - 1, 3));
    if (values.size() < wanted) return std::nullopt;
    ZmatRow r;
    r.atom = atom;
    if (wanted >= 1) r.length = values[0];
    if (wanted >= 2) r.angle = values[1];
    if (wanted >= 3) r.dihedral = values[2];
    // Atoms 2 and 3 have their connections by definition where the table
    // leaves them out.
    r.na = links.size() >= 1 && links[0] > 0 ? links[0] : (atom == 2 ? 1 : atom == 3 ? 2 : 0);
    r.nb = links.size() >= 2 && links[1] > 0 ? links[1] : (atom == 3 ? 1 : 0);
    r.nc = links.size() >= 3 ? links[2] : 0;
    if (atom >= 4 && (r.na < 1 || r.nb < 1 || r.nc < 1)) return std::nullopt;
    return r;
}

std::string pair(int link, double value) { return text::format_i(link, 4) + text::format_f(value, 9, 3); }

}  // namespace

std::vector<std::string> zmatrix_converter_deck(const Store& st, bool modern) {
    std::vector<std::string> deck{modern ? " AM1 CHARGE= 0 SINGLET INT 0SCF" : " AM1 CHARGE= 0 SINGLET",
                                  " MOPAC DUMMY RUN", " ***************"};
    // The flags stay 0: the converter must not move an atom.
    for (int i = 1; i <= st.natoms; ++i) {
        const auto& a = st.atom_rec[i];
        std::string line = text::pad_right(text::trim(element_symbol(label_text(st.atom_label[i]))), 4);
        for (int c = kX; c <= kZ; ++c) line += text::format_f(a[c], 12, 5) + text::format_i(0, 3);
        deck.push_back(line);
    }
    return deck;
}

// Mopac 6 prints its table on every run: a header over three records, the
// last of them holding "NB:NA:I", then one row an atom, the length F9.5
// behind 21 columns, the angle F14.5 and the dihedral F11.5 each behind 3
// columns of optimisation marks, and the connections NA NB NC (I4, I5, I5);
// atom 1 has no values, atoms 2 and 3 fewer.
// The open-source MOPAC prints it with INT, atom 1 at once below the header
// and every value and connection present:
//    (I)                     NA:I           NB:NA:I       NC:NB:NA:I       NA    NB    NC
//      1       C          0.00000000       0.0000000       0.0000000        0     0     0
//      2       C          1.51204056  *    0.0000000       0.0000000        1     0     0
//      4       H          0.97100249  *  105.3981632  *  180.0000000  *     3     2     1
// Both are read by their words: atom number, symbol, values, connections.
std::optional<std::vector<ZmatRow>> read_internal_coordinates(const text::TextLines& listing, int natoms) {
    std::size_t at = 0;
    while (at < listing.size() && listing[at].find("NB:NA:I") == std::string_view::npos) ++at;
    if (at == listing.size() || natoms < 1) return std::nullopt;
    std::vector<ZmatRow> rows;
    // A record or two (blank, ruled) may stand between the header and atom 1.
    const std::size_t end = std::min(at + 4, listing.size());
    for (++at; at < end && rows.empty(); ++at)
        if (auto r = parse_row(listing[at], 1)) rows.push_back(*r);
    for (; at < listing.size() && static_cast<int>(rows.size()) < natoms; ++at) {
        auto r = parse_row(listing[at], static_cast<int>(rows.size()) + 1);
        if (!r) return std::nullopt;
        rows.push_back(*r);
    }
    if (static_cast<int>(rows.size()) < natoms) return std::nullopt;
    return rows;
}

std::vector<std::string> zmatrix_records(const Store& st, const std::vector<ZmatRow>& rows) {
    std::vector<std::string> out;
    auto symbol = [&](int atom) { return element_symbol(label_text(st.atom_label[atom])); };
    for (const ZmatRow& r : rows) {
        if (r.atom < 1 || r.atom > st.natoms) continue;
        std::string line = symbol(r.atom);
        if (r.atom >= 2) line += pair(r.na, r.length);
        if (r.atom >= 3) line += pair(r.nb, r.angle);
        if (r.atom >= 4) line += pair(r.nc, r.dihedral);
        out.emplace_back(text::trim_right(line));
    }
    out.emplace_back(" $END");
    return out;
}

std::optional<FrozenDihedral> find_frozen_dihedral(const std::vector<ZmatRow>& rows, int b, int c) {
    for (const ZmatRow& r : rows) {
        if (r.atom < 4) continue;
        if ((r.na == b && r.nb == c) || (r.na == c && r.nb == b)) return FrozenDihedral{3 * r.atom - 6, r};
    }
    return std::nullopt;
}

std::string frozen_dihedral_line(const Store& st, const FrozenDihedral& f) {
    const int atoms[4] = {f.row.atom, f.row.na, f.row.nb, f.row.nc};
    std::string line = "Dihedral frozen is ";
    for (int a : atoms) line += a >= 1 && a <= st.natoms ? label_text(st.atom_label[a]) + " " : "     ";
    for (int a : atoms) line += text::format_i(a, 5);
    return line + text::format_f(f.row.dihedral, 10, 3);
}

std::optional<std::vector<ZmatRow>> run_zmatrix_converter(Session& s) {
    const bool mopac6 = engine_available(s, "mopac6");
    const std::string program = engine_command(s, mopac6 ? "mopac6" : "mopac2016");
    if (program.empty()) {
        tell_missing(s, "MOPAC, which makes the Z-matrix,", "mopac2016");
        return std::nullopt;
    }
    files::write_lines("INPUT", zmatrix_converter_deck(s.store, !mopac6));
    files::remove("OUTPUT");
    files::remove("INPUT.out");
    if (mopac6) {
        run_blocking(s, shell_line(program, {}));
        files::copy("OUTPUT", "output2");
    } else {
        // The open-source MOPAC names its listing after the deck.
        run_blocking(s, shell_line(program, {files::resolve("INPUT")}));
        files::copy("INPUT.out", "output2");
        for (const char* name : {"INPUT.out", "INPUT.arc"}) files::remove(name);
    }
    files::remove("for0*");
    auto listing = files::read_text_lines("output2");
    auto rows = listing ? read_internal_coordinates(*listing, s.store.natoms) : std::nullopt;
    if (!rows)
        s.tk.WMessageBox(kButtonsOk, MessageIcon::Exclamation, 1,
                         "MOPAC gave no internal coordinates.\rSee output2 in the job directory.", "Firefly");
    return rows;
}

}  // namespace zentol
