// Isosurfaces of a cube grid for the orbital viewer, on the CPU: marching
// cubes, each cell cut into six tetrahedra along its main diagonal (no
// ambiguous cases, no holes between cells).
#pragma once

#include <cstddef>
#include <vector>

#include "wavefunction/cube_file.h"

namespace zentol {

// A triangle soup: three vertices a triangle, x y z each, in the grid's
// coordinates (bohr), and a unit normal at every vertex pointing out of
// the enclosed region (towards the side beyond the level).
struct IsoMesh {
    std::vector<float> vertices;
    std::vector<float> normals;
    std::size_t triangles() const { return vertices.size() / 9; }
};

// The surface where the map equals `level`. A positive level encloses the
// values above it (a positive lobe), a negative one the values below it.
IsoMesh isosurface(const CubeGrid& g, float level);

}  // namespace zentol
