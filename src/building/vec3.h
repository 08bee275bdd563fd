// Single-precision 3-vectors for placing and turning atoms.
#pragma once

#include <array>
#include <cmath>

namespace zentol {

struct Vec3 {
    float x = 0, y = 0, z = 0;

    Vec3 operator+(const Vec3& o) const { return {x + o.x, y + o.y, z + o.z}; }
    Vec3 operator-(const Vec3& o) const { return {x - o.x, y - o.y, z - o.z}; }
    Vec3 operator*(float f) const { return {x * f, y * f, z * f}; }
    float dot(const Vec3& o) const { return x * o.x + y * o.y + z * o.z; }
    Vec3 cross(const Vec3& o) const { return {y * o.z - z * o.y, z * o.x - x * o.z, x * o.y - y * o.x}; }
    float length() const { return std::sqrt(dot(*this)); }
    Vec3 unit() const {
        const float l = length();
        return {x / l, y / l, z / l};
    }
};

inline Vec3 atom_position(const std::array<float, 6>& rec) { return {rec[0], rec[1], rec[2]}; }

inline void set_position(std::array<float, 6>& rec, const Vec3& p) {
    rec[0] = p.x;
    rec[1] = p.y;
    rec[2] = p.z;
}

// w turned by the angle of (cosine, sine) about the unit axis k:
// w cos + k (k.w)(1 - cos) + (w x k) sin.
inline Vec3 rodrigues(const Vec3& w, const Vec3& k, float cosine, float sine) {
    return w * cosine + k * (k.dot(w) * (1 - cosine)) + w.cross(k) * sine;
}

}  // namespace zentol
