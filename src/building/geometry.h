// Measuring the molecule in Build mode: distances, angles and dihedrals of
// picked atoms, the sum of covalent radii with the Blom-Haaland correction
// for a bond, and the Geometry command that writes them to status field 9
// and the job's .geo log.
#pragma once

#include <string>
#include <vector>

#include "building/vec3.h"
#include "session/display_loop.h"
#include "session/molecule_store.h"

namespace zentol {

struct Session;

// The measurements. A degenerate case gives back old_value, so a result
// stands as it was when the atoms do not define the quantity.
double distance(const Vec3& a, const Vec3& b);
// Angle at p2, in degrees, from the three side lengths; old_value when a
// side has zero length.
double angle(const Vec3& p1, const Vec3& p2, const Vec3& p3, double old_value);
// Dihedral p1-p2-p3-p4 in degrees, -180 to 180, positive for a clockwise
// turn of the far bond seen along p2-p3; old_value for a bond shorter than
// 1e-5 or three points (nearly) on a line.
double dihedral(const Vec3& p1, const Vec3& p2, const Vec3& p3, const Vec3& p4, double old_value);
// The same for four atoms of the store; old_value unless they are four
// different atoms.
double dihedral_of_atoms(const Store& st, const int atoms[4], double old_value);

// The column of the periodic table the bond estimate works with: Z for 1
// and 2, the main-group column (1..8) for periods 2 to 5, 99 for anything
// else (transition metals, period 6 and beyond, unknown elements).
int periodic_group(int z);

// What the bond estimate needs of one atom.
struct BondAtom {
    Label label{' ', ' ', ' ', ' '};
    int z = 0;                    // atomic number
    double radius = 0;            // covalent radius
    double electronegativity = 0;
    int neighbours = 0;
};

struct BondReport {
    std::vector<std::string> log;   // records for the .geo log
    std::string status;             // the text for status field 9
};

// The sum of covalent radii for the bond a-b of the given length, heavier
// atom first, with the electronegativity difference and, for two atoms
// single-bonded by their valence, the Blom-Haaland correction.
BondReport bond_length_report(BondAtom a, BondAtom b, double length);
BondAtom bond_atom(Session& s, int atom);

// The records of the Geometry command.
std::string atom_picked_line(const Label& label, const Vec3& p, int type);
std::vector<std::string> distance_lines(const Label& a, const Vec3& pa, const Label& b, const Vec3& pb,
                                        double length);
std::string angle_line(const Label labels[3], double degrees);
std::string dihedral_line(const Label labels[4], double degrees);

// Command 49: picks up to four atoms, over and over, reporting at each pick.
// Returns the event that ended it; when that was command 56, a cursor key
// or S, its pointer position is parked off the view so that the caller
// finds no atom under it.
Event geometry_command(Session& s);

}  // namespace zentol
