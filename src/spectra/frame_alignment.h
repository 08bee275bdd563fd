// The rotation between two frames of the same molecule: an engine may
// turn the molecule into its own orientation before it computes the
// normal modes, and their displacements must be turned back with it.
#pragma once

#include <array>
#include <vector>

namespace zentol {

using Point3 = std::array<double, 3>;
using Matrix3 = std::array<std::array<double, 3>, 3>;

// The proper rotation R for which R (from_i - mean) lies closest to
// (to_i - mean) in the least-squares sense (Horn's quaternion method).
// The identity for fewer than two points or sets of unequal length.
Matrix3 best_rotation(const std::vector<Point3>& from, const std::vector<Point3>& to);

Point3 rotate(const Matrix3& r, const Point3& p);

}  // namespace zentol
