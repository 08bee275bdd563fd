// The Lewis analysis runs in eleven steps: exceptions (1), start (2),
// positive and negative charges (3, 4), the nitro and zwitterion patterns
// (5), bonds to hydrogen (6), the sigma and multiple bond passes (7), octet
// completion by dative pairs (8), hypervalent atoms (9), oxidation states
// (10) and donor bonds (11). Steps 3 to 9 live in lewis_passes.cpp, the odd
// electrons they leave in lewis_radicals.cpp, and the bonds of metals to
// their ligands in lewis_metals.cpp. tec is kept as ve + be throughout.
#include "analysis/lewis.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "analysis/lewis_work.h"
#include "building/connectivity.h"
#include "session/store_ops.h"

namespace zentol {

using lewis_detail::Work;

namespace {

constexpr const char* kSymbols[] = {
    "",   "H",  "He", "Li", "Be", "B",  "C",  "N",  "O",  "F",  "Ne", "Na", "Mg", "Al", "Si", "P",
    "S",  "Cl", "Ar", "K",  "Ca", "Sc", "Ti", "V",  "Cr", "Mn", "Fe", "Co", "Ni", "Cu", "Zn", "Ga",
    "Ge", "As", "Se", "Br", "Kr", "Rb", "Sr", "Y",  "Zr", "Nb", "Mo", "Tc", "Ru", "Rh", "Pd", "Ag",
    "Cd", "In", "Sn", "Sb", "Te", "I",  "Xe", "Cs", "Ba", "La", "Ce", "Pr", "Nd", "Pm", "Sm", "Eu",
    "Gd", "Tb", "Dy", "Ho", "Er", "Tm", "Yb", "Lu", "Hf", "Ta", "W",  "Re", "Os", "Ir", "Pt", "Au",
    "Hg", "Tl", "Pb", "Bi", "Po", "At", "Rn", "Fr", "Ra", "Ac", "Th", "Pa", "U"};
constexpr int kLastSymbol = static_cast<int>(sizeof(kSymbols) / sizeof(kSymbols[0])) - 1;

// Step 1: As with five carbons or Te with six are hypervalent by nature;
// any As or Te on carbon switches the hypervalence test off.
void find_exceptions(Work& w) {
    for (int i = 1; i <= w.nat(); ++i) {
        const int z = w.r.atn[i];
        if (z != 33 && z != 52) continue;
        int carbons = 0;
        for (int j : w.nbrs[i]) carbons += w.r.atn[j] == 6 ? 1 : 0;
        if (carbons == 0) continue;
        w.r.exception = true;
        if (z == 33 && carbons == 5) w.r.messages.push_back("Octet rule exception AsMe5");
        if (z == 52 && carbons == 6) w.r.messages.push_back("Octet rule exception TeMe6");
    }
}

// Step 10. The charges on an atom count first, formal ones included: an
// oxidation state counts every electron the atom holds, and a formal charge
// is an electron moved. Each bond then goes wholly to the more electro-
// negative atom; an atom without an Allen value (0) is below everything.
// Bonds to metals follow their own rule (lewis_metals.cpp).
void oxidation_states(Work& w) {
    LewisResult& r = w.r;
    for (int i = 1; i <= w.nat(); ++i) r.os[i] = r.chg[i] + r.fc[i];
    for (int k = 1; k <= w.nbond(); ++k) {
        const int i = w.a(k), j = w.b(k);
        if (w.outside[k] || r.atn[i] == r.atn[j] || r.en[i] == r.en[j]) continue;
        const int hi = r.en[i] > r.en[j] ? i : j;
        const int lo = hi == i ? j : i;
        r.os[hi] -= r.order[k];
        r.os[lo] += r.order[k];
    }
    lewis_detail::metal_oxidation_terms(w);
}

// Step 11: a bond between a positive and a negative atom is a donor bond,
// the negative atom the donor; each such bond uses up one unit of both. A
// ligand's dative bond to its metal comes first.
void donor_bonds(Work& w) {
    LewisResult& r = w.r;
    for (int i = 1; i <= w.nat(); ++i) r.net[i] = r.chg[i] + r.fc[i];
    lewis_detail::metal_donor_bonds(w);
    for (int k = 1; k <= w.nbond(); ++k) {
        const int i = w.a(k), j = w.b(k);
        if (w.outside[k] || r.net[i] == 0 || r.net[j] == 0 || (r.net[i] > 0) == (r.net[j] > 0)) continue;
        const int pos = r.net[i] > 0 ? i : j;
        const int neg = pos == i ? j : i;
        --r.net[pos];
        ++r.net[neg];
        r.donors.push_back({k, neg, pos, r.net[neg], r.net[pos]});
    }
}

void size_tables(LewisResult& r, int n, int nb) {
    for (auto* t : {&r.atn, &r.group_e, &r.ve, &r.be, &r.tec, &r.chg, &r.fc, &r.coor, &r.os, &r.net})
        t->assign(n + 1, 0);
    r.en.assign(n + 1, 0.0f);
    r.ligands.assign(n + 1, {});
    r.order.assign(nb + 1, 0);
    r.metal_bond.assign(nb + 1, MetalBond::none);
}

void start(Work& w) {
    const int n = w.nat();
    size_tables(w.r, n, w.nbond());
    w.nbrs.assign(n + 1, {});
    w.bonds_at.assign(n + 1, {});
    for (int i = 1; i <= n; ++i) {
        const LewisAtom& at = w.in.atoms[i - 1];
        w.r.atn[i] = at.atn;
        w.r.en[i] = at.en;
        w.r.group_e[i] = lewis_group_electrons(at.atn);
        w.r.ve[i] = w.r.group_e[i];
    }
    for (int k = 1; k <= w.nbond(); ++k) {
        w.nbrs[w.a(k)].push_back(w.b(k));
        w.nbrs[w.b(k)].push_back(w.a(k));
        w.bonds_at[w.a(k)].push_back(k);
        w.bonds_at[w.b(k)].push_back(k);
    }
    for (int i = 1; i <= n; ++i) w.r.coor[i] = static_cast<int>(w.nbrs[i].size());
    lewis_detail::find_ligands(w);
}

}  // namespace

int lewis_group_electrons(int atn) {
    if (atn <= 0) return 0;
    if (atn <= 2) return atn;
    if (atn <= 10) return atn - 2;
    if (atn <= 18) return atn - 10;
    if (atn <= 36) return atn <= 30 ? atn - 18 : atn - 28;
    if (atn <= 54) return atn <= 48 ? atn - 36 : atn - 46;
    if (atn <= 56) return atn - 54;
    if (atn <= 71) return 3;
    if (atn <= 86) return atn <= 80 ? atn - 68 : atn - 78;
    if (atn <= 88) return atn - 86;
    return 3;
}

bool lewis_is_metal(int atn) {
    if (atn == 3 || atn == 4 || (atn >= 11 && atn <= 13)) return true;
    if (atn >= 19 && atn <= 31) return true;
    if (atn >= 37 && atn <= 50) return true;
    return (atn >= 55 && atn <= 83) || atn >= 87;
}

std::string lewis_element_symbol(int atn) {
    return (atn >= 1 && atn <= kLastSymbol) ? kSymbols[atn] : "";
}

// A ring centroid counts as bonded to the ring atoms around it, as the
// analysis takes it.
std::string lewis_refusal(const LewisInput& in) {
    const int n = static_cast<int>(in.atoms.size());
    if (n == 0 || n > kLewisMaxAtoms) return "Lewis analysis needs one molecule of at most 300 atoms";
    if (static_cast<int>(in.bonds.size()) > kLewisSlots) return "Lewis analysis takes at most 300 bonds";
    std::vector<std::vector<int>> nbrs(n + 1);
    for (const auto& bd : in.bonds) {
        if (bd[0] < 1 || bd[1] < 1 || bd[0] > n || bd[1] > n) return "Lewis analysis: a bond names a missing atom";
        nbrs[bd[0]].push_back(bd[1]);
        nbrs[bd[1]].push_back(bd[0]);
    }
    for (int c = 1; c <= n; ++c)
        if (lewis_detail::is_centroid(in.atoms[c - 1]))
            for (int j : lewis_detail::centroid_ring(in, c)) {
                nbrs[c].push_back(j);
                nbrs[j].push_back(c);
            }
    std::vector<bool> seen(n + 1, false);
    std::vector<int> stack{1};
    seen[1] = true;
    int reached = 1;
    while (!stack.empty()) {
        const int i = stack.back();
        stack.pop_back();
        for (int j : nbrs[i])
            if (!seen[j]) {
                seen[j] = true;
                ++reached;
                stack.push_back(j);
            }
    }
    if (reached != n) return "Lewis analysis needs one connected molecule; this one falls apart";
    return "";
}

LewisInput lewis_input_from(Store& st, int total_charge) {
    LewisInput in;
    in.total_charge = total_charge;
    for (int i = 1; i <= st.natoms; ++i) {
        LewisAtom at;
        at.label = label_text(st.atom_label[i]);
        // Dummies, centroids and unknown symbols come back below 1.
        at.atn = static_cast<int>(element_lookup(st, nullptr, at.label, kLookupAtomicNumber));
        at.en = element_lookup(st, nullptr, at.label, kLookupElectronegativity);
        if (at.atn == kElementRows) {   // deuterium
            at.atn = 1;
            at.en = st.elements[1].electronegativity;
        }
        if (at.atn < 1) {
            at.atn = 0;
            at.en = 0;
        }
        at.x = st.atom_rec[i][kX];
        at.y = st.atom_rec[i][kY];
        at.z = st.atom_rec[i][kZ];
        in.atoms.push_back(at);
    }
    for (int k = 1; k <= st.nbonds; ++k) in.bonds.push_back({st.bond_a[k], st.bond_b[k]});
    // The bond list takes each pair from the lower atom's row; a pair named
    // only in the higher atom's row (a ring carbon naming a metal whose row
    // is full) is a bond too.
    for (int i = 1; i <= st.natoms; ++i)
        for (int slot = 1; slot <= std::min(st.conn_count(i), kMaxNeighbours); ++slot) {
            const int j = st.nbr(i, slot);
            if (j < 1 || j >= i || has_neighbour(st, j, i)) continue;
            in.bonds.push_back({j, i});
        }
    return in;
}

// In a complex the charge is the metal's (lewis_metals.cpp); the ligands go
// through the main-group steps neutral and bond to the metal after step 9.
LewisResult lewis_analysis(const LewisInput& in) {
    using namespace lewis_detail;
    LewisResult r;
    Work w(in, r);
    start(w);
    find_exceptions(w);
    if (w.has_metal && in.total_charge != 0) place_complex_charge(w);
    else if (in.total_charge > 0) place_positive(w);
    else if (in.total_charge < 0) place_negative(w);
    if (r.ierr != 0) return r;
    patterns(w);
    hydrogen_bonds(w);
    general_passes(w);
    complete_octets(w);
    reduce_hypervalence(w);
    bond_metals(w);
    oxidation_states(w);
    donor_bonds(w);
    for (int i = 1; i <= w.nat(); ++i)
        if (r.tec[i] == 7) r.radicals.push_back(i);
    return r;
}

}  // namespace zentol
