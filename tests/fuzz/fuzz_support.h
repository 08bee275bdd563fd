// What the fuzz targets share: the input as the lines a reader gets of a
// file, a fresh store, and a check that stops the run (libFuzzer keeps the
// input that broke it).
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "session/molecule_store.h"
#include "session/store_ops.h"
#include "toolkit/files.h"

namespace zentol::fuzz {

inline std::string input_text(const std::uint8_t* data, std::size_t size) {
    return std::string(reinterpret_cast<const char*>(data), size);
}

// Split as files::read_lines splits a file on disk.
inline std::vector<std::string> input_lines(const std::uint8_t* data, std::size_t size) {
    return files::split_lines(input_text(data, size));
}

// A store as new, its element radii confirmed so that no reader stops to
// ask for one. Stores are large: a few are kept and reset rather than
// allocated for every input, and `slot` tells them apart.
inline Store* fresh_store(int slot = 0) {
    static const Store* pristine = [] {
        auto* st = new Store();
        element_lookup(*st, nullptr, "", kLookupConfirmAll);
        return st;
    }();
    static Store* slots[4] = {new Store(*pristine), new Store(*pristine), new Store(*pristine), new Store(*pristine)};
    Store* st = slots[slot];
    *st = *pristine;
    return st;
}

// A number taken from the input, for the arguments a reader gets from
// elsewhere (the atom count of the store, the engine's version).
inline unsigned input_hash(const std::uint8_t* data, std::size_t size) {
    unsigned h = 2166136261u;
    for (std::size_t i = 0; i < size && i < 256; ++i) h = (h ^ data[i]) * 16777619u;
    return h ^ static_cast<unsigned>(size);
}

[[noreturn]] inline void fail(const char* what, const char* file, int line) {
    std::fprintf(stderr, "%s:%d: check failed: %s\n", file, line, what);
    std::abort();
}

}  // namespace zentol::fuzz

#define FUZZ_CHECK(cond) ((cond) ? (void)0 : ::zentol::fuzz::fail(#cond, __FILE__, __LINE__))

namespace zentol::fuzz {

// The neighbour table as the rest of the program relies on it: neighbours
// within the molecule and each atom's count matching its filled slots.
inline void check_neighbours(const Store& st) {
    FUZZ_CHECK(st.natoms >= 0 && st.natoms <= kMaxAtoms);
    for (int i = 1; i <= st.natoms; ++i) {
        int count = 0;
        for (int slot = 1; slot <= kMaxNeighbours; ++slot) {
            const int j = st.nbr(i, slot);
            FUZZ_CHECK(j >= 0 && j <= st.natoms);
            count += j > 0;
        }
        FUZZ_CHECK(st.conn_count(i) == count);
    }
}

}  // namespace zentol::fuzz
