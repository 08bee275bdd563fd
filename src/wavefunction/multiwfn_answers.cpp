#include "wavefunction/multiwfn_answers.h"

#include <algorithm>
#include <cmath>

#include "text/fixed_format.h"

namespace zentol {

namespace {

AnswerFile answers(std::initializer_list<const char*> records) {
    AnswerFile f;
    for (const char* r : records) f.write_answer_line(r);
    return f;
}

bool starts_with(std::string_view r, std::string_view key) { return r.substr(0, key.size()) == key; }

}  // namespace

std::optional<std::vector<int>> parse_orbital_list(const std::string& list) {
    std::vector<int> orbitals;
    std::string word;
    auto take = [&]() -> bool {
        if (word.empty()) return true;
        const std::size_t dash = word.find('-', 1);
        auto first = text::read_i(word.substr(0, dash));
        auto last = dash == std::string::npos ? first : text::read_i(word.substr(dash + 1));
        word.clear();
        if (!first || !last || *first < 1 || *last < *first) return false;
        for (long long n = *first; n <= *last && orbitals.size() < 20; ++n) orbitals.push_back(static_cast<int>(n));
        return true;
    };
    for (char c : list) {
        if (c == ',' || c == ' ' || c == '\t') {
            if (!take()) return std::nullopt;
        } else {
            word += c;
        }
    }
    if (!take() || orbitals.empty()) return std::nullopt;
    return orbitals;
}

std::string orbital_stem(int orbital) {
    const std::string n = std::to_string(orbital);
    return std::string(n.size() < 3 ? 3 - n.size() : 0, '0') + n;
}

AnswerFile cube_answers(const std::string& list) {
    AnswerFile f;
    f.write_answer_line("200").write_answer_line("3").write_answer_line(list);
    for (const char* r : {"3", "1", "0", "q"}) f.write_answer_line(r);
    return f;
}

AnswerFile orbital_answers(int orbital) {
    // Multiwfn reads "004" as orbital 4.
    AnswerFile f = answers({"8", "1"});
    f.write_answer_line(orbital_stem(orbital));
    return f;
}

AnswerFile composition_answers(const std::vector<int>& orbitals) {
    // Multiwfn takes no "q" at the orbital prompt and stops there with a
    // runtime error, after it has written every composition asked for.
    AnswerFile f = answers({"8", "1"});
    for (int n : orbitals) f.write_answer_line(n > 999 ? std::to_string(n) : text::format_i(n, 3));
    f.write_answer_line("q");
    return f;
}

std::vector<std::string> d_orbital_key() {
    return {"d-orbital info",
            "D 0 = -0.5*XX-0.5*YY+ZZ = dz2",
            "D+1 = XZ = dxz",
            "D-1 = YZ = dyz",
            "D+2 = ?3/2*(XX-YY) = dx2-y2",
            "D-2 = XY = dxy"};
}

AnswerFile topmod_first_answers() { return answers({"17", "1", "9", "2", "12", "-10", "q"}); }

BasinLists read_basin_lists(const text::TextLines& topmod) {
    // " Number of core basins is    10, their indices:"
    // " 11,12,17-20,23-26"
    // " Number of  1-synaptic basins is     8, their indices:"
    // Each list stands on the record after its heading. Other records begin
    // " Number of " too, so the whole key is compared.
    BasinLists lists;
    for (std::size_t i = 0; i + 1 < topmod.size(); ++i) {
        const std::string_view r = topmod[i];
        const std::string next(text::trim(topmod[i + 1]));
        if (starts_with(r, " Number of core basins")) {
            lists.core = next;
        } else if (starts_with(r, " Number of  1-synaptic")) {
            lists.one_synaptic = next;
            lists.one_found = true;
        } else if (starts_with(r, " Number of  2-synaptic")) {
            lists.two_synaptic = next;
            lists.two_found = true;
        }
    }
    return lists;
}

AnswerFile topmod_second_answers(const BasinLists& l) {
    AnswerFile f = answers({"17", "1", "9", "2", "12", "-5", "b"});
    if (l.one_found && l.two_found) {
        f.write_answer_line(l.one_synaptic).write_answer_line(l.two_synaptic);
    } else if (l.one_found) {
        f.write_answer_line(l.core).write_answer_line(l.one_synaptic);
    } else if (l.two_found) {
        f.write_answer_line(l.core).write_answer_line(l.two_synaptic);
    } else {
        f.write_answer_line(l.core).write_answer_line("").write_answer_line(l.core).write_answer_line("");
    }
    return f;
}

AnswerFile loba_answers(double threshold, bool open_shell) {
    AnswerFile f = answers({"19"});
    // Multiwfn 3.8 stops with a segmentation fault in the composition of
    // the localised beta orbitals of an unrestricted wavefunction. Its
    // composition method is switched off first ("-9", "0"), which gives
    // the same oxidation states for closed shells and lets open shells
    // finish.
    if (open_shell) f.write_answer_line("-9").write_answer_line("0");
    for (const char* r : {"1", "8", "100"}) f.write_answer_line(r);
    f.write_answer_line(threshold, 6, 3);
    for (const char* r : {"m", "0", "-10", "q"}) f.write_answer_line(r);
    return f;
}

AnswerFile esp_answers() { return answers({"12", "0", "6", "-1", "-1", "q"}); }
AnswerFile hirshfeld_answers() { return answers({"7", "1", "1", "y", "0", "q"}); }
AnswerFile spin_density_answers() { return answers({"5", "5", "3", "2", "0", "q"}); }

std::optional<std::vector<std::string>> hirshfeld_charge_log(const text::TextLines& chg, int natoms) {
    // "Ni    0.000000    0.000000    0.000000  -0.1155877582": the element in
    // columns 1-2, x, y, z in three fields of 12, the charge in one of 15.
    std::vector<std::string> log{"#Orca hirshfeld charges"};
    for (int i = 0; i < natoms && i < static_cast<int>(chg.size()); ++i) {
        const std::string_view r = chg[i];
        auto charge = text::read_f(text::column_field(r, 39, 15));
        if (r.size() < 40 || !charge) break;
        log.push_back(text::column_field(r, 1, 2) + text::format_f(*charge, 13, 6));
    }
    if (log.size() < 2) return std::nullopt;
    return log;
}

bool molden_unrestricted(const text::TextLines& molden) {
    // orca_2mkl writes " Spin= Beta" above each beta orbital.
    for (std::string_view r : molden) {
        const std::string_view t = text::trim(r);
        if (text::starts_with_nocase(t, "Spin=") && text::starts_with_nocase(text::trim(t.substr(5)), "Beta"))
            return true;
    }
    return false;
}

namespace {

// Core electrons of the def2 core potentials, which ORCA adds by itself to
// a def2 basis from rubidium on; 0 where the def2 sets have none.
int def2_core_electrons(long long z) {
    if (z >= 37 && z <= 54) return 28;
    if (z >= 55 && z <= 57) return 46;
    if (z >= 58 && z <= 71) return 28;
    if (z >= 72 && z <= 86) return 60;
    return 0;
}

bool section_heading(std::string_view r, std::string_view name) { return text::starts_with_nocase(text::trim(r), name); }

struct MoldenAtoms {
    std::size_t end = 0;                                  // the record after the [Atoms] block
    std::vector<std::pair<std::string, long long>> atoms; // symbol and nuclear charge
};

MoldenAtoms atoms_block(const text::TextLines& molden) {
    // "Y    1  39          0.0000000000         0.0000000000         0.0000000000"
    MoldenAtoms block;
    std::size_t i = 0;
    while (i < molden.size() && !section_heading(molden[i], "[Atoms]")) ++i;
    for (++i; i < molden.size() && text::trim(molden[i]).substr(0, 1) != "["; ++i) {
        std::string_view r = text::trim(molden[i]);
        const std::size_t blank = r.find(' ');
        if (blank == std::string_view::npos) continue;
        auto numbers = text::read_ints(r.substr(blank), 2);
        if (numbers && numbers->size() == 2) block.atoms.emplace_back(std::string(r.substr(0, blank)), (*numbers)[1]);
    }
    block.end = i;
    return block;
}

}  // namespace

std::optional<std::vector<std::string>> valence_section(const text::TextLines& molden, int charge) {
    // Multiwfn reads [Nval] in the first 500 records only.
    for (std::size_t i = 0; i < molden.size() && i < 500; ++i)
        if (section_heading(molden[i], "[Nval]")) return std::vector<std::string>{};
    double electrons = 0;
    for (std::string_view r : molden) {
        const std::string_view t = text::trim(r);
        if (text::starts_with_nocase(t, "Occup=")) electrons += text::read_f(t.substr(6)).value_or(0);
    }
    const MoldenAtoms block = atoms_block(molden);
    long long nuclear = 0, cores = 0;
    std::vector<std::string> section{"[Nval]"}, listed;
    for (const auto& [symbol, z] : block.atoms) {
        nuclear += z;
        const int core = def2_core_electrons(z);
        cores += core;
        if (core == 0 || std::find(listed.begin(), listed.end(), symbol) != listed.end()) continue;
        listed.push_back(symbol);
        section.push_back(symbol + " " + std::to_string(z - core));
    }
    // orca_2mkl writes the full nuclear charges; the electrons a core
    // potential replaces are missing from the orbitals.
    // Without an element of a def2 core there is nothing to tell.
    if (cores == 0) return std::vector<std::string>{};
    const long long missing = std::llround(static_cast<double>(nuclear - charge) - electrons);
    if (missing <= 0) return std::vector<std::string>{};
    if (missing != cores) return std::nullopt;
    return section;
}

std::vector<std::string> with_valence_section(const text::TextLines& molden, const std::vector<std::string>& section) {
    std::vector<std::string> lines = molden.strings();
    const std::size_t at = std::min(atoms_block(molden).end, lines.size());
    lines.insert(lines.begin() + static_cast<long>(at), section.begin(), section.end());
    return lines;
}

}  // namespace zentol
