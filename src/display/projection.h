// The scene's fixed camera. The renderer loads the same matrices, so picking
// by projected position works with no OpenGL at all.
#pragma once

#include <array>
#include <utility>

namespace zentol {

inline constexpr double kFieldOfView = 9.125069382851693;   // degrees
inline constexpr double kNear = 1.0;
inline constexpr double kEyeDistance = 16.666666666666668;
inline constexpr double kFar = kEyeDistance + 5.0;

using Matrix4 = std::array<double, 16>;   // column-major, as OpenGL holds it

struct Viewport { int width = 800, height = 600; };

// gluPerspective(fov, aspect, 1, eye + 5) with the view's own width over
// height, so that a sphere is drawn round at every size of the view or of a
// picture. A view taller than wide keeps the field of view across instead,
// so the molecule still fits.
Matrix4 perspective_matrix(double aspect);
Matrix4 look_at_matrix();       // gluLookAt(eye (0,0,d), centre 0, up (0,1,1))

// Window position of a model point as fractions of the viewport (y upwards
// from the bottom, as window coordinates run), with the viewport's aspect.
std::pair<float, float> project_point(double x, double y, double z, const Viewport& vp);
// The same with the camera of a viewport worked out once, for many points.
Matrix4 camera_matrix(const Viewport& vp);
std::pair<float, float> project_point(double x, double y, double z, const Matrix4& camera);

}  // namespace zentol
