// The vertex data of a frame's spheres and sticks, as the painter hands it to
// OpenGL: every primitive is one screen triangle (a sphere) or quad (a
// stick) whose vertices each carry the whole primitive: one plain draw a
// kind, which a software rasteriser runs in large batches where instancing
// would run it primitive by primitive. The arrays grow to the largest
// frame drawn and are refilled in place every frame.
//
// Two sticks that continue each other (the halves of a bond, split at its
// midpoint) become one stick coloured by halves: the union of two capped
// cylinders meeting at the midpoint of their outer ends is the one capped
// cylinder between those ends, so the picture stays the same at half the
// primitives. A stick's screen quad only covers what can show of it: the
// part inside the opaque sphere of an atom it starts from is hidden by that
// sphere anyway (a stick wholly inside is left out). Opaque primitives go
// front to back, so that a GL that tests depth before shading skips what
// lies behind; given the camera, what lies wholly behind the opaque spheres
// in front of it, or outside the picture, is left out altogether (see
// occlusion.h), so that not even its outline is rasterised.
#pragma once

#include <cstdint>
#include <vector>

#include "display/occlusion.h"
#include "display/projection.h"

namespace zentol {

struct Scene;
struct SceneStick;

inline constexpr int kQuadCorners = 4;
inline constexpr int kSphereCorners = 3;
inline constexpr int kSphereFloats = 8;    // centre, radius, rgba
// from, to, rgba of the from half, rgb of the to half, and the fractions of
// its length at either end that lie inside an atom's sphere
inline constexpr int kStickFloats = 15;

// True when b continues a: a ends where b starts, exactly at the midpoint of
// a's start and b's end (as the halves of a bond are made), at one alpha.
bool sticks_join(const SceneStick& a, const SceneStick& b);

// The order that draws nearest first: indices 0..n-1 by key (larger is
// nearer), equal keys by index. It starts from the previous frame's order,
// which one rotation step barely changes, and sorts afresh when that is far
// off or the count changed.
class DepthOrder {
public:
    void reserve(std::size_t n);
    void sort(const std::vector<float>& keys, int n);
    // The scene's own order (for translucent primitives, whose blending
    // depends on it).
    void identity(int n);
    const std::vector<std::uint32_t>& order() const { return order_; }
    int size() const { return size_; }

private:
    std::vector<std::uint32_t> order_;
    int size_ = -1;
};

// Opaque spheres found by their exact centre: a stick that starts at an
// atom starts at the very same coordinates as the atom's sphere.
class SphereIndex {
public:
    SphereIndex();
    void clear();
    // A sphere that hides what lies within radius of (x, y, z).
    void add(float x, float y, float z, float radius);
    // The largest radius added at exactly (x, y, z), or 0.
    float radius_at(float x, float y, float z) const;

private:
    struct Slot {
        float x, y, z, radius;
        std::uint32_t stamp;   // the slot is filled when it equals stamp_
    };
    std::size_t slot_of(float x, float y, float z) const;
    std::vector<Slot> slots_;
    std::uint32_t stamp_ = 1;
    std::size_t count_ = 0;
};

class SceneBatches {
public:
    SceneBatches();

    // Refills the vertex arrays from the scene; view is the camera's
    // look-at matrix (what is nearer is decided in its eye space). With the
    // picture's camera, hidden primitives are left out.
    void build(const Scene& scene, const Matrix4& view, const ScreenCamera* camera = nullptr);

    const std::vector<float>& sphere_vertices() const { return spheres_; }
    const std::vector<float>& stick_vertices() const { return sticks_; }
    int sphere_count() const { return sphere_count_; }
    int stick_count() const { return stick_count_; }
    // Whether every sphere, every stick has alpha 1 (and needs no blending).
    bool spheres_opaque() const { return spheres_opaque_; }
    bool sticks_opaque() const { return sticks_opaque_; }

private:
    void build_spheres(const Scene& scene, const Matrix4& view, bool cull);
    void build_sticks(const Scene& scene, const Matrix4& view, bool cull);
    float hidden_fraction(float x, float y, float z, float length, float stick_radius) const;

    // Per-frame scratch, grown as needed: first stick of each drawn stick,
    // whether the next one was joined to it, the hidden fractions at its
    // ends; depth keys.
    std::vector<std::uint32_t> stick_first_;
    std::vector<std::uint8_t> stick_joined_;
    std::vector<float> stick_trim_;
    std::vector<float> keys_;
    std::vector<float> eye_;   // eye-space centres of the spheres, or ends of the sticks
    OcclusionGrid hidden_;
    std::size_t culled_ = 0;   // primitives left out as hidden this frame
    int pause_ = 0;            // frames to go before looking for hidden ones again
    float paused_largest_ = 0; // the largest sphere and the number of spheres
    std::size_t paused_count_ = 0;   // of the last frame
    DepthOrder sphere_order_, stick_order_;
    SphereIndex atoms_;

    std::vector<float> spheres_, sticks_;   // vertices, four a primitive
    int sphere_count_ = 0, stick_count_ = 0;
    bool spheres_opaque_ = true, sticks_opaque_ = true;
};

}  // namespace zentol
