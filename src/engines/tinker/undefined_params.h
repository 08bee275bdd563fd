// The "&UNdefined" command of Tinker mode. When a Tinker program meets a
// combination of atom types its force field does not know, it writes blocks
// beginning "Undefined" into ZENTOL.LOG and stops. The command reads those
// blocks and adds the missing entries to the job's key file: bonds, angles
// and one out-of-plane bend through dialog 118, pre-filled from the current
// geometry; torsions with all barriers zero, without asking. The user then
// repeats the run, and repeats the command if the engine still complains.
#pragma once

#include <array>
#include <string>
#include <vector>

namespace zentol {

struct Session;
struct Store;

// One row of an undefined-parameter table: atom numbers in 0..3, the atom
// classes the log gives in 4..7.
using UndefRow = std::array<int, 8>;

// The table of one block: 20 rows, filled from the first; a further row of
// a longer block overwrites the 20th, so no block can overflow it.
struct UndefTable {
    static constexpr int kRows = 20;
    std::array<UndefRow, kRows> row{};
    int count = 0;

    void clear() { *this = UndefTable{}; }
    // Reads one log row with `n` atoms and `n` classes into the next row.
    // A read that fails part-way leaves the fields it did not reach as they
    // were.
    void read_row(const std::string& line, int n);
};

// Reads a row's atoms and classes into r; false when the row does not hold
// them all (the fields read before the failure are kept).
bool read_undefined_row(const std::string& line, int n, UndefRow& r);

// Brings a row to its normal form for a width of 2 (bond), 3 (angle) or 4
// (torsion): the classes of a bond or the end classes of an angle ascending;
// a torsion whose first class is above its last reversed, atoms included.
void normalise_row(UndefRow& r, int width);

// Normalises the first n rows, drops every row whose `width` classes repeat
// an earlier row's, closes the gaps and returns the new number of rows. The
// first row of a combination stays, so its atoms serve for the geometry.
int remove_duplicates(UndefTable& t, int n, int width);

enum class UndefSection { Bond, Angle, OutOfPlane, Torsion };

// One parameter to add: section, kind (1 plain, 2 four-membered ring,
// 3 five-membered ring, 4 three-membered ring) and the table row it came
// from.
struct UndefEntry {
    UndefSection section = UndefSection::Bond;
    int kind = 1;
    UndefRow row{};
};

// What the scan of a log found, in the order the entries are dealt with.
struct UndefScan {
    std::vector<UndefEntry> entries;
    bool undefined_atom = false;   // an unknown atom type: nothing here can help
    bool key_changed = false;      // an out-of-plane bend or torsions were taken
    bool ended_in_block = false;   // the log ended inside a block
    bool announce() const { return !undefined_atom && (key_changed || ended_in_block); }
};

// Scans the lines of ZENTOL.LOG; the leading blank of a shifted log is
// dropped first. Fewer than five lines give an empty result.
UndefScan scan_undefined(const std::vector<std::string>& log);

// The description shown in the dialog: labels and atom types (column 1 of
// the connectivity table, not the log's classes) of the entry's atoms.
std::string undefined_description(const Store& st, const UndefEntry& e);

// The dialog's title for an entry: "Bond-Stretch", "4-Angle-Bend", "Angle-OP"...
std::string undefined_title(const UndefEntry& e);

// Key-file lines.
std::string bond_key_line(int kind, int type_a, int type_b, double force, double length);
std::string angle_key_line(int kind, int type_a, int type_b, int type_c, double force, double angle);
std::string opbend_key_line(const UndefRow& r, double force);
std::string torsion_key_line(int kind, const UndefRow& r);

// The message lines of the command.
extern const std::vector<std::string> kUndefinedAtomMessage;
extern const char kUndefinedKeyUpdated[];

// The command itself: reads ZENTOL.LOG of the current (job) directory and
// appends to the job's .key file.
void undefined_parameters_command(Session& s);

}  // namespace zentol
