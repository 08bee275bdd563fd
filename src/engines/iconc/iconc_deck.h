// The ICONC engine's files as text: the deck of the preparation program
// inputc, the energy file ENERTOT.DAT and the listing iconc.out, and the
// lines the runs add to the .GEO log. Pure functions of their inputs.
//
// ICONC runs in two stages: inputc turns inputc.inp into iconcinp.kar, and
// iconc computes from that, leaving its listing and ENERTOT.DAT behind.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "session/molecule_store.h"
#include "text/text_lines.h"
#include "toolkit/chart.h"

namespace zentol {

// eV to kJ/mol.
inline constexpr double kEvToKj = 96.484505;

// One atom of the working copy the runs move: its label folded for the
// engine, its coordinates, and whether it is a transition metal.
struct IconcAtom {
    Label label{' ', ' ', ' ', ' '};
    float x = 0, y = 0, z = 0;
    bool metal = false;
};

// Atomic numbers 21-30, 39-48 and 71-80: the d-block metals the engine
// iterates charges for (the lanthanides and La itself are not among them).
bool is_transition_metal(int atomic_number);

// Capitals and digits: letters to upper case, everything else to blanks.
Label fold_label(std::string_view label);

// Labels beginning "CN" are dummy centres (ring centroids): the engine never
// sees them.
bool is_dummy_centre(const Label& label);

// What a deck asks of the preparation program besides the atoms.
struct IconcDeckOptions {
    int charge = 0;
    bool iterate = false;   // charge iteration
    int metals = 1;         // metals in the iteration, 1..3
};

// inputc.inp: "1", "ICONCINP", "PTEST", the atom count I4 and the charge
// I3, the labels one a line, the coordinates 3F12.5 one atom a line; then
// "N", or for charge iteration "Y", "1", "B", "B", the metal count I1, that
// many labels and "Y", "9" (the program's questions, answered in order).
// Dummy centres are left out. The iterated labels are the metals' first,
// then the first other atoms when more are asked for than there are metals.
std::vector<std::string> iconc_deck(const std::vector<IconcAtom>& atoms, const IconcDeckOptions& options);

// The atoms that go to the deck.
int deck_atom_count(const std::vector<IconcAtom>& atoms);

// The total energy in eV: the fourth line of ENERTOT.DAT with its first 20
// characters blanked holds four numbers, the last of them the total. 0.0
// when the line is missing or does not hold four numbers.
double read_iconc_energy(const text::TextLines& enertot);

// The listing's orbital energies: the lines between "ENERGY LEVELS (eV)"
// and "SUM OF ONE-ELECTRON", blank ones left out.
std::vector<std::string> iconc_level_list(const text::TextLines& listing);
// Occupied levels of the list: lines whose last number (the occupation) is
// above zero.
int iconc_occupied_levels(const std::vector<std::string>& levels);

// Net charges of the deck's atoms, from the lines after the one beginning
// "ATOM      NET CHG.": a number after the first 10 columns. The table ends
// at a short line or one without a number; what was read is kept.
std::vector<double> iconc_net_charges(const text::TextLines& listing, int deck_atoms);
// The deck's charges spread over all atoms of the working copy: a dummy
// centre, or an atom the table ended before, has 0.
std::vector<double> charges_per_atom(const std::vector<IconcAtom>& atoms, const std::vector<double>& deck_charges);

// .GEO lines of an energy run: " ICONC energy" and
// " Total Energy =" F15.5 " eV    " F15.5 " kJ/mol".
std::vector<std::string> iconc_energy_log(double energy);
// Field 9 after an energy run: F12.5 " eV".
std::string iconc_energy_status(double energy);

// The B-Scan log: its title, the column header, and one line a step (the
// two labels A4, a blank, the atom numbers I4, the distance F9.3, the
// energy F22.8 and in kJ/mol F22.3).
std::vector<std::string> scan_log_head();
std::string scan_log_line(const Label& a, const Label& b, int atom_a, int atom_b, double distance, double energy);
// Field 9 during a scan.
std::string scan_step_status(int step, double energy, double distance);
// "B-Scan Min.at" A14, the distance F7.3, " see .GEO".
std::string scan_applied_status(double distance);

// One point of a scan: the bond length and the energy there.
struct ScanPoint {
    double distance = 0;
    double energy = 0;
};
// The step (1-based) of the lowest energy; 0 for no points.
int scan_minimum(const std::vector<ScanPoint>& points);
// Energy against distance, titled with the two labels and the step of the
// minimum; the axes span the points.
Chart scan_chart(const std::vector<ScanPoint>& points, const Label& a, const Label& b);

// The optimisation log: a line a run with the atom and the axis I3 each
// and the energy F26.8, and the closing line with the final energy.
std::string optimise_log_line(int atom, int axis, double energy);
std::string optimise_final_line(double energy);

}  // namespace zentol
