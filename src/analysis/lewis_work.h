// The working state the steps of the Lewis analysis share: the result
// tables, each atom's neighbours and bonds, and which atoms and bonds belong
// to the main-group Lewis structure and which to a metal's ligand sphere.
#pragma once

#include <vector>

#include "analysis/lewis.h"

namespace zentol::lewis_detail {

// A ligand bonded side-on through several of its atoms (an eta-n ring or
// chain), or through a ring centroid: its atoms and the bonds that tie it to
// the metal.
struct HaptoLigand {
    int metal = 0;
    std::vector<int> atoms;
    std::vector<int> contacts;
    std::vector<int> odd_atoms;   // atoms whose odd electron pairs with the metal's
};

struct Work {
    Work(const LewisInput& input, LewisResult& result) : in(input), r(result) {}

    const LewisInput& in;
    LewisResult& r;
    std::vector<std::vector<int>> nbrs;        // every bonded neighbour
    std::vector<std::vector<int>> bonds_at;    // the bond numbers at each atom
    // Neighbours that take part in the Lewis structure: no metal, no dummy.
    // In a molecule without metals and dummies this is coor.
    std::vector<int> deg;
    std::vector<bool> metal;
    std::vector<bool> ligand_atom;   // bonded to a metal, directly or through a centroid
    std::vector<bool> outside;       // per bond: to a metal or a dummy, not in the main-group steps
    std::vector<HaptoLigand> hapto;
    std::vector<int> single_contacts;   // bonds from a metal to one atom of a ligand
    std::vector<int> metal_metal;       // bonds between two metals
    bool has_metal = false;
    long path_budget = 2000000;   // steps left for the searches of lewis_radicals.cpp

    int nat() const { return static_cast<int>(in.atoms.size()); }
    int nbond() const { return static_cast<int>(in.bonds.size()); }
    int a(int k) const { return in.bonds[k - 1][0]; }
    int b(int k) const { return in.bonds[k - 1][1]; }
    int other(int k, int i) const { return a(k) == i ? b(k) : a(k); }
    bool is_h(int i) const { return r.atn[i] == 1; }
    int left(int i) const { return r.ve[i] - r.be[i]; }
    void retec(int i) { r.tec[i] = r.ve[i] + r.be[i]; }

    // How many more bonds the atom's own electrons allow: ve already carries
    // the ionic and formal charges, so N+ (ve 4) takes four bonds and O- one.
    int limit(int i) const { return r.ve[i] <= 4 ? r.ve[i] : 8 - r.ve[i]; }

    // Electrons the atom may gather: the octet, or twice its group electrons
    // for a heavy atom with more than two neighbours.
    int octet_limit(int i) const { return (r.atn[i] > 12 && deg[i] > 2) ? 2 * r.group_e[i] : 8; }

    // The electrons that make an atom's shell complete: 2 for hydrogen.
    int full_shell(int i) const { return is_h(i) ? 2 : 8; }

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
    int bond_between(int i, int j) const {
        for (int k : bonds_at[i])
            if (other(k, i) == j) return k;
        return 0;
    }
};

int valence_of(int group_e);

// Step 5 onwards for the main-group part, in lewis_passes.cpp.
void place_positive(Work& w);
void place_negative(Work& w);
void patterns(Work& w);
void hydrogen_bonds(Work& w);
void general_passes(Work& w);
void complete_octets(Work& w);
void reduce_hypervalence(Work& w);

// Odd electrons left over by the passes, in lewis_radicals.cpp.
void pair_radicals(Work& w);

// Metals and their ligands, in lewis_metals.cpp.
bool is_centroid(const LewisAtom& at);
std::vector<int> centroid_ring(const LewisInput& in, int centroid);
void find_ligands(Work& w);
void place_complex_charge(Work& w);
void bond_metals(Work& w);
void metal_oxidation_terms(Work& w);
void metal_donor_bonds(Work& w);

}  // namespace zentol::lewis_detail
