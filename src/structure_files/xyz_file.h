// The job's .xyz file: Tinker's coordinate format with charge and
// multiplicity carried at the end of the title line (" chamul  q  m").
#pragma once

#include <string>
#include <vector>

#include "session/molecule_store.h"

namespace zentol {

class Toolkit;
struct Session;

inline constexpr int kXyzRead = 1;
inline constexpr int kXyzMissing = 2;
inline constexpr int kXyzDamaged = 0;

// The whole file as written: title line, then one line per atom with the
// type and the neighbours it has (empty slots are left out, so no bond is
// lost behind a hole), at most 7.
std::string format_xyz(const Store& st, const std::string& job_name, int charge, int multiplicity);

// Why a file or a molecule was refused: the line (1 the title; 0 for a
// molecule in memory), the atom, and the reason in words.
struct XyzProblem {
    int line = 0;
    int atom = 0;
    std::string why;
    // "ptest.xyz line 5: ..." or "atom 12 (C): ..."
    std::string text(const std::string& file) const;
};

// The first atom whose values do not fit the file's columns (x from
// -999.999999 to 9999.999999, y and z from -9999.999999 to 99999.999999, a
// type from -99999 to 999999), or 0 when every atom fits: such a molecule
// is never written, because the file would not read back.
int unwritable_atom(const Store& st, XyzProblem* problem = nullptr);

// Fills the store from the file's lines. Charge and multiplicity are changed
// only when the title carries them. Returns kXyzRead or kXyzDamaged (the
// table is kept as far as it got); a damaged file says why in *problem.
// Refused: a short file, a bad number, a row cut before its coordinates or
// its type, a neighbour outside the atoms of the file or not a whole
// number, and values the writer could not write back. A file of more than
// 2500 atoms reads its first 2500 (natoms_file keeps the count).
int parse_xyz(const std::vector<std::string>& lines, Store& st, Toolkit* tk, int& charge, int& multiplicity,
              XyzProblem* problem = nullptr);

// Reads <job>.xyz of the current directory into the session's store. A
// damaged file says why in *problem.
void read_job_xyz(Session& s, int& status, XyzProblem* problem = nullptr);

// The same round trip from the text the writer made, with no disk: the
// molecule of a job whose file cannot be written stays as it was saved.
void reload_from_text(Session& s, const std::string& xyz_text);

}  // namespace zentol
