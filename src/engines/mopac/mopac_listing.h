// Reading the listing MOPAC leaves behind (job.LST): energy, orbital
// energies, charges, spin densities and the final structure. Everything
// here is pure: the callers read the file once (files::read_text_lines)
// and write the .GEO log and the side logs.
//
// One reader serves Mopac 6 and the MOPAC 2016 generation, which on Linux is
// the open-source MOPAC (22.x); listings of MOPAC 2012, 2016 and 21 that a
// user brings are read too. Where the engines lay a key out differently
// both forms are read; the comments in the source show the engines' lines.
#pragma once

#include <array>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace zentol {

inline constexpr int kMaxMoEnergies = 500;     // a further orbital overwrites entry 500
inline constexpr int kMaxChargeAtoms = 250;    // from 251 atoms on charges are not kept
inline constexpr double kEvToKjMol = 96.484505;
inline constexpr double kKcalToKj = 4.184;

// The lines of a file, as text::TextLines::views() gives them.
using LineViews = std::span<const std::string_view>;

// Where the energy of a listing came from.
enum class MopacEnergy {
    none,
    total,               // "TOTAL ENERGY ... EV"
    summed,              // ELECTRONIC ENERGY + CORE-CORE REPULSION, in eV
    heat_of_formation,   // only the heat of formation, in kcal/mol
};

// What the listing gave. The keys are looked for in this order, and the
// reader stops at the first one it does not find: the flags after it stay
// false and their tables empty.
struct MopacListing {
    // "     SCF FIELD WAS ACHIEVED": its absence is the sign of a failed run.
    bool scf_found = false;
    // The method as the listing names it ("PM7"), "" when it does not say.
    std::string method;

    // The energy: in eV (`energy`) from the total or from its parts; a
    // listing with neither gives the heat of formation alone (kcal/mol).
    // `status_text` is what the status field shows of it.
    bool energy_found = false;
    MopacEnergy energy_kind = MopacEnergy::none;
    double energy = 0;
    double heat_of_formation = 0;
    std::string status_text;

    // The highest occupied level of the orbital table: the filled levels
    // and the singly occupied (open) ones of an RHF run, the alpha
    // electrons of a UHF run, whose table is the alpha set. The lowest
    // empty level is the next one up.
    bool levels_found = false;
    int homo_index = 0;
    int alpha_electrons = 0, beta_electrons = 0;   // UHF only; 0 otherwise

    // Orbital energies by orbital number (entry 0 is orbital 1), at most
    // kMaxMoEnergies. The open-source MOPAC prints only the orbitals around
    // the gap of a larger molecule: the ones below `first_orbital` were not
    // in the listing and hold 0.
    bool vectors_found = false;
    std::vector<float> mo_energy;
    int first_orbital = 1;

    // Net atomic charges, one an atom; empty from kMaxChargeAtoms + 1 atoms
    // on. Fewer than natoms when the listing ends inside the table.
    bool charges_found = false;
    std::vector<float> charges;

    // Spin densities, looked for only for an open shell.
    bool spin_expected = false;
    bool spin_found = false;
    std::vector<float> spin_density;

    // The final structure, each atom already turned 2 degrees about x.
    bool coordinates_found = false;
    std::vector<std::array<float, 3>> coordinates;

    // Every key was found. Otherwise the caller shows "Convergence Fault or
    // NO parameters/file", unless the run was a force run.
    bool complete() const;
};

// Reads a listing. `mopac_version` 0 is Mopac 6, above 0 the 2016
// generation; `natoms` is the number of atoms in the store.
MopacListing read_mopac_listing(LineViews lines, int mopac_version, int multiplicity, int natoms);

// The 2-degree turn about the x axis that every structure taken from a
// listing gets.
std::array<float, 3> turn_two_degrees(float x, float y, float z);

// .GEO log. A blank line and " Mopac Energy calculation" or " Mopac
// Optimize calculation".
std::vector<std::string> mopac_geo_title(bool energy_run);

// "     M.O.    Energy(eV)" and one line an orbital from the highest down to
// `first_orbital`: number I8, energy F12.5, " H.O.M.O" behind `homo_index`
// and " L.U.M.O" behind the next one up.
std::vector<std::string> mopac_orbital_table(const std::vector<float>& mo_energy, int homo_index,
                                             int first_orbital = 1);

// " Total Energy = " energy F15.5 " eV    " energy*96.484505 F15.5 " kJ/mol".
std::string mopac_total_energy_line(double energy_ev);

// " Heat of Formation = " F15.5 " kcal/mol" and the same in kJ/mol: the
// line of a listing that has no energy in eV.
std::string mopac_heat_of_formation_line(double kcal_mol);

// All the .GEO lines of one listing, as far as the reader got: the title
// once the energy was found, the orbital table and the energy once the
// eigenvectors were read.
std::vector<std::string> mopac_geo_lines(const MopacListing& listing, bool energy_run);

// The result as the status field shows it after a run, short enough for
// the field of a small window: the method and the energy in both units
// ("PM7  -322.67879 eV  -31133.50 kJ/mol"), or the heat of formation saying
// so ("PM7  HoF -57.79007 kcal/mol  -241.79 kJ/mol"). `method` stands when
// the listing names none.
std::string mopac_result_text(const MopacListing& listing, const std::string& method);

// job_chg.log: "#MOP atom charges" and label A4 + charge F16.4 for each atom
// read. Empty (no file) when the reader did not get to the charges or the
// molecule has more than kMaxChargeAtoms atoms. `labels` are the store's
// labels, one an atom.
std::vector<std::string> mopac_charge_log(const MopacListing& listing, const std::vector<std::string>& labels);

// job_spn.log: "#MOP spin densities" and label A4 + density F19.7. Empty
// (no file) for a closed shell or when the reader did not get that far.
std::vector<std::string> mopac_spin_log(const MopacListing& listing, const std::vector<std::string>& labels);

}  // namespace zentol
