// The way in from and out to the structure formats other programs write
// (PDB, MOL/SDF, MOL2, CML, standard XYZ, the outputs of Gaussian, ORCA,
// GAMESS, MOPAC ...). Open Babel reads and writes them; this adapter is the
// only place that sees its types, and hands a molecule over as plain values.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace zentol {

struct ForeignAtom {
    int atomic_number = 0;     // 0 for a dummy atom
    std::string symbol;        // "C", "Zn", "D" for deuterium
    double x = 0, y = 0, z = 0;
    int formal_charge = 0;
    double partial_charge = 0;
    std::string name;          // the atom's name in the file (PDB, MOL2), or the label written
};

struct ForeignBond {
    int a = 0, b = 0;          // 1-based atom numbers
    int order = 1;             // 0 when not known (the writer works it out)
};

struct ForeignMolecule {
    std::vector<ForeignAtom> atoms;
    std::vector<ForeignBond> bonds;
    int total_charge = 0;
    int multiplicity = 1;
    bool has_partial_charges = false;
    // The format states bonds for some atoms only (PDB: CONECT records for
    // the HETATM groups, none for the standard residues).
    bool bonds_partial = false;
    std::string title;
};

// The file's lower-case extension without the dot ("pdb"; "" when none).
std::string structure_extension(const std::string& path);

// True when Open Babel has a reader (or a writer) for the extension.
bool openbabel_reads(const std::string& extension);
bool openbabel_writes(const std::string& extension);

// The first molecule of the file, its format taken from the extension.
// Bonds are those the file states; none are guessed from distances. On
// failure *why says what went wrong in words.
std::optional<ForeignMolecule> read_foreign_structure(const std::string& path, std::string* why);

// The molecule as the text of the format of the extension, bond orders and
// atom charges worked out from the geometry and the total charge where the
// bonds carry no order. nullopt with *why when the format is not written.
std::optional<std::string> format_foreign_structure(const ForeignMolecule& m, const std::string& extension,
                                                    std::string* why);

}  // namespace zentol
