// Odd electrons that the passes of steps 7 and 8 leave behind. The passes
// go through the bonds in order and double the first bond they can, so in a
// large conjugated system (C60) two carbons far apart may each keep one
// electron although the molecule is closed-shell; in ozone or SO2 the
// middle atom is full and the two ends keep one each. Three sweeps settle
// them, in this order:
//  1. an odd electron of a ligand moves to the atom that touches the metal,
//     where it makes the covalent bond (sigma-allyl, a carboxylate on one
//     oxygen);
//  2. two odd electrons pair along an alternating path: its single bonds
//     become double and its double bonds single, so every atom between
//     keeps its count and the two ends complete their octets;
//  3. failing that, an atom with a lone pair between them gives one
//     electron to one end (formal charges + and -) and pairs with the
//     other: O=O(+)-O(-), O=S(+)-O(-).
// Atoms bonded to a metal keep their odd electrons for the metal.
#include <algorithm>

#include "analysis/lewis_work.h"

namespace zentol::lewis_detail {

namespace {

bool is_radical(const Work& w, int i) {
    return w.r.atn[i] > 1 && w.r.tec[i] == 7 && w.left(i) > 0;
}

bool free_radical(const Work& w, int i) { return is_radical(w, i) && !w.ligand_atom[i]; }

// A ligand atom with a full shell, which can take an odd electron for its
// metal bond.
bool takes_odd_electron(const Work& w, int i) { return w.ligand_atom[i] && !w.is_h(i) && w.r.tec[i] == 8; }

enum class Goal { pair, move };

// A depth-first search for an alternating path of bonds from `start`:
// raise, lower, raise, ... ending by a raise onto another free radical
// (Goal::pair) or by a lower onto a ligand atom that takes the electron
// (Goal::move). With `memo`, states that failed once are not tried again:
// quick, but it can miss a path that runs around an odd ring; without it
// the search is exhaustive. All searches of one analysis share a step
// budget, so that no molecule of 300 atoms keeps the user waiting.
class PathSearch {
public:
    PathSearch(Work& w, int start, Goal goal, bool memo)
        : w_(w), start_(start), goal_(goal), memo_(memo), on_path_(w.nat() + 1, false),
          dead_(2 * (w.nat() + 1), false) {}

    bool run() {
        on_path_[start_] = true;
        return step(start_, true);
    }
    const std::vector<int>& path() const { return path_; }

private:
    bool step(int x, bool raise) {
        if (--w_.path_budget < 0) return false;
        const std::size_t state = 2 * static_cast<std::size_t>(x) + (raise ? 1 : 0);
        if (memo_ && dead_[state]) return false;
        for (int k : w_.bonds_at[x]) {
            const int y = w_.other(k, x);
            if (w_.outside[k] || on_path_[y] || w_.is_h(y)) continue;
            if (raise ? w_.r.order[k] >= 3 : w_.r.order[k] < 2) continue;
            path_.push_back(k);
            if (raise && goal_ == Goal::pair && free_radical(w_, y)) return true;
            if (!raise && goal_ == Goal::move && takes_odd_electron(w_, y)) return true;
            on_path_[y] = true;
            if (step(y, !raise)) return true;
            on_path_[y] = false;
            path_.pop_back();
        }
        if (memo_) dead_[state] = true;
        return false;
    }

    Work& w_;
    int start_;
    Goal goal_;
    bool memo_;
    std::vector<bool> on_path_, dead_;
    std::vector<int> path_;
};

// Raises the odd bonds of the path and lowers the even ones.
bool flip_path(Work& w, int start, Goal goal) {
    for (bool memo : {true, false}) {
        PathSearch search(w, start, goal, memo);
        if (!search.run()) continue;
        int sign = 1;
        for (int k : search.path()) {
            w.raise_order(k, sign);
            sign = -sign;
        }
        return true;
    }
    return false;
}

// Sweep 1.
void move_to_metal_contacts(Work& w) {
    for (int r = 1; r <= w.nat(); ++r)
        if (free_radical(w, r)) flip_path(w, r, Goal::move);
}

// Sweep 2.
void pair_along_paths(Work& w) {
    for (int r = 1; r <= w.nat(); ++r)
        if (free_radical(w, r)) flip_path(w, r, Goal::pair);
}

// Sweep 3. The more electronegative odd atom takes the electron.
void pair_through_lone_pairs(Work& w) {
    std::vector<int> odd;
    for (int i = 1; i <= w.nat(); ++i)
        if (free_radical(w, i)) odd.push_back(i);
    std::stable_sort(odd.begin(), odd.end(), [&](int p, int q) { return w.r.en[p] > w.r.en[q]; });
    for (int r : odd) {
        if (!free_radical(w, r)) continue;
        for (int k : w.bonds_at[r]) {
            const int m = w.other(k, r);
            if (w.outside[k] || w.ligand_atom[m] || w.is_h(m) || w.r.atn[m] == 9) continue;
            if (w.r.tec[m] != 8 || w.left(m) < 2) continue;
            w.move_electron(m, r, true);
            if (flip_path(w, m, Goal::pair)) break;
            w.move_electron(r, m, true);
        }
    }
}

}  // namespace

void pair_radicals(Work& w) {
    if (w.has_metal) move_to_metal_contacts(w);
    pair_along_paths(w);
    pair_through_lone_pairs(w);
}

}  // namespace zentol::lewis_detail
