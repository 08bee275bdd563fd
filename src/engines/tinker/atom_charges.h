// Charges from a quantum-chemistry engine into the force field: the job's
// side log <job>_chg.log becomes one CHARGE line a atom in the job's .key
// file. And the Comment command, which adds a line of the user's to the
// .GEO log.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace zentol {

struct Session;

// "CHARGE " then the negative atom number in 5 columns (one atom, not an
// atom type) and the charge F10.4.
std::string charge_key_line(int atom, double charge);

// The .key lines for the charges of a side log: its title line skipped,
// then for atoms 1..natoms the value after the 4-column label of each line.
// Stops at the end of the log or at a line without a number.
std::vector<std::string> charge_key_lines(const std::vector<std::string>& side_log, int natoms);

// A .key that already has charges: one of its first 5000 lines begins
// "CHARGE" in capitals.
bool key_has_charges(const std::vector<std::string>& key);

// Tinker mode, command 3 "&Add Atom Charges": appends the charge lines to
// the .key, unless it has charges already or the job has no side log of
// charges.
void add_atom_charges(Session& s);

// Tinker mode, command 4 "&Comment": dialog 122, then a blank line and the
// comment in the .GEO log.
void add_comment(Session& s);

}  // namespace zentol
