// Reading what MOPAC leaves behind: the listing (job.LST) with energy,
// orbital energies, charges, spin densities and the final structure, and the
// graph file (job.mgf) of the 2016 generation. Everything here is pure: the
// callers read the files and write the .GEO log and the side logs.
//
// One reader serves Mopac 6 and the MOPAC 2016 generation, which on Linux is
// the open-source MOPAC (22.x). Where the engines lay a key out differently
// both forms are read; the comments in the source show the engines' lines.
#pragma once

#include <array>
#include <string>
#include <vector>

namespace zentol {

inline constexpr int kMaxMoEnergies = 500;     // a further orbital overwrites entry 500
inline constexpr int kMaxChargeAtoms = 250;    // from 251 atoms on charges are not kept
inline constexpr double kEvToKjMol = 96.484505;

// What the listing gave. The keys are looked for in this order, and the
// reader stops at the first one it does not find: the flags after it stay
// false and their tables empty.
struct MopacListing {
    // "     SCF FIELD WAS ACHIEVED": its absence is the sign of a failed run.
    bool scf_found = false;

    // Total energy in eV and the 20 columns from column 37 of its line, for
    // the status field. `energy_summed` when the engine printed no TOTAL
    // ENERGY and the energy is ELECTRONIC ENERGY + CORE-CORE REPULSION.
    bool energy_found = false;
    bool energy_summed = false;
    double energy = 0;
    std::string status_text;

    // Number of filled levels, plus 1 for an open shell.
    bool levels_found = false;
    int homo_index = 0;

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
MopacListing read_mopac_listing(const std::vector<std::string>& lines, int mopac_version, int multiplicity,
                                int natoms);

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

// All the .GEO lines of one listing, as far as the reader got: the title
// once the energy was found, the orbital table and the energy once the
// eigenvectors were read.
std::vector<std::string> mopac_geo_lines(const MopacListing& listing, bool energy_run);

// job_chg.log: "#MOP atom charges" and label A4 + charge F16.4 for each atom
// read. Empty (no file) when the reader did not get to the charges or the
// molecule has more than kMaxChargeAtoms atoms. `labels` are the store's
// labels, one an atom.
std::vector<std::string> mopac_charge_log(const MopacListing& listing, const std::vector<std::string>& labels);

// job_spn.log: "#MOP spin densities" and label A4 + density F19.7. Empty
// (no file) for a closed shell or when the reader did not get that far.
std::vector<std::string> mopac_spin_log(const MopacListing& listing, const std::vector<std::string>& labels);

// The graph file of a 2016-generation run (GRAPHF).
struct MgfAtom {
    int atomic_number = 0;
    double x = 0, y = 0, z = 0;
    double charge = 0;
};

struct MgfOrbital {
    int occupancy = 0;
    std::string symmetry;                 // "1a'", "10A", "1" ...
    double energy = 0;                    // eV
    std::vector<double> coefficients;     // one a basis function
};

struct Mop2016Vectors {
    int natoms = 0;
    int nbasis = 0;        // basis functions; 0 when the file does not say
    int norbitals = 0;     // orbitals of the table (the alpha set of a UHF file)
    int homo = 0;          // highest filled level, 1-based in `orbitals`
    std::vector<MgfAtom> atoms;
    std::vector<MgfOrbital> orbitals;    // as in the file
    std::vector<std::string> geo_lines;  // " Mopac 2016" and the orbital table
};

// Reads the lines of job.mgf.
Mop2016Vectors read_mop2016_vectors(const std::vector<std::string>& mgf);

}  // namespace zentol
