#include "toolkit/qt/scene_painter.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#if defined(__GLIBC__)
#include <malloc.h>
#endif

#include <QFont>
#include <QFontMetricsF>
#include <QImage>
#include <QOpenGLContext>
#include <QOpenGLShaderProgram>
#include <QPainter>

#include "display/projection.h"
#include "display/scene.h"
#include "session/molecule_store.h"
#include "toolkit/qt/scene_shaders.h"

namespace zentol {

namespace {

using namespace scene_shaders;

// Floats of one vertex of a label's glyph and of a pick circle.
constexpr int kGlyphFloats = 11;    // pen position, box, atlas box
constexpr int kMaxLabelChars = 7;
constexpr int kCircleFloats = 7;    // centre, radius over the width, rgb
constexpr int kMaxCircles = 4;

constexpr int kAtlasEm = 64;        // pixels an em in the glyph atlas
constexpr int kAtlasWidth = 1024;

// The GL driver allocates the binned triangles of every frame (megabytes for
// a few thousand atoms on Mesa's software rasteriser) and frees them when the
// frame is done. By default glibc hands a freed heap top of more than 128 KiB
// back to the system, so the next frame page-faults all of it in again: on a
// 2500-atom frame that costs more than the drawing itself, and whether it
// happens depends on the heap's layout, so it changes from run to run. Keep
// up to 64 MiB of freed memory, and serve blocks up to 8 MiB from the heap
// (fixing the trim threshold also fixes the mmap threshold, which would
// otherwise map and unmap every block above 128 KiB afresh).
void keep_freed_memory_for_frames() {
#if defined(__GLIBC__)
    static const bool done = [] {
        mallopt(M_TRIM_THRESHOLD, 64 << 20);
        mallopt(M_MMAP_THRESHOLD, 8 << 20);
        return true;
    }();
    (void)done;
#endif
}

// The next smaller level of a one-byte-a-texel image, each texel the mean of
// the (up to) four it covers. Made here rather than by glGenerateMipmap,
// which on a software GL compiles a blit shader at start-up.
std::vector<unsigned char> half_level(const std::vector<unsigned char>& in, int w, int h, int& w2, int& h2) {
    w2 = std::max(1, w / 2);
    h2 = std::max(1, h / 2);
    std::vector<unsigned char> out(static_cast<std::size_t>(w2) * h2);
    for (int y = 0; y < h2; ++y)
        for (int x = 0; x < w2; ++x) {
            const int x0 = std::min(2 * x, w - 1), x1 = std::min(2 * x + 1, w - 1);
            const int y0 = std::min(2 * y, h - 1), y1 = std::min(2 * y + 1, h - 1);
            const int sum = in[std::size_t(y0) * w + x0] + in[std::size_t(y0) * w + x1] +
                            in[std::size_t(y1) * w + x0] + in[std::size_t(y1) * w + x1];
            out[std::size_t(y) * w2 + x] = static_cast<unsigned char>((sum + 2) / 4);
        }
    return out;
}

}  // namespace

ScenePainter::ScenePainter()
    : circle_vertices_(std::size_t(kMaxCircles) * kQuadCorners * kCircleFloats) {
    // Clip z of an eye z, the same for every aspect.
    const Matrix4 projection = perspective_matrix(1.0);
    depth_[0] = static_cast<float>(projection[10]);
    depth_[1] = static_cast<float>(projection[14]);
}

ScenePainter::~ScenePainter() = default;

bool ScenePainter::build_programs() {
    auto make = [this](Kind& kind, const char* vertex, const char* fragment, bool writes_depth) {
        auto& p = kind.program;
        p = std::make_unique<QOpenGLShaderProgram>();
        const QByteArray head = QByteArray(kVersion) + (conservative_depth_ ? kConservativeDepth : "") + kCommon;
        const QByteArray vs = head + kVertexCommon + vertex;
        const QByteArray fs = head + (writes_depth && conservative_depth_ ? kDepthLayout : "") + kShading + fragment;
        if (!p->addShaderFromSourceCode(QOpenGLShader::Vertex, vs) ||
            !p->addShaderFromSourceCode(QOpenGLShader::Fragment, fs) || !p->link()) {
            error_ = p->log();
            return false;
        }
        kind.view = p->uniformLocation("u_view");
        kind.proj = p->uniformLocation("u_proj");
        kind.depth = p->uniformLocation("u_depth");
        kind.pixels = p->uniformLocation("u_pixels");
        kind.ray = p->uniformLocation("u_ray");
        return true;
    };
    if (!make(spheres_, kSphereVertex, kSphereFragment, true) || !make(sticks_, kStickVertex, kStickFragment, true) ||
        !make(text_, kTextVertex, kTextFragment, false) || !make(circles_, kCircleVertex, kCircleFragment, false))
        return false;
    stick_radius_ = sticks_.program->uniformLocation("u_radius");
    text_scale_ = text_.program->uniformLocation("u_scale");
    text_colour_ = text_.program->uniformLocation("u_colour");
    text_atlas_ = text_.program->uniformLocation("u_atlas");
    return true;
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
    int w = kAtlasWidth, h = height;
    for (int level = 0;; ++level) {
        glTexImage2D(GL_TEXTURE_2D, level, GL_R8, w, h, 0, GL_RED, GL_UNSIGNED_BYTE, alpha.data());
        if (w == 1 && h == 1) break;
        int w2 = 0, h2 = 0;
        alpha = half_level(alpha, w, h, w2, h2);
        w = w2, h = h2;
    }
    glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    glBindTexture(GL_TEXTURE_2D, 0);
}

bool ScenePainter::initialize() {
    if (ready_) return true;
    keep_freed_memory_for_frames();
    initializeOpenGLFunctions();
    const QOpenGLContext* context = QOpenGLContext::currentContext();
    conservative_depth_ = context && context->hasExtension("GL_ARB_conservative_depth");
    if (!build_programs()) return false;

    // The buffers start empty and grow to the largest frame drawn: a GL
    // fills a new buffer with zeros, and megabytes of that would be most
    // of a small molecule's start-up.
    glGenBuffers(1, &corners_);
    spheres_.corners = 3;
    make_vertex_array(spheres_, {4, 4});
    make_vertex_array(sticks_, {3, 3, 4, 3, 2});
    make_vertex_array(text_, {3, 4, 4});
    make_vertex_array(circles_, {4, 3});
    build_atlas();
    ready_ = true;
    return true;
}

// The vertex array of a kind over its buffer; each vertex holds the
// attributes of the given sizes, one after the other, from location 0.
void ScenePainter::make_vertex_array(Kind& kind, std::initializer_list<int> sizes) {
    int stride = 0;
    for (int s : sizes) stride += s;
    glGenVertexArrays(1, &kind.vao);
    glBindVertexArray(kind.vao);
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, corners_);
    glGenBuffers(1, &kind.buffer);
    glBindBuffer(GL_ARRAY_BUFFER, kind.buffer);
    int offset = 0, location = 0;
    for (int s : sizes) {
        glEnableVertexAttribArray(location);
        glVertexAttribPointer(location, s, GL_FLOAT, GL_FALSE, stride * int(sizeof(float)),
                              reinterpret_cast<const void*>(std::size_t(offset) * sizeof(float)));
        offset += s;
        ++location;
    }
    glBindVertexArray(0);
    glBindBuffer(GL_ARRAY_BUFFER, 0);
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);
}

// Room for this many floats in the kind's buffer: it only grows, to twice
// what it held or more, so a molecule growing atom by atom does not make
// a new buffer every frame.
void ScenePainter::reserve(Kind& kind, std::size_t floats) {
    if (floats <= kind.capacity) return;
    kind.capacity = std::max(floats, 2 * kind.capacity);
    glBindBuffer(GL_ARRAY_BUFFER, kind.buffer);
    glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(kind.capacity * sizeof(float)), nullptr, GL_DYNAMIC_DRAW);
    glBindBuffer(GL_ARRAY_BUFFER, 0);
}

// Two triangles a quad over its four vertices, for at least this many quads.
void ScenePainter::reserve_quads(std::size_t quads) {
    if (quads <= quads_) return;
    quads_ = std::max(quads, 2 * quads_);
    std::vector<std::uint32_t> indices(quads_ * 6);
    for (std::size_t q = 0; q < quads_; ++q) {
        const auto v = static_cast<std::uint32_t>(q * kQuadCorners);
        const std::uint32_t six[6] = {v, v + 1, v + 2, v + 2, v + 1, v + 3};
        std::copy(six, six + 6, indices.begin() + static_cast<std::ptrdiff_t>(q * 6));
    }
    // Every vertex array draws through this one buffer; filled through a
    // binding that is no vertex array's state.
    glBindBuffer(GL_COPY_WRITE_BUFFER, corners_);
    glBufferData(GL_COPY_WRITE_BUFFER, static_cast<GLsizeiptr>(indices.size() * sizeof(std::uint32_t)),
                 indices.data(), GL_STATIC_DRAW);
    glBindBuffer(GL_COPY_WRITE_BUFFER, 0);
}

void ScenePainter::release() {
    if (!ready_) return;
    for (Kind* k : {&spheres_, &sticks_, &text_, &circles_}) {
        glDeleteVertexArrays(1, &k->vao);
        glDeleteBuffers(1, &k->buffer);
        k->program.reset();
        k->vao = k->buffer = 0;
        k->capacity = 0;
    }
    quads_ = 0;
    glDeleteBuffers(1, &corners_);
    glDeleteTextures(1, &atlas_);
    ready_ = false;
}

// Where the camera puts eye-space rays in a frame of this size, or in this
// tile of a larger picture.
ScreenCamera ScenePainter::camera_for(int width, int height, const Tile* tile) {
    // The aspect of the whole picture (of all its tiles), so spheres stay round.
    const bool tiled = tile && tile->full_width > 0 && tile->full_height > 0;
    const int full_w = tiled ? tile->full_width : width, full_h = tiled ? tile->full_height : height;
    const Matrix4 projection = perspective_matrix(static_cast<double>(std::max(full_w, 1)) / std::max(full_h, 1));
    ScreenCamera c;
    c.width = std::max(width, 1);
    c.height = std::max(height, 1);
    c.kx = static_cast<float>(projection[0]);
    c.ky = static_cast<float>(projection[5]);
    if (tiled) {
        // ndc of the tile = s (ndc of the frame + 1) - 2 tile origin / tile size - 1
        const float sx = float(tile->full_width) / c.width, sy = float(tile->full_height) / c.height;
        c.kx *= sx;
        c.ky *= sy;
        c.ox = sx - 1 - 2.0f * tile->x / c.width;
        c.oy = sy - 1 - 2.0f * tile->y / c.height;
    }
    return c;
}

// Binds the kind's program and sets the camera.
void ScenePainter::use(Kind& kind, const ScreenCamera& c) {
    const Matrix4 look = look_at_matrix();
    float view[16];
    for (int k = 0; k < 16; ++k) view[k] = static_cast<float>(look[k]);
    kind.program->bind();
    glUniformMatrix4fv(kind.view, 1, GL_FALSE, view);
    glUniform4f(kind.proj, c.kx, c.ky, c.ox, c.oy);
    glUniform2f(kind.depth, depth_[0], depth_[1]);
    const float w = float(c.width), h = float(c.height);
    glUniform2f(kind.pixels, w, h);
    // ndc = 2 pixel / size - 1 = proj.xy t + proj.zw, solved for t.
    glUniform4f(kind.ray, 2.0f / (w * c.kx), 2.0f / (h * c.ky), (-1.0f - c.ox) / c.kx, (-1.0f - c.oy) / c.ky);
}

// Puts the vertices of this many primitives into the kind's buffer, in
// place, and draws them: a triangle's three vertices as they come, a quad's
// four as two triangles through the element buffer.
void ScenePainter::draw(Kind& kind, const std::vector<float>& vertices, int primitives, int floats_a_primitive) {
    const std::size_t each = static_cast<std::size_t>(floats_a_primitive);
    const std::size_t floats = std::min(static_cast<std::size_t>(std::max(primitives, 0)) * each, vertices.size());
    primitives = static_cast<int>(floats / each);
    if (primitives <= 0) return;
    reserve(kind, floats);
    if (kind.corners != 3) reserve_quads(static_cast<std::size_t>(primitives));
    glBindBuffer(GL_ARRAY_BUFFER, kind.buffer);
    glBufferSubData(GL_ARRAY_BUFFER, 0, static_cast<GLsizeiptr>(floats * sizeof(float)), vertices.data());
    glBindBuffer(GL_ARRAY_BUFFER, 0);
    glBindVertexArray(kind.vao);
    if (kind.corners == 3) glDrawArrays(GL_TRIANGLES, 0, primitives * 3);
    else glDrawElements(GL_TRIANGLES, primitives * 6, GL_UNSIGNED_INT, nullptr);
    glBindVertexArray(0);
}

void ScenePainter::draw_labels(const Scene& scene, const ScreenCamera& camera) {
    if (scene.labels.empty()) return;
    // Grown to the most labels drawn yet.
    std::size_t most = 0;
    for (const SceneLabel& l : scene.labels) most += static_cast<std::size_t>(std::clamp(l.length, 0, kMaxLabelChars));
    if (glyph_vertices_.size() < most * kQuadCorners * kGlyphFloats)
        glyph_vertices_.resize(most * kQuadCorners * kGlyphFloats);
    std::size_t n = 0;
    for (const SceneLabel& l : scene.labels) {
        float pen = 0;
        for (int k = 0; k < std::min(l.length, kMaxLabelChars) && n < most; ++k) {
            const int c = static_cast<unsigned char>(l.text[k]);
            const Glyph& g = glyphs_[(c >= 32 && c < 127 ? c : '?') - 32];
            if (c != ' ') {
                const float v[kGlyphFloats] = {l.x + pen * scene.label_scale, l.y, l.z, g.x, g.y, g.w, g.h,
                                               g.u0, g.v0, g.u1, g.v1};
                float* out = glyph_vertices_.data() + n * kQuadCorners * kGlyphFloats;
                for (int corner = 0; corner < kQuadCorners; ++corner)
                    std::copy(v, v + kGlyphFloats, out + corner * kGlyphFloats);
                ++n;
            }
            pen += g.advance;
        }
    }
    if (n == 0) return;
    use(text_, camera);
    glUniform1f(text_scale_, scene.label_scale);
    // Text is lit too: its faces look at the viewer, with no highlight.
    const float lit = std::min(1.0f, 0.3f + 0.57735027f);
    glUniform3f(text_colour_, scene.label_colour[0] * lit, scene.label_colour[1] * lit, scene.label_colour[2] * lit);
    glUniform1i(text_atlas_, 0);
    glActiveTexture(GL_TEXTURE0);
    glBindTexture(GL_TEXTURE_2D, atlas_);
    glDepthMask(GL_FALSE);   // the transparent edges of a glyph must not hide what lies behind
    draw(text_, glyph_vertices_, static_cast<int>(n), kQuadCorners * kGlyphFloats);
    glDepthMask(GL_TRUE);
    glBindTexture(GL_TEXTURE_2D, 0);
}

void ScenePainter::draw_circles(const Scene& scene, const ScreenCamera& camera) {
    const int n = static_cast<int>(std::min<std::size_t>(scene.circles.size(), kMaxCircles));
    if (n == 0) return;
    for (int k = 0; k < n; ++k) {
        const SceneCircle& c = scene.circles[static_cast<std::size_t>(k)];
        const float v[kCircleFloats] = {c.x, c.y, c.z, c.radius, c.rgb[0], c.rgb[1], c.rgb[2]};
        float* out = circle_vertices_.data() + k * kQuadCorners * kCircleFloats;
        for (int corner = 0; corner < kQuadCorners; ++corner)
            std::copy(v, v + kCircleFloats, out + corner * kCircleFloats);
    }
    use(circles_, camera);
    glDisable(GL_DEPTH_TEST);
    draw(circles_, circle_vertices_, n, kQuadCorners * kCircleFloats);
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
    // Colour blends by the primitive's alpha; the framebuffer stays opaque.
    // Opaque primitives (alpha 1) come out the same without blending, which
    // saves reading every pixel back.
    glBlendFuncSeparate(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, GL_ZERO, GL_ONE);
    auto blend = [this](bool on) { on ? glEnable(GL_BLEND) : glDisable(GL_BLEND); };
    glDisable(GL_CULL_FACE);
    const ScreenCamera camera = camera_for(width, height, tile);
    batches_.build(scene, look_at_matrix(), culling_ ? &camera : nullptr);
    if (batches_.sphere_count() > 0) {
        use(spheres_, camera);
        blend(!batches_.spheres_opaque());
        draw(spheres_, batches_.sphere_vertices(), batches_.sphere_count(), kSphereCorners * kSphereFloats);
    }
    if (batches_.stick_count() > 0 && scene.stick_radius > 0) {
        use(sticks_, camera);
        blend(!batches_.sticks_opaque());
        glUniform1f(stick_radius_, scene.stick_radius);
        draw(sticks_, batches_.stick_vertices(), batches_.stick_count(), kQuadCorners * kStickFloats);
    }
    blend(true);
    draw_labels(scene, camera);
    // Pick feedback belongs to the window, not to a hard copy.
    if (!tile) draw_circles(scene, camera);
    glUseProgram(0);   // leaves no program bound for whoever draws next
    glDisable(GL_BLEND);
    glDisable(GL_DEPTH_TEST);
}

}  // namespace zentol
