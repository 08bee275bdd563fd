#include "structure_files/openbabel_import.h"

#include <algorithm>
#include <filesystem>
#include <sstream>

#include <openbabel/atom.h>
#include <openbabel/bond.h>
#include <openbabel/elements.h>
#include <openbabel/mol.h>
#include <openbabel/obconversion.h>
#include <openbabel/obiter.h>
#include <openbabel/oberror.h>
#include <openbabel/residue.h>

#include "text/fixed_format.h"

namespace zentol {

namespace ob = OpenBabel;

namespace {

// Open Babel reports through a global log that prints on standard error.
// While a file is read or written the report is caught instead, and its
// errors become the reason given to the user.
class CaughtErrors {
public:
    CaughtErrors() {
        ob::obErrorLog.ClearLog();
        ob::obErrorLog.SetOutputStream(&sink_);
        ob::obErrorLog.SetOutputLevel(ob::obError);
    }
    ~CaughtErrors() {
        ob::obErrorLog.SetOutputStream(&std::clog);
        ob::obErrorLog.ClearLog();
    }
    CaughtErrors(const CaughtErrors&) = delete;
    CaughtErrors& operator=(const CaughtErrors&) = delete;

    // The first error in plain words: the banner lines of the log dropped.
    std::string first() const {
        for (const std::string& message : ob::obErrorLog.GetMessagesOfLevel(ob::obError)) {
            std::istringstream lines(message);
            std::string line, words;
            while (std::getline(lines, line)) {
                std::string_view t = text::trim(line);
                if (t.empty() || t.front() == '=' || t.rfind("***", 0) == 0) continue;
                words += (words.empty() ? "" : " ") + std::string(t);
            }
            if (!words.empty()) return words;
        }
        return {};
    }

private:
    std::ostringstream sink_;
};

// The format of this extension, if Open Babel can read it (or write it).
ob::OBFormat* format_of(ob::OBConversion& conv, const std::string& extension, bool reading) {
    ob::OBFormat* f = extension.empty() ? nullptr : conv.FindFormat(extension);
    if (!f || (f->Flags() & (reading ? NOTREADABLE : NOTWRITABLE))) return nullptr;
    return f;
}

bool say(std::string* why, std::string text) {
    if (why) *why = std::move(text);
    return false;
}

// Formats whose bond tables leave out the atoms of standard residues.
bool bonds_partial_in(const std::string& extension) {
    return extension == "pdb" || extension == "ent" || extension == "pqr";
}

std::string symbol_of(const ob::OBAtom& a) {
    const unsigned z = a.GetAtomicNum();
    if (z == 1 && a.GetIsotope() == 2) return "D";
    if (z == 0 || z > 118) return "Xx";
    return ob::OBElements::GetSymbol(z);
}

ForeignMolecule from_obmol(ob::OBMol& mol, const std::string& extension) {
    ForeignMolecule m;
    m.title = mol.GetTitle();
    m.bonds_partial = bonds_partial_in(extension);
    m.has_partial_charges = mol.HasPartialChargesPerceived();
    for (unsigned i = 1; i <= mol.NumAtoms(); ++i) {
        ob::OBAtom* a = mol.GetAtom(static_cast<int>(i));
        ForeignAtom f;
        f.atomic_number = static_cast<int>(a->GetAtomicNum());
        f.symbol = symbol_of(*a);
        f.x = a->GetX();
        f.y = a->GetY();
        f.z = a->GetZ();
        f.formal_charge = a->GetFormalCharge();
        if (m.has_partial_charges) f.partial_charge = a->GetPartialCharge();
        m.atoms.push_back(std::move(f));
    }
    FOR_BONDS_OF_MOL(b, mol) {
        m.bonds.push_back({static_cast<int>(b->GetBeginAtomIdx()), static_cast<int>(b->GetEndAtomIdx()),
                           static_cast<int>(b->GetBondOrder())});
    }
    m.total_charge = mol.GetTotalCharge();
    m.multiplicity = std::max(1u, mol.GetTotalSpinMultiplicity());
    return m;
}

// The charge an atom's bonds give it beside its usual valence: N and P with
// four bonds +1 and with two -1, O, S and Se with three +1 and with one -1,
// a halogen with none -1. Carbon and the metals are not judged.
int valence_charge(const ob::OBAtom& a) {
    const unsigned v = a.GetExplicitValence();
    switch (a.GetAtomicNum()) {
        case 7: case 15: return v == 4 ? 1 : v == 2 ? -1 : 0;
        case 8: case 16: case 34: return v == 3 ? 1 : v == 1 ? -1 : 0;
        case 9: case 17: case 35: case 53: return v == 0 ? -1 : 0;
        default: return 0;
    }
}

bool is_metal(unsigned z) {
    static const unsigned kNonMetals[] = {0, 1, 2, 5, 6, 7, 8, 9, 10, 14, 15, 16, 17, 18, 33, 34, 35, 36, 52, 53, 54, 85, 86};
    return std::find(std::begin(kNonMetals), std::end(kNonMetals), z) == std::end(kNonMetals);
}

// Atom charges for a molecule whose bonds carry no charges: each atom's by
// its valence, when they add up to the molecule's charge; when they don't
// and there is one metal atom, the metal takes the rest (Zn2+ beside a
// carboxylate). Otherwise no atom is given a charge it may not have.
void assign_atom_charges(ob::OBMol& mol, int total) {
    int sum = 0, metals = 0;
    ob::OBAtom* metal = nullptr;
    FOR_ATOMS_OF_MOL(a, mol) {
        sum += valence_charge(*a);
        if (is_metal(a->GetAtomicNum())) ++metals, metal = &*a;
    }
    if (sum != total && metals != 1) return;
    FOR_ATOMS_OF_MOL(a, mol) a->SetFormalCharge(valence_charge(*a));
    if (sum != total) metal->SetFormalCharge(total - sum);
}

// The atoms become one residue whose atom names are the labels, so that a
// PDB or MOL2 file names every atom as Zentol does.
void name_atoms(ob::OBMol& mol, const ForeignMolecule& m) {
    ob::OBResidue* res = mol.NewResidue();
    res->SetName("MOL");
    res->SetNum(1);
    res->SetChain('A');
    for (unsigned i = 1; i <= mol.NumAtoms(); ++i) {
        ob::OBAtom* a = mol.GetAtom(static_cast<int>(i));
        res->AddAtom(a);
        const std::string& name = m.atoms[i - 1].name;
        res->SetAtomID(a, name.empty() ? symbol_of(*a) : name);
        res->SetHetAtom(a, true);
        res->SetSerialNum(a, i);
    }
    mol.SetChainsPerceived();   // the residue stands as it is
}

void to_obmol(const ForeignMolecule& m, ob::OBMol& mol) {
    mol.BeginModify();
    for (const ForeignAtom& f : m.atoms) {
        ob::OBAtom* a = mol.NewAtom();
        int z = f.atomic_number;
        if (z <= 0 && !f.symbol.empty()) z = static_cast<int>(ob::OBElements::GetAtomicNum(f.symbol.c_str()));
        a->SetAtomicNum(static_cast<unsigned>(std::clamp(z, 0, 118)));
        if (f.symbol == "D") a->SetIsotope(2);
        a->SetVector(f.x, f.y, f.z);
        a->SetFormalCharge(f.formal_charge);
        if (m.has_partial_charges) a->SetPartialCharge(f.partial_charge);
    }
    bool orders_known = true;
    for (const ForeignBond& b : m.bonds) {
        mol.AddBond(b.a, b.b, b.order > 0 ? b.order : 1);
        if (b.order <= 0) orders_known = false;
    }
    mol.EndModify();
    if (!orders_known) {
        // The bonds are known, their orders and the atoms' charges are not:
        // both follow from the geometry and from the molecule's charge.
        mol.PerceiveBondOrders();
        assign_atom_charges(mol, m.total_charge);
    }
    mol.SetTotalCharge(m.total_charge);
    mol.SetTotalSpinMultiplicity(static_cast<unsigned>(std::max(1, m.multiplicity)));
    if (m.has_partial_charges) mol.SetPartialChargesPerceived();
    mol.SetTitle(m.title.c_str());
    name_atoms(mol, m);
}

}  // namespace

std::string structure_extension(const std::string& path) {
    std::string ext = std::filesystem::path(path).extension().string();
    if (!ext.empty() && ext[0] == '.') ext.erase(0, 1);
    return text::lower_case(ext);
}

bool openbabel_reads(const std::string& extension) {
    ob::OBConversion conv;
    return format_of(conv, extension, true) != nullptr;
}

bool openbabel_writes(const std::string& extension) {
    ob::OBConversion conv;
    return format_of(conv, extension, false) != nullptr;
}

std::optional<ForeignMolecule> read_foreign_structure(const std::string& path, std::string* why) {
    const std::string ext = structure_extension(path);
    ob::OBConversion conv;
    ob::OBFormat* f = format_of(conv, ext, true);
    if (!f || !conv.SetInFormat(f)) {
        say(why, ext.empty() ? "the name has no extension that tells its format"
                             : "Open Babel reads no format with the extension ." + ext);
        return std::nullopt;
    }
    std::error_code ec;
    if (!std::filesystem::is_regular_file(path, ec)) {
        say(why, "there is no such file");
        return std::nullopt;
    }
    // Bonds come from the file alone; where it states none, Zentol's own
    // distance rule makes them.
    conv.AddOption("b", ob::OBConversion::INOPTIONS);
    ob::OBMol mol;
    CaughtErrors errors;
    bool read = false;
    try {
        read = conv.ReadFile(&mol, path);
    } catch (const std::exception& e) {
        return say(why, std::string("Open Babel stopped: ") + e.what()), std::nullopt;
    }
    if (!read || mol.NumAtoms() == 0) {
        std::string reason = errors.first();
        say(why, reason.empty() ? "Open Babel found no molecule in it" : reason);
        return std::nullopt;
    }
    return from_obmol(mol, ext);
}

std::optional<std::string> format_foreign_structure(const ForeignMolecule& m, const std::string& extension,
                                                    std::string* why) {
    ob::OBConversion conv;
    ob::OBFormat* f = format_of(conv, extension, false);
    if (!f || !conv.SetOutFormat(f)) {
        say(why, extension.empty() ? "the name has no extension that tells the format"
                                   : "Open Babel writes no format with the extension ." + extension);
        return std::nullopt;
    }
    ob::OBMol mol;
    CaughtErrors errors;
    std::string out;
    try {
        to_obmol(m, mol);
        out = conv.WriteString(&mol);
    } catch (const std::exception& e) {
        return say(why, std::string("Open Babel stopped: ") + e.what()), std::nullopt;
    }
    if (out.empty()) {
        std::string reason = errors.first();
        say(why, reason.empty() ? "Open Babel wrote nothing" : reason);
        return std::nullopt;
    }
    return out;
}

}  // namespace zentol
