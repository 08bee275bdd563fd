// The Lewis analysis runs in eleven steps, numbered in the comments below:
// exceptions (1), start (2), positive and negative charges (3, 4), the nitro
// and zwitterion patterns (5), bonds to hydrogen (6), the sigma and multiple
// bond passes (7), octet completion by dative pairs (8), hypervalent atoms
// (9), oxidation states (10) and donor bonds (11). tec is kept as ve + be
// throughout.
#include "analysis/lewis.h"

#include <cmath>
#include <cstdlib>

#include "session/store_ops.h"

namespace zentol {

namespace {

constexpr const char* kSymbols[] = {
    "",   "H",  "He", "Li", "Be", "B",  "C",  "N",  "O",  "F",  "Ne", "Na", "Mg", "Al", "Si", "P",
    "S",  "Cl", "Ar", "K",  "Ca", "Sc", "Ti", "V",  "Cr", "Mn", "Fe", "Co", "Ni", "Cu", "Zn", "Ga",
    "Ge", "As", "Se", "Br", "Kr", "Rb", "Sr", "Y",  "Zr", "Nb", "Mo", "Tc", "Ru", "Rh", "Pd", "Ag",
    "Cd", "In", "Sn", "Sb", "Te", "I",  "Xe", "Cs", "Ba", "La", "Ce", "Pr", "Nd", "Pm", "Sm", "Eu",
    "Gd", "Tb", "Dy", "Ho", "Er", "Tm", "Yb", "Lu", "Hf", "Ta", "W",  "Re", "Os", "Ir", "Pt", "Au",
    "Hg", "Tl", "Pb", "Bi", "Po", "At", "Rn", "Fr", "Ra", "Ac", "Th", "Pa", "U"};
constexpr int kLastSymbol = static_cast<int>(sizeof(kSymbols) / sizeof(kSymbols[0])) - 1;

// The working state: the result tables plus each atom's neighbours.
struct Work {
    const LewisInput& in;
    LewisResult& r;
    std::vector<std::vector<int>> nbrs;

    int nat() const { return static_cast<int>(in.atoms.size()); }
    int nbond() const { return static_cast<int>(in.bonds.size()); }
    int a(int k) const { return in.bonds[k - 1][0]; }
    int b(int k) const { return in.bonds[k - 1][1]; }
    bool is_h(int i) const { return r.atn[i] == 1; }
    int left(int i) const { return r.ve[i] - r.be[i]; }
    void retec(int i) { r.tec[i] = r.ve[i] + r.be[i]; }

    // How many more bonds the atom's own electrons allow: ve already carries
    // the ionic and formal charges, so N+ (ve 4) takes four bonds and O- one.
    int limit(int i) const { return r.ve[i] <= 4 ? r.ve[i] : 8 - r.ve[i]; }

    // Electrons the atom may gather: the octet, or twice its group electrons
    // for a heavy atom with more than two neighbours.
    int octet_limit(int i) const { return (r.atn[i] > 12 && r.coor[i] > 2) ? 2 * r.group_e[i] : 8; }

    void raise_order(int k, int n) {
        r.order[k] += n;
        r.be[a(k)] += n;
        r.be[b(k)] += n;
        retec(a(k));
        retec(b(k));
    }
    // One electron from one atom to another, booked as formal or ionic charge.
    void move_electron(int from, int to, bool formal) {
        --r.ve[from];
        ++r.ve[to];
        (formal ? r.fc : r.chg)[from] += 1;
        (formal ? r.fc : r.chg)[to] -= 1;
        retec(from);
        retec(to);
    }
    void add_charge(int i, int q) {
        r.chg[i] += q;
        r.ve[i] -= q;
        retec(i);
    }
};

int valence_of(int group_e) { return group_e > 4 ? 8 - group_e : group_e; }

void size_tables(LewisResult& r, int n, int nb) {
    for (auto* t : {&r.atn, &r.group_e, &r.ve, &r.be, &r.tec, &r.chg, &r.fc, &r.coor, &r.os, &r.net})
        t->assign(n + 1, 0);
    r.en.assign(n + 1, 0.0f);
    r.order.assign(nb + 1, 0);
}

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

bool has_neighbour_of(const Work& w, int i, int atn) {
    for (int j : w.nbrs[i])
        if (w.r.atn[j] == atn) return true;
    return false;
}

// Step 3: a quaternary N-H nitrogen takes the positive charge, else an atom
// with more neighbours than its valence, else (for a charge of one) the
// first atom with a bond to spare.
void place_positive(Work& w) {
    LewisResult& r = w.r;
    bool placed = false;
    for (int i = 1; i <= w.nat(); ++i)
        if (r.atn[i] == 7 && r.coor[i] == 4 && has_neighbour_of(w, i, 1)) {
            w.add_charge(i, 1);
            placed = true;
        }
    for (int i = 1; i <= w.nat() && !placed; ++i)
        if (r.coor[i] > valence_of(r.group_e[i])) {
            w.add_charge(i, 1);
            placed = true;
        }
    if (placed) return;
    if (std::abs(w.in.total_charge) != 1) {
        r.ierr = 1;
        return;
    }
    for (int i = 1; i <= w.nat(); ++i)
        if (valence_of(r.group_e[i]) > r.coor[i]) {
            w.add_charge(i, 1);
            return;
        }
    r.ierr = 1;
}

// Step 4: terminal atoms of the marked anion's element take the charges of
// a polyanion; a single charge goes to the marked atom when it is terminal,
// else to the first atom whose neighbours do not exceed its valence.
void place_negative(Work& w) {
    LewisResult& r = w.r;
    const int marked = (w.in.anion_atom >= 1 && w.in.anion_atom <= w.nat()) ? w.in.anion_atom : 0;
    const int element = marked ? r.atn[marked] : -1;
    int remaining = std::abs(w.in.total_charge);
    if (remaining > 1) {
        for (int i = 1; i <= w.nat() && remaining > 0; ++i)
            if (r.atn[i] == element && r.coor[i] == 1) {
                w.add_charge(i, -1);
                --remaining;
            }
        if (remaining == 0) return;
        if (remaining > 1) {
            r.ierr = 2;
            return;
        }
    }
    int target = 0;
    if (marked && r.coor[marked] == 1 && r.chg[marked] == 0) target = marked;
    for (int i = 1; i <= w.nat() && target == 0; ++i)
        if (r.chg[i] == 0 && r.coor[i] <= valence_of(r.group_e[i])) target = i;
    if (target == 0) {
        r.ierr = 2;
        return;
    }
    w.add_charge(target, -1);
}

int bond_between(const Work& w, int i, int j) {
    for (int k = 1; k <= w.nbond(); ++k)
        if ((w.a(k) == i && w.b(k) == j) || (w.a(k) == j && w.b(k) == i)) return k;
    return 0;
}

// Step 5.2: a nitrogen with three neighbours and two terminal oxygens. The
// nitro pattern counts one N-O bond double and the other single. With both
// oxygens neutral the single-bonded one takes an electron of the nitrogen as
// formal charge (N+ and O-), which leaves the nitrogen its fourth bond; an
// oxygen that already holds a negative charge is the single-bonded one.
void nitro_pattern(Work& w, int n) {
    LewisResult& r = w.r;
    int neutral[2] = {0, 0}, n_neutral = 0, anion = 0;
    for (int j : w.nbrs[n]) {
        if (r.atn[j] != 8 || r.coor[j] != 1) continue;
        if (r.chg[j] == 0 && n_neutral < 2) neutral[n_neutral++] = j;
        if (r.chg[j] == -1 && anion == 0) anion = j;
    }
    int dbl = 0, sgl = 0;
    if (anion && n_neutral >= 1) {
        dbl = neutral[0];
        sgl = anion;
    } else if (n_neutral == 2) {
        dbl = neutral[0];
        sgl = neutral[1];
        w.move_electron(n, sgl, true);
    } else {
        return;
    }
    w.raise_order(bond_between(w, n, dbl), 2);
    w.raise_order(bond_between(w, n, sgl), 1);
}

// Step 5.3, for a neutral molecule: carboxylate and ammonium of a
// zwitterion. A boron next to any such nitrogen stops the ammonium charges.
void zwitterion_pattern(Work& w) {
    LewisResult& r = w.r;
    for (int i = 1; i <= w.nat(); ++i) {
        if (r.atn[i] != 6 || r.coor[i] != 3) continue;
        int terminal = 0;
        for (int j : w.nbrs[i])
            if (r.atn[j] == 8 && r.coor[j] == 1 && ++terminal == 2) w.add_charge(j, -1);
    }
    std::vector<int> ammonium;
    for (int i = 1; i <= w.nat(); ++i) {
        if (r.atn[i] != 7 || r.coor[i] != 4 || !has_neighbour_of(w, i, 1)) continue;
        if (has_neighbour_of(w, i, 5)) return;
        ammonium.push_back(i);
    }
    for (int i : ammonium) w.add_charge(i, 1);
}

void patterns(Work& w) {
    for (int i = 1; i <= w.nat(); ++i) w.retec(i);
    for (int i = 1; i <= w.nat(); ++i)
        if (w.r.atn[i] == 7 && w.r.coor[i] == 3) nitro_pattern(w, i);
    if (w.in.total_charge == 0) zwitterion_pattern(w);
}

// Step 6: every hydrogen gets its one bond first; H-H pairs up the same way.
void hydrogen_bonds(Work& w) {
    LewisResult& r = w.r;
    for (int k = 1; k <= w.nbond(); ++k) {
        int h = w.a(k), p = w.b(k);
        if (!w.is_h(h)) std::swap(h, p);
        if (!w.is_h(h) || r.chg[h] != 0 || r.be[h] != 0) continue;
        if (w.is_h(p)) {
            if (r.chg[p] == 0 && r.be[p] == 0) w.raise_order(k, 1);
            continue;
        }
        if (r.tec[p] < 8 && r.be[p] < w.limit(p)) w.raise_order(k, 1);
    }
}

bool both_boron(const Work& w, int k) { return w.r.atn[w.a(k)] == 5 && w.r.atn[w.b(k)] == 5; }

// Step 7.1: the first order of every bond still at 0.
bool sigma_pass(Work& w) {
    LewisResult& r = w.r;
    bool changed = false;
    for (int k = 1; k <= w.nbond(); ++k) {
        const int i = w.a(k), j = w.b(k);
        if (r.order[k] != 0 || w.is_h(i) || w.is_h(j) || both_boron(w, k)) continue;
        if (r.be[i] >= w.limit(i) || r.be[j] >= w.limit(j)) continue;
        if (r.tec[i] < 8 && r.tec[j] < 8 && w.left(i) > 0 && w.left(j) > 0) {
            w.raise_order(k, 1);
            changed = true;
        }
    }
    return changed;
}

// Step 7.2: one more order on every bond whose atoms are both short of their
// octet (or hypervalent) limit and still have electrons of their own. A heavy
// atom with more than two neighbours gathers its extra bonds here.
bool multiple_pass(Work& w) {
    LewisResult& r = w.r;
    bool changed = false;
    for (int k = 1; k <= w.nbond(); ++k) {
        const int i = w.a(k), j = w.b(k);
        if (w.is_h(i) || w.is_h(j) || both_boron(w, k)) continue;
        if (r.tec[i] < w.octet_limit(i) && r.tec[j] < w.octet_limit(j) && w.left(i) > 0 && w.left(j) > 0) {
            w.raise_order(k, 1);
            changed = true;
        }
    }
    return changed;
}

void general_passes(Work& w) {
    for (int round = 1; round <= 3; ++round) {
        const bool sigma = sigma_pass(w);
        const bool multiple = multiple_pass(w);
        if (!sigma && !multiple) break;
    }
}

// A pair of the donor's own electrons becomes a bond to an atom at six
// electrons or fewer: the donor turns formally positive, the acceptor
// negative.
void try_dative(Work& w, int k, int donor, int acceptor) {
    if (w.left(donor) >= 2 && w.r.tec[acceptor] <= 6 && !w.is_h(acceptor)) {
        w.move_electron(donor, acceptor, true);
        w.raise_order(k, 1);
    }
}

// Step 8. Fluorine never gives a pair in any of the three sweeps.
void complete_octets(Work& w) {
    LewisResult& r = w.r;
    for (int sweep = 1; sweep <= 3; ++sweep)
        for (int k = 1; k <= w.nbond(); ++k) {
            if (r.atn[w.a(k)] == 9 || r.atn[w.b(k)] == 9) continue;
            try_dative(w, k, w.a(k), w.b(k));
            try_dative(w, k, w.b(k), w.a(k));
        }
    for (int i = 1; i <= w.nat(); ++i) {
        if (r.atn[i] != 7 || r.coor[i] != 3 || r.tec[i] != 7) continue;
        for (int j : w.nbrs[i])
            if (w.left(j) > 0) {
                w.move_electron(j, i, true);
                break;
            }
    }
    for (int k = 1; k <= w.nbond(); ++k) {
        const int i = w.a(k), j = w.b(k);
        if (r.tec[i] == 7 && r.tec[j] == 7 && w.left(i) > 0 && w.left(j) > 0) w.raise_order(k, 1);
    }
}

// Step 9: a multiple bond at a flagged atom of ten electrons or more gives
// up one order for a charge pair, the hypervalent atom positive.
void reduce_hypervalence(Work& w) {
    LewisResult& r = w.r;
    std::vector<bool> flag(w.nat() + 1, false);
    for (int i = 1; i <= w.nat(); ++i) flag[i] = r.tec[i] > 8;
    for (int k = 1; k <= w.nbond(); ++k) {
        const int i = w.a(k), j = w.b(k);
        if (r.atn[i] > 10 && r.atn[j] < 10) flag[i] = true;
        if (r.atn[j] > 10 && r.atn[i] < 10) flag[j] = true;
    }
    if (r.exception) flag.assign(flag.size(), false);
    auto reduce = [&](int k, int hi, int lo) {
        w.raise_order(k, -1);
        w.add_charge(hi, 1);
        w.add_charge(lo, -1);
    };
    for (int k = 1; k <= w.nbond(); ++k) {
        const int i = w.a(k), j = w.b(k);
        if (r.order[k] > 1 && flag[i] && r.tec[i] >= 10) reduce(k, i, j);
        if (r.order[k] > 1 && flag[j] && r.tec[j] >= 10) reduce(k, j, i);
    }
    complete_octets(w);
}

// Step 10. The charges on an atom count first, formal ones included: an
// oxidation state counts every electron the atom holds, and a formal charge
// is an electron moved. Each bond then goes wholly to the more electro-
// negative atom; an atom without an Allen value (0) is below everything.
void oxidation_states(Work& w) {
    LewisResult& r = w.r;
    for (int i = 1; i <= w.nat(); ++i) r.os[i] = r.chg[i] + r.fc[i];
    for (int k = 1; k <= w.nbond(); ++k) {
        const int i = w.a(k), j = w.b(k);
        if (r.atn[i] == r.atn[j] || r.en[i] == r.en[j]) continue;
        const int hi = r.en[i] > r.en[j] ? i : j;
        const int lo = hi == i ? j : i;
        r.os[hi] -= r.order[k];
        r.os[lo] += r.order[k];
    }
}

// Step 11: a bond between a positive and a negative atom is a donor bond,
// the negative atom the donor; each such bond uses up one unit of both.
void donor_bonds(Work& w) {
    LewisResult& r = w.r;
    for (int i = 1; i <= w.nat(); ++i) r.net[i] = r.chg[i] + r.fc[i];
    for (int k = 1; k <= w.nbond(); ++k) {
        const int i = w.a(k), j = w.b(k);
        if (r.net[i] == 0 || r.net[j] == 0 || (r.net[i] > 0) == (r.net[j] > 0)) continue;
        const int pos = r.net[i] > 0 ? i : j;
        const int neg = pos == i ? j : i;
        --r.net[pos];
        ++r.net[neg];
        r.donors.push_back({k, neg, pos, r.net[neg], r.net[pos]});
    }
}

void start(Work& w) {
    const int n = w.nat();
    size_tables(w.r, n, w.nbond());
    w.nbrs.assign(n + 1, {});
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
    }
    for (int i = 1; i <= n; ++i) w.r.coor[i] = static_cast<int>(w.nbrs[i].size());
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

std::string lewis_refusal(const LewisInput& in) {
    const int n = static_cast<int>(in.atoms.size());
    if (n == 0 || n > kLewisMaxAtoms) return "Lewis analysis needs one molecule of at most 100 atoms";
    if (static_cast<int>(in.bonds.size()) > kLewisSlots) return "Lewis analysis takes at most 300 bonds";
    std::vector<std::vector<int>> nbrs(n + 1);
    for (const auto& bd : in.bonds) {
        if (bd[0] < 1 || bd[1] < 1 || bd[0] > n || bd[1] > n) return "Lewis analysis: a bond names a missing atom";
        nbrs[bd[0]].push_back(bd[1]);
        nbrs[bd[1]].push_back(bd[0]);
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
    return in;
}

LewisResult lewis_analysis(const LewisInput& in) {
    LewisResult r;
    Work w{in, r, {}};
    start(w);
    find_exceptions(w);
    if (in.total_charge > 0) place_positive(w);
    if (in.total_charge < 0) place_negative(w);
    if (r.ierr != 0) return r;
    patterns(w);
    hydrogen_bonds(w);
    general_passes(w);
    complete_octets(w);
    reduce_hypervalence(w);
    oxidation_states(w);
    donor_bonds(w);
    for (int i = 1; i <= w.nat(); ++i)
        if (r.tec[i] == 7) r.radicals.push_back(i);
    return r;
}

}  // namespace zentol
