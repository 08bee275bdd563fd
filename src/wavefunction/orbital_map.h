// An orbital, the total density or the spin density on a grid around the
// molecule, as a cube.
#pragma once

#include <optional>
#include <string>

#include "wavefunction/cube_file.h"
#include "wavefunction/map_wavefunction.h"

namespace zentol {

enum class MapKind { Orbital, Density, Spin };

struct MapRequest {
    MapKind kind = MapKind::Orbital;
    int orbital = 0;        // by the engine's number
    bool beta = false;      // the beta orbital of that number
    int steps = 64;         // points along the longest side of the box
    double margin = 3.5;    // Angstrom of room around the atoms
    int threads = 0;        // 0: as many as the machine has
    bool cubic = false;     // `steps` points on every side, the box a cube
};

// The box: the atoms' extent and the margin on every side, cut into equal
// cubic steps, `steps` points on its longest side (on every side when
// `cubic`: the box is then a cube). No values yet.
CubeGrid map_layout(const MapWavefunction& w, int steps, double margin_angstrom, bool cubic = false);

// The values of the map; nullopt and `error` when the wavefunction cannot
// give it (no such orbital, a density without all occupied orbitals, a
// spin density of a closed shell).
std::optional<CubeGrid> make_map(const MapWavefunction& w, const MapRequest& r, std::string& error);

// Name and title of the map: "water_MO005.cube", "water_density.cube",
// "water_spin.cube".
std::string map_file_name(const std::string& job, const MapRequest& r);
std::string map_title(const MapRequest& r);

}  // namespace zentol
