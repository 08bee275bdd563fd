// The main-group steps of the Lewis analysis: charges (3, 4), the nitro and
// zwitterion patterns (5), bonds to hydrogen (6), the sigma and multiple
// bond passes (7), octet completion by dative pairs (8) and hypervalent atoms
// (9). Bonds to metals and dummies are left to lewis_metals.cpp, and an
// atom's neighbour count here (deg) leaves those partners out, so a ligand
// is seen as the molecule it is without its metal.
#include <cstdlib>

#include "analysis/lewis_work.h"

namespace zentol::lewis_detail {

namespace {

bool has_neighbour_of(const Work& w, int i, int atn) {
    for (int j : w.nbrs[i])
        if (w.r.atn[j] == atn) return true;
    return false;
}

// The anion atom when the user marked none: the most electronegative
// terminal atom other than hydrogen, the first in atom order among equals
// (an oxygen of acetate, sulfate or nitrate). Without a terminal one, the
// most electronegative atom with a bond to spare (the carbon of CH3-).
// Hydrogen never takes an anion's charge.
int chosen_anion(const Work& w) {
    const LewisResult& r = w.r;
    if (w.in.anion_atom >= 1 && w.in.anion_atom <= w.nat()) return w.in.anion_atom;
    int best = 0;
    for (int pass = 0; pass < 2 && best == 0; ++pass)
        for (int i = 1; i <= w.nat(); ++i) {
            if (w.is_h(i) || r.atn[i] == 0) continue;
            const bool fits = pass == 0 ? w.deg[i] == 1 : w.deg[i] < valence_of(r.group_e[i]);
            if (fits && (best == 0 || r.en[i] > r.en[best])) best = i;
        }
    return best;
}

}  // namespace

int valence_of(int group_e) { return group_e > 4 ? 8 - group_e : group_e; }

// Step 3: a quaternary N-H nitrogen takes the positive charge, else an atom
// with more neighbours than its valence, else (for a charge of one) the
// first atom with a bond to spare.
void place_positive(Work& w) {
    LewisResult& r = w.r;
    bool placed = false;
    for (int i = 1; i <= w.nat(); ++i)
        if (r.atn[i] == 7 && w.deg[i] == 4 && has_neighbour_of(w, i, 1)) {
            w.add_charge(i, 1);
            placed = true;
        }
    for (int i = 1; i <= w.nat() && !placed; ++i)
        if (r.atn[i] > 0 && w.deg[i] > valence_of(r.group_e[i])) {
            w.add_charge(i, 1);
            placed = true;
        }
    if (placed) return;
    if (std::abs(w.in.total_charge) != 1) {
        r.ierr = 1;
        return;
    }
    for (int i = 1; i <= w.nat(); ++i)
        if (valence_of(r.group_e[i]) > w.deg[i]) {
            w.add_charge(i, 1);
            return;
        }
    r.ierr = 1;
}

// Step 4: terminal atoms of the anion atom's element take the charges of a
// polyanion; a single charge goes to the anion atom when it has a bond to
// spare, else to the first atom (hydrogen aside) whose neighbours do not
// exceed its valence.
void place_negative(Work& w) {
    LewisResult& r = w.r;
    const int chosen = chosen_anion(w);
    const int element = chosen ? r.atn[chosen] : -1;
    int remaining = std::abs(w.in.total_charge);
    if (remaining > 1) {
        for (int i = 1; i <= w.nat() && remaining > 0; ++i)
            if (r.atn[i] == element && w.deg[i] == 1) {
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
    if (chosen && r.chg[chosen] == 0 && w.deg[chosen] <= valence_of(r.group_e[chosen])) target = chosen;
    for (int i = 1; i <= w.nat() && target == 0; ++i)
        if (r.atn[i] > 1 && r.chg[i] == 0 && w.deg[i] <= valence_of(r.group_e[i])) target = i;
    if (target == 0) {
        r.ierr = 2;
        return;
    }
    w.add_charge(target, -1);
}

namespace {

// Step 5.2: a nitrogen with three neighbours and two terminal oxygens. The
// nitro pattern counts one N-O bond double and the other single. With both
// oxygens neutral the single-bonded one takes an electron of the nitrogen as
// formal charge (N+ and O-), which leaves the nitrogen its fourth bond; an
// oxygen that already holds a negative charge is the single-bonded one.
void nitro_pattern(Work& w, int n) {
    LewisResult& r = w.r;
    int neutral[2] = {0, 0}, n_neutral = 0, anion = 0;
    for (int j : w.nbrs[n]) {
        if (r.atn[j] != 8 || w.deg[j] != 1) continue;
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
    w.raise_order(w.bond_between(n, dbl), 2);
    w.raise_order(w.bond_between(n, sgl), 1);
}

// Step 5.3, for a neutral molecule: carboxylate and ammonium of a
// zwitterion. A boron next to any such nitrogen stops the ammonium charges.
void zwitterion_pattern(Work& w) {
    LewisResult& r = w.r;
    for (int i = 1; i <= w.nat(); ++i) {
        if (r.atn[i] != 6 || w.deg[i] != 3) continue;
        int terminal = 0;
        for (int j : w.nbrs[i])
            if (r.atn[j] == 8 && w.deg[j] == 1 && ++terminal == 2) w.add_charge(j, -1);
    }
    std::vector<int> ammonium;
    for (int i = 1; i <= w.nat(); ++i) {
        if (r.atn[i] != 7 || w.deg[i] != 4 || !has_neighbour_of(w, i, 1)) continue;
        if (has_neighbour_of(w, i, 5)) return;
        ammonium.push_back(i);
    }
    for (int i : ammonium) w.add_charge(i, 1);
}

}  // namespace

// The zwitterion pattern is for molecules without metals: a ligand is taken
// as neutral, and its carboxylate oxygens bond to the metal by their own
// odd electrons.
void patterns(Work& w) {
    for (int i = 1; i <= w.nat(); ++i) w.retec(i);
    for (int i = 1; i <= w.nat(); ++i)
        if (w.r.atn[i] == 7 && w.deg[i] == 3) nitro_pattern(w, i);
    if (w.in.total_charge == 0 && !w.has_metal) zwitterion_pattern(w);
}

// Step 6: every hydrogen gets its one bond first; H-H pairs up the same way.
void hydrogen_bonds(Work& w) {
    LewisResult& r = w.r;
    for (int k = 1; k <= w.nbond(); ++k) {
        if (w.outside[k]) continue;
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

namespace {

bool both_boron(const Work& w, int k) { return w.r.atn[w.a(k)] == 5 && w.r.atn[w.b(k)] == 5; }

bool pass_skips(const Work& w, int k) {
    return w.outside[k] || w.is_h(w.a(k)) || w.is_h(w.b(k)) || both_boron(w, k);
}

// Step 7.1: the first order of every bond still at 0.
bool sigma_pass(Work& w) {
    LewisResult& r = w.r;
    bool changed = false;
    for (int k = 1; k <= w.nbond(); ++k) {
        const int i = w.a(k), j = w.b(k);
        if (r.order[k] != 0 || pass_skips(w, k)) continue;
        if (r.be[i] >= w.limit(i) || r.be[j] >= w.limit(j)) continue;
        if (r.tec[i] < 8 && r.tec[j] < 8 && w.left(i) > 0 && w.left(j) > 0) {
            w.raise_order(k, 1);
            changed = true;
        }
    }
    return changed;
}

// Step 7.2: one more order on every bond whose atoms are both short of
// their electron limit and still have electrons of their own. It runs in
// three sweeps, so that where the bond to raise is a matter of order, the
// chemistry decides and not the atom numbers:
//  - first the sigma bonds that 7.1 left at 0 because a heavy atom had
//    more neighbours than its valence (the fourth P-C of Ph3PO, the S-F of
//    SF6): the skeleton comes before any double bond;
//  - then double bonds between atoms that both stay within the octet (the
//    rings of Ph3PO pair up);
//  - last the hypervalent ones, up to twice the group electrons (P=O of
//    Ph3PO, S=O of DMSO), which step 9 turns into charge pairs.
enum class Sweep { skeleton, octet, hypervalent };

bool multiple_pass(Work& w, Sweep sweep) {
    LewisResult& r = w.r;
    bool changed = false;
    for (int k = 1; k <= w.nbond(); ++k) {
        const int i = w.a(k), j = w.b(k);
        if (pass_skips(w, k) || w.left(i) <= 0 || w.left(j) <= 0) continue;
        if (sweep == Sweep::skeleton && r.order[k] != 0) continue;
        const int li = sweep == Sweep::octet ? 8 : w.octet_limit(i);
        const int lj = sweep == Sweep::octet ? 8 : w.octet_limit(j);
        if (r.tec[i] < li && r.tec[j] < lj) {
            w.raise_order(k, 1);
            changed = true;
        }
    }
    return changed;
}

}  // namespace

void general_passes(Work& w) {
    for (int round = 1; round <= 3; ++round) {
        bool changed = sigma_pass(w);
        for (Sweep s : {Sweep::skeleton, Sweep::octet, Sweep::hypervalent}) changed = multiple_pass(w, s) || changed;
        if (!changed) break;
    }
}

namespace {

// A pair of the donor's own electrons becomes a bond to an atom at six
// electrons or fewer: the donor turns formally positive, the acceptor
// negative.
void try_dative(Work& w, int k, int donor, int acceptor) {
    if (w.left(donor) >= 2 && w.r.tec[acceptor] <= 6 && !w.is_h(acceptor)) {
        w.move_electron(donor, acceptor, true);
        w.raise_order(k, 1);
    }
}

}  // namespace

// Step 8. Fluorine never gives a pair in any of the three sweeps. Odd
// electrons that the sweeps leave are then paired across the molecule.
void complete_octets(Work& w) {
    LewisResult& r = w.r;
    for (int sweep = 1; sweep <= 3; ++sweep)
        for (int k = 1; k <= w.nbond(); ++k) {
            if (w.outside[k] || r.atn[w.a(k)] == 9 || r.atn[w.b(k)] == 9) continue;
            try_dative(w, k, w.a(k), w.b(k));
            try_dative(w, k, w.b(k), w.a(k));
        }
    for (int i = 1; i <= w.nat(); ++i) {
        if (r.atn[i] != 7 || w.deg[i] != 3 || r.tec[i] != 7) continue;
        for (int k : w.bonds_at[i]) {
            const int j = w.other(k, i);
            if (!w.outside[k] && w.left(j) > 0) {
                w.move_electron(j, i, true);
                break;
            }
        }
    }
    for (int k = 1; k <= w.nbond(); ++k) {
        const int i = w.a(k), j = w.b(k);
        if (w.outside[k]) continue;
        if (r.tec[i] == 7 && r.tec[j] == 7 && w.left(i) > 0 && w.left(j) > 0) w.raise_order(k, 1);
    }
    pair_radicals(w);
}

// Step 9: a multiple bond at a flagged atom of ten electrons or more gives
// up one order for a charge pair, the hypervalent atom positive.
void reduce_hypervalence(Work& w) {
    LewisResult& r = w.r;
    std::vector<bool> flag(w.nat() + 1, false);
    for (int i = 1; i <= w.nat(); ++i) flag[i] = !w.metal[i] && r.tec[i] > 8;
    for (int k = 1; k <= w.nbond(); ++k) {
        const int i = w.a(k), j = w.b(k);
        if (w.outside[k]) continue;
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
        if (w.outside[k]) continue;
        if (r.order[k] > 1 && flag[i] && r.tec[i] >= 10) reduce(k, i, j);
        if (r.order[k] > 1 && flag[j] && r.tec[j] >= 10) reduce(k, j, i);
    }
    complete_octets(w);
}

}  // namespace zentol::lewis_detail
