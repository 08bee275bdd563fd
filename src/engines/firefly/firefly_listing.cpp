#include "engines/firefly/firefly_listing.h"

#include <algorithm>

#include "text/fixed_format.h"

namespace zentol {

namespace {

using text::TextLines;

constexpr std::string_view kCardKey = " INPUT CARD>";
constexpr std::string_view kContrlCard = " INPUT CARD> $CONTRL";
constexpr std::string_view kDataCard = " INPUT CARD> $DATA";
constexpr std::string_view kNetChargesKey = " NET CHARGES:";
constexpr std::string_view kMopacChargesKey = "                    MOPAC CHARGES";
constexpr std::string_view kMullikenKey = "          TOTAL MULLIKEN";
constexpr std::string_view kBrenemanKey = " BRENEMAN (CHELPG) RADII";
constexpr std::string_view kAtomsKey = " TOTAL NUMBER OF ATOMS";
constexpr std::string_view kCoordinatesKey = " COORDINATES OF ALL ATOMS";
constexpr std::string_view kBohrCoordinatesKey = " ATOM      ATOMIC                      COORDINATES (BOHR)";
constexpr double kBohrToAngstrom = 0.52917721092;
constexpr std::string_view kBasisKey = " TOTAL NUMBER OF BASIS FUNCTIONS";
constexpr std::string_view kOccupiedKey = " NUMBER OF OCCUPIED ORBITALS (ALPHA)";
constexpr std::string_view kTotalEnergyKey = "          TOTAL ENERGY";
constexpr std::string_view kSinglePointEnergyKey = "                       TOTAL ENERGY =";
constexpr std::string_view kEquilibriumKey = "     ***** EQUILIBRIUM GEOMETRY LOCATED";
constexpr std::string_view kShortEquilibriumKey = "     ***** EQUILIBRIUM GEOMET";

bool begins(std::string_view line, std::string_view key) { return line.substr(0, key.size()) == key; }

// A whole number behind the record's "=":
//  TOTAL NUMBER OF BASIS FUNCTIONS     =   60             (Firefly, PC GAMESS: columns 39-43)
//  NUMBER OF OCCUPIED ORBITALS (ALPHA)          =    4    (GAMESS-US: columns 48-52)
int number_after_equals(std::string_view line) {
    const std::size_t eq = line.find('=');
    if (eq == std::string_view::npos) return 0;
    auto v = text::read_ints(line.substr(eq + 1), 1);
    return v && !v->empty() ? static_cast<int>((*v)[0]) : 0;
}

std::optional<double> real_after(std::string_view line, std::size_t from) {
    if (from >= line.size()) return std::nullopt;
    auto v = text::read_reals(line.substr(from), 1);
    if (!v || v->empty()) return std::nullopt;
    return (*v)[0];
}

// Where a kind's values stand: the key of its block, the records between
// the key and the first row, and the columns blanked before the value.
struct ChargeLayout {
    std::string_view key;
    int skip;
    std::size_t blanked;
};

//                     MOPAC CHARGES
//                     -------------
//          ATOM NO.   TYPE          CHARGE        ATOM  ELECTRON DENSITY
//            1         C             -0.1292          4.1292
//           TOTAL MULLIKEN AND LOWDIN ATOMIC POPULATIONS
//        ATOM         MULL.POP.    CHARGE          LOW.POP.     CHARGE
//     1 O             8.373185   -0.373185         8.257326   -0.257326
ChargeLayout charge_layout(int kind, bool breneman) {
    switch (kind) {
        case kChelpgCharges: return {kNetChargesKey, 3, 15};
        case kMopacCharges: return {kMopacChargesKey, 2, 23};
        case kChelpgAndMulliken: return breneman ? ChargeLayout{kBrenemanKey, 0, 6} : ChargeLayout{kMullikenKey, 1, 6};
        default: return {kMullikenKey, 1, 28};
    }
}

std::size_t last_line_with(const TextLines& listing, std::string_view key) {
    std::size_t found = listing.size();
    for (std::size_t i = 0; i < listing.size(); ++i)
        if (begins(listing[i], key)) found = i;
    return found;
}

// A coordinate row: the label as typed, then the nuclear charge and x y z.
//  C           6.0   0.2292900177   1.3927230046   0.0000000000
//  CARBON      6.0  -0.0000000000   0.0000000000   0.6666271528
std::optional<ListingAtom> atom_row(std::string_view line) {
    const std::size_t start = line.find_first_not_of(' ');
    if (start == std::string_view::npos) return std::nullopt;
    const std::size_t end = std::min(line.find(' ', start), line.size());
    ListingAtom a;
    a.label = std::string(line.substr(start, end - start));
    if (text::read_f(a.label)) return std::nullopt;
    auto v = text::read_reals(line.substr(end), 4);
    if (!v || v->size() < 4) return std::nullopt;
    a.nuclear_charge = (*v)[0], a.x = (*v)[1], a.y = (*v)[2], a.z = (*v)[3];
    return a;
}

std::vector<ListingAtom> coordinate_block(const TextLines& listing, std::size_t first_row, int expected) {
    std::vector<ListingAtom> atoms;
    const int limit = expected > 0 ? expected : 3000;
    for (std::size_t row = first_row; row < listing.size() && static_cast<int>(atoms.size()) < limit; ++row) {
        auto a = atom_row(listing[row]);
        if (!a) break;
        atoms.push_back(std::move(*a));
    }
    return atoms;
}

// Every run prints the molecule as it went in, in bohr, one header record
// below the key:
//  ATOM      ATOMIC                      COORDINATES (BOHR)
//            CHARGE         X                   Y                   Z
//  C           6.0     2.6342558126       -0.4183391645        0.0000000000
// Only an optimisation prints " COORDINATES OF ALL ATOMS ARE (ANGS)" too.
std::vector<ListingAtom> input_block(const TextLines& listing, std::size_t key, int expected) {
    std::vector<ListingAtom> atoms = coordinate_block(listing, key + 2, expected);
    if (expected > 0 && static_cast<int>(atoms.size()) < expected) return {};
    for (ListingAtom& a : atoms) a.x *= kBohrToAngstrom, a.y *= kBohrToAngstrom, a.z *= kBohrToAngstrom;
    return atoms;
}

// The row of orbital numbers above a block's eigenvalues, beginning with
// the orbital expected next:
//                       6          7
bool orbital_number_row(std::string_view line, int expected) {
    auto v = text::read_ints(line, 64);
    if (!v || v->empty() || (*v)[0] != expected || text::count_words(line) != static_cast<int>(v->size()))
        return false;
    for (std::size_t k = 1; k < v->size(); ++k)
        if ((*v)[k] != (*v)[k - 1] + 1) return false;
    return true;
}

// The table of one set ends at the SCF's closing record
// (" ...... END OF RHF CALCULATION ......", " ... END OF ROHF-GVB SCF CALCULATION ..."),
// at the parallel runs' "TIMING STATISTICS ON RANK 0:" or at UHF's beta set.
bool ends_orbitals(std::string_view line) {
    const std::string_view t = text::trim(line);
    if (t.rfind("...", 0) == 0 && t.find("END OF") != std::string_view::npos) return true;
    return line.find("TIMING STATISTICS") != std::string_view::npos ||
           line.find("----- BETA SET") != std::string_view::npos;
}

// The eigenvalues of one block, "(15X,nF11.4)" with n from the record's
// length; false when the record holds none.
bool read_eigenvalues(std::string_view line, ListingOrbitals& o) {
    const int count = (static_cast<int>(text::trimmed_length(line)) - 15) / 11;
    if (count < 1) return false;
    for (int k = 0; k < count && static_cast<int>(o.energies.size()) < kMaxFireflyOrbitals; ++k) {
        auto v = text::read_f(text::column_field(line, 16 + 11 * k, 11), 4);
        if (!v) return !o.energies.empty();
        o.energies.push_back(*v * kHartreeToEv);
    }
    return true;
}

}  // namespace

std::vector<std::string> input_cards(const TextLines& listing) {
    std::vector<std::string> cards;
    std::size_t i = 0;
    while (i < listing.size() && !text::starts_with_nocase(listing[i], kContrlCard)) ++i;
    for (; i < listing.size() && begins(listing[i], kCardKey); ++i) {
        cards.emplace_back(text::trim_right(listing[i]));
        if (text::starts_with_nocase(listing[i], kDataCard)) break;
    }
    return cards;
}

bool chelpg_requested(const std::vector<std::string>& cards) {
    for (const std::string& card : cards) {
        const std::size_t at = text::upper_case(card).find("CHELPG");
        if (at != std::string::npos && at < 65) return true;
    }
    return false;
}

int charge_kind(const TextLines& listing, bool chelpg_run) {
    int kind = kNoCharges;
    for (std::string_view line : listing) {
        if (begins(line, kNetChargesKey)) kind = kChelpgCharges;
        else if (begins(line, kMopacChargesKey) && kind == kNoCharges) kind = kMopacCharges;
        else if (begins(line, kMullikenKey) && (chelpg_run || kind == kNoCharges))
            kind = chelpg_run ? kChelpgAndMulliken : kMullikenCharges;
    }
    return kind;
}

// PC GAMESS and GAMESS-US list every atom twice in the Mulliken block, the
// first row without the CHARGE columns; only the rows with a charge count:
//     1 C             5.997223                     5.989834
//     1 C             5.997223    0.002777         5.989834    0.010166
std::vector<double> read_charges(const TextLines& listing, int kind, int natoms) {
    std::vector<double> values;
    if (kind == kNoCharges || natoms < 1) return values;
    const bool breneman = kind == kChelpgAndMulliken && last_line_with(listing, kBrenemanKey) < listing.size();
    const ChargeLayout layout = charge_layout(kind, breneman);
    const std::size_t key = last_line_with(listing, layout.key);
    if (key == listing.size()) return values;
    for (std::size_t row = key + 1 + static_cast<std::size_t>(layout.skip);
         row < listing.size() && static_cast<int>(values.size()) < natoms; ++row) {
        const std::string_view line = listing[row];
        if (text::trimmed_length(line) <= layout.blanked) break;
        if (kind == kMullikenCharges && text::trim(text::column_field(line, 29, 12)).empty()) continue;
        auto v = real_after(line, layout.blanked);
        if (!v) break;
        values.push_back(*v);
    }
    return values;
}

std::vector<std::string> firefly_charge_log(int kind, const std::string& method,
                                            const std::vector<std::string>& labels,
                                            const std::vector<double>& charges) {
    const char* words = kind == kMopacCharges     ? " Mopac atom charges"
                        : kind == kMullikenCharges ? " Mulliken atom charges"
                                                   : " Chelpg atom charges";
    std::vector<std::string> out{"#Firefly " + method + words};
    const std::size_t n = std::min({labels.size(), charges.size(), static_cast<std::size_t>(kMaxChargeRecords)});
    for (std::size_t i = 0; i < n; ++i) out.push_back(text::pad_right(labels[i], 4) + text::format_f(charges[i], 16, 4));
    return out;
}

bool is_equilibrium_record(std::string_view line) {
    return !line.empty() && (line[0] == ' ' || line[0] == '1') && begins(line.substr(1), kEquilibriumKey);
}

ListingGeometry read_listing_geometry(const TextLines& listing) {
    ListingGeometry g;
    for (std::size_t i = 0; i < listing.size(); ++i) {
        const std::string_view line = listing[i];
        if (begins(line, kAtomsKey) && g.total_atoms == 0) g.total_atoms = number_after_equals(line);
        const std::size_t eq = line.find("EQUILIBRIUM GEOMETRY LOCATED");
        if (eq != std::string_view::npos && eq < 25) {
            g.equilibrium = true;
            g.equilibrium_record = std::string(text::trim_right(line.substr(0, 40)));
        }
        if (begins(line, kBohrCoordinatesKey) && g.first.empty()) {
            g.first = input_block(listing, i, g.total_atoms);
            continue;
        }
        if (!begins(line, kCoordinatesKey)) continue;
        auto block = coordinate_block(listing, i + 3, g.total_atoms);
        if (block.empty() || (g.total_atoms > 0 && static_cast<int>(block.size()) < g.total_atoms)) continue;
        ++g.blocks;
        g.final_block = g.equilibrium;
        if (g.first.empty()) g.first = block;
        g.last = std::move(block);
    }
    return g;
}

//           ------------
//           EIGENVECTORS
//           ------------
//
//                       1          2          3          4          5
//                   -20.2409    -1.2722    -0.6217    -0.4539    -0.3918
// The key stands at column 11 in every engine of the family; the
// eigenvalues are the fourth record after it. Each block holds one row a
// basis function; fewer orbitals than basis functions may be printed.
ListingOrbitals read_listing_orbitals(const TextLines& listing) {
    ListingOrbitals o;
    std::size_t key = listing.size();
    for (std::size_t i = 0; i < listing.size() && key == listing.size(); ++i) {
        const std::string_view line = listing[i];
        if (begins(line, kBasisKey) && o.nbasis == 0) o.nbasis = number_after_equals(line);
        if (begins(line, kOccupiedKey) && o.nocc == 0) o.nocc = number_after_equals(line);
        if (text::trim(line) == "EIGENVECTORS") key = i;
    }
    std::size_t at = key + 4;
    while (at < listing.size() && static_cast<int>(o.energies.size()) < kMaxFireflyOrbitals) {
        if (!read_eigenvalues(listing[at], o)) break;
        o.found = true;
        const int expected = static_cast<int>(o.energies.size()) + 1;
        std::size_t next = at + 1;
        while (next + 1 < listing.size() && !ends_orbitals(listing[next]) &&
               !orbital_number_row(listing[next], expected))
            ++next;
        if (next + 1 >= listing.size() || ends_orbitals(listing[next])) break;
        at = next + 1;
    }
    return o;
}

std::vector<std::string> firefly_orbital_table(const ListingOrbitals& o) {
    std::vector<std::string> out{"     M.O.    Energy(eV)"};
    for (int i = static_cast<int>(o.energies.size()); i >= 1; --i) {
        std::string row = text::format_i(i, 8) + text::format_f(o.energies[static_cast<std::size_t>(i - 1)], 12, 5);
        if (i == o.nocc + 1) row += " L.U.M.O";
        else if (i == o.nocc) row += " H.O.M.O";
        out.push_back(row);
    }
    return out;
}

// An optimisation ends with the energy in columns 30-49:
//           TOTAL ENERGY      =      -74.9659012157
// single points and Hessians print it only further right:
//                        TOTAL ENERGY =    -379.7779550077
// (the eleven-blank "           TOTAL ENERGY=" of the PI analysis is
// neither). A failed optimisation prints the first form with 0.0000000000.
std::optional<double> listing_total_energy(const TextLines& listing) {
    std::optional<double> single_point;
    for (std::string_view line : listing) {
        if (begins(line, kTotalEnergyKey)) {
            auto v = text::read_f(text::column_field(line, 30, 20), 10);
            if (v && *v != 0.0) return v;
        } else if (begins(line, kSinglePointEnergyKey)) {
            auto v = real_after(line, kSinglePointEnergyKey.size());
            if (v && *v != 0.0) single_point = v;
        }
    }
    return single_point;
}

//  FINAL ENERGY IS     -379.7779550077 AFTER   9 ITERATIONS        (Firefly, PC GAMESS)
//  FINAL R-AM1 ENERGY IS       -9.1286961082 AFTER   8 ITERATIONS  (GAMESS-US)
// An SCF that did not converge prints " FINAL ENERGY IS        0.0000000000".
std::optional<double> listing_final_energy(const TextLines& listing, bool optimisation) {
    std::optional<double> last;
    for (std::string_view line : listing) {
        if (optimisation && !line.empty() && (line[0] == ' ' || line[0] == '1') &&
            begins(line.substr(1), kShortEquilibriumKey))
            break;
        if (!begins(line, " FINAL ")) continue;
        const std::size_t is = line.find("ENERGY IS");
        if (is == std::string_view::npos) continue;
        auto v = real_after(line, is + 9);
        if (v && *v == 0.0) v.reset();
        if (!optimisation) return v;
        if (v) last = v;
    }
    return last;
}

bool not_stationary(const TextLines& listing) {
    for (std::string_view line : listing)
        if (line.find("* THIS IS NOT A STATIONARY") != std::string_view::npos) return true;
    return false;
}

std::vector<std::string> firefly_summary(const TextLines& listing) {
    std::vector<std::string> out = input_cards(listing);
    std::size_t eq = 0;
    while (eq < listing.size() && !is_equilibrium_record(listing[eq])) ++eq;
    if (eq < listing.size()) {
        out.emplace_back(text::trim_right(listing[eq]));
        std::size_t key = eq;
        while (key < listing.size() && !begins(listing[key], kCoordinatesKey)) ++key;
        if (key < listing.size()) {
            const std::size_t rows = coordinate_block(listing, key + 3, 0).size();
            for (std::size_t i = key; i < key + 3 + rows && i < listing.size(); ++i)
                out.emplace_back(text::trim_right(listing[i]));
        }
    }
    if (auto e = listing_total_energy(listing)) {
        out.push_back(" TOTAL ENERGY = " + text::format_f(*e, 20, 10) + " HARTREES");
        out.push_back(text::blanks(11) + text::format_f(*e * kHartreeToKjMol, 20, 5) + " kJ/mol");
    }
    return out;
}

std::string total_energy_geo_line(double h) {
    return " TOTAL ENERGY = " + text::format_f(h, 15, 5) + " HARTREES" + text::format_f(h * kHartreeToEv, 15, 5) +
           " kV      " + text::format_f(h * kHartreeToKjMol, 15, 5) + " kJ/mol";
}

std::string final_energy_geo_line(double h) {
    return " Final Energy =" + text::format_f(h, 15, 5) + " Hartrees" + text::format_f(h * kHartreeToEv, 15, 5) +
           " eV      " + text::format_f(h * kHartreeToKjMol, 15, 5) + " kJ/mol";
}

std::string final_energy_status(double h) { return text::format_f(h * kHartreeToEv, 22, 5) + " eV"; }

}  // namespace zentol
