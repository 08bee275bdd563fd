#include "toolkit/qt/scene_batches.h"

#include <algorithm>

#include "display/scene.h"
#include "session/molecule_store.h"

namespace zentol {

namespace {

// Past this many moves a frame the previous order is not worth keeping.
constexpr int kMovesPerItem = 8;

// Grows a per-frame array only when a scene outgrows the largest molecule.
template <typename T>
T* room(std::vector<T>& v, std::size_t n) {
    if (v.size() < n) v.resize(n);
    return v.data();
}

// The four vertices of one primitive: the same attributes each time; the
// vertex shader tells the corners apart by the vertex number.
void put_quad(float* out, const float* attributes, int n, int corners = kQuadCorners) {
    for (int c = 0; c < corners; ++c) std::copy(attributes, attributes + n, out + c * n);
}

}  // namespace

bool sticks_join(const SceneStick& a, const SceneStick& b) {
    return a.x1 == b.x0 && a.y1 == b.y0 && a.z1 == b.z0 && a.alpha == b.alpha && (a.x0 + b.x1) / 2 == a.x1 &&
           (a.y0 + b.y1) / 2 == a.y1 && (a.z0 + b.z1) / 2 == a.z1;
}

void DepthOrder::reserve(std::size_t n) { order_.reserve(n); }

void DepthOrder::identity(int n) {
    room(order_, static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i) order_[static_cast<std::size_t>(i)] = static_cast<std::uint32_t>(i);
    size_ = -1;   // the next sort starts afresh
}

void DepthOrder::sort(const std::vector<float>& keys, int n) {
    auto nearer = [&keys](std::uint32_t a, std::uint32_t b) { return keys[a] > keys[b] || (keys[a] == keys[b] && a < b); };
    std::uint32_t* o = room(order_, static_cast<std::size_t>(n));
    if (n != size_) {
        identity(n);
        std::sort(o, o + n, nearer);
        size_ = n;
        return;
    }
    // Insertion sort from last frame's order, while it stays cheap.
    long budget = static_cast<long>(kMovesPerItem) * n;
    for (int i = 1; i < n; ++i) {
        const std::uint32_t item = o[i];
        int j = i;
        for (; j > 0 && nearer(item, o[j - 1]); --j) o[j] = o[j - 1];
        o[j] = item;
        budget -= i - j;
        if (budget < 0) {
            std::sort(o, o + n, nearer);
            return;
        }
    }
}

SceneBatches::SceneBatches() {
    const std::size_t spheres = kAtomRows, sticks = 2 * kMaxBonds;
    spheres_.resize(spheres * kSphereCorners * kSphereFloats);
    sticks_.resize(sticks * kQuadCorners * kStickFloats);
    stick_first_.resize(sticks);
    stick_joined_.resize(sticks);
    keys_.resize(std::max(spheres, sticks));
    sphere_order_.reserve(spheres);
    stick_order_.reserve(sticks);
}

void SceneBatches::build(const Scene& scene, const Matrix4& view) {
    build_spheres(scene, view);
    build_sticks(scene, view);
}

void SceneBatches::build_spheres(const Scene& scene, const Matrix4& view) {
    const int n = static_cast<int>(scene.spheres.size());
    sphere_count_ = n;
    float* key = room(keys_, static_cast<std::size_t>(n));
    bool opaque = true;
    for (int i = 0; i < n; ++i) {
        const SceneSphere& s = scene.spheres[static_cast<std::size_t>(i)];
        key[i] = static_cast<float>(view[2] * s.x + view[6] * s.y + view[10] * s.z + view[14]) + s.radius;
        opaque = opaque && s.alpha >= 1.0f;
    }
    spheres_opaque_ = opaque;
    if (opaque) sphere_order_.sort(keys_, n);
    else sphere_order_.identity(n);

    float* out = room(spheres_, static_cast<std::size_t>(n) * kSphereCorners * kSphereFloats);
    for (int k = 0; k < n; ++k) {
        const SceneSphere& s = scene.spheres[sphere_order_.order()[static_cast<std::size_t>(k)]];
        const auto c = scene.rgb(s.colour);
        const float v[kSphereFloats] = {s.x, s.y, s.z, s.radius, c[0], c[1], c[2], s.alpha};
        put_quad(out + static_cast<std::size_t>(k) * kSphereCorners * kSphereFloats, v, kSphereFloats, kSphereCorners);
    }
}

void SceneBatches::build_sticks(const Scene& scene, const Matrix4& view) {
    const auto& in = scene.sticks;
    const std::size_t total = in.size();
    std::uint32_t* first = room(stick_first_, total);
    std::uint8_t* joined = room(stick_joined_, total);
    float* key = room(keys_, total);
    int n = 0;
    bool opaque = true;
    for (std::size_t k = 0; k < total; ++k) {
        const SceneStick& a = in[k];
        const bool join = k + 1 < total && sticks_join(a, in[k + 1]);
        const SceneStick& b = join ? in[k + 1] : a;
        auto eye_z = [&view](float x, float y, float z) {
            return static_cast<float>(view[2] * x + view[6] * y + view[10] * z + view[14]);
        };
        first[n] = static_cast<std::uint32_t>(k);
        joined[n] = join;
        key[n] = std::max(eye_z(a.x0, a.y0, a.z0), eye_z(b.x1, b.y1, b.z1));
        opaque = opaque && a.alpha >= 1.0f;
        ++n;
        if (join) ++k;
    }
    stick_count_ = n;
    sticks_opaque_ = opaque;
    if (opaque) stick_order_.sort(keys_, n);
    else stick_order_.identity(n);

    float* out = room(sticks_, static_cast<std::size_t>(n) * kQuadCorners * kStickFloats);
    for (int k = 0; k < n; ++k) {
        const std::uint32_t at = stick_order_.order()[static_cast<std::size_t>(k)];
        const SceneStick& a = in[first[at]];
        const SceneStick& b = joined[at] ? in[first[at] + 1] : a;
        const auto ca = scene.rgb(a.colour), cb = scene.rgb(b.colour);
        const float v[kStickFloats] = {a.x0,  a.y0,  a.z0,    b.x1,  b.y1,  b.z1, ca[0],
                                       ca[1], ca[2], a.alpha, cb[0], cb[1], cb[2]};
        put_quad(out + static_cast<std::size_t>(k) * kQuadCorners * kStickFloats, v, kStickFloats);
    }
}

}  // namespace zentol
