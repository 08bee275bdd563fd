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
// type and at most 7 neighbours taken from the slots in order, holes included.
std::string format_xyz(const Store& st, const std::string& job_name, int charge, int multiplicity);

// Fills the store from the file's lines. Charge and multiplicity are changed
// only when the title carries them. Returns kXyzRead or kXyzDamaged (the
// table is kept as far as it got).
int parse_xyz(const std::vector<std::string>& lines, Store& st, Toolkit* tk, int& charge, int& multiplicity);

// Reads <job>.xyz of the current directory into the session's store.
void read_job_xyz(Session& s, int& status);

}  // namespace zentol
