#include "engines/orca/orca_listing.h"

#include <cctype>

#include "text/fixed_format.h"

namespace zentol {

namespace {

using text::TextLines;

// A record as the scan sees it: at most 120 characters.
std::string_view record(const TextLines& lines, std::size_t i) { return lines[i].substr(0, 120); }

// The key as exact text from a 1-based column.
bool at(std::string_view r, std::size_t column, std::string_view key) {
    return r.size() >= column - 1 + key.size() && r.substr(column - 1, key.size()) == key;
}

// The charge rows of the first Mulliken block: "   0 C :   -0.004652",
// the symbol in columns 6-7 and the charge in columns 10-20. A row that
// is not one ends the block early (a cut listing, or fewer atoms).
std::vector<std::string> mulliken_log(const TextLines& lines, std::size_t first_row, int natoms) {
    std::vector<std::string> log{"#Orca mulliken charges"};
    for (int k = 0; k < natoms && first_row + k < lines.size(); ++k) {
        const std::string_view r = record(lines, first_row + k);
        const std::string charge = text::column_field(r, 10, 11);
        if (text::column_field(r, 8, 1) != ":" || !text::read_f(charge)) break;
        log.push_back(text::column_field(r, 6, 2) + "   " + charge);
    }
    return log;
}

StickLines stick_header(const char* title) { return {"", title, "  freq.cm**-1  Int."}; }

// The rows of an IR or Raman table, from the first row on:
//   4.x IR     "   6:        45.75    0.030792  ( ...)"               freq, T**2
//   5.0/6.0 IR "  6:     45.66   0.000006    0.03  0.000039  ( ...)" freq, eps, km/mol
//   Raman      "   6:        76.62      0.000000      0.597149"       freq, activity
// The intensity is the `intensity_field`-th number after the mode number,
// so every version writes km/mol (4.x prints T**2 in km/mol's values).
// The mode number before the colon is kept as a third column: the first
// row is mode 5 for a linear molecule and later than 6 when the engine
// left imaginary modes out. Returns the index after the table; `complete`
// when a short record ended it.
std::size_t vibration_rows(const TextLines& lines, std::size_t i, int intensity_field, StickLines& out,
                           bool& complete) {
    complete = false;
    for (; i < lines.size(); ++i) {
        const std::string_view r = record(lines, i);
        if (text::trimmed_length(r) < 21) {
            complete = true;
            out.emplace_back("  END");
            return i + 1;
        }
        const std::string head = text::column_field(r, 1, 5);
        const auto mode = text::read_i(head.substr(0, head.find(':')));
        const auto values = text::read_reals(r.substr(std::min<std::size_t>(5, r.size())), intensity_field + 1);
        if (!values || static_cast<int>(values->size()) < intensity_field + 1) {
            // Not a row: the table ends here.
            complete = true;
            out.emplace_back("  END");
            return i;
        }
        out.push_back(text::format_f((*values)[0], 9, 2) + text::format_f((*values)[intensity_field], 15, 5) +
                      text::format_i(mode.value_or(0), 5));
    }
    return i;
}

// The rows of the absorption table. Wavelength and intensity are read from
// the right-hand end, where every version keeps them:
//   4.x/5.0 "   1   43167.6    231.7   0.005629700   0.04293  -0.15576  -0.13665  -0.00000"
//   6.0     "  0-1Ag ->  1-1Bu   5.352154   43168.0   231.7   0.005038390   0.03842   0.16288 ..."
// the wavelength sixth from the end, T2/D2 fourth. Rows that end in text
// ("   6   25291.1    395.4   spin forbidden (mult=3)") are skipped.
std::size_t absorption_rows(const TextLines& lines, std::size_t i, StickLines& out) {
    for (; i < lines.size(); ++i) {
        const std::string_view r = record(lines, i);
        if (text::trimmed_length(r) < 21) {
            out.emplace_back("  END");
            return i + 1;
        }
        const auto w = text::split_words(r);
        if (w.size() < 6) continue;
        const auto last = text::read_f(w.back());
        const auto nm = text::read_f(w[w.size() - 6]);
        const auto intensity = text::read_f(w[w.size() - 4]);
        if (!last || !nm || !intensity) continue;
        out.push_back(text::format_f(*nm, 7, 1) + text::format_f(*intensity, 15, 5));
    }
    return i;
}

bool is_absorption_key(std::string_view r) {
    // At column 10 in 4.x and 5.0, at column 22 in 6.0; the spin-orbit
    // corrected table ("SPIN ORBIT CORRECTED ABSORPTION ...") is not this one.
    return !r.empty() && r[0] == ' ' &&
           text::trim(r).substr(0, 58) == "ABSORPTION SPECTRUM VIA TRANSITION ELECTRIC DIPOLE MOMENTS";
}

void tables_pass(const TextLines& lines, int natoms, OrcaFlags& flags, OrcaScan& scan) {
    bool charges_taken = false;
    std::size_t i = 0;
    while (i < lines.size()) {
        const std::string_view r = record(lines, i);
        if (!charges_taken && at(r, 1, "MULLIKEN ATOMIC CHARGES")) {
            charges_taken = true;
            scan.charges = mulliken_log(lines, i + 2, natoms);
            i += 2;
            continue;
        }
        if (at(r, 34, "Geometry convergence")) {
            flags.geom_converged = true;
        } else if (at(r, 36, "OPTIMIZATION HAS CONVERGED")) {
            flags.geom_converged = flags.opt_requested = true;
        } else if (at(r, 1, "IR SPECTRUM") || at(r, 1, "RAMAN SPECT")) {
            const bool ir = r[0] == 'I';
            // ORCA 5 added a units record under the header.
            const std::size_t skip = ir && flags.version5 ? 5 : 4;
            StickLines table = stick_header(ir ? "  IR Spectrum" : "  Raman Spectrum");
            bool complete = false;
            const int intensity_field = ir && flags.version5 ? 2 : 1;
            i = vibration_rows(lines, i + 1 + skip, intensity_field, table, complete);
            (ir ? scan.ir : scan.raman) = std::move(table);
            if (complete) (ir ? scan.ir_seen : scan.raman_seen) = true;
            continue;
        } else if (is_absorption_key(r)) {
            StickLines table;
            i = absorption_rows(lines, i + 5, table);
            scan.uv = std::move(table);
            continue;
        }
        ++i;
    }
}

void summary_pass(const TextLines& lines, const std::string& job, OrcaScan& scan) {
    std::vector<std::string> summary;
    double energy = 0;
    std::string run_time;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const std::string_view r = record(lines, i);
        if (at(r, 1, "FINAL SINGLE POINT ENERGY")) {
            auto v = text::read_reals(r.substr(std::min<std::size_t>(25, r.size())), 1);
            if (v && !v->empty()) energy = (*v)[0];
        } else if (at(r, 1, "TOTAL RUN TIME:")) {
            run_time = std::string(text::trim_right(r));
        } else if (at(r, 1, "Summary of contributions to the inner energy")) {
            for (std::size_t k = i; k < i + 8 && k < lines.size(); ++k)
                summary.emplace_back(text::trim_right(record(lines, k)));
            summary.emplace_back("Accurate calcs are required for thermodynamics");
            summary.emplace_back("see https://www.orcasoftware.de/tutorials_orca/prop/thermo.html");
            summary.emplace_back("");
            summary.emplace_back("Eh = Hartrees. Use Cv button in Zentol to convert units.");
        }
    }
    summary.emplace_back(text::trim_right(job.substr(0, 50)));
    summary.emplace_back("");
    summary.push_back("FINAL SINGLE POINT ENERGY " +
                      text::format_f(hartree_to_kj(static_cast<float>(energy)), 20, 5) + " kJ/mol");
    summary.push_back(run_time);
    scan.summary = std::move(summary);
}

}  // namespace

float hartree_to_kj(float hartree) { return hartree * 2625.4998f; }

std::optional<int> orca_program_version(std::string_view r) {
    // "                         Program Version 6.0.1  -  RELEASE   -"
    if (!at(r, 26, "Program Version ")) return std::nullopt;
    std::string_view rest = r.substr(25 + 16);
    std::size_t digits = 0;
    while (digits < rest.size() && std::isdigit(static_cast<unsigned char>(rest[digits]))) ++digits;
    if (digits == 0 || digits > 3) return std::nullopt;
    return static_cast<int>(text::read_i(rest.substr(0, digits)).value_or(0));
}

OrcaScan scan_orca_listing(const TextLines& lines, int natoms, const std::string& job, OrcaFlags& flags) {
    OrcaScan scan;
    flags.version5 = false;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const std::string_view r = record(lines, i);
        // ORCA 6 says "Program Version 6.0.1": the newer layout is that of
        // version 5 and every later one.
        if (auto v = orca_program_version(r); v && *v >= 5) flags.version5 = true;
        if (at(r, 30, "****ORCA TERMINATED NORMALLY****")) flags.terminated = true;
    }
    tables_pass(lines, natoms, flags, scan);
    if (flags.terminated && flags.geom_converged) summary_pass(lines, job, scan);
    return scan;
}

std::optional<std::vector<OrcaAtom>> property_geometry(const TextLines& property, int natoms) {
    std::optional<std::size_t> last;
    for (std::size_t i = 0; i < property.size(); ++i)
        if (property[i].substr(0, 16) == "    Coordinates:") last = i;
    if (!last) return std::nullopt;
    // "               0 H    -11.127340000000    2.900400000000    0.000000000000"
    std::vector<OrcaAtom> atoms;
    for (int k = 1; k <= natoms; ++k) {
        if (*last + k >= property.size()) return std::vector<OrcaAtom>{};
        const auto w = text::split_words(property[*last + k]);
        if (w.size() < 5) return std::vector<OrcaAtom>{};
        OrcaAtom a{std::string(w[1]), {}};
        for (int c = 0; c < 3; ++c) {
            auto v = text::read_f(w[2 + c]);
            if (!v) return std::vector<OrcaAtom>{};
            a.xyz[c] = *v;
        }
        atoms.push_back(std::move(a));
    }
    return atoms;
}

std::optional<std::vector<OrcaAtom>> orca_xyz_geometry(const TextLines& xyz, int natoms) {
    if (xyz.size() < 2 || text::read_i(xyz[0]) != natoms) return std::nullopt;
    std::vector<OrcaAtom> atoms;
    for (int k = 0; k < natoms; ++k) {
        if (2u + k >= xyz.size()) return std::nullopt;
        const auto w = text::split_words(xyz[2 + k]);
        if (w.size() < 4) return std::nullopt;
        OrcaAtom a{std::string(w[0]), {}};
        for (int c = 0; c < 3; ++c) {
            auto v = text::read_f(w[1 + c]);
            if (!v) return std::nullopt;
            a.xyz[c] = *v;
        }
        atoms.push_back(std::move(a));
    }
    return atoms;
}

std::vector<std::string> orca_pdb_records(const std::vector<OrcaAtom>& atoms) {
    std::vector<std::string> pdb{"CRYST1    1.000    1.000    1.000  90.00  90.00  90.00",
                                 "SCALE1      1.000000  0.000000  0.000000",
                                 "SCALE2      0.000000  1.000000  0.000000",
                                 "SCALE3      0.000000  0.000000  1.000000"};
    int number = 0;
    for (const OrcaAtom& a : atoms) {
        const std::string& s = a.symbol;
        const bool two = s.size() >= 2 && std::isalpha(static_cast<unsigned char>(s[1]));
        const std::string name = two ? " " + s.substr(0, 2) : "  " + s.substr(0, 1);
        pdb.push_back("HETATM" + text::format_i(++number, 5) + name + "   UNK     0    " +
                      text::format_f(a.xyz[0], 8, 3) + text::format_f(a.xyz[1], 8, 3) + text::format_f(a.xyz[2], 8, 3));
    }
    return pdb;
}

std::vector<std::string> orca_deck_with_geometry(const std::vector<std::string>& old_deck,
                                                 const std::vector<std::string>& labels,
                                                 const std::vector<OrcaAtom>& atoms, bool write_atoms) {
    std::vector<std::string> deck;
    for (const std::string& r : old_deck) {
        if (deck.size() >= 60) break;
        deck.push_back(r);
        const std::size_t star = r.find("* xyz");
        if (star != std::string::npos && star < 50) break;
    }
    // Only ORCA 5 and later decks get the coordinates back; an older
    // engine's deck ends with no atoms, as it always has.
    for (std::size_t k = 0; write_atoms && k < atoms.size() && k < labels.size(); ++k)
        deck.push_back(text::pad_right(labels[k], 4).substr(0, 4) + "   " + text::format_f(atoms[k].xyz[0], 10, 6) +
                       text::format_f(atoms[k].xyz[1], 10, 6) + text::format_f(atoms[k].xyz[2], 10, 6));
    deck.emplace_back(" *");
    return deck;
}

}  // namespace zentol
