#include "building/bond_perception.h"

#include <cmath>

#include "session/store_ops.h"

namespace zentol {

void perceive_bonds_by_distance(Store& st, Toolkit* tk, float tolerance) {
    for (int c = kConnFirstNbr; c <= kConnMark; ++c)
        for (int i = 1; i <= st.natoms; ++i) st.conn[c][i] = 0;
    for (int i = 1; i <= st.natoms; ++i) {
        float ri = element_lookup(st, tk, std::string_view(st.atom_label[i].data(), 4), kLookupRadius);
        for (int j = i + 1; j <= st.natoms; ++j) {
            float rj = element_lookup(st, tk, std::string_view(st.atom_label[j].data(), 4), kLookupRadius);
            float dx = st.atom_rec[i][kX] - st.atom_rec[j][kX];
            float dy = st.atom_rec[i][kY] - st.atom_rec[j][kY];
            float dz = st.atom_rec[i][kZ] - st.atom_rec[j][kZ];
            if (std::sqrt(dx * dx + dy * dy + dz * dz) >= ri + rj + tolerance) continue;
            for (auto [a, b] : {std::pair{i, j}, std::pair{j, i}}) {
                int n = ++st.conn_count(a);
                if (n <= kMaxNeighbours) st.nbr(a, n) = b;
            }
        }
    }
    rebuild_bond_list(st);
}

}  // namespace zentol
