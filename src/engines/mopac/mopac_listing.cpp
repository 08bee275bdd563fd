#include "engines/mopac/mopac_listing.h"

#include <algorithm>
#include <optional>

#include "text/fixed_format.h"

namespace zentol {

namespace {

using Line = std::string_view;

// Keys with their leading blanks: a line has the key when it begins with it.
constexpr Line kScfKey = "     SCF FIELD WAS ACHIEVED";
constexpr Line kTotalEnergyKey = "          TOTAL ENERGY";
constexpr Line kElectronicKey = "          ELECTRONIC ENERGY";
constexpr Line kCoreCoreKey = "          CORE-CORE REPULSION";
constexpr Line kHeatKey = "          FINAL HEAT OF FORMATION";
constexpr Line kFilledKey = "          NO. OF FILLED LEVELS";
constexpr Line kOpenKey = "          AND NO. OF OPEN LEVELS";
constexpr Line kAlphaKey = "          NO. OF ALPHA ELECTRONS";
constexpr Line kBetaKey = "          NO. OF BETA  ELECTRONS";
constexpr Line kChargesKey = "              NET ATOMIC CH";
constexpr Line kUhfSpinKey = "          ATOMIC ORBITAL SPIN POPULATIONS";
constexpr Line kMopac6XyzKey = "          CARTESIAN COORDINATES";
constexpr Line kMopac2016XyzKey = "                             CARTESIAN COORDINATES";

bool begins(Line line, Line key) { return line.starts_with(key); }

bool at_column(Line line, int column, Line key) {
    const auto from = static_cast<std::size_t>(column - 1);
    return line.size() >= from + key.size() && line.substr(from, key.size()) == key;
}

// The first line in [from, to) that has the key; `to` if none.
template <typename HasKey>
std::size_t find_line(LineViews lines, std::size_t from, std::size_t to, HasKey has_key) {
    to = std::min(to, lines.size());
    for (std::size_t i = from; i < to; ++i)
        if (has_key(lines[i])) return i;
    return to;
}

template <typename HasKey>
std::size_t find_line(LineViews lines, std::size_t from, HasKey has_key) {
    return find_line(lines, from, lines.size(), has_key);
}

std::size_t find_key(LineViews lines, std::size_t from, Line key) {
    return find_line(lines, from, [key](Line l) { return begins(l, key); });
}

// The line with its first `blanked` columns blanked, read as one free-form
// number.
std::optional<double> number_after(Line line, std::size_t blanked) {
    if (line.size() <= blanked) return std::nullopt;
    auto v = text::read_reals(line.substr(blanked), 1);
    if (!v || v->empty()) return std::nullopt;
    return (*v)[0];
}

// A whole number in columns 36-46, as the engines print their counts:
//           NO. OF FILLED LEVELS    =          4
std::optional<int> count_at(LineViews lines, std::size_t at) {
    if (at >= lines.size()) return std::nullopt;
    auto n = text::read_i(text::column_field(lines[at], 36, 11));
    if (!n || *n < 0) return std::nullopt;
    return static_cast<int>(*n);
}

// ---- Step 1: energy ----

// The method is named a few lines below the SCF line:
//      SCF FIELD WAS ACHIEVED
//
//
//                               PM7 CALCULATION
std::string method_after(LineViews lines, std::size_t scf) {
    for (std::size_t i = scf + 1; i < lines.size() && i <= scf + 6; ++i) {
        const Line t = text::trim(lines[i]);
        constexpr Line kTail = " CALCULATION";
        if (t.size() > kTail.size() && t.ends_with(kTail)) return std::string(text::trim(t.substr(0, t.size() - kTail.size())));
    }
    return "";
}

// MOPAC 2012 and 2016 print the energy once, in eV:
//           TOTAL ENERGY            =       -817.56195 EV
// The open-source MOPAC prints it only with DISP, and then a line in
// kcal/mol comes first and the eV line eight lines later:
//           TOTAL ENERGY            =      -7441.14964 KCAL/MOL = ELECTRONIC ENERGY + CORE-CORE REPULSION
//           TOTAL ENERGY            =       -322.67879 EV
bool is_ev_total(Line line) { return begins(line, kTotalEnergyKey) && line.find("KCAL", 36) == Line::npos; }

// The parts of the energy, when the total is missing:
//           ELECTRONIC ENERGY       =      -468.96517 EV
//           CORE-CORE REPULSION     =        146.28638 EV
std::optional<double> summed_energy(LineViews lines, std::size_t from, std::size_t to) {
    const std::size_t e = find_line(lines, from, to, [](Line l) { return begins(l, kElectronicKey); });
    const std::size_t c = find_line(lines, from, to, [](Line l) { return begins(l, kCoreCoreKey); });
    if (e == to || c == to) return std::nullopt;
    auto electronic = number_after(lines[e], 36), core = number_after(lines[c], 36);
    if (!electronic || !core) return std::nullopt;
    return *electronic + *core;
}

// The status text of a summed energy is taken from the line the engine
// would have printed for it: "=" in column 35, the energy F17.5 and " EV".
std::string energy_status_text(double energy) {
    const std::string line =
        std::string(kTotalEnergyKey) + text::blanks(12) + "=" + text::format_f(energy, 17, 5) + " EV";
    return text::column_field(line, 37, 20);
}

// MOPAC 21 and 22 without DISP may print neither the total nor its parts;
// the heat of formation always stands there:
//           FINAL HEAT OF FORMATION =        -23.07796 KCAL/MOL =     -96.55818 KJ/MOL
bool read_heat_of_formation(LineViews lines, std::size_t from, std::size_t to, MopacListing& r) {
    const std::size_t at = find_line(lines, from, to, [](Line l) { return begins(l, kHeatKey); });
    if (at == to) return false;
    auto h = number_after(lines[at], 36);
    if (!h) return false;
    r.heat_of_formation = *h;
    r.energy_kind = MopacEnergy::heat_of_formation;
    r.status_text = "Heat of formation " + std::string(text::trim(text::format_f(*h, 15, 5))) + " kcal/mol";
    return true;
}

// The energy lines stand between the SCF line and the next job's SCF line.
bool read_energy(LineViews lines, MopacListing& r) {
    const std::size_t scf = find_key(lines, 0, kScfKey);
    if (scf == lines.size()) return false;
    r.scf_found = true;
    r.method = method_after(lines, scf);
    const std::size_t end = find_key(lines, scf + 1, kScfKey);
    const std::size_t at = find_line(lines, scf, end, is_ev_total);
    if (at < end) {
        auto e = number_after(lines[at], 36);
        if (!e) return false;
        r.energy = *e;
        r.energy_kind = MopacEnergy::total;
        r.status_text = text::column_field(lines[at], 37, 20);
    } else if (auto e = summed_energy(lines, scf, end)) {
        r.energy = *e;
        r.energy_kind = MopacEnergy::summed;
        r.status_text = energy_status_text(*e);
    } else if (!read_heat_of_formation(lines, scf, end, r)) {
        return false;
    }
    r.energy_found = true;
    return true;
}

// ---- Step 2: orbitals ----

void store_mo(MopacListing& r, int orbital, double value) {
    orbital = std::clamp(orbital, 1, kMaxMoEnergies);
    if (orbital > static_cast<int>(r.mo_energy.size())) r.mo_energy.resize(static_cast<std::size_t>(orbital), 0.0f);
    r.mo_energy[static_cast<std::size_t>(orbital - 1)] = static_cast<float>(value);
    r.first_orbital = std::min(r.first_orbital, orbital);
}

int next_orbital(const MopacListing& r) { return static_cast<int>(r.mo_energy.size()) + 1; }

// The highest occupied level. RHF, closed or open shell (the open levels
// hold one electron each):
//           NO. OF FILLED LEVELS    =          5
//           AND NO. OF OPEN LEVELS  =          2
// UHF, whose orbital table is the alpha set:
//           NO. OF ALPHA ELECTRONS  =          4
//           NO. OF BETA  ELECTRONS  =          3
// A listing of an open shell without the open-levels line is taken as high
// spin: one singly occupied level for each unpaired electron.
std::optional<std::size_t> read_levels(LineViews lines, int multiplicity, MopacListing& r) {
    const std::size_t at = find_line(lines, 0, [](Line l) { return begins(l, kFilledKey) || begins(l, kAlphaKey); });
    auto count = count_at(lines, at);
    if (!count) return std::nullopt;
    r.levels_found = true;
    const std::size_t next = at + 1;
    if (begins(lines[at], kAlphaKey)) {
        r.alpha_electrons = *count;
        if (next < lines.size() && begins(lines[next], kBetaKey)) r.beta_electrons = count_at(lines, next).value_or(0);
        r.homo_index = *count;
    } else if (next < lines.size() && begins(lines[next], kOpenKey)) {
        r.homo_index = *count + count_at(lines, next).value_or(0);
    } else {
        r.homo_index = *count + std::max(multiplicity - 1, 0);
    }
    return at;
}

// The orbital energies of an eigenvector block lie some lines below its
// root line. Mopac 6: "ROOT" in columns 5-8, the energies on the third line
// after it, F12.5 behind 8 columns. The open-source MOPAC (and MOPAC 2016
// in its own listings):
//    Root No.       1         2         3         4         5         6
//
//                  1 a'      2 a'      3 a'      1 a"      4 a'      5 a'
//
//                -29.596   -17.761   -14.251   -12.095     4.044     6.306
// the energies on the fourth line, F10.3 behind 12 columns, eight a block.
struct RootLayout {
    int values_line;
    int skip;
    int width;
    int decimals;
};
constexpr RootLayout kMopac6Roots{3, 8, 12, 5};
constexpr RootLayout kModernRoots{4, 12, 10, 3};

const RootLayout* root_layout(Line line) {
    if (at_column(line, 5, "ROOT")) return &kMopac6Roots;
    if (at_column(line, 4, "Root No.")) return &kModernRoots;
    return nullptr;
}

// The orbital section ends at the charges, or at the beta set of a UHF run
// ("           BETA EIGENVECTORS"): later root lines belong to vibrations or
// to the other spin.
bool ends_vectors(Line line) { return begins(line, kChargesKey) || at_column(line, 17, "EIGENVECTORS"); }

// One block; returns the number of energies in it. Each energy goes to the
// orbital its root line names: without ALLVEC the open-source MOPAC prints
// only HOMO-8 to HOMO+7, and its first block starts at "Root No. 2".
int read_block(Line root_line, Line values, const RootLayout& form, MopacListing& r) {
    std::vector<long long> roots;
    if (root_line.size() > 12) roots = text::read_ints(root_line.substr(12), 64).value_or(roots);
    const int count = (static_cast<int>(text::trimmed_length(values)) - form.skip) / form.width;
    for (int k = 0; k < count; ++k) {
        auto v = text::read_f(text::column_field(values, form.skip + 1 + k * form.width, form.width), form.decimals);
        if (!v) return k;
        const long long root = k < static_cast<int>(roots.size()) ? roots[static_cast<std::size_t>(k)] : 0;
        const int orbital = root > 0 ? static_cast<int>(std::min<long long>(root, kMaxMoEnergies)) : next_orbital(r);
        store_mo(r, orbital, *v);
    }
    return std::max(count, 0);
}

// Blocks until the section ends, the listing ends, or a block is shorter
// than the first (the last block).
void read_root_blocks(LineViews lines, std::size_t at, MopacListing& r) {
    int expected = 0;
    for (;;) {
        at = find_line(lines, at, [](Line l) { return root_layout(l) != nullptr || ends_vectors(l); });
        if (at >= lines.size() || ends_vectors(lines[at])) return;
        const RootLayout& form = *root_layout(lines[at]);
        const std::size_t values = at + static_cast<std::size_t>(form.values_line);
        if (values >= lines.size()) return;
        const int count = read_block(lines[at], lines[values], form, r);
        if (count == 0 || count < expected) return;
        if (expected == 0) expected = count;
        at = values + 1;
    }
}

// MOPAC 2012 and 2016 without VECTORS print the energies alone, eight a
// line (F10.5), up to a blank line; "ALPHA EIGENVALUES" for the alpha set
// of UHF:
//                   EIGENVALUES
//  -30.43982 -25.82748 -25.82600 -20.91358 -20.91272 -18.07147 -15.39346 -15.22175
bool eigenvalues_header(Line line) {
    const Line t = text::trim(line);
    return t == "EIGENVALUES" || t == "ALPHA EIGENVALUES";
}

void read_eigenvalue_rows(LineViews lines, std::size_t at, MopacListing& r) {
    for (; at < lines.size(); ++at) {
        const int count = (static_cast<int>(text::trimmed_length(lines[at])) + 9) / 10;
        if (count == 0) return;
        for (int k = 0; k < count; ++k) {
            auto v = text::read_f(text::column_field(lines[at], 1 + 10 * k, 10), 5);
            if (!v) return;
            store_mo(r, next_orbital(r), *v);
        }
    }
}

bool read_orbitals(LineViews lines, int multiplicity, MopacListing& r) {
    const auto levels = read_levels(lines, multiplicity, r);
    if (!levels) return false;
    const std::size_t at =
        find_line(lines, *levels, [](Line l) { return at_column(l, 17, "EIGENVECTORS") || eigenvalues_header(l); });
    if (at == lines.size()) return false;
    r.vectors_found = true;
    r.first_orbital = kMaxMoEnergies + 1;
    if (eigenvalues_header(lines[at])) read_eigenvalue_rows(lines, at + 1, r);
    else read_root_blocks(lines, at + 1, r);
    if (r.mo_energy.empty()) r.first_orbital = 1;
    return true;
}

// ---- Step 3: charges ----

//               NET ATOMIC CHARGES AND DIPOLE CONTRIBUTIONS
//
//   ATOM NO.   TYPE          CHARGE      No. of ELECS.   s-Pop       p-Pop
//     1          O          -0.645360        6.6454     1.81709     4.82827
// Returns the line after the rows read; nullopt when the key is missing or
// the listing ends inside the table, which ends the reading too.
std::optional<std::size_t> read_charges(LineViews lines, int natoms, MopacListing& r) {
    const std::size_t key = find_key(lines, 0, kChargesKey);
    if (key == lines.size()) return std::nullopt;
    r.charges_found = true;
    std::size_t row = key + 3;
    for (int i = 0; i < natoms; ++i, ++row) {
        if (row >= lines.size()) return std::nullopt;
        auto q = number_after(lines[row], 23);
        if (!q) break;
        if (natoms <= kMaxChargeAtoms) r.charges.push_back(static_cast<float>(*q));
    }
    return row;
}

// ---- Step 4: spin densities ----

// A table row begins with the atom number in columns 1-5.
bool is_atom_row(Line line) {
    const std::string field = text::column_field(line, 1, 5);
    return !text::trim(field).empty() && text::read_i(field).has_value();
}

// RHF (Mopac 6, and the open-source MOPAC with RHF): the total is the last
// number of a row.
//       SPIN DENSITIES FROM EACH ATOMIC ORBITAL
//  Atom   s        p(x)      p(y)      p(z)      TOTAL
//
//    1  0.000000  0.000000  0.000000  1.000000                          ...          1.000000
// UHF (the open-source MOPAC's default for doublets): the total is the
// word after the element symbol, wherever the columns put it.
//           ATOMIC ORBITAL SPIN POPULATIONS
//     Atom   Total    s     px     py     pz
//          Atomic
//     1  C  1.0910  0.026  0.033  0.033  1.000
std::optional<double> spin_total(Line row, bool uhf) {
    const std::vector<Line> w = text::split_words(row);
    if (w.size() < (uhf ? 3u : 2u)) return std::nullopt;
    return text::read_f(uhf ? w[2] : w.back());
}

// False when the key is missing or the listing ends inside the table.
bool read_spin(LineViews lines, std::size_t from, int natoms, MopacListing& r) {
    const std::size_t key = find_line(lines, from, [](Line l) {
        return at_column(l, 7, "SPIN DENSITIES FROM EACH ATOMIC") || begins(l, kUhfSpinKey);
    });
    if (key == lines.size()) return false;
    r.spin_found = true;
    const bool uhf = begins(lines[key], kUhfSpinKey);
    std::size_t row = key + 1;
    for (int heading = 0; heading < 5 && row < lines.size() && !is_atom_row(lines[row]); ++heading) ++row;
    for (int i = 0; i < natoms; ++i, ++row) {
        if (row >= lines.size()) return false;   // the listing ends in the table
        auto s = spin_total(lines[row], uhf);
        if (!is_atom_row(lines[row]) || !s) break;
        r.spin_density.push_back(static_cast<float>(*s));
    }
    return true;
}

// ---- Step 5: structure ----

// Mopac 6: ten blanks and the key, three lines, then rows with x, y, z as
// 3F10.4 behind 30 columns. MOPAC 2012 lays its final structure out the same
// way, after the charges; its other ten-blank blocks (the input above the
// SCF line, the orientation further down) have x behind 20 columns:
//           CARTESIAN COORDINATES
//
//     NO.       ATOM               X         Y         Z
//
//      1         C                 -4.5118   -0.6687    0.0000
// MOPAC 2016 and later:
//                              CARTESIAN COORDINATES
//
//    1    O        0.000000000     0.000000000     0.117300000
// one line, then rows (I4,3X,A2,3X,3F16.9): x in columns 13-28. Their
// listings also have the ten-blank key, over the input geometry.
struct XyzLayout {
    int first_row;   // lines after the key
    int first_column;
    int width;
    int decimals;
};
constexpr XyzLayout kMopac6Xyz{4, 31, 10, 4};
constexpr XyzLayout kMopac2016Xyz{2, 13, 16, 9};

// A ten-blank block with x behind 30 columns: its first row is blank in
// columns 21-30, where the other ten-blank blocks of MOPAC 2012 have x.
bool mopac6_rows(LineViews lines, std::size_t key) {
    const std::size_t row = key + static_cast<std::size_t>(kMopac6Xyz.first_row);
    return row < lines.size() && text::trim(text::column_field(lines[row], 21, 10)).empty() &&
           !text::trim(text::column_field(lines[row], 31, 10)).empty();
}

// The key and the layout of the final structure. Mopac 6 has its first
// ten-blank block; the 2016 generation its 29-blank one, or, as MOPAC 2012
// writes it, the ten-blank block of 3F10.4 rows after the SCF line.
std::optional<std::pair<std::size_t, XyzLayout>> find_structure(LineViews lines, int version) {
    if (version == 0) {
        const std::size_t key = find_key(lines, 0, kMopac6XyzKey);
        if (key < lines.size()) return std::pair{key, kMopac6Xyz};
        return std::nullopt;
    }
    std::size_t key = find_key(lines, 0, kMopac2016XyzKey);
    if (key < lines.size()) return std::pair{key, kMopac2016Xyz};
    for (key = find_key(lines, find_key(lines, 0, kScfKey), kMopac6XyzKey); key < lines.size();
         key = find_key(lines, key + 1, kMopac6XyzKey))
        if (mopac6_rows(lines, key)) return std::pair{key, kMopac6Xyz};
    return std::nullopt;
}

bool read_structure(LineViews lines, int version, int natoms, MopacListing& r) {
    const auto found = find_structure(lines, version);
    if (!found) return false;
    const auto& [key, form] = *found;
    r.coordinates_found = true;
    std::size_t row = key + static_cast<std::size_t>(form.first_row);
    for (int i = 0; i < natoms && row < lines.size(); ++i, ++row) {
        const Line l = lines[row];
        if (text::trimmed_length(l) == 0) break;
        double xyz[3];
        for (int c = 0; c < 3; ++c) {
            auto v = text::read_f(text::column_field(l, form.first_column + c * form.width, form.width), form.decimals);
            if (!v) return true;
            xyz[c] = *v;
        }
        r.coordinates.push_back(turn_two_degrees(static_cast<float>(xyz[0]), static_cast<float>(xyz[1]),
                                                 static_cast<float>(xyz[2])));
    }
    return true;
}

std::string orbital_row(int orbital, float energy) {
    return text::format_i(orbital, 8) + text::format_f(energy, 12, 5);
}

}  // namespace

bool MopacListing::complete() const {
    return scf_found && energy_found && levels_found && vectors_found && charges_found &&
           (spin_found || !spin_expected) && coordinates_found;
}

std::array<float, 3> turn_two_degrees(float x, float y, float z) {
    return {x, y * 0.99939084f - z * 0.0348995f, y * 0.0348995f + z * 0.99939084f};
}

// The steps in order; a key that is not found ends the reading.
MopacListing read_mopac_listing(LineViews lines, int mopac_version, int multiplicity, int natoms) {
    MopacListing r;
    r.spin_expected = multiplicity > 1;
    if (!read_energy(lines, r)) return r;
    if (!read_orbitals(lines, multiplicity, r)) return r;
    const auto after_charges = read_charges(lines, natoms, r);
    if (!after_charges) return r;
    if (r.spin_expected && !read_spin(lines, *after_charges, natoms, r)) return r;
    read_structure(lines, mopac_version, natoms, r);
    return r;
}

std::vector<std::string> mopac_geo_title(bool energy_run) {
    return {"", energy_run ? " Mopac Energy calculation" : " Mopac Optimize calculation"};
}

std::vector<std::string> mopac_orbital_table(const std::vector<float>& mo_energy, int homo_index, int first_orbital) {
    std::vector<std::string> out{"     M.O.    Energy(eV)"};
    for (int i = static_cast<int>(mo_energy.size()); i >= std::max(first_orbital, 1); --i) {
        std::string row = orbital_row(i, mo_energy[static_cast<std::size_t>(i - 1)]);
        if (i == homo_index) row += " H.O.M.O";
        else if (i == homo_index + 1) row += " L.U.M.O";
        out.push_back(row);
    }
    return out;
}

std::string mopac_total_energy_line(double energy_ev) {
    return " Total Energy = " + text::format_f(energy_ev, 15, 5) + " eV    " +
           text::format_f(energy_ev * kEvToKjMol, 15, 5) + " kJ/mol";
}

std::string mopac_heat_of_formation_line(double kcal_mol) {
    return " Heat of Formation = " + text::format_f(kcal_mol, 15, 5) + " kcal/mol" +
           text::format_f(kcal_mol * kKcalToKj, 15, 5) + " kJ/mol";
}

std::vector<std::string> mopac_geo_lines(const MopacListing& listing, bool energy_run) {
    if (!listing.energy_found) return {};
    std::vector<std::string> out = mopac_geo_title(energy_run);
    if (!listing.vectors_found) return out;
    for (auto& l : mopac_orbital_table(listing.mo_energy, listing.homo_index, listing.first_orbital)) out.push_back(l);
    out.push_back(listing.energy_kind == MopacEnergy::heat_of_formation
                      ? mopac_heat_of_formation_line(listing.heat_of_formation)
                      : mopac_total_energy_line(listing.energy));
    return out;
}

std::string mopac_result_text(const MopacListing& listing, const std::string& method) {
    const std::string name = listing.method.empty() ? method : listing.method;
    const std::string head = name.empty() ? "" : name + "  ";
    auto number = [](double v, int d) { return std::string(text::trim(text::format_f(v, 20, d))); };
    switch (listing.energy_kind) {
        case MopacEnergy::total:
        case MopacEnergy::summed:
            return head + number(listing.energy, 5) + " eV  " + number(listing.energy * kEvToKjMol, 2) + " kJ/mol";
        case MopacEnergy::heat_of_formation:
            return head + "HoF " + number(listing.heat_of_formation, 5) + " kcal/mol  " +
                   number(listing.heat_of_formation * kKcalToKj, 2) + " kJ/mol";
        case MopacEnergy::none: break;
    }
    return head + "no energy in the listing";
}

std::vector<std::string> mopac_charge_log(const MopacListing& listing, const std::vector<std::string>& labels) {
    // The log is begun before the charges are looked for: a listing without
    // them leaves the title alone.
    if (!listing.vectors_found || labels.size() > static_cast<std::size_t>(kMaxChargeAtoms)) return {};
    std::vector<std::string> out{"#MOP atom charges"};
    for (std::size_t i = 0; i < listing.charges.size() && i < labels.size(); ++i)
        out.push_back(text::pad_right(labels[i], 4) + text::format_f(listing.charges[i], 16, 4));
    return out;
}

std::vector<std::string> mopac_spin_log(const MopacListing& listing, const std::vector<std::string>& labels) {
    if (!listing.spin_expected || !listing.charges_found) return {};
    std::vector<std::string> out{"#MOP spin densities"};
    for (std::size_t i = 0; i < listing.spin_density.size() && i < labels.size(); ++i)
        out.push_back(text::pad_right(labels[i], 4) + text::format_f(listing.spin_density[i], 19, 7));
    return out;
}

}  // namespace zentol
