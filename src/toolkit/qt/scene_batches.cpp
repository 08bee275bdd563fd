#include "toolkit/qt/scene_batches.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "display/scene.h"
#include "session/molecule_store.h"

namespace zentol {

namespace {

// Past this many moves a frame the previous order is not worth keeping.
constexpr int kMovesPerItem = 8;

// Leaving out hidden primitives pays when it finds at least one in this
// many; when it does not, it rests for this many frames.
constexpr std::size_t kWorthCulling = 10;
constexpr int kCullPause = 30;

// A model point in the camera's eye space.
void to_eye(const Matrix4& view, float x, float y, float z, float* e) {
    for (int row = 0; row < 3; ++row)
        e[row] = static_cast<float>(view[row] * x + view[4 + row] * y + view[8 + row] * z + view[12 + row]);
}

// Slots of the sphere index: a power of two, at least twice the spheres.
constexpr std::size_t kSphereSlots = 8192;
static_assert(kSphereSlots >= 2 * std::size_t(kAtomRows));

std::uint32_t bits_of(float v) {
    std::uint32_t b;
    std::memcpy(&b, &v, sizeof b);
    return b;
}

// Grows a per-frame array only when a scene outgrows the largest molecule.
template <typename T>
T* room(std::vector<T>& v, std::size_t n) {
    if (v.size() < n) v.resize(n);
    return v.data();
}

// The vertices of one primitive (four for a quad, three for a triangle):
// the same attributes each time; the vertex shader tells the corners apart
// by the vertex number.
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
    auto nearer = [&keys](std::uint32_t a, std::uint32_t b) {
        return keys[a] > keys[b] || (keys[a] == keys[b] && a < b);
    };
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

SphereIndex::SphereIndex() : slots_(kSphereSlots) {}

void SphereIndex::clear() {
    count_ = 0;
    if (++stamp_ != 0) return;
    for (Slot& s : slots_) s.stamp = 0;   // after 2^32 frames
    stamp_ = 1;
}

std::size_t SphereIndex::slot_of(float x, float y, float z) const {
    const std::uint32_t h = bits_of(x) * 73856093u ^ bits_of(y) * 19349663u ^ bits_of(z) * 83492791u;
    std::size_t k = (h ^ (h >> 15)) & (slots_.size() - 1);
    while (slots_[k].stamp == stamp_ && !(slots_[k].x == x && slots_[k].y == y && slots_[k].z == z))
        k = (k + 1) & (slots_.size() - 1);
    return k;
}

void SphereIndex::add(float x, float y, float z, float radius) {
    if (count_ >= slots_.size() / 2) return;   // more spheres than any molecule: they just hide nothing
    Slot& s = slots_[slot_of(x, y, z)];
    if (s.stamp == stamp_) {
        s.radius = std::max(s.radius, radius);
        return;
    }
    s = {x, y, z, radius, stamp_};
    ++count_;
}

float SphereIndex::radius_at(float x, float y, float z) const {
    const Slot& s = slots_[slot_of(x, y, z)];
    return s.stamp == stamp_ ? s.radius : 0.0f;
}

SceneBatches::SceneBatches() = default;

void SceneBatches::build(const Scene& scene, const Matrix4& view, const ScreenCamera* camera) {
    // Looking for hidden primitives costs the main thread a little for
    // every large atom; where it finds few (small atoms, an open molecule)
    // the next frames, which one turn step hardly changes, do without,
    // until the atoms change size (Setup, zoom) or number.
    float largest = 0;
    for (const SceneSphere& sphere : scene.spheres) largest = std::max(largest, sphere.radius);
    if (largest != paused_largest_ || scene.spheres.size() != paused_count_) pause_ = 0;
    paused_largest_ = largest;
    paused_count_ = scene.spheres.size();
    const bool cull = camera && pause_ == 0;
    if (!cull && pause_ > 0) --pause_;
    if (cull) hidden_.start(*camera);
    culled_ = 0;
    build_spheres(scene, view, cull);
    build_sticks(scene, view, cull);
    if (cull && culled_ * kWorthCulling < scene.spheres.size() + scene.sticks.size()) pause_ = kCullPause;
}

void SceneBatches::build_spheres(const Scene& scene, const Matrix4& view, bool cull) {
    const int n = static_cast<int>(scene.spheres.size());
    float* key = room(keys_, static_cast<std::size_t>(n));
    float* eye = room(eye_, 3 * static_cast<std::size_t>(n));
    bool opaque = true;
    atoms_.clear();
    for (int i = 0; i < n; ++i) {
        const SceneSphere& s = scene.spheres[static_cast<std::size_t>(i)];
        float* e = eye + 3 * i;
        to_eye(view, s.x, s.y, s.z, e);
        const float z = e[2];
        key[i] = z + s.radius;
        opaque = opaque && s.alpha >= 1.0f;
        // A sphere the near or far plane cuts open hides nothing inside.
        if (s.alpha >= 1.0f && -(z + s.radius) > kNear && -(z - s.radius) < kFar) atoms_.add(s.x, s.y, s.z, s.radius);
    }
    spheres_opaque_ = opaque;
    if (opaque) sphere_order_.sort(keys_, n);
    else sphere_order_.identity(n);

    float* out = room(spheres_, static_cast<std::size_t>(n) * kSphereCorners * kSphereFloats);
    int drawn = 0;
    for (int k = 0; k < n; ++k) {
        const std::uint32_t at = sphere_order_.order()[static_cast<std::size_t>(k)];
        const SceneSphere& s = scene.spheres[at];
        if (cull) {
            if (hidden_.hides_anything() && hidden_.sphere_hidden(eye + 3 * at, s.radius)) {
                ++culled_;
                continue;
            }
            if (s.alpha >= 1.0f) hidden_.add_sphere(eye + 3 * at, s.radius);
        }
        const auto c = scene.rgb(s.colour);
        const float v[kSphereFloats] = {s.x, s.y, s.z, s.radius, c[0], c[1], c[2], s.alpha};
        put_quad(out + static_cast<std::size_t>(drawn++) * kSphereCorners * kSphereFloats, v, kSphereFloats,
                 kSphereCorners);
    }
    sphere_count_ = drawn;
}

// The fraction of a stick of this length that lies inside the opaque sphere
// centred at its end (x, y, z), if there is one: every point of the stick
// nearer the centre than sqrt(R^2 - r^2) along its axis is inside. A hair
// less, against rounding.
float SceneBatches::hidden_fraction(float x, float y, float z, float length, float stick_radius) const {
    const float sphere = atoms_.radius_at(x, y, z);
    if (sphere <= stick_radius || !(length > 0)) return 0;
    return 0.999f * std::sqrt(sphere * sphere - stick_radius * stick_radius) / length;
}

void SceneBatches::build_sticks(const Scene& scene, const Matrix4& view, bool cull) {
    const auto& in = scene.sticks;
    const std::size_t total = in.size();
    std::uint32_t* first = room(stick_first_, total);
    std::uint8_t* joined = room(stick_joined_, total);
    float* trim = room(stick_trim_, 2 * total);
    float* key = room(keys_, total);
    float* ends = room(eye_, 6 * total);
    int n = 0;
    bool opaque = true;
    for (std::size_t k = 0; k < total; ++k) {
        const SceneStick& a = in[k];
        const bool join = k + 1 < total && sticks_join(a, in[k + 1]);
        const SceneStick& b = join ? in[k + 1] : a;
        if (join) ++k;
        const float length = std::hypot(b.x1 - a.x0, b.y1 - a.y0, b.z1 - a.z0);
        const float from = hidden_fraction(a.x0, a.y0, a.z0, length, scene.stick_radius);
        const float to = hidden_fraction(b.x1, b.y1, b.z1, length, scene.stick_radius);
        if (from + to >= 1) continue;   // within its atoms' spheres: nothing of it shows
        float* e = ends + 6 * n;
        to_eye(view, a.x0, a.y0, a.z0, e);
        to_eye(view, b.x1, b.y1, b.z1, e + 3);
        if (cull && hidden_.hides_anything()) {
            // The part that can show, from `from` to `to` of its length.
            float shown[6];
            for (int row = 0; row < 3; ++row) {
                shown[row] = e[row] + from * (e[3 + row] - e[row]);
                shown[3 + row] = e[3 + row] + to * (e[row] - e[3 + row]);
            }
            if (hidden_.stick_hidden(shown, shown + 3, scene.stick_radius)) {
                ++culled_;
                continue;
            }
        }
        first[n] = static_cast<std::uint32_t>(&a - in.data());
        joined[n] = join;
        trim[2 * n] = from;
        trim[2 * n + 1] = to;
        key[n] = std::max(e[2], e[5]);
        opaque = opaque && a.alpha >= 1.0f;
        ++n;
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
        const float v[kStickFloats] = {a.x0,  a.y0,  a.z0,  b.x1,  b.y1,  b.z1,           ca[0],          ca[1],
                                       ca[2], a.alpha, cb[0], cb[1], cb[2], trim[2 * at], trim[2 * at + 1]};
        put_quad(out + static_cast<std::size_t>(k) * kQuadCorners * kStickFloats, v, kStickFloats);
    }
}

}  // namespace zentol
