// Helpers of the Tinker tests: the recorded Tinker 26.2 runs of
// tests/data/tinker and the structures read from them.
#pragma once

#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "session/molecule_store.h"
#include "structure_files/xyz_file.h"
#include "support/test_support.h"

namespace zentol::testing {

using Lines = std::vector<std::string>;

// tests/data/tinker/<name>
inline Lines tinker_lines(const std::string& name) { return test_data_lines("tinker/" + name); }

// The same log as other Tinker builds print it, without the leading blank.
inline Lines unshifted(Lines log) {
    for (auto& line : log) line = line.empty() ? line : line.substr(1);
    return log;
}

// The structure of XYZ lines; a file that does not read fails the test.
inline std::unique_ptr<Store> store_of(const Lines& xyz) {
    auto st = std::make_unique<Store>();
    int charge = 0, multiplicity = 1;
    EXPECT_EQ(parse_xyz(xyz, *st, nullptr, charge, multiplicity), kXyzRead);
    return st;
}

inline float bond_length(const Store& st, int a, int b) {
    float sum = 0;
    for (int c = 0; c < 3; ++c) sum += (st.atom_rec[a][c] - st.atom_rec[b][c]) * (st.atom_rec[a][c] - st.atom_rec[b][c]);
    return std::sqrt(sum);
}

}  // namespace zentol::testing
