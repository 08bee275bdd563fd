// Multiwfn is a terminal menu program: each analysis is a file of menu
// answers, one a record, fed on its standard input. These are the answer
// files of the Multiwfn actions and the readers of the outputs the program
// takes back (the ELF basin lists, the Hirshfeld charges).
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "engines/runner.h"
#include "text/text_lines.h"

namespace zentol {

// The orbital numbers of a list as typed: numbers separated by commas or
// blanks, "a-b" for a range; at most 20. nullopt when a word is no number.
std::optional<std::vector<int>> parse_orbital_list(const std::string& list);

// The three-digit stem of an orbital's composition file: 7 gives "007".
std::string orbital_stem(int orbital);

// Action 2: cube files of the orbitals, one orbital's composition, and the
// composition of all of them.
AnswerFile cube_answers(const std::string& list);
AnswerFile orbital_answers(int orbital);
AnswerFile composition_answers(const std::vector<int>& orbitals);
// The d-orbital key put in front of the compositions.
std::vector<std::string> d_orbital_key();

// Action 3: the ELF basins after the Topmod scheme.
AnswerFile topmod_first_answers();
struct BasinLists {
    std::string core, one_synaptic, two_synaptic;   // as Multiwfn printed them, trimmed
    bool one_found = false, two_found = false;
};
BasinLists read_basin_lists(const text::TextLines& topmod);
AnswerFile topmod_second_answers(const BasinLists& lists);

// Action 4: oxidation states by modified LOBA. `open_shell` switches the
// orbital composition of the localised orbitals off first (see the .cpp).
AnswerFile loba_answers(double threshold, bool open_shell);

// Actions 5 to 7.
AnswerFile esp_answers();
AnswerFile hirshfeld_answers();
AnswerFile spin_density_answers();

// job_chg.log from Multiwfn's job.chg: "#Orca hirshfeld charges", then the
// element and the charge an atom; nullopt when no atom record is readable.
std::optional<std::vector<std::string>> hirshfeld_charge_log(const text::TextLines& chg, int natoms);

// Whether a Molden file holds beta orbitals (an unrestricted wavefunction).
bool molden_unrestricted(const text::TextLines& molden);

// The [Nval] section a Molden file of a molecule with core potentials
// needs before Multiwfn reads it: "[Nval]", then "Y 11" for each element
// with a core. Empty when the file needs none (no core potential, or a
// section there already); nullopt when the core sizes cannot be told.
std::optional<std::vector<std::string>> valence_section(const text::TextLines& molden, int charge);

// The file's records with the section put after its [Atoms] block.
std::vector<std::string> with_valence_section(const text::TextLines& molden, const std::vector<std::string>& section);

}  // namespace zentol
