#include "engines/mopac/mopac_input.h"

#include <algorithm>
#include <cmath>

#include "building/geometry.h"
#include "building/vec3.h"
#include "session/store_ops.h"
#include "text/fixed_format.h"

namespace zentol {

namespace {

const char* const kMethods[] = {"PDG", "MDG", "MNDO", "AM1", "PM3", "PM6", "PM7", "PM6-DH+", "PM6-DH2", "PM6-DH2X"};
const char* const kSpinWords[] = {" SINGLET", " DOUBLET", " TRIPLET", " QUARTET", " QUINTET",
                                  " SEXTET",  " SEPTET",  " OCTET",   " NONET"};

// Mopac 6's table stops at triplets: a higher multiplicity has no word. The
// 2016 generation needs the word, or it computes the lowest multiplicity
// the electrons allow (a quartet nitrogen atom runs as a doublet).
std::string spin_word(int multiplicity, bool modern) {
    const int last = modern ? kMaxModernMultiplicity : 3;
    return multiplicity >= 1 && multiplicity <= last ? kSpinWords[multiplicity - 1] : "";
}

// The open-source MOPAC runs a doublet as UHF unless told, and a triplet
// not at all: RHF doublets ask for RHF (then the spin densities are printed
// as ever), RHF triplets for two open orbitals. Quartets and above run UHF.
std::string open_shell_words(const MopacOptions& o) {
    if (o.multiplicity < 2) return "";
    if (o.scf == 2 || o.multiplicity > 3) return " UHF";
    return o.multiplicity == 2 ? " RHF" : " OPEN(2,2)";
}

// Measured as the Geometry command measures, 0 where two atoms coincide.
float distance(const Store& st, int a, int b) {
    return static_cast<float>(zentol::distance(atom_position(st.atom_rec[a]), atom_position(st.atom_rec[b])));
}

float angle(const Store& st, int a, int b, int c) {
    return static_cast<float>(zentol::angle(atom_position(st.atom_rec[a]), atom_position(st.atom_rec[b]),
                                            atom_position(st.atom_rec[c]), 0.0));
}

std::string field(float value, int flag) { return text::format_f(value, 12, 5) + text::format_i(flag, 3); }

// Mopac 6 reads numbered labels as they stand; the open-source MOPAC takes
// "O1" for an isotope of mass 1, so it is given the bare element symbol.
std::string atom_label(const Store& st, int i, int version) {
    if (version == kMopac6) return label_text(st.atom_label[i]);
    return text::pad_right(text::trim(element_symbol(label_text(st.atom_label[i]))), 4);
}

int atom_flag(const MopacOptions& o, bool short_table, int atom, const int dihedral[4]) {
    if (o.bond_rotation) {
        for (int k = 0; k < 4; ++k)
            if (dihedral[k] == atom) return 0;
        return dihedral[0] == 0 ? 0 : 1;
    }
    return short_table ? o.run_type - 1 : 1;
}

}  // namespace

std::string mopac_method(int index) { return index >= 1 && index <= 10 ? kMethods[index - 1] : ""; }

bool method_needs_2016(int index) { return index >= 6 && index <= 10; }

bool method_dropped_by_modern_mopac(int index) { return index == 1 || index == 2; }

int mopac_method_index(std::string_view keyword) {
    for (int i = 1; i <= 10; ++i)
        if (text::equals_nocase(keyword, kMethods[i - 1])) return i;
    return 0;
}

std::string mopac_refusal(const MopacOptions& o, int version, bool mopac2016_checked) {
    const std::string method = mopac_method(o.method);
    if (o.method < 1) return "Choose a method";
    if (version == kMopac6 && method_needs_2016(o.method)) {
        if (mopac2016_checked)
            return method + " needs MOPAC 2016 or later, which is not installed: set \"mopac2016\" in engines.def";
        return method + " needs MOPAC 2016 or later: check Mopac2016";
    }
    if (version != kMopac6 && method_dropped_by_modern_mopac(o.method))
        return "MOPAC 2016 and later do not know " + method + ": choose another method";
    if (version != kMopac6 && o.multiplicity > kMaxModernMultiplicity)
        return "MOPAC takes multiplicities up to " + std::to_string(kMaxModernMultiplicity) + " (NONET)";
    return "";
}

std::vector<std::string> mopac_header(MopacOptions& o, int version, const std::string& job) {
    const bool modern = version != kMopac6;
    std::string line = " " + std::string(text::trim(mopac_method(o.method))) + " ";
    line += " CHARGE=" + text::format_i(o.charge, 3);
    line += spin_word(o.multiplicity, modern);
    if (o.geo_ok) line += modern ? " ALLVEC GRAPHF DENSITY GEO-OK" : " GRAPH DENSITY GEO-OK";
    else line += modern ? " GRAPHF DENSITY" : " GRAPH DENSITY";
    if (o.multiplicity > 1) line += " ESR";
    if (o.mm_ok) line += " MMOK";
    if (o.run_type == 3) {
        // The open-source MOPAC takes FORCE only on an optimised geometry:
        // its force constants come from a second job (mopac_force_job).
        if (!modern) line += " FORCE";
        o.run_type = 2;
    }
    line += " VECTORS XYZ";
    if (modern) {
        // MOPAC 22 prints its energies in eV only with DISP; the heat of
        // formation is the same with and without it.
        line += " DISP" + open_shell_words(o);
        if (o.run_type == 1) line += " 1SCF";   // a single point stays one, whatever the flags
    }
    return {line, " Mopac run for " + job, " *********************"};
}

std::vector<std::string> mopac_atom_table(const Store& st, const MopacOptions& o, int version, const int dihedral[4]) {
    std::vector<std::string> lines;
    const int n = st.natoms;
    if (version == kMopac6 && n < 4) {
        auto flag = [&](int atom) { return atom_flag(o, true, atom, dihedral); };
        if (n >= 1) lines.push_back(n == 1 ? atom_label(st, 1, version) + field(0, flag(1)) + field(0, flag(1)) +
                                                 field(0, flag(1))
                                           : atom_label(st, 1, version));
        if (n >= 2) lines.push_back(atom_label(st, 2, version) + field(distance(st, 1, 2), flag(2)));
        if (n >= 3)
            lines.push_back(atom_label(st, 3, version) + field(distance(st, 2, 3), flag(3)) +
                            field(angle(st, 1, 2, 3), flag(3)));
        return lines;
    }
    for (int i = 1; i <= n; ++i) {
        const int flag = atom_flag(o, false, i, dihedral);
        lines.push_back(atom_label(st, i, version) + field(st.atom_rec[i][kX], flag) + field(st.atom_rec[i][kY], flag) +
                        field(st.atom_rec[i][kZ], flag));
    }
    return lines;
}

std::vector<std::string> mopac_force_job(const MopacOptions& o, const std::string& method) {
    const std::string line = " " + method + "  CHARGE=" + text::format_i(o.charge, 3) +
                             spin_word(o.multiplicity, true) + open_shell_words(o) + " OLDGEO FORCE XYZ";
    return {"", line, " Force constants on the optimised geometry", " *********************", ""};
}

}  // namespace zentol
