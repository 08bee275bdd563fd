#include "engines/orca/orca_input.h"

#include <cmath>

#include "text/fixed_format.h"

namespace zentol {

namespace {

// Table positions (0-based) of the keywords.
enum Keyword {
    kB3lyp, kWb97x, k321g, k631g, kSp, kOpt, kPercentMethod, kMethodWord, kAm1End, kBangOpt, kDef2Tzvp, kMp2, k6311g
};

std::string word(const OrcaKeywords& table, int k) { return std::string(text::trim_right(table[k])); }

std::string coordinate_record(const Store& st, int atom) {
    const auto& r = st.atom_rec[atom];
    return label_text(st.atom_label[atom]) + text::format_f(r[kX], 9, 4) + text::format_f(r[kY], 9, 4) +
           text::format_f(r[kZ], 9, 4);
}

std::string free(const std::string& s) { return text::FreeRecord().operator<<(s).str(); }

}  // namespace

OrcaKeywords orca_keyword_table() {
    static const char* const words[13] = {"B3LYP", "wB97X-D3", "3-21G",   "6-31G**",   "SP",  "OPT",     "%method",
                                          "Method", "AM1 end", "! opt", "def2-TZVP", "MP2", "6-311G**"};
    OrcaKeywords table;
    for (int k = 0; k < 13; ++k) table[k] = text::pad_right(words[k], 9);
    return table;
}

OrcaDeckWords orca_deck_words(const OrcaInput& in, const OrcaKeywords& table, const std::string& scf_before,
                              bool& opt_requested) {
    OrcaDeckWords w;
    static const int methods[5] = {kB3lyp, kB3lyp, kWb97x, kB3lyp, kMp2};
    static const int bases[5] = {k631g, k321g, k631g, kDef2Tzvp, k6311g};
    w.method = word(table, methods[in.method >= 1 && in.method <= 4 ? in.method : 2]);
    w.basis = word(table, bases[in.basis >= 1 && in.basis <= 4 ? in.basis : 2]);
    w.run = word(table, in.run_type == 1 ? kSp : kOpt);
    if (in.run_type != 1) opt_requested = true;
    w.scf = scf_before;
    if (in.multiplicity == 1) w.scf = "RHF";
    if (in.multiplicity > 1) w.scf = "UHF";
    if (in.method == 3) {
        // The semi-empirical deck is a block of its own: the four fields
        // carry its lines, and basis, run type and spectrum have no say.
        w.method = word(table, kPercentMethod);
        w.basis = word(table, kMethodWord);
        w.run = word(table, kAm1End);
        w.scf = word(table, kBangOpt);
    }
    return w;
}

std::vector<std::string> orca_deck(const OrcaInput& in, const OrcaDeckWords& w, const std::string& job,
                                   const Store& st) {
    std::vector<std::string> deck{free("# Orca input from Brevan / Zentol")};
    // With Calculate Spectrum off the spectrum radio button has no say.
    const int spectrum = in.spectrum_on ? in.spectrum : 0;
    if (in.method == 3) {
        deck.push_back(free("# " + job));
        deck.push_back(free("# The method can be AM1 PM3 ZNDDO_1 ZNDDO_2 etc."));
        deck.push_back(free(w.method));
        // "Method" cut to the length of "%method", then one blank.
        deck.push_back(free(text::pad_right(w.basis, static_cast<int>(w.method.size())) + " " + w.run));
        deck.push_back(free(w.scf));
    } else if (spectrum == 3) {
        // The TD-DFT run is fixed: it wants a structure optimised with B3LYP.
        for (const char* line : {" !B3LYP DEF2-TZVP CPCM(HEXANE)", "%TDDFT", "   NROOTS   30", "END"})
            deck.emplace_back(line);
    } else {
        deck.push_back(free("# " + job));
        deck.push_back(free("! " + w.scf + " " + w.method + " " + w.basis));
        deck.push_back(free("! " + w.run + " TightSCF Pmodel" + (in.wfn ? " AIM" : "")));
        if (spectrum == 1 || spectrum == 2) deck.emplace_back(" !numfreq");
        deck.push_back(free("%maxcore 1024"));
        if (in.cores > 1) {
            deck.push_back((text::FreeRecord() << "%PAL NPROC " << in.cores).str());
            deck.push_back(free("end"));
        }
        if (spectrum == 2) {
            deck.push_back(free("%elprop Polar 1"));
            deck.push_back(free("end"));
        }
    }
    deck.push_back((text::FreeRecord() << "* xyz " << in.charge << in.multiplicity).str());
    for (int i = 1; i <= st.natoms; ++i) deck.push_back(coordinate_record(st, i));
    deck.push_back(free("*"));
    return deck;
}

std::string orca_cores_record(int cores) { return text::format_i(cores, 5); }

std::optional<int> read_orca_cores(const std::vector<std::string>& lines) {
    if (lines.empty()) return std::nullopt;
    auto values = text::read_ints(lines[0], 1);
    if (!values || values->empty()) return std::nullopt;
    return static_cast<int>((*values)[0]);
}

}  // namespace zentol
