// Reading a Firefly listing (job.lst): the summary, the charges, the
// geometry, the orbital energies and the total energy. Everything here is
// pure; firefly_update.cpp writes the files and the .GEO log.
//
// The same reader serves the GAMESS family the engine comes from (Firefly
// 8.x, PC GAMESS, GAMESS-US). Where they lay a key out differently both
// forms are read; the comments show the engines' own lines.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "text/text_lines.h"

namespace zentol {

inline constexpr double kHartreeToEv = 27.211395;
inline constexpr double kHartreeToKjMol = 2625.4998;
inline constexpr int kMaxFireflyOrbitals = 500;
inline constexpr int kMaxChargeRecords = 250;

// Which charge block the listing has.
enum FireflyChargeKind { kNoCharges = 0, kChelpgCharges = 1, kMopacCharges = 2, kMullikenCharges = 3,
                         kChelpgAndMulliken = 4 };

// The input cards echoed from the first " INPUT CARD> $CONTRL" through
// " INPUT CARD> $DATA", as they stand (the engine echoes them as typed,
// upper or lower case).
std::vector<std::string> input_cards(const text::TextLines& listing);
// "CHELPG" starts at one of the columns 1 to 65 of a card.
bool chelpg_requested(const std::vector<std::string>& cards);

// The kind of the charge blocks: NET CHARGES wins, then MOPAC CHARGES,
// then Mulliken (4 when the cards asked for CHELPG).
int charge_kind(const text::TextLines& listing, bool chelpg_run);

// The charges of the last block of the kind, one an atom for up to
// `natoms` atoms; fewer when the block is cut short.
std::vector<double> read_charges(const text::TextLines& listing, int kind, int natoms);

// job_chg.log: "#Firefly " and the method with the kind's words, then label
// A4 and charge F16.4 for at most 250 atoms.
std::vector<std::string> firefly_charge_log(int kind, const std::string& method,
                                            const std::vector<std::string>& labels,
                                            const std::vector<double>& charges);

// One row of a coordinate block.
struct ListingAtom {
    std::string label;        // the deck's label as typed (C1, CARBON)
    double nuclear_charge = 0;
    double x = 0, y = 0, z = 0;
};

// What one pass over the listing's geometry gives.
struct ListingGeometry {
    int total_atoms = 0;               // " TOTAL NUMBER OF ATOMS"
    bool equilibrium = false;          // "EQUILIBRIUM GEOMETRY LOCATED" in columns 1 to 25
    std::string equilibrium_record;    // its first 40 characters
    bool final_block = false;          // a whole block follows the equilibrium record
    int blocks = 0;                    // whole " COORDINATES OF ALL ATOMS" blocks read
    std::vector<ListingAtom> first;    // the molecule as it went in (the input block in bohr, in angstrom here)
    std::vector<ListingAtom> last;     // the last block: later blocks overwrite earlier ones
                                       // (a block cut short by the end of the file is passed over)
};
ListingGeometry read_listing_geometry(const text::TextLines& listing);

// The equilibrium record, with a blank (Firefly 8, GAMESS-US) or a "1"
// (PC GAMESS) in column 1.
bool is_equilibrium_record(std::string_view line);

// Orbital energies of the first eigenvector table (the alpha set of UHF),
// in eV, in listing order.
struct ListingOrbitals {
    int nbasis = 0;
    int nocc = 0;                     // occupied alpha orbitals: the H.O.M.O
    bool found = false;
    std::vector<double> energies;
};
ListingOrbitals read_listing_orbitals(const text::TextLines& listing);

// "     M.O.    Energy(eV)", then orbital number I8 and energy F12.5 from the
// highest down, " L.U.M.O" behind nocc + 1 and " H.O.M.O" behind nocc.
std::vector<std::string> firefly_orbital_table(const ListingOrbitals& orbitals);

// The total energy in hartrees: the ten-blank record an optimisation
// prints at its end, else the last one of the single-point form. A zero
// (an optimisation that failed) is no result.
std::optional<double> listing_total_energy(const text::TextLines& listing);

// The energy of " FINAL ENERGY IS": the first one; for an optimisation the
// last one before the equilibrium record. A zero (an SCF that did not
// converge) is no result.
std::optional<double> listing_final_energy(const text::TextLines& listing, bool optimisation);

// " * THIS IS NOT A STATIONARY POINT" stands in the listing.
bool not_stationary(const text::TextLines& listing);

// The summary job.txt: the input cards, the equilibrium record and the
// coordinates that follow it, the total energy in hartrees and kJ/mol.
std::vector<std::string> firefly_summary(const text::TextLines& listing);

// " TOTAL ENERGY = " and three triples F15.5 + unit: HARTREES, kV, kJ/mol.
std::string total_energy_geo_line(double hartree);
// " Final Energy =" and three triples: Hartrees, eV, kJ/mol.
std::string final_energy_geo_line(double hartree);
// The energy in eV F22.5 and " eV", for the status bar.
std::string final_energy_status(double hartree);

}  // namespace zentol
