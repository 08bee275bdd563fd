// The scene's fixed camera. The renderer loads the same matrices, so picking
// by projected position works with no OpenGL at all.
#pragma once

#include <array>
#include <utility>

namespace zentol {

inline constexpr double kFieldOfView = 9.125069382851693;   // degrees
inline constexpr double kAspect = 1.33;
inline constexpr double kNear = 1.0;
inline constexpr double kEyeDistance = 16.666666666666668;
inline constexpr double kFar = kEyeDistance + 5.0;

using Matrix4 = std::array<double, 16>;   // column-major, as OpenGL holds it

struct Viewport { int width = 800, height = 600; };

Matrix4 perspective_matrix();   // gluPerspective(fov, 1.33, 1, eye + 5)
Matrix4 look_at_matrix();       // gluLookAt(eye (0,0,d), centre 0, up (0,1,1))

// Window position of a model point as fractions of the viewport (y upwards
// from the bottom, as window coordinates run).
std::pair<float, float> project_point(double x, double y, double z, const Viewport& vp);

}  // namespace zentol
