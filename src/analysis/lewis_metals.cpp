// Metals and their ligands. The analysis takes the view of the Covalent
// Bond Classification: every ligand is neutral, the charge of a complex is
// the metal's, and a ligand bonds to the metal either by its odd electrons,
// each paired with one of the metal's (kind X: CH3, Cl, H; an oxo O by two),
// or by a lone pair (kind L: CO, NH3, PR3). So the main-group steps run on
// the ligands with their metal bonds cut, and what they leave on the atoms
// that touch the metal decides each bond:
//  - odd electrons (an atom short of its octet): a covalent bond of that
//    order; the ligand takes its electrons in the oxidation states, as the
//    classification counts an X ligand, whatever the electronegativities;
//  - else a lone pair: a dative bond, with the usual formal charges (the
//    ligand +1, the metal -1), a donor bond from the ligand; it changes
//    neither end's oxidation state;
//  - a ligand bonded side-on through several of its atoms, or through a
//    ring centroid (the eta-5 Cp tool's dummy), bonds as a whole: each odd
//    electron of its contact atoms is an X, each double bond among them an
//    L (Cp is L2X, benzene L3, ethylene L). Its contact bonds are drawn
//    with order 1; its pi pairs are shared with the ring, so they count in
//    the metal's electrons (ve, be, tec) without formal charges.
// The metal's oxidation state is thus its share of the charge plus its X
// electrons, the same number as the classification line gives. A bond
// between two metals is covalent when both have an electron left and
// changes neither oxidation state.
#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "analysis/lewis_work.h"
#include "text/fixed_format.h"

namespace zentol::lewis_detail {

namespace {

// Ring atoms lie about 1.2 (Cp) to 1.4 (benzene) Angstrom from their
// centroid, the hydrogens beyond 2.
constexpr double kRingRadius = 1.75;

double distance(const LewisAtom& p, const LewisAtom& q) {
    return std::sqrt((p.x - q.x) * (p.x - q.x) + (p.y - q.y) * (p.y - q.y) + (p.z - q.z) * (p.z - q.z));
}

int metal_end(const Work& w, int k) { return w.metal[w.a(k)] ? w.a(k) : w.b(k); }
int ligand_end(const Work& w, int k) { return w.metal[w.a(k)] ? w.b(k) : w.a(k); }

// Electrons the atom lacks for a full shell, as far as it has electrons of
// its own to share.
int odd_electrons(const Work& w, int i) { return std::max(0, std::min(w.full_shell(i) - w.r.tec[i], w.left(i))); }

// The atoms of one metal's ligand sphere, grouped into ligands by the
// bonds between them; each group with the bonds that reach it.
struct Contact {
    int atom;
    int bond;
    bool through_centroid;
};

void group_contacts(Work& w, int m, const std::vector<Contact>& contacts) {
    std::vector<int> group(contacts.size(), -1);
    int groups = 0;
    for (std::size_t s = 0; s < contacts.size(); ++s) {
        if (group[s] >= 0) continue;
        group[s] = groups;
        for (bool grew = true; grew;) {
            grew = false;
            for (std::size_t t = 0; t < contacts.size(); ++t) {
                if (group[t] >= 0) continue;
                for (std::size_t u = 0; u < contacts.size() && group[t] < 0; ++u)
                    if (group[u] == groups &&
                        (contacts[u].atom == contacts[t].atom || w.bond_between(contacts[u].atom, contacts[t].atom)))
                        group[t] = groups, grew = true;
            }
        }
        ++groups;
    }
    for (int g = 0; g < groups; ++g) {
        HaptoLigand h;
        h.metal = m;
        bool centroid = false;
        for (std::size_t s = 0; s < contacts.size(); ++s) {
            if (group[s] != g) continue;
            const Contact& c = contacts[s];
            centroid = centroid || c.through_centroid;
            if (std::find(h.atoms.begin(), h.atoms.end(), c.atom) == h.atoms.end()) h.atoms.push_back(c.atom);
            if (std::find(h.contacts.begin(), h.contacts.end(), c.bond) == h.contacts.end()) h.contacts.push_back(c.bond);
        }
        std::sort(h.atoms.begin(), h.atoms.end());
        if (h.atoms.size() == 1 && !centroid) w.single_contacts.push_back(h.contacts[0]);
        else w.hapto.push_back(h);
    }
}

void find_contacts(Work& w, int m) {
    std::vector<Contact> contacts;
    for (int k : w.bonds_at[m]) {
        const int y = w.other(k, m);
        if (w.metal[y]) {
            if (y > m) w.metal_metal.push_back(k);
        } else if (w.r.atn[y] > 0) {
            contacts.push_back({y, k, false});
        } else if (is_centroid(w.in.atoms[y - 1])) {
            for (int c : centroid_ring(w.in, y)) contacts.push_back({c, k, true});
        }
    }
    group_contacts(w, m, contacts);
}

}  // namespace

bool is_centroid(const LewisAtom& at) {
    const std::string& l = at.label;
    return at.atn == 0 && (text::starts_with_nocase(l, "CEN") || (l.size() >= 2 && l[0] == 'C' && l[1] == 'n'));
}

std::vector<int> centroid_ring(const LewisInput& in, int centroid) {
    std::vector<int> ring;
    const LewisAtom& c = in.atoms[centroid - 1];
    for (int i = 1; i <= static_cast<int>(in.atoms.size()); ++i) {
        const LewisAtom& at = in.atoms[i - 1];
        if (i != centroid && at.atn > 1 && !lewis_is_metal(at.atn) && distance(at, c) <= kRingRadius) ring.push_back(i);
    }
    return ring;
}

void find_ligands(Work& w) {
    const int n = w.nat();
    w.metal.assign(n + 1, false);
    w.ligand_atom.assign(n + 1, false);
    w.deg.assign(n + 1, 0);
    w.outside.assign(w.nbond() + 1, false);
    for (int i = 1; i <= n; ++i) w.metal[i] = lewis_is_metal(w.r.atn[i]);
    w.has_metal = std::find(w.metal.begin(), w.metal.end(), true) != w.metal.end();
    for (int k = 1; k <= w.nbond(); ++k) {
        const int i = w.a(k), j = w.b(k);
        w.outside[k] = w.metal[i] || w.metal[j] || w.r.atn[i] == 0 || w.r.atn[j] == 0;
        if (w.outside[k]) continue;
        ++w.deg[i];
        ++w.deg[j];
    }
    for (int m = 1; m <= n; ++m)
        if (w.metal[m]) find_contacts(w, m);
    for (int k : w.single_contacts) w.ligand_atom[ligand_end(w, k)] = true;
    for (const HaptoLigand& h : w.hapto)
        for (int i : h.atoms) w.ligand_atom[i] = true;
}

// The charge goes to the metals, evenly; a remainder to the first ones.
void place_complex_charge(Work& w) {
    std::vector<int> metals;
    for (int i = 1; i <= w.nat(); ++i)
        if (w.metal[i]) metals.push_back(i);
    const int q = w.in.total_charge, n = static_cast<int>(metals.size());
    const int base = q / n, rest = q - base * n;
    for (int s = 0; s < n; ++s) {
        const int share = base + (s < std::abs(rest) ? (rest > 0 ? 1 : -1) : 0);
        w.add_charge(metals[s], share);
        w.r.ligands[metals[s]].z = share;
    }
}

namespace {

void covalent(Work& w, int k, int order) {
    w.raise_order(k, order);
    w.r.metal_bond[k] = MetalBond::covalent;
    w.r.ligands[metal_end(w, k)].x += order;
}

// A ligand atom bonded to one metal shares all its odd electrons with it;
// one bridging several metals shares one with each, the metal with the
// fewest X ligands first, so that Al2Cl6 gives both aluminium atoms AlX3L.
void covalent_single_contacts(Work& w) {
    std::vector<int> bridging;
    for (int k : w.single_contacts) {
        const int lig = ligand_end(w, k), m = metal_end(w, k);
        int metals = 0;
        for (int j : w.nbrs[lig]) metals += w.metal[j] ? 1 : 0;
        if (metals > 1) {
            if (std::find(bridging.begin(), bridging.end(), lig) == bridging.end()) bridging.push_back(lig);
            continue;
        }
        const int u = std::min(odd_electrons(w, lig), std::max(0, w.left(m)));
        if (u > 0) covalent(w, k, u);
    }
    std::sort(bridging.begin(), bridging.end());
    for (int lig : bridging) {
        std::vector<int> ks;
        for (int k : w.single_contacts)
            if (ligand_end(w, k) == lig) ks.push_back(k);
        std::stable_sort(ks.begin(), ks.end(), [&](int p, int q) {
            const int mp = metal_end(w, p), mq = metal_end(w, q);
            if (w.r.ligands[mp].x != w.r.ligands[mq].x) return w.r.ligands[mp].x < w.r.ligands[mq].x;
            return w.left(mp) > w.left(mq);
        });
        for (int k : ks)
            if (odd_electrons(w, lig) > 0 && w.left(metal_end(w, k)) > 0) covalent(w, k, 1);
    }
}

void dative_single_contacts(Work& w) {
    for (int k : w.single_contacts) {
        const int lig = ligand_end(w, k), m = metal_end(w, k);
        if (w.r.order[k] != 0 || w.is_h(lig) || w.left(lig) < 2) continue;
        w.move_electron(lig, m, true);
        w.raise_order(k, 1);
        w.r.metal_bond[k] = MetalBond::dative;
        ++w.r.ligands[m].l;
    }
}

void side_on_odd_electrons(Work& w, HaptoLigand& h) {
    LewisResult& r = w.r;
    for (int i : h.atoms)
        for (int u = odd_electrons(w, i); u > 0 && w.left(h.metal) > 0; --u) {
            ++r.be[i];
            ++r.be[h.metal];
            w.retec(i);
            w.retec(h.metal);
            h.odd_atoms.push_back(i);
            ++r.ligands[h.metal].x;
        }
}

void side_on_pairs(Work& w, const HaptoLigand& h) {
    LewisResult& r = w.r;
    for (int k = 1; k <= w.nbond(); ++k) {
        if (w.outside[k] || r.order[k] < 2) continue;
        const auto in_ligand = [&](int i) { return std::binary_search(h.atoms.begin(), h.atoms.end(), i); };
        if (!in_ligand(w.a(k)) || !in_ligand(w.b(k))) continue;
        ++r.ve[h.metal];
        ++r.be[h.metal];
        w.retec(h.metal);
        ++r.ligands[h.metal].l;
    }
    for (int k : h.contacts) {
        r.order[k] = 1;
        r.metal_bond[k] = MetalBond::contact;
    }
}

}  // namespace

// Covalent bonds first, so that the metal's electrons pair with the odd
// electrons of its ligands before anything else; then metal-metal bonds;
// then the ligands' pairs, which need nothing of the metal.
void bond_metals(Work& w) {
    covalent_single_contacts(w);
    for (HaptoLigand& h : w.hapto) side_on_odd_electrons(w, h);
    for (int k : w.metal_metal) {
        w.r.metal_bond[k] = MetalBond::metal_metal;
        if (w.left(w.a(k)) > 0 && w.left(w.b(k)) > 0) w.raise_order(k, 1);
    }
    dative_single_contacts(w);
    for (const HaptoLigand& h : w.hapto) side_on_pairs(w, h);
}

// The oxidation-state terms of metal bonds, after the charges went in: an X
// ligand's electrons are the ligand's; a dative pair takes back its formal
// charges; contacts and metal-metal bonds add nothing.
void metal_oxidation_terms(Work& w) {
    LewisResult& r = w.r;
    for (int k = 1; k <= w.nbond(); ++k) {
        if (r.metal_bond[k] != MetalBond::covalent && r.metal_bond[k] != MetalBond::dative) continue;
        const int lig = ligand_end(w, k), m = metal_end(w, k);
        const int n = r.metal_bond[k] == MetalBond::covalent ? r.order[k] : 1;
        r.os[lig] -= n;
        r.os[m] += n;
    }
    for (const HaptoLigand& h : w.hapto)
        for (int i : h.odd_atoms) {
            --r.os[i];
            ++r.os[h.metal];
        }
}

// A dative bond to a metal is a donor bond from the ligand. It is settled
// before the other bonds, so that the ligand's own formal charges (C- O+
// of a carbonyl) meet their partners whatever the atom order.
void metal_donor_bonds(Work& w) {
    LewisResult& r = w.r;
    for (int k = 1; k <= w.nbond(); ++k) {
        if (r.metal_bond[k] != MetalBond::dative) continue;
        const int lig = ligand_end(w, k), m = metal_end(w, k);
        --r.net[lig];
        ++r.net[m];
        r.donors.push_back({k, lig, m, r.net[lig], r.net[m]});
    }
}

}  // namespace zentol::lewis_detail
