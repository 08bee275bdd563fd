// Gaussian cube files: the maps the map programs write and the viewer
// reads. Two title lines; the atom count and the origin; for each of the
// three axes its number of points and its step vector; one line an atom
// (atomic number, charge, x, y, z); then the values, the first axis
// slowest and the third fastest, six a line, each run along the third axis
// starting a new line. Lengths in bohr (a negative point count on an axis
// means Angstrom; such files are read too).
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "wavefunction/map_wavefunction.h"

namespace zentol {

struct CubeGrid {
    std::string title, comment;
    std::vector<MapAtom> atoms;
    std::array<double, 3> origin{};
    std::array<int, 3> n{};
    std::array<std::array<double, 3>, 3> axes{};  // step vector of each axis
    std::vector<float> values;                    // (i * n1 + j) * n2 + k

    std::size_t index(int i, int j, int k) const {
        return (static_cast<std::size_t>(i) * static_cast<std::size_t>(n[1]) + static_cast<std::size_t>(j)) *
                   static_cast<std::size_t>(n[2]) +
               static_cast<std::size_t>(k);
    }
    float at(int i, int j, int k) const { return values[index(i, j, k)]; }
    // The position of a grid point.
    std::array<double, 3> point(double i, double j, double k) const;
    double voxel_volume() const;
};

// The whole file as text.
std::string cube_text(const CubeGrid& g);

// Reads a cube file; `error` says what is wrong when there is no grid.
std::optional<CubeGrid> read_cube(std::string_view text, std::string& error);

}  // namespace zentol
