// Molecules appended from files: the substituents and starting molecules
// of the library tree, and any XYZ file the user picks, with the charges
// and key lines that come with it.
#pragma once

#include <string>
#include <vector>

namespace zentol {

class Toolkit;
struct Session;
struct Store;

inline constexpr int kAppendFailed = 0;
inline constexpr int kAppendJoined = 1;     // appended behind atoms already there
inline constexpr int kAppendStarted = 60;   // the molecule was empty before

// The library file of a request code 1..9 below the library directory; an
// unknown code leaves the name as given.
std::string library_path(const std::string& library_dir, int code, const std::string& name);

// Appends a Tinker XYZ file behind the present atoms, shifted along x past
// them, then writes the job files. kAppendFailed leaves the atoms alone.
int append_molecule_file(Session& s, const std::string& path);

// The same for the file's lines, in the store alone (nothing is written).
int append_molecule_lines(Store& st, Toolkit* tk, const std::vector<std::string>& lines);

// append_molecule_file on the library file of a request code.
int append_library_file(Session& s, int code, const std::string& name = "");

// Brings the added molecule's _chg.log lines and .key lines into the job's,
// its atom numbers raised by n0, the atom count before the addition.
void merge_added_molecule(Session& s, const std::string& added_xyz, int n0);

// The added key file's lines as they join the job's: "parameters" lines
// dropped, CHARGE lines renumbered, the others trimmed.
std::vector<std::string> shifted_key_lines(const std::vector<std::string>& added, int n0);

// Add.Mol: a chosen XYZ file appended and merged. Returns the append result.
int add_molecule_from_file(Session& s);

}  // namespace zentol
