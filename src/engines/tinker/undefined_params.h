// The "&UNdefined" command of Tinker mode: the blocks of force-field
// parameters the last run did not know, read from its log, turned into
// lines of the job's key file - bonds and angles through one dialog each,
// pre-filled from the geometry; torsions with all barriers zero.
#pragma once

#include <string>
#include <vector>

namespace zentol {

struct Session;

enum class UndefinedKind { Atom, Bond, Angle, OutOfPlane, Torsion };

struct UndefinedRow {
    std::string type;        // "Bond", "4-Ring", "Angle-OP", ...
    int atoms[4] = {0, 0, 0, 0};
    int classes[4] = {0, 0, 0, 0};
    int natoms = 0, nclasses = 0;
};

struct UndefinedBlock {
    UndefinedKind kind = UndefinedKind::Bond;
    std::vector<UndefinedRow> rows;   // at most 20; a longer table overwrites the 20th
};

std::vector<UndefinedBlock> scan_undefined(const std::vector<std::string>& log);

// Classes in their normal order for a width of 2, 3 or 4 (a torsion
// reversed with its atoms), then the first row of each combination.
void normalise(UndefinedRow& r, int width);
std::vector<UndefinedRow> distinct_rows(std::vector<UndefinedRow> rows, int width);

// Key-file lines; kind 1 plain, 2 four-membered ring, 3 five-membered ring.
std::string bond_key_line(int kind, int type_a, int type_b, float force, float length);
std::string angle_key_line(int kind, const int types[3], float force, float angle);
std::string opbend_key_line(const int classes[4], float force);
std::string torsion_key_line(int kind, const int classes[4]);

void undefined_parameters_command(Session& s);

}  // namespace zentol
