// The benchmarks' molecule: a comb of bonded chains of any size.
#pragma once

#include <array>
#include <string>

#include "session/molecule_store.h"

namespace zentol::bench_molecules {

// A comb of chains along x, joined along y and z at their first atom (about
// one bond an atom, as in a real molecule), 1.54 Angstrom apart, with C, H,
// N and O mixed so that the colours vary: the first n atoms of a block of
// nx by ny by nz.
inline void build_comb(Store& st, int n_atoms, int nx, int ny, int nz) {
    static const std::array<const char*, 6> kElements = {"C", "C", "H", "N", "O", "C"};
    static const std::array<float, 6> kRadii = {0.77f, 0.77f, 0.37f, 0.75f, 0.73f, 0.77f};
    auto index = [&](int x, int y, int z) { return 1 + x + nx * (y + ny * z); };
    st.clear_molecule();
    st.natoms = n_atoms;
    for (int z = 0; z < nz; ++z)
        for (int y = 0; y < ny; ++y)
            for (int x = 0; x < nx; ++x) {
                const int i = index(x, y, z);
                if (i > n_atoms) continue;
                st.atom_label[i] = make_label(kElements[i % 6]);
                st.atom_rec[i] = {1.54f * x, 1.54f * y, 1.54f * z, kRadii[i % 6], 0, 0};
                st.conn_type(i) = 1;
                int n = 0;
                auto link = [&](int j) {
                    if (j <= n_atoms) st.nbr(i, ++n) = j;
                };
                if (x > 0) link(index(x - 1, y, z));
                if (x < nx - 1) link(index(x + 1, y, z));
                if (x == 0 && y > 0) link(index(x, y - 1, z));
                if (x == 0 && y < ny - 1) link(index(x, y + 1, z));
                if (x == 0 && y == 0 && z > 0) link(index(x, y, z - 1));
                if (x == 0 && y == 0 && z < nz - 1) link(index(x, y, z + 1));
                st.conn_count(i) = n;
            }
}

}  // namespace zentol::bench_molecules
