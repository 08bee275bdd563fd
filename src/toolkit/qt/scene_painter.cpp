#include "toolkit/qt/scene_painter.h"

#include <algorithm>
#include <cmath>

#include <QFont>
#include <QFontMetricsF>
#include <QImage>
#include <QOpenGLShaderProgram>
#include <QPainter>

#include "display/projection.h"
#include "display/scene.h"
#include "session/molecule_store.h"

namespace zentol {

namespace {

// Floats of one instance.
constexpr int kSphereFloats = 8;    // centre, radius, rgba
constexpr int kStickFloats = 10;    // from, to, rgba
constexpr int kGlyphFloats = 11;    // pen position, box, atlas box
constexpr int kMaxLabelChars = 7;
constexpr int kCircleFloats = 7;    // centre, radius over the width, rgb
constexpr int kMaxCircles = 4;

constexpr int kAtlasEm = 64;        // pixels an em in the glyph atlas
constexpr int kAtlasWidth = 1024;

// Eye space is the fixed look-at of the camera; the projection is folded
// into u_proj (ndc.xy = u_proj.xy * eye.xy / -eye.z + u_proj.zw, which also
// places a tile) and u_depth (clip z = u_depth.x * eye.z + u_depth.y).
const char* const kCommon = R"(#version 330 core
uniform mat4 u_view;
uniform vec4 u_proj;
uniform vec2 u_depth;
)";

const char* const kShading = R"(
const vec3 kLight = vec3(0.57735027);
const vec3 kHalfway = vec3(0.32505758, 0.32505758, 0.88807383);   // normalize(light + view)
vec3 shade(vec3 n, vec3 c) {
    float d = max(dot(n, kLight), 0.0);
    float s = d > 0.0 ? pow(max(dot(n, kHalfway), 0.0), 50.0) : 0.0;
    return min(c * (0.3 + d) + vec3(s), vec3(1.0));
}
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

// The quads are built in the plane z = -1 of eye space (t = xy / -z) with
// w = 1, so v_ray, the direction through the pixel, interpolates exactly.
const char* const kSphereVertex = R"(
layout(location = 0) in vec2 a_corner;
layout(location = 1) in vec4 a_sphere;
layout(location = 2) in vec4 a_colour;
out vec3 v_ray;
flat out vec3 v_centre;
flat out float v_radius;
flat out vec4 v_colour;
void main() {
    vec3 c = (u_view * vec4(a_sphere.xyz, 1.0)).xyz;
    float r = a_sphere.w;
    vec2 corner = a_corner * 2.0 - 1.0;
    vec2 t;
    if (-c.z - r > 1e-4) {
        // Every point of the sphere projects within rho of the centre's
        // projection: |e.z| |centre| + |e.xy| over the nearest depth.
        vec2 centre = c.xy / -c.z;
        float rho = r * (1.0 + length(centre)) / (-c.z - r);
        t = centre + corner * rho;
    } else {
        t = corner * 1e3;   // the sphere reaches the eye: the whole view
    }
    v_ray = vec3(t, -1.0);
    v_centre = c;
    v_radius = r;
    v_colour = a_colour;
    gl_Position = vec4(u_proj.xy * t + u_proj.zw, 0.0, 1.0);
}
)";

const char* const kSphereFragment = R"(
in vec3 v_ray;
flat in vec3 v_centre;
flat in float v_radius;
flat in vec4 v_colour;
out vec4 o_colour;
void main() {
    vec3 d = normalize(v_ray);
    float b = dot(d, v_centre);
    vec3 q = b * d - v_centre;              // from the centre to the ray's nearest point
    float h = v_radius * v_radius - dot(q, q);
    if (h < 0.0) discard;
    vec3 p = (b - sqrt(h)) * d;
    if (!set_depth(p)) discard;
    o_colour = vec4(shade((p - v_centre) / v_radius, v_colour.rgb), v_colour.a);
}
)";

const char* const kStickVertex = R"(
layout(location = 0) in vec2 a_corner;
layout(location = 1) in vec3 a_from;
layout(location = 2) in vec3 a_to;
layout(location = 3) in vec4 a_colour;
uniform float u_radius;
out vec3 v_ray;
flat out vec3 v_a;
flat out vec3 v_b;
flat out vec4 v_colour;
void main() {
    vec3 A = (u_view * vec4(a_from, 1.0)).xyz;
    vec3 B = (u_view * vec4(a_to, 1.0)).xyz;
    float r = u_radius;
    float nearest = min(-A.z, -B.z) - r;
    vec2 t;
    if (nearest > 1e-4) {
        // The projected stick lies within rho of the projected axis.
        vec2 a = A.xy / -A.z, b = B.xy / -B.z;
        float rho = r * (1.0 + max(length(a), length(b))) / nearest;
        vec2 axis = b - a;
        float len = length(axis);
        vec2 u = len > 1e-9 ? axis / len : vec2(1.0, 0.0);
        vec2 v = vec2(-u.y, u.x);
        vec2 base = a_corner.x < 0.5 ? a - u * rho : b + u * rho;
        t = base + v * ((a_corner.y * 2.0 - 1.0) * rho);
    } else {
        t = (a_corner * 2.0 - 1.0) * 1e3;
    }
    v_ray = vec3(t, -1.0);
    v_a = A;
    v_b = B;
    v_colour = a_colour;
    gl_Position = vec4(u_proj.xy * t + u_proj.zw, 0.0, 1.0);
}
)";

// A capped cylinder. The ray starts level with the stick's middle so the
// quadratic is solved on small numbers (the eye is far away in float terms).
const char* const kStickFragment = R"(
uniform float u_radius;
in vec3 v_ray;
flat in vec3 v_a;
flat in vec3 v_b;
flat in vec4 v_colour;
out vec4 o_colour;
void main() {
    vec3 rd = normalize(v_ray);
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
    if (y > 0.0 && y < baba) {
        n = (oc + t * rd - ba * (y / baba)) / r;
    } else {
        t = ((y < 0.0 ? 0.0 : baba) - baoc) / bard;   // the end disk on the near side
        if (abs(k1 + k2 * t) >= h) discard;
        n = ba * sign(y) / sqrt(baba);
    }
    if (!set_depth(ro + t * rd)) discard;
    o_colour = vec4(shade(n, v_colour.rgb), v_colour.a);
}
)";

const char* const kTextVertex = R"(
layout(location = 0) in vec2 a_corner;
layout(location = 1) in vec3 a_pen;
layout(location = 2) in vec4 a_box;
layout(location = 3) in vec4 a_uv;
uniform float u_scale;
out vec2 v_uv;
void main() {
    vec3 m = a_pen + vec3((a_box.xy + a_corner * a_box.zw) * u_scale, 0.0);
    vec3 e = (u_view * vec4(m, 1.0)).xyz;
    gl_Position = vec4(u_proj.xy * e.xy - u_proj.zw * e.z, u_depth.x * e.z + u_depth.y, -e.z);
    v_uv = mix(a_uv.xy, a_uv.zw, a_corner);
}
)";

const char* const kTextFragment = R"(
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
const char* const kCircleVertex = R"(
layout(location = 0) in vec2 a_corner;
layout(location = 1) in vec4 a_circle;
layout(location = 2) in vec3 a_colour;
uniform vec2 u_pixels;   // viewport size
out vec2 v_offset;       // from the centre, in pixels
flat out float v_radius;
flat out vec3 v_colour;
void main() {
    vec3 e = (u_view * vec4(a_circle.xyz, 1.0)).xyz;
    vec2 ndc = u_proj.xy * e.xy / -e.z + u_proj.zw;
    v_radius = a_circle.w * u_pixels.x;
    v_offset = (a_corner * 2.0 - 1.0) * (v_radius + 2.0);
    gl_Position = vec4(ndc + v_offset * 2.0 / u_pixels, 0.0, 1.0);
    v_colour = a_colour;
}
)";

const char* const kCircleFragment = R"(
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

}  // namespace

ScenePainter::ScenePainter() {
    const std::size_t most =
        std::max({std::size_t(kAtomRows) * kSphereFloats, std::size_t(2 * kMaxBonds) * kStickFloats,
                  std::size_t(kAtomRows) * kMaxLabelChars * kGlyphFloats});
    data_.reserve(most);
}

ScenePainter::~ScenePainter() = default;

bool ScenePainter::build_programs() {
    auto make = [this](std::unique_ptr<QOpenGLShaderProgram>& p, const char* vertex, const char* fragment) {
        p = std::make_unique<QOpenGLShaderProgram>();
        const QByteArray vs = QByteArray(kCommon) + vertex;
        const QByteArray fs = QByteArray(kCommon) + kShading + fragment;
        if (!p->addShaderFromSourceCode(QOpenGLShader::Vertex, vs) ||
            !p->addShaderFromSourceCode(QOpenGLShader::Fragment, fs) || !p->link()) {
            error_ = p->log();
            return false;
        }
        return true;
    };
    return make(sphere_prog_, kSphereVertex, kSphereFragment) && make(stick_prog_, kStickVertex, kStickFragment) &&
           make(text_prog_, kTextVertex, kTextFragment) &&
           make(circle_prog_, kCircleVertex, kCircleFragment);
}

void ScenePainter::build_atlas() {
    QFont font("Arial");
    font.setStyleHint(QFont::SansSerif);
    font.setPixelSize(kAtlasEm);
    const QFontMetricsF fm(font);
    const int pad = 3;
    const int row_height = static_cast<int>(std::ceil(fm.height())) + 2 * pad;
    // Lay the glyphs out in rows first to know the height.
    struct Cell { int x, y; QRectF box; };
    Cell cells[96] = {};
    int x = 0, y = 0;
    for (int c = 32; c < 127; ++c) {
        QRectF box = fm.boundingRect(QChar(c));
        int w = static_cast<int>(std::ceil(box.width())) + 2 * pad;
        if (x + w > kAtlasWidth) {
            x = 0;
            y += row_height;
        }
        cells[c - 32] = {x, y, box};
        x += w;
    }
    const int height = y + row_height;
    QImage image(kAtlasWidth, height, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    {
        QPainter p(&image);
        p.setFont(font);
        p.setPen(Qt::white);
        p.setRenderHint(QPainter::TextAntialiasing);
        for (int c = 33; c < 127; ++c) {
            const Cell& cell = cells[c - 32];
            p.drawText(QPointF(cell.x + pad - cell.box.x(), cell.y + pad - cell.box.y()), QString(QChar(c)));
        }
    }
    // Coverage only: the alpha channel as one byte a texel.
    std::vector<unsigned char> alpha(static_cast<std::size_t>(kAtlasWidth) * height);
    for (int row = 0; row < height; ++row) {
        const QRgb* line = reinterpret_cast<const QRgb*>(image.constScanLine(row));
        unsigned char* out = alpha.data() + static_cast<std::size_t>(row) * kAtlasWidth;
        for (int col = 0; col < kAtlasWidth; ++col) out[col] = static_cast<unsigned char>(qAlpha(line[col]));
    }
    const float em = kAtlasEm;
    for (int c = 32; c < 127; ++c) {
        const Cell& cell = cells[c - 32];
        const float w = static_cast<float>(std::ceil(cell.box.width())) + 2 * pad;
        const float h = static_cast<float>(row_height);
        Glyph& g = glyphs_[c - 32];
        g.x = static_cast<float>(cell.box.x() - pad) / em;
        // The cell's box from the pen: image rows run downwards from the
        // baseline, the glyph's top at box.y() above it.
        g.y = -static_cast<float>(cell.box.y() - pad + h) / em;   // the bottom, y up
        g.w = w / em;
        g.h = h / em;
        g.u0 = cell.x / float(kAtlasWidth);
        g.u1 = (cell.x + w) / float(kAtlasWidth);
        g.v0 = (cell.y + h) / float(height);   // texture rows follow image rows: v grows downwards
        g.v1 = cell.y / float(height);
        g.advance = static_cast<float>(fm.horizontalAdvance(QChar(c))) / em;
    }
    glGenTextures(1, &atlas_);
    glBindTexture(GL_TEXTURE_2D, atlas_);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_R8, kAtlasWidth, height, 0, GL_RED, GL_UNSIGNED_BYTE, alpha.data());
    glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
    glGenerateMipmap(GL_TEXTURE_2D);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    glBindTexture(GL_TEXTURE_2D, 0);
}

bool ScenePainter::initialize() {
    if (ready_) return true;
    initializeOpenGLFunctions();
    if (!build_programs()) return false;

    static const float corners[8] = {0, 0, 1, 0, 0, 1, 1, 1};
    glGenBuffers(1, &quad_);
    glBindBuffer(GL_ARRAY_BUFFER, quad_);
    glBufferData(GL_ARRAY_BUFFER, sizeof corners, corners, GL_STATIC_DRAW);

    // One vertex array a primitive kind: attribute 0 the corner, the others
    // advance once an instance.
    auto make_vao = [this](unsigned& vao, unsigned& buf, std::size_t capacity, std::initializer_list<int> sizes) {
        glGenVertexArrays(1, &vao);
        glBindVertexArray(vao);
        glBindBuffer(GL_ARRAY_BUFFER, quad_);
        glEnableVertexAttribArray(0);
        glVertexAttribPointer(0, 2, GL_FLOAT, GL_FALSE, 0, nullptr);
        glGenBuffers(1, &buf);
        glBindBuffer(GL_ARRAY_BUFFER, buf);
        glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(capacity * sizeof(float)), nullptr, GL_STREAM_DRAW);
        int stride = 0;
        for (int s : sizes) stride += s;
        int offset = 0, location = 1;
        for (int s : sizes) {
            glEnableVertexAttribArray(location);
            glVertexAttribPointer(location, s, GL_FLOAT, GL_FALSE, stride * int(sizeof(float)),
                                  reinterpret_cast<const void*>(std::size_t(offset) * sizeof(float)));
            glVertexAttribDivisor(location, 1);
            offset += s;
            ++location;
        }
        glBindVertexArray(0);
    };
    make_vao(sphere_vao_, sphere_buf_, std::size_t(kAtomRows) * kSphereFloats, {4, 4});
    make_vao(stick_vao_, stick_buf_, std::size_t(2 * kMaxBonds) * kStickFloats, {3, 3, 4});
    make_vao(text_vao_, text_buf_, std::size_t(kAtomRows) * kMaxLabelChars * kGlyphFloats, {3, 4, 4});
    make_vao(circle_vao_, circle_buf_, std::size_t(kMaxCircles) * kCircleFloats, {4, 3});
    glBindBuffer(GL_ARRAY_BUFFER, 0);
    build_atlas();
    ready_ = true;
    return true;
}

void ScenePainter::release() {
    if (!ready_) return;
    glDeleteVertexArrays(1, &sphere_vao_);
    glDeleteVertexArrays(1, &stick_vao_);
    glDeleteVertexArrays(1, &text_vao_);
    glDeleteVertexArrays(1, &circle_vao_);
    for (unsigned* b : {&quad_, &sphere_buf_, &stick_buf_, &text_buf_, &circle_buf_}) glDeleteBuffers(1, b);
    glDeleteTextures(1, &atlas_);
    sphere_prog_.reset();
    stick_prog_.reset();
    text_prog_.reset();
    circle_prog_.reset();
    ready_ = false;
}

void ScenePainter::set_camera(QOpenGLShaderProgram& p, int width, int height, const Tile* tile) {
    // The aspect of the whole picture (of all its tiles), so spheres stay round.
    const bool tiled = tile && tile->full_width > 0 && tile->full_height > 0;
    const int full_w = tiled ? tile->full_width : width, full_h = tiled ? tile->full_height : height;
    const Matrix4 projection = perspective_matrix(static_cast<double>(std::max(full_w, 1)) / std::max(full_h, 1));
    static const Matrix4 look = look_at_matrix();
    float view[16];
    for (int k = 0; k < 16; ++k) view[k] = static_cast<float>(look[k]);
    float kx = static_cast<float>(projection[0]), ky = static_cast<float>(projection[5]);
    float ox = 0, oy = 0;
    if (tile && tile->full_width > 0 && tile->full_height > 0) {
        // ndc of the tile = s (ndc of the frame + 1) - 2 tile origin / tile size - 1
        const float sx = float(tile->full_width) / std::max(width, 1);
        const float sy = float(tile->full_height) / std::max(height, 1);
        kx *= sx;
        ky *= sy;
        ox = sx - 1 - 2.0f * tile->x / std::max(width, 1);
        oy = sy - 1 - 2.0f * tile->y / std::max(height, 1);
    }
    p.setUniformValue("u_view", QMatrix4x4(view).transposed());
    p.setUniformValue("u_proj", kx, ky, ox, oy);
    p.setUniformValue("u_depth", static_cast<float>(projection[10]), static_cast<float>(projection[14]));
}

void ScenePainter::upload(unsigned buffer, const std::vector<float>& data) {
    glBindBuffer(GL_ARRAY_BUFFER, buffer);
    glBufferSubData(GL_ARRAY_BUFFER, 0, static_cast<GLsizeiptr>(data.size() * sizeof(float)), data.data());
    glBindBuffer(GL_ARRAY_BUFFER, 0);
}

void ScenePainter::draw_spheres(const Scene& scene, int width, int height, const Tile* tile) {
    if (scene.spheres.empty()) return;
    data_.clear();
    for (const SceneSphere& s : scene.spheres) {
        const auto c = scene.rgb(s.colour);
        data_.insert(data_.end(), {s.x, s.y, s.z, s.radius, c[0], c[1], c[2], s.alpha});
    }
    upload(sphere_buf_, data_);
    sphere_prog_->bind();
    set_camera(*sphere_prog_, width, height, tile);
    glBindVertexArray(sphere_vao_);
    glDrawArraysInstanced(GL_TRIANGLE_STRIP, 0, 4, static_cast<GLsizei>(scene.spheres.size()));
    glBindVertexArray(0);
}

void ScenePainter::draw_sticks(const Scene& scene, int width, int height, const Tile* tile) {
    if (scene.sticks.empty() || scene.stick_radius <= 0) return;
    data_.clear();
    for (const SceneStick& s : scene.sticks) {
        const auto c = scene.rgb(s.colour);
        data_.insert(data_.end(), {s.x0, s.y0, s.z0, s.x1, s.y1, s.z1, c[0], c[1], c[2], s.alpha});
    }
    upload(stick_buf_, data_);
    stick_prog_->bind();
    set_camera(*stick_prog_, width, height, tile);
    stick_prog_->setUniformValue("u_radius", scene.stick_radius);
    glBindVertexArray(stick_vao_);
    glDrawArraysInstanced(GL_TRIANGLE_STRIP, 0, 4, static_cast<GLsizei>(scene.sticks.size()));
    glBindVertexArray(0);
}

void ScenePainter::draw_labels(const Scene& scene, int width, int height, const Tile* tile) {
    if (scene.labels.empty()) return;
    data_.clear();
    for (const SceneLabel& l : scene.labels) {
        float pen = 0;
        for (int k = 0; k < std::min(l.length, kMaxLabelChars); ++k) {
            const int c = static_cast<unsigned char>(l.text[k]);
            const Glyph& g = glyphs_[(c >= 32 && c < 127 ? c : '?') - 32];
            if (c != ' ')
                data_.insert(data_.end(), {l.x + pen * scene.label_scale, l.y, l.z, g.x, g.y, g.w, g.h, g.u0, g.v0,
                                           g.u1, g.v1});
            pen += g.advance;
        }
    }
    if (data_.empty()) return;
    upload(text_buf_, data_);
    text_prog_->bind();
    set_camera(*text_prog_, width, height, tile);
    text_prog_->setUniformValue("u_scale", scene.label_scale);
    // Text is lit too: its faces look at the viewer, with no highlight.
    const float lit = std::min(1.0f, 0.3f + 0.57735027f);
    text_prog_->setUniformValue("u_colour", scene.label_colour[0] * lit, scene.label_colour[1] * lit,
                                scene.label_colour[2] * lit);
    text_prog_->setUniformValue("u_atlas", 0);
    glActiveTexture(GL_TEXTURE0);
    glBindTexture(GL_TEXTURE_2D, atlas_);
    glDepthMask(GL_FALSE);   // the transparent edges of a glyph must not hide what lies behind
    glBindVertexArray(text_vao_);
    glDrawArraysInstanced(GL_TRIANGLE_STRIP, 0, 4, static_cast<GLsizei>(data_.size() / kGlyphFloats));
    glBindVertexArray(0);
    glDepthMask(GL_TRUE);
    glBindTexture(GL_TEXTURE_2D, 0);
}

void ScenePainter::draw_circles(const Scene& scene, int width, int height) {
    if (scene.circles.empty()) return;
    data_.clear();
    const std::size_t n = std::min<std::size_t>(scene.circles.size(), kMaxCircles);
    for (std::size_t k = 0; k < n; ++k) {
        const SceneCircle& c = scene.circles[k];
        data_.insert(data_.end(), {c.x, c.y, c.z, c.radius, c.rgb[0], c.rgb[1], c.rgb[2]});
    }
    upload(circle_buf_, data_);
    circle_prog_->bind();
    set_camera(*circle_prog_, width, height, nullptr);
    circle_prog_->setUniformValue("u_pixels", float(std::max(width, 1)), float(std::max(height, 1)));
    glDisable(GL_DEPTH_TEST);
    glBindVertexArray(circle_vao_);
    glDrawArraysInstanced(GL_TRIANGLE_STRIP, 0, 4, static_cast<GLsizei>(n));
    glBindVertexArray(0);
}

void ScenePainter::clear(float r, float g, float b, int width, int height) {
    glViewport(0, 0, width, height);
    glDisable(GL_SCISSOR_TEST);
    // The window is opaque: alpha 1, where the fixed pipeline's clear had 0
    // that no one ever saw.
    glClearColor(r, g, b, 1.0f);
    glDepthMask(GL_TRUE);
    glClearDepthf(1.0f);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
}

void ScenePainter::paint(const Scene& scene, int width, int height, const Tile* tile) {
    clear(scene.background[0], scene.background[1], scene.background[2], width, height);
    if (!ready_) return;
    glEnable(GL_DEPTH_TEST);
    glDepthFunc(GL_LESS);
    glEnable(GL_BLEND);
    // Colour blends by the primitive's alpha; the framebuffer stays opaque.
    glBlendFuncSeparate(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, GL_ZERO, GL_ONE);
    glDisable(GL_CULL_FACE);
    draw_spheres(scene, width, height, tile);
    draw_sticks(scene, width, height, tile);
    draw_labels(scene, width, height, tile);
    // Pick feedback belongs to the window, not to a hard copy.
    if (!tile) draw_circles(scene, width, height);
    glUseProgram(0);   // leaves no program bound for whoever draws next
    glDisable(GL_BLEND);
    glDisable(GL_DEPTH_TEST);
}

}  // namespace zentol
