// zentol-symmol [-t TOL | --tolerance TOL] [DIRECTORY]
//
// The point-group program Zentol runs in a job directory (the current one
// unless a directory is given). Reads SYMMOL.INP, or mol_al.lst when that is
// missing or holds another number of atoms, and writes SYMMOL.OUT,
// SYMMOL.LST, MOL_AL.TXT and SYMMETRZ.OUT. TOL is the largest distance in
// Angstrom an atom may lie from its symmetry image (0.1 by default).
// Exit status: 0 done, 1 no atoms to work on, 2 bad command line or
// directory, 3 an answer file could not be written.
#include <iostream>
#include <string>
#include <vector>

#include "analysis/point_group.h"
#include "text/fixed_format.h"
#include "toolkit/files.h"

namespace {

struct Options {
    double tolerance = zentol::kDefaultSymmetryTolerance;
    std::string directory;
};

void usage(std::ostream& os) {
    os << "usage: zentol-symmol [-t TOL | --tolerance TOL] [DIRECTORY]\n"
          "  finds the point group of the molecule in DIRECTORY/SYMMOL.INP (or mol_al.lst)\n"
          "  TOL  largest distance in Angstrom between an atom and its symmetry image (default 0.1)\n";
}

bool read_tolerance(const std::string& word, double& tolerance) {
    auto v = zentol::text::read_reals(word, 1);
    if (!v || v->empty() || !((*v)[0] > 0)) return false;
    tolerance = (*v)[0];
    return true;
}

// 0 to go on, otherwise the exit status.
int parse_options(int argc, char** argv, Options& o) {
    for (int k = 1; k < argc; ++k) {
        const std::string word = argv[k];
        if (word == "-h" || word == "--help") {
            usage(std::cout);
            return -1;
        }
        bool ok = true;
        if (word == "-t" || word == "--tolerance") ok = k + 1 < argc && read_tolerance(argv[++k], o.tolerance);
        else if (word.rfind("--tolerance=", 0) == 0) ok = read_tolerance(word.substr(12), o.tolerance);
        else if (word.empty() || word[0] == '-' || !o.directory.empty()) ok = false;
        else o.directory = word;
        if (!ok) {
            usage(std::cerr);
            return 2;
        }
    }
    return 0;
}

std::vector<zentol::SymAtom> read_atoms() {
    std::vector<zentol::SymAtom> atoms, listed;
    if (auto lines = zentol::files::read_lines("SYMMOL.INP")) atoms = zentol::parse_symmol_inp(*lines);
    if (auto lines = zentol::files::read_lines("mol_al.lst")) listed = zentol::parse_mol_al_list(*lines);
    // mol_al.lst is rewritten on every pass, SYMMOL.INP only above two atoms.
    if (atoms.empty() || (!listed.empty() && listed.size() != atoms.size())) return listed;
    return atoms;
}

}  // namespace

int main(int argc, char** argv) {
    Options o;
    if (int status = parse_options(argc, argv, o)) return status < 0 ? 0 : status;
    if (!o.directory.empty() && !zentol::files::change_dir(o.directory)) {
        std::cerr << "zentol-symmol: no directory " << o.directory << "\n";
        return 2;
    }
    const std::vector<zentol::SymAtom> atoms = read_atoms();
    const zentol::PointGroupResult r = zentol::find_point_group(atoms, o.tolerance);
    namespace files = zentol::files;
    const bool written = files::write_atomic("SYMMOL.OUT", zentol::format_symmol_out(r)) &&
                         files::write_atomic("SYMMOL.LST", zentol::format_symmol_lst(atoms, r)) &&
                         files::write_atomic("MOL_AL.TXT", zentol::format_mol_al_txt(r)) &&
                         files::write_atomic("SYMMETRZ.OUT", zentol::format_symmetrz_out(atoms, r));
    if (!written) {
        std::cerr << "zentol-symmol: the answer files could not be written\n";
        return 3;
    }
    if (atoms.empty()) {
        std::cerr << "zentol-symmol: no atoms in SYMMOL.INP or mol_al.lst\n";
        return 1;
    }
    return 0;
}
