// What the Lewis analysis writes: the .geo log lines, lewis.brt, the text
// tables for the viewer, and the Covalent Bond Classification of metals.
#include <cstdlib>

#include "analysis/lewis.h"
#include "text/fixed_format.h"

namespace zentol {

namespace {

using text::format_f;
using text::format_i;
using text::pad_right;

std::string label_of(const LewisInput& in, int i) { return pad_right(in.atoms[i - 1].label, 4); }

int bond_a(const LewisInput& in, int k) { return in.bonds[k - 1][0]; }
int bond_b(const LewisInput& in, int k) { return in.bonds[k - 1][1]; }

std::string ierr_line(const LewisResult& r) { return (text::FreeRecord() << "Lewis IERR =" << r.ierr).str(); }

// "Donor Bond O2     4   0 N1     2   0": donor, acceptor, and what is left
// of each one's net charge.
std::string donor_log_line(const LewisInput& in, const LewisDonorBond& d) {
    return "Donor Bond " + label_of(in, d.donor) + format_i(d.donor, 4) + format_i(d.donor_net, 4) + " " +
           label_of(in, d.acceptor) + format_i(d.acceptor, 4) + format_i(d.acceptor_net, 4);
}

std::string atom_log_line(const LewisInput& in, const LewisResult& r, int i) {
    std::string s = label_of(in, i) + format_i(i, 4);
    for (int v : {r.atn[i], r.ve[i], r.tec[i], r.lone_electrons(i), r.chg[i], r.fc[i], r.be[i], r.os[i]})
        s += format_i(v, 4);
    return s;
}

std::string xyz_fields(double x, double y, double z) {
    return format_f(x, 10, 5) + format_f(y, 10, 5) + format_f(z, 10, 5);
}

// Sections 1 to 6: the structure as a crystallographic result file, one
// peak on the midpoint of every bond.
void brt_structure(const LewisInput& in, const LewisResult& r, std::vector<std::string>& out) {
    const int n = static_cast<int>(in.atoms.size());
    const int nb = static_cast<int>(in.bonds.size());
    if (r.exception) out.push_back("IEXCPT");
    out.push_back("TITL  LEWIS" + format_i(n, 4) + format_i(nb, 4));
    out.push_back("CELL  0.71069 1. 1. 1. 90. 90. 90.");
    out.push_back("LATT -1");
    out.push_back("FVAR");
    for (int i = 1; i <= n; ++i) {
        const LewisAtom& at = in.atoms[i - 1];
        out.push_back(label_of(in, i) + " 1 " + xyz_fields(at.x, at.y, at.z) + " 11. .05");
    }
    for (int k = 1; k <= nb; ++k) {
        const LewisAtom& p = in.atoms[bond_a(in, k) - 1];
        const LewisAtom& q = in.atoms[bond_b(in, k) - 1];
        out.push_back("BM   1 " + xyz_fields((p.x + q.x) / 2, (p.y + q.y) / 2, (p.z + q.z) / 2) + " 11. .05");
    }
    out.push_back("HKLF 4");
}

// Sections 7 to 10: the tables the viewer shows. A section keyword carries
// its row count on the same line.
void brt_tables(const LewisInput& in, const LewisResult& r, std::vector<std::string>& out) {
    const int n = static_cast<int>(in.atoms.size());
    const int nb = static_cast<int>(in.bonds.size());
    out.push_back("ATOM" + format_i(n, 4));
    out.push_back("Name.  no.  LPe  chg  OS  Atno  coor");
    for (int i = 1; i <= n; ++i)
        out.push_back(label_of(in, i) + format_i(i, 4) + format_i(r.lone_electrons(i), 4) +
                      format_i(r.chg[i] + r.fc[i], 4) + format_i(r.os[i], 4) + format_i(r.atn[i], 4) +
                      format_i(r.coor[i], 4));
    out.push_back("ENDATOM");
    out.push_back("BOND" + format_i(nb, 4));
    out.push_back("        atom        atom           bond order");
    for (int k = 1; k <= nb; ++k)
        out.push_back(format_i(bond_a(in, k), 4) + format_i(bond_b(in, k), 4) + format_i(r.order[k], 4));
    out.push_back("ENDBOND");
    out.push_back("ALLEN" + format_i(n, 4));
    for (int i = 1; i <= n; ++i) out.push_back(format_i(i, 4) + format_f(r.en[i], 8, 3));
    out.push_back("ENDALLEN");
    out.push_back("DONORBOND" + format_i(static_cast<long long>(r.donors.size()), 4));
    for (const LewisDonorBond& d : r.donors) out.push_back(format_i(d.donor, 4) + format_i(d.acceptor, 4));
    out.push_back("ENDDONOR");
}

}  // namespace

std::vector<std::string> lewis_log_lines(const LewisInput& in, const LewisResult& r) {
    if (r.ierr != 0) return {ierr_line(r)};
    std::vector<std::string> out;
    for (const LewisDonorBond& d : r.donors) out.push_back(donor_log_line(in, d));
    for (int k = 1; k <= static_cast<int>(in.bonds.size()); ++k) {
        const int a = bond_a(in, k), b = bond_b(in, k);
        out.push_back(label_of(in, a) + format_i(a, 4) + " " + label_of(in, b) + format_i(b, 4) + " B.ord " +
                      format_i(r.order[k], 4));
    }
    out.push_back("At. no. ATN V.e  TEC  nbe  Chg    FC   B.e OS");
    for (int i = 1; i <= r.natoms(); ++i) out.push_back(atom_log_line(in, r, i));
    return out;
}

std::vector<std::string> lewis_brt_lines(const LewisInput& in, const LewisResult& r) {
    std::vector<std::string> out;
    brt_structure(in, r, out);
    brt_tables(in, r, out);
    return out;
}

std::vector<std::string> lewis_table_text(const LewisInput& in, const LewisResult& r) {
    if (r.ierr != 0) return {ierr_line(r)};
    const int n = static_cast<int>(in.atoms.size());
    const int nb = static_cast<int>(in.bonds.size());
    auto who = [&](int i) { return pad_right(in.atoms[i - 1].label, 6) + format_i(i, 4); };
    std::vector<std::string> out;
    out.push_back("Lewis structure: " + std::to_string(n) + " atoms, " + std::to_string(nb) + " bonds, charge " +
                  std::to_string(in.total_charge));
    out.push_back("");
    out.push_back(pad_right("Atom", 6) + text::format_a("No.", 4) + text::format_a("LPe", 5) +
                  text::format_a("Chg", 5) + text::format_a("OS", 5) + text::format_a("Atno", 5) +
                  text::format_a("Coor", 5));
    for (int i = 1; i <= n; ++i)
        out.push_back(who(i) + format_i(r.lone_electrons(i), 5) + format_i(r.chg[i] + r.fc[i], 5) +
                      format_i(r.os[i], 5) + format_i(r.atn[i], 5) + format_i(r.coor[i], 5));
    out.push_back("");
    out.push_back(pad_right("Atom", 6) + text::format_a("No.", 4) + "  " + pad_right("Atom", 6) +
                  text::format_a("No.", 4) + text::format_a("Order", 6));
    for (int k = 1; k <= nb; ++k)
        out.push_back(who(bond_a(in, k)) + "  " + who(bond_b(in, k)) + format_i(r.order[k], 6));
    out.push_back("");
    if (r.donors.empty()) out.push_back("No donor bonds");
    else out.push_back(pad_right("Donor", 6) + text::format_a("No.", 4) + "  " + pad_right("Acc.", 6) +
                       text::format_a("No.", 4));
    for (const LewisDonorBond& d : r.donors) out.push_back(who(d.donor) + "  " + who(d.acceptor));
    return out;
}

// The analysis sorted the metal's ligands as it bonded them: kind 1 a
// dative pair, kinds 2 and 3 one and two covalent electrons, a side-on
// ligand by its pi bonds and odd electrons; z is the metal's share of the
// charge, the whole charge of a complex with one metal.
LigandCounts classify_ligands(const LewisInput& in, const LewisResult& r, int metal) {
    (void)in;
    if (r.ierr != 0 || metal < 1 || metal >= static_cast<int>(r.ligands.size())) return {};
    return r.ligands[metal];
}

std::string cbc_line(const std::string& symbol, const LigandCounts& c) {
    std::string s = "Covalent Bond Classification ";
    if (c.z != 0) s += " [";
    s += symbol;
    if (c.l != 0) s += "L" + format_i(c.l, 1);
    if (c.x != 0) s += "X" + format_i(c.x, 1);
    if (c.z != 0) s += "]" + format_i(std::abs(c.z), 1) + (c.z > 0 ? "+" : "-");
    return s + "  OS " + format_i(c.x + c.z, 2);
}

std::vector<std::string> cbc_lines(const LewisInput& in, const LewisResult& r) {
    std::vector<std::string> out;
    if (r.ierr != 0) return out;
    for (int i = 1; i <= r.natoms(); ++i)
        if (lewis_is_metal(r.atn[i])) out.push_back(cbc_line(lewis_element_symbol(r.atn[i]), classify_ligands(in, r, i)));
    return out;
}

}  // namespace zentol
