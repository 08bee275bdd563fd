// The Z-matrix form of the Firefly deck. MOPAC serves as a coordinate
// converter: a dummy run on the Cartesian atoms prints the internal
// coordinates, which become the deck's atom records.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "session/molecule_store.h"
#include "text/text_lines.h"

namespace zentol {

struct Session;

// One row of MOPAC's internal-coordinate table: bond length to atom na,
// angle with nb, dihedral with nc.
struct ZmatRow {
    int atom = 0;
    double length = 0, angle = 0, dihedral = 0;
    int na = 0, nb = 0, nc = 0;
};

// The converter's deck INPUT: its three title records, then label A4 and
// x y z each F12.5 with an optimisation flag I3. `modern` asks the
// open-source MOPAC for its table (INT) and stops it before the SCF (0SCF).
std::vector<std::string> zmatrix_converter_deck(const Store& st, bool modern);

// The rows of atoms 1..natoms from the first internal-coordinate table of
// a MOPAC listing; nullopt when there is no table or it is cut short.
std::optional<std::vector<ZmatRow>> read_internal_coordinates(const text::TextLines& listing, int natoms);

// The deck's atom records: the first atom's symbol, then symbol A2 with
// (connection I4, value F9.3) pairs, one for atom 2, two for atom 3, three
// from atom 4 on; then " $END".
std::vector<std::string> zmatrix_records(const Store& st, const std::vector<ZmatRow>& rows);

// The dihedral about the bond b-c: the first row from atom 4 on whose na
// and nb are the bond's atoms. Its coordinate number in the deck's
// internal coordinates is 3 * atom - 6.
struct FrozenDihedral {
    int coordinate = 0;
    ZmatRow row;
};
std::optional<FrozenDihedral> find_frozen_dihedral(const std::vector<ZmatRow>& rows, int b, int c);

// "Dihedral frozen is" with the four labels, their numbers and the angle.
std::string frozen_dihedral_line(const Store& st, const FrozenDihedral& f);

// Runs the converter on the molecule as it stands (the configured Mopac 6
// when there is one, else the MOPAC on the machine) and gives its rows;
// nullopt, with a message, when no table came back.
std::optional<std::vector<ZmatRow>> run_zmatrix_converter(Session& s);

}  // namespace zentol
