// The shader sources of the scene painter. Spheres and sticks are ray-cast
// in the fragment shader, exactly, over a screen triangle or quad that holds
// the primitive's outline; labels are glyphs from an atlas; pick circles are
// rings drawn over everything.
#pragma once

namespace zentol::scene_shaders {

// Eye space is the fixed look-at of the camera; the projection is folded
// into u_proj (ndc.xy = u_proj.xy * eye.xy / -eye.z + u_proj.zw, which also
// places a tile) and u_depth (clip z = u_depth.x * eye.z + u_depth.y).
// u_pixels is the size of the framebuffer drawn into, u_ray takes a pixel
// to its point in the plane z = -1 (t = gl_FragCoord.xy * u_ray.xy + u_ray.zw).
inline constexpr const char* kVersion = "#version 330 core\n";
inline constexpr const char* kConservativeDepth = "#extension GL_ARB_conservative_depth : enable\n";
inline constexpr const char* kCommon = R"(
uniform mat4 u_view;
uniform vec4 u_proj;
uniform vec2 u_depth;
uniform vec2 u_pixels;
uniform vec4 u_ray;
)";

inline constexpr const char* kVertexCommon = R"(
// Which corner of its quad this vertex is: four vertices a quad, in order.
vec2 quad_corner() { return vec2(float(gl_VertexID & 1), float((gl_VertexID >> 1) & 1)); }
// Depth of a quad whose primitive comes no nearer than eye z: a little in
// front of that, never before the near plane. A quad beyond the far plane
// is clipped, as its primitive would be.
float quad_depth(float nearest) {
    float z = nearest - 1e-4 * nearest;
    if (z > -1e-6) return -1.0;
    return max((u_depth.x * z + u_depth.y) / -z, -1.0);
}
)";

inline constexpr const char* kShading = R"(
const vec3 kLight = vec3(0.57735027);
const vec3 kHalfway = vec3(0.32505758, 0.32505758, 0.88807383);   // normalize(light + view)
// The shininess power by squaring, x^50 = (x^16)^3 x^2: far cheaper than
// pow on a software rasteriser.
float power50(float x) {
    float x2 = x * x, x4 = x2 * x2, x8 = x4 * x4, x16 = x8 * x8;
    return x16 * x16 * x16 * x2;
}
vec3 shade(vec3 n, vec3 c) {
    float d = max(dot(n, kLight), 0.0);
    float s = d > 0.0 ? power50(max(dot(n, kHalfway), 0.0)) : 0.0;
    return min(c * (0.3 + d) + vec3(s), vec3(1.0));
}
// The eye ray through this pixel, as its point in the plane z = -1.
vec3 pixel_ray() { return vec3(gl_FragCoord.xy * u_ray.xy + u_ray.zw, -1.0); }
// Writes the depth of an eye-space point as the fixed pipeline would;
// false where near or far plane would have clipped it.
bool set_depth(vec3 p) {
    if (p.z >= 0.0) return false;
    float ndc = (u_depth.x * p.z + u_depth.y) / -p.z;
    if (ndc < -1.0 || ndc > 1.0) return false;
    gl_FragDepth = 0.5 * ndc + 0.5;
    return true;
}
)";

// The written depth is never nearer than the quad's (quad_depth).
inline constexpr const char* kDepthLayout = "layout(depth_greater) out float gl_FragDepth;\n";

// A sphere's outline is an ellipse, long along the line from the view's
// centre, reaching as far as the rays of its tangent cone; its triangle is
// the equilateral one around a circle, stretched over that ellipse (one
// triangle costs a software rasteriser no more fragments than a quad, and
// half the setup). Triangles and quads are built in the plane z = -1 of eye
// space (t = xy / -z) with w = 1, so every pixel's ray is t.
inline constexpr const char* kSphereVertex = R"(
layout(location = 0) in vec4 a_sphere;
layout(location = 1) in vec4 a_colour;
flat out vec3 v_centre;
flat out float v_radius;
flat out vec4 v_colour;
const vec2 kTriangle[3] = vec2[3](vec2(-1.7320508, -1.0), vec2(1.7320508, -1.0), vec2(0.0, 2.0));
void main() {
    vec3 c = (u_view * vec4(a_sphere.xyz, 1.0)).xyz;
    float r = a_sphere.w;
    vec2 t;
    if (-c.z - r > 1e-4) {
        float off = length(c.xy);
        vec2 u = off > 1e-20 ? c.xy / off : vec2(1.0, 0.0);
        vec2 v = vec2(-u.y, u.x);
        float tan_centre = off / -c.z;
        float tan_half = r / sqrt(dot(c, c) - r * r);
        float near_side = (tan_centre - tan_half) / (1.0 + tan_centre * tan_half);
        float far_side = (tan_centre + tan_half) / (1.0 - tan_centre * tan_half);
        float across = r / sqrt(c.z * c.z - r * r);
        float pad = 1e-3 * (far_side - near_side);   // against rounding at the rim
        vec2 k = kTriangle[gl_VertexID % 3];
        float middle = 0.5 * (near_side + far_side), half_length = 0.5 * (far_side - near_side) + pad;
        t = u * (middle + half_length * k.x) + v * ((across + pad) * k.y);
    } else {
        t = kTriangle[gl_VertexID % 3] * 1e3;   // the sphere reaches the eye: the whole view
    }
    v_centre = c;
    v_radius = r;
    v_colour = a_colour;
    gl_Position = vec4(u_proj.xy * t + u_proj.zw, quad_depth(c.z + r), 1.0);
}
)";

inline constexpr const char* kSphereFragment = R"(
flat in vec3 v_centre;
flat in float v_radius;
flat in vec4 v_colour;
out vec4 o_colour;
void main() {
    vec3 d = normalize(pixel_ray());
    float b = dot(d, v_centre);
    vec3 q = b * d - v_centre;              // from the centre to the ray's nearest point
    float h = v_radius * v_radius - dot(q, q);
    if (h < 0.0) discard;
    vec3 p = (b - sqrt(h)) * d;
    if (!set_depth(p)) discard;
    o_colour = vec4(shade((p - v_centre) * (1.0 / v_radius), v_colour.rgb), v_colour.a);
}
)";

// A stick coloured by halves: a_colour_a from a_from to the middle,
// a_colour_b (same alpha) from there to a_to. Its quad holds only the part
// between the fractions a_hidden of its length from either end (the rest is
// inside atoms' spheres); the fragments cast the whole stick.
inline constexpr const char* kStickVertex = R"(
layout(location = 0) in vec3 a_from;
layout(location = 1) in vec3 a_to;
layout(location = 2) in vec4 a_colour_a;
layout(location = 3) in vec3 a_colour_b;
layout(location = 4) in vec2 a_hidden;
uniform float u_radius;
flat out vec3 v_a;
flat out vec3 v_b;
flat out vec4 v_colour_a;
flat out vec3 v_colour_b;
void main() {
    vec2 corner = quad_corner();
    vec3 A = (u_view * vec4(a_from, 1.0)).xyz;
    vec3 B = (u_view * vec4(a_to, 1.0)).xyz;
    vec3 from = mix(A, B, a_hidden.x), to = mix(B, A, a_hidden.y);
    float r = u_radius;
    float nearest = min(-from.z, -to.z) - r;
    vec2 t;
    if (nearest > 1e-4) {
        // The projected stick lies within rho of the projected axis.
        vec2 a = from.xy / -from.z, b = to.xy / -to.z;
        float rho = r * (1.0 + max(length(a), length(b))) / nearest;
        vec2 axis = b - a;
        float len = length(axis);
        vec2 u = len > 1e-9 ? axis / len : vec2(1.0, 0.0);
        vec2 v = vec2(-u.y, u.x);
        vec2 base = corner.x < 0.5 ? a - u * rho : b + u * rho;
        t = base + v * ((corner.y * 2.0 - 1.0) * rho);
    } else {
        t = (corner * 2.0 - 1.0) * 1e3;
    }
    v_a = A;
    v_b = B;
    v_colour_a = a_colour_a;
    v_colour_b = a_colour_b;
    gl_Position = vec4(u_proj.xy * t + u_proj.zw, quad_depth(max(A.z, B.z) + r), 1.0);
}
)";

// A capped cylinder. The ray starts level with the stick's middle so the
// quadratic is solved on small numbers (the eye is far away in float terms).
inline constexpr const char* kStickFragment = R"(
uniform float u_radius;
flat in vec3 v_a;
flat in vec3 v_b;
flat in vec4 v_colour_a;
flat in vec3 v_colour_b;
out vec4 o_colour;
void main() {
    vec3 rd = normalize(pixel_ray());
    vec3 ro = dot(0.5 * (v_a + v_b), rd) * rd;
    float r = u_radius;
    vec3 ba = v_b - v_a;
    vec3 oc = ro - v_a;
    float baba = dot(ba, ba);
    float bard = dot(ba, rd);
    float baoc = dot(ba, oc);
    float k2 = baba - bard * bard;
    float k1 = baba * dot(oc, rd) - baoc * bard;
    float k0 = baba * dot(oc, oc) - baoc * baoc - r * r * baba;
    float h = k1 * k1 - k2 * k0;
    if (h < 0.0 || baba <= 0.0) discard;
    h = sqrt(h);
    float t = (-k1 - h) / k2;
    float y = baoc + t * bard;
    vec3 n;
    bool first_half;
    if (y > 0.0 && y < baba) {
        n = (oc + t * rd - ba * (y / baba)) * (1.0 / r);
        first_half = y < 0.5 * baba;
    } else {
        t = ((y < 0.0 ? 0.0 : baba) - baoc) / bard;   // the end disk on the near side
        if (abs(k1 + k2 * t) >= h) discard;
        n = ba * (sign(y) * inversesqrt(baba));
        first_half = y <= 0.0;
    }
    if (!set_depth(ro + t * rd)) discard;
    vec3 c = first_half ? v_colour_a.rgb : v_colour_b;
    o_colour = vec4(shade(n, c), v_colour_a.a);
}
)";

inline constexpr const char* kTextVertex = R"(
layout(location = 0) in vec3 a_pen;
layout(location = 1) in vec4 a_box;
layout(location = 2) in vec4 a_uv;
uniform float u_scale;
out vec2 v_uv;
void main() {
    vec2 corner = quad_corner();
    vec3 m = a_pen + vec3((a_box.xy + corner * a_box.zw) * u_scale, 0.0);
    vec3 e = (u_view * vec4(m, 1.0)).xyz;
    gl_Position = vec4(u_proj.xy * e.xy - u_proj.zw * e.z, u_depth.x * e.z + u_depth.y, -e.z);
    v_uv = mix(a_uv.xy, a_uv.zw, corner);
}
)";

inline constexpr const char* kTextFragment = R"(
uniform sampler2D u_atlas;
uniform vec3 u_colour;
in vec2 v_uv;
out vec4 o_colour;
void main() {
    float a = texture(u_atlas, v_uv).r;
    if (a < 0.01) discard;
    o_colour = vec4(u_colour, a);
}
)";

// The pick circle: a ring one and a half pixels wide around the projected
// centre, drawn over the picture without depth.
inline constexpr const char* kCircleVertex = R"(
layout(location = 0) in vec4 a_circle;
layout(location = 1) in vec3 a_colour;
out vec2 v_offset;       // from the centre, in pixels
flat out float v_radius;
flat out vec3 v_colour;
void main() {
    vec2 corner = quad_corner();
    vec3 e = (u_view * vec4(a_circle.xyz, 1.0)).xyz;
    vec2 ndc = u_proj.xy * e.xy / -e.z + u_proj.zw;
    v_radius = a_circle.w * u_pixels.x;
    v_offset = (corner * 2.0 - 1.0) * (v_radius + 2.0);
    gl_Position = vec4(ndc + v_offset * 2.0 / u_pixels, 0.0, 1.0);
    v_colour = a_colour;
}
)";

inline constexpr const char* kCircleFragment = R"(
in vec2 v_offset;
flat in float v_radius;
flat in vec3 v_colour;
out vec4 o_colour;
void main() {
    float a = 1.0 - clamp(abs(length(v_offset) - v_radius) - 0.25, 0.0, 1.0);
    if (a <= 0.0) discard;
    o_colour = vec4(v_colour, a);
}
)";

}  // namespace zentol::scene_shaders
