#include "engines/mopac/mopac_listing.h"

#include <algorithm>
#include <optional>
#include <string_view>

#include "text/fixed_format.h"

namespace zentol {

namespace {

using Lines = std::vector<std::string>;

// Keys with their leading blanks: a line has the key when it begins with it.
constexpr std::string_view kScfKey = "     SCF FIELD WAS ACHIEVED";
constexpr std::string_view kTotalEnergyKey = "          TOTAL ENERGY";
constexpr std::string_view kElectronicKey = "          ELECTRONIC ENERGY";
constexpr std::string_view kCoreCoreKey = "          CORE-CORE REPULSION";
constexpr std::string_view kFilledKey = "          NO. OF FILLED LEVELS";
constexpr std::string_view kBetaKey = "          NO. OF BETA  ELECTRONS";
constexpr std::string_view kChargesKey = "              NET ATOMIC CH";
constexpr std::string_view kUhfSpinKey = "          ATOMIC ORBITAL SPIN POPULATIONS";
constexpr std::string_view kMopac6XyzKey = "          CARTESIAN COORDINATES";
constexpr std::string_view kMopac2016XyzKey = "                             CARTESIAN COORDINATES";

bool begins(const std::string& line, std::string_view key) { return line.compare(0, key.size(), key) == 0; }

bool at_column(const std::string& line, int column, std::string_view key) {
    return text::column_field(line, column, static_cast<int>(key.size())) == key;
}

// The first line at or after `from` that has the key; lines.size() if none.
template <typename HasKey>
std::size_t find_line(const Lines& lines, std::size_t from, HasKey has_key) {
    for (std::size_t i = from; i < lines.size(); ++i)
        if (has_key(lines[i])) return i;
    return lines.size();
}

// The line with its first `blanked` columns blanked, read as one free-form
// number.
std::optional<double> number_after(const std::string& line, std::size_t blanked) {
    if (line.size() <= blanked) return std::nullopt;
    auto v = text::read_reals(std::string_view(line).substr(blanked), 1);
    if (!v || v->empty()) return std::nullopt;
    return (*v)[0];
}

// ---- Step 1: energy ----

// MOPAC 2016 prints the energy once, in eV:
//           TOTAL ENERGY            =       -817.56195 EV
// The open-source MOPAC prints it only with DISP, and then a line in
// kcal/mol comes first and the eV line eight lines later:
//           TOTAL ENERGY            =      -7441.14964 KCAL/MOL = ELECTRONIC ENERGY + CORE-CORE REPULSION
//           TOTAL ENERGY            =       -322.67879 EV
bool is_ev_total(const std::string& line) {
    return begins(line, kTotalEnergyKey) && line.find("KCAL", 36) == std::string::npos;
}

// The parts of the energy, when the total is missing:
//           ELECTRONIC ENERGY       =      -468.96517 EV
//           CORE-CORE REPULSION     =        146.28638 EV
std::optional<double> summed_energy(const Lines& lines, std::size_t from) {
    const std::size_t e = find_line(lines, from, [](const std::string& l) { return begins(l, kElectronicKey); });
    const std::size_t c = find_line(lines, from, [](const std::string& l) { return begins(l, kCoreCoreKey); });
    if (e == lines.size() || c == lines.size()) return std::nullopt;
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

bool read_energy(const Lines& lines, int version, MopacListing& r) {
    const std::size_t scf = find_line(lines, 0, [](const std::string& l) { return begins(l, kScfKey); });
    if (scf == lines.size()) return false;
    r.scf_found = true;
    const std::size_t at = find_line(lines, scf, is_ev_total);
    if (at < lines.size()) {
        auto e = number_after(lines[at], 36);
        if (!e) return false;
        r.energy = *e;
        r.status_text = text::column_field(lines[at], 37, 20);
    } else {
        auto e = version > 0 ? summed_energy(lines, scf) : std::nullopt;
        if (!e) return false;
        r.energy = *e;
        r.energy_summed = true;
        r.status_text = energy_status_text(*e);
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

// The levels in columns 36-46:
//           NO. OF FILLED LEVELS    =          4
// A UHF run has no such line; its beta electrons are the doubly filled
// levels of the same molecule, so the HOMO comes out the same:
//           NO. OF BETA  ELECTRONS  =          3
std::optional<std::size_t> read_levels(const Lines& lines, int multiplicity, MopacListing& r) {
    const std::size_t at =
        find_line(lines, 0, [](const std::string& l) { return begins(l, kFilledKey) || begins(l, kBetaKey); });
    if (at == lines.size()) return std::nullopt;
    auto filled = text::read_i(text::column_field(lines[at], 36, 11));
    if (!filled) return std::nullopt;
    r.levels_found = true;
    r.homo_index = static_cast<int>(*filled) + (multiplicity > 1 ? 1 : 0);
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

const RootLayout* root_layout(const std::string& line) {
    if (at_column(line, 5, "ROOT")) return &kMopac6Roots;
    if (at_column(line, 4, "Root No.")) return &kModernRoots;
    return nullptr;
}

// The orbital section ends at the charges, or at the beta set of a UHF run
// ("           BETA EIGENVECTORS"): later root lines belong to vibrations or
// to the other spin.
bool ends_vectors(const std::string& line) { return begins(line, kChargesKey) || at_column(line, 17, "EIGENVECTORS"); }

// One block; returns the number of energies in it. Each energy goes to the
// orbital its root line names: without ALLVEC the open-source MOPAC prints
// only HOMO-8 to HOMO+7, and its first block starts at "Root No. 2".
int read_block(const std::string& root_line, const std::string& values, const RootLayout& form, MopacListing& r) {
    std::vector<long long> roots;
    if (root_line.size() > 12) roots = text::read_ints(std::string_view(root_line).substr(12), 64).value_or(roots);
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
void read_root_blocks(const Lines& lines, std::size_t at, MopacListing& r) {
    int expected = 0;
    for (;;) {
        at = find_line(lines, at, [](const std::string& l) { return root_layout(l) != nullptr || ends_vectors(l); });
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

// MOPAC 2016 without VECTORS prints the energies alone, eight a line
// (F10.5), up to a blank line; "ALPHA EIGENVALUES" for the alpha set of UHF:
//                   EIGENVALUES
//  -30.43982 -25.82748 -25.82600 -20.91358 -20.91272 -18.07147 -15.39346 -15.22175
bool eigenvalues_header(const std::string& line) {
    const std::string_view t = text::trim(line);
    return t == "EIGENVALUES" || t == "ALPHA EIGENVALUES";
}

void read_eigenvalue_rows(const Lines& lines, std::size_t at, MopacListing& r) {
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

bool read_orbitals(const Lines& lines, int multiplicity, MopacListing& r) {
    const auto levels = read_levels(lines, multiplicity, r);
    if (!levels) return false;
    const std::size_t at = find_line(lines, *levels, [](const std::string& l) {
        return at_column(l, 17, "EIGENVECTORS") || eigenvalues_header(l);
    });
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
std::optional<std::size_t> read_charges(const Lines& lines, int natoms, MopacListing& r) {
    const std::size_t key = find_line(lines, 0, [](const std::string& l) { return begins(l, kChargesKey); });
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
bool is_atom_row(const std::string& line) {
    const std::string field = text::column_field(line, 1, 5);
    return !text::trim(field).empty() && text::read_i(field).has_value();
}

std::optional<double> last_number(const std::string& line) {
    auto v = text::read_reals(line, 64);
    if (!v || v->empty()) return std::nullopt;
    return v->back();
}

// RHF (Mopac 6, and the open-source MOPAC with RHF): the total is the last
// number of a row.
//       SPIN DENSITIES FROM EACH ATOMIC ORBITAL
//  Atom   s        p(x)      p(y)      p(z)      TOTAL
//
//    1  0.000000  0.000000  0.000000  1.000000                          ...          1.000000
// UHF (the open-source MOPAC's default for doublets): the total F7.4 in
// columns 10-16.
//           ATOMIC ORBITAL SPIN POPULATIONS
//     Atom   Total    s     px     py     pz
//          Atomic
//     1  C  1.0910  0.026  0.033  0.033  1.000
// False when the key is missing or the listing ends inside the table.
bool read_spin(const Lines& lines, std::size_t from, int natoms, MopacListing& r) {
    const std::size_t key = find_line(lines, from, [](const std::string& l) {
        return at_column(l, 7, "SPIN DENSITIES FROM EACH ATOMIC") || begins(l, kUhfSpinKey);
    });
    if (key == lines.size()) return false;
    r.spin_found = true;
    const bool uhf = begins(lines[key], kUhfSpinKey);
    std::size_t row = key + 1;
    for (int heading = 0; heading < 5 && row < lines.size() && !is_atom_row(lines[row]); ++heading) ++row;
    for (int i = 0; i < natoms; ++i, ++row) {
        if (row >= lines.size()) return false;   // the listing ends in the table
        auto s = uhf ? text::read_f(text::column_field(lines[row], 10, 7), 4) : last_number(lines[row]);
        if (!is_atom_row(lines[row]) || !s) break;
        r.spin_density.push_back(static_cast<float>(*s));
    }
    return true;
}

// ---- Step 5: structure ----

// Mopac 6: ten blanks and the key, three lines, then rows with x, y, z as
// 3F10.4 behind 30 columns. The 2016 generation:
//                              CARTESIAN COORDINATES
//
//    1    O        0.000000000     0.000000000     0.117300000
// one line, then rows (I4,3X,A2,3X,3F16.9): x in columns 13-28. Its listing
// also has the ten-blank key, over the input geometry.
struct XyzLayout {
    std::string_view key;
    int first_row;   // lines after the key
    int first_column;
    int width;
    int decimals;
};
constexpr XyzLayout kMopac6Xyz{kMopac6XyzKey, 4, 31, 10, 4};
constexpr XyzLayout kMopac2016Xyz{kMopac2016XyzKey, 2, 13, 16, 9};

bool read_structure(const Lines& lines, int version, int natoms, MopacListing& r) {
    const XyzLayout& form = version > 0 ? kMopac2016Xyz : kMopac6Xyz;
    const std::size_t key = find_line(lines, 0, [&](const std::string& l) { return begins(l, form.key); });
    if (key == lines.size()) return false;
    r.coordinates_found = true;
    std::size_t row = key + static_cast<std::size_t>(form.first_row);
    for (int i = 0; i < natoms && row < lines.size(); ++i, ++row) {
        const std::string& l = lines[row];
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
MopacListing read_mopac_listing(const std::vector<std::string>& lines, int mopac_version, int multiplicity,
                                int natoms) {
    MopacListing r;
    r.spin_expected = multiplicity > 1;
    if (!read_energy(lines, mopac_version, r)) return r;
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

std::vector<std::string> mopac_geo_lines(const MopacListing& listing, bool energy_run) {
    if (!listing.energy_found) return {};
    std::vector<std::string> out = mopac_geo_title(energy_run);
    if (!listing.vectors_found) return out;
    for (auto& l : mopac_orbital_table(listing.mo_energy, listing.homo_index, listing.first_orbital)) out.push_back(l);
    out.push_back(mopac_total_energy_line(listing.energy));
    return out;
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

// ---- The graph file ----

namespace {

std::vector<std::string_view> words(std::string_view line) {
    std::vector<std::string_view> out;
    std::size_t i = 0;
    while (i < line.size()) {
        while (i < line.size() && line[i] == ' ') ++i;
        const std::size_t start = i;
        while (i < line.size() && line[i] != ' ') ++i;
        if (i > start) out.push_back(line.substr(start, i - start));
    }
    return out;
}

bool ends_orbital(const std::string& line) {
    return text::trimmed_length(line) == 0 || begins(line, " ORBITAL") || begins(line, " INVERSE_MATRIX") ||
           begins(line, " Keywords");
}

// " ORBITAL 2 1a'    -29.5957": occupancy, symmetry label, energy; then the
// coefficients, five a line in fields of 15 with D exponents:
//  0.85162057D+00-0.21781058D-16 0.45663473D-12-0.23389083D+00 0.33169074D+00
std::size_t read_mgf_orbital(const Lines& mgf, std::size_t at, Mop2016Vectors& v) {
    const auto w = words(mgf[at]);
    MgfOrbital o;
    if (w.size() >= 3) {
        o.occupancy = static_cast<int>(text::read_i(w[1]).value_or(0));
        o.energy = text::read_f(w.back()).value_or(0.0);
        for (std::size_t k = 2; k + 1 < w.size(); ++k)
            o.symmetry += (o.symmetry.empty() ? "" : " ") + std::string(w[k]);
    }
    for (++at; at < mgf.size() && !ends_orbital(mgf[at]); ++at) {
        for (int k = 0; k < 5; ++k) {
            const std::string field = text::column_field(mgf[at], 1 + 15 * k, 15);
            if (text::trim(field).empty()) break;
            if (auto c = text::read_f(field)) o.coefficients.push_back(*c);
        }
    }
    v.orbitals.push_back(std::move(o));
    return at;
}

// " INVERSE_MATRIX[6x6]=": the number of basis functions.
int basis_size(const std::string& line) {
    const std::size_t open = line.find('['), x = line.find('x');
    if (open == std::string::npos || x == std::string::npos || x < open) return 0;
    return static_cast<int>(text::read_i(std::string_view(line).substr(open + 1, x - open - 1)).value_or(0));
}

// The table is the first set of orbitals: a UHF file follows the alpha set
// with the beta set, whose occupancy starts again above 0. The HOMO is the
// last filled level before the first empty one.
void find_homo(Mop2016Vectors& v) {
    const int n = static_cast<int>(v.orbitals.size());
    v.norbitals = n;
    bool empty_seen = false;
    for (int i = 0; i < n; ++i) {
        const bool filled = v.orbitals[static_cast<std::size_t>(i)].occupancy > 0;
        if (filled && empty_seen) {
            v.norbitals = i;
            break;
        }
        if (filled && !empty_seen) v.homo = i + 1;
        if (!filled) empty_seen = true;
    }
}

}  // namespace

// The head line holds the number of atoms (I5) and the writer's name; the
// atoms follow as Z, x, y, z, charge, then one line of exponents an atom:
//     3 MOPAC-Graphical data Version 22.0.6
//    8    0.0000000   0.0000000   0.1173000  -0.6454
// The number of basis functions stands in the INVERSE_MATRIX line at the end.
Mop2016Vectors read_mop2016_vectors(const std::vector<std::string>& mgf) {
    Mop2016Vectors v;
    v.geo_lines.push_back(" Mopac 2016");
    if (mgf.empty()) return v;
    v.natoms = static_cast<int>(text::read_i(text::column_field(mgf[0], 1, 5)).value_or(0));
    for (std::size_t i = 1; i <= static_cast<std::size_t>(std::max(v.natoms, 0)) && i < mgf.size(); ++i) {
        auto a = text::read_reals(mgf[i], 5);
        if (!a || a->size() < 5) break;
        v.atoms.push_back({static_cast<int>((*a)[0]), (*a)[1], (*a)[2], (*a)[3], (*a)[4]});
    }
    for (std::size_t at = 1 + v.atoms.size(); at < mgf.size();) {
        if (begins(mgf[at], " ORBITAL")) {
            at = read_mgf_orbital(mgf, at, v);
            continue;
        }
        if (begins(mgf[at], " INVERSE_MATRIX")) v.nbasis = basis_size(mgf[at]);
        ++at;
    }
    find_homo(v);
    v.geo_lines.push_back("     M.O.    Energy(eV)");
    for (int i = v.norbitals; i >= 1; --i) {
        std::string row = orbital_row(i, static_cast<float>(v.orbitals[static_cast<std::size_t>(i - 1)].energy));
        if (i == v.homo) row += " H.O.M.O.";
        v.geo_lines.push_back(row);
    }
    return v;
}

}  // namespace zentol
