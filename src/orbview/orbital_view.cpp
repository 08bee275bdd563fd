#include "orbview/orbital_view.h"

#include <algorithm>
#include <cmath>

#include <QKeyEvent>
#include <QMouseEvent>
#include <QOpenGLShaderProgram>
#include <QWheelEvent>

#include "display/projection.h"
#include "session/molecule_store.h"

namespace zentol {

namespace {

// The scene's light (from 1,1,1, seen from +z) on both sides of a surface.
const char* const kSurfaceVertex = R"(#version 330 core
layout(location = 0) in vec3 a_pos;
layout(location = 1) in vec3 a_normal;
uniform mat4 u_mvp;
uniform mat4 u_mv;
out vec3 v_normal;
void main() {
    v_normal = mat3(u_mv) * a_normal;
    gl_Position = u_mvp * vec4(a_pos, 1.0);
}
)";

const char* const kSurfaceFragment = R"(#version 330 core
in vec3 v_normal;
uniform vec4 u_colour;
out vec4 frag;
const vec3 kLight = vec3(0.57735027);
const vec3 kHalfway = vec3(0.32505758, 0.32505758, 0.88807383);
void main() {
    vec3 n = normalize(v_normal);
    float d = max(dot(n, kLight), 0.0);
    float s = pow(max(dot(n, kHalfway), 0.0), 30.0) * 0.6;
    frag = vec4(min(u_colour.rgb * (0.35 + d) + vec3(s), vec3(1.0)), u_colour.a);
}
)";

constexpr float kBohr = 0.52917721f;

// Palette entries of the viewer's scene: background, carbon, hydrogen,
// nitrogen, oxygen, sulfur and phosphorus, halogens, metals and the rest.
constexpr int kCarbon = 2, kHydrogen = 3, kNitrogen = 4, kOxygen = 5, kSulfur = 6, kHalogen = 7, kOther = 8;

int element_entry(int z) {
    switch (z) {
        case 1: return kHydrogen;
        case 6: return kCarbon;
        case 7: return kNitrogen;
        case 8: return kOxygen;
        case 15: case 16: return kSulfur;
        case 9: case 17: case 35: case 53: return kHalogen;
        default: return kOther;
    }
}

std::array<float, 16> multiply(const std::array<float, 16>& a, const std::array<float, 16>& b) {
    std::array<float, 16> r{};
    for (int c = 0; c < 4; ++c)
        for (int row = 0; row < 4; ++row)
            for (int k = 0; k < 4; ++k) r[c * 4 + row] += a[k * 4 + row] * b[c * 4 + k];
    return r;
}

std::array<float, 16> to_float(const Matrix4& m) {
    std::array<float, 16> r{};
    for (int k = 0; k < 16; ++k) r[k] = static_cast<float>(m[k]);
    return r;
}

}  // namespace

OrbitalView::OrbitalView(QWidget* parent) : QOpenGLWidget(parent) {
    setFocusPolicy(Qt::StrongFocus);
    setMinimumSize(320, 240);
    scene_.palette[1] = {0.08f, 0.09f, 0.14f};
    scene_.palette[kCarbon] = {0.55f, 0.55f, 0.55f};
    scene_.palette[kHydrogen] = {0.92f, 0.92f, 0.92f};
    scene_.palette[kNitrogen] = {0.20f, 0.30f, 0.95f};
    scene_.palette[kOxygen] = {0.95f, 0.10f, 0.10f};
    scene_.palette[kSulfur] = {0.95f, 0.80f, 0.15f};
    scene_.palette[kHalogen] = {0.20f, 0.85f, 0.20f};
    scene_.palette[kOther] = {0.90f, 0.50f, 0.75f};
    scene_.background = scene_.palette[1];
}

OrbitalView::~OrbitalView() {
    if (!gl_ready_) return;
    makeCurrent();
    painter_.release();
    for (GpuMesh* g : {&gpu_positive_, &gpu_negative_}) {
        glDeleteBuffers(1, &g->buffer);
        glDeleteVertexArrays(1, &g->vao);
    }
    surface_.reset();
    doneCurrent();
}

void OrbitalView::set_map(CubeGrid grid) {
    grid_ = std::move(grid);
    float lo = 0, hi = 0;
    for (float v : grid_.values) lo = std::min(lo, v), hi = std::max(hi, v);
    two_lobes_ = lo < -1e-4f * std::max(hi, 1e-12f);
    // The molecule and the room of the map around it fill the view.
    std::array<double, 3> mn{}, mx{};
    for (std::size_t a = 0; a < grid_.atoms.size(); ++a) {
        const std::array<double, 3> p{grid_.atoms[a].x, grid_.atoms[a].y, grid_.atoms[a].z};
        for (int c = 0; c < 3; ++c) {
            mn[c] = a == 0 ? p[c] : std::min(mn[c], p[c]);
            mx[c] = a == 0 ? p[c] : std::max(mx[c], p[c]);
        }
    }
    double radius = 0;
    for (int c = 0; c < 3; ++c) {
        centre_[c] = grid_.atoms.empty() ? grid_.point(grid_.n[0] / 2.0, grid_.n[1] / 2.0, grid_.n[2] / 2.0)[c]
                                         : (mn[c] + mx[c]) / 2;
        radius = std::max(radius, (mx[c] - mn[c]) / 2);
    }
    fit_ = 2.4 / (radius + 2.5 / kBohr);
    rotation_ = {1, 0, 0, 0, 1, 0, 0, 0, 1};
    meshes_dirty_ = true;
    build_scene();
    update();
}

void OrbitalView::set_level(float level) {
    level_ = std::max(level, 1e-6f);
    meshes_dirty_ = true;
    update();
}

void OrbitalView::turn(double about_y, double about_x) {
    const double a = about_y * M_PI / 180, b = about_x * M_PI / 180;
    const std::array<double, 9> ry{std::cos(a), 0, -std::sin(a), 0, 1, 0, std::sin(a), 0, std::cos(a)};
    const std::array<double, 9> rx{1, 0, 0, 0, std::cos(b), std::sin(b), 0, -std::sin(b), std::cos(b)};
    // Row-major 3x3: new = rx * ry * old, turning about the screen's axes.
    auto mul = [](const std::array<double, 9>& p, const std::array<double, 9>& q) {
        std::array<double, 9> r{};
        for (int i = 0; i < 3; ++i)
            for (int j = 0; j < 3; ++j)
                for (int k = 0; k < 3; ++k) r[i * 3 + j] += p[i * 3 + k] * q[k * 3 + j];
        return r;
    };
    rotation_ = mul(rx, mul(ry, rotation_));
    build_scene();
    update();
}

void OrbitalView::set_zoom(double zoom) {
    zoom_ = std::clamp(zoom, 0.2, 3.8);
    build_scene();
    update();
}

// Model coordinates = scale * R * (p - centre), as a column-major matrix.
std::array<float, 16> OrbitalView::model_matrix() const {
    const double s = fit_ * zoom_;
    std::array<float, 16> m{};
    for (int i = 0; i < 3; ++i) {
        double t = 0;
        for (int j = 0; j < 3; ++j) {
            m[j * 4 + i] = static_cast<float>(s * rotation_[i * 3 + j]);
            t -= s * rotation_[i * 3 + j] * centre_[j];
        }
        m[12 + i] = static_cast<float>(t);
    }
    m[15] = 1;
    return m;
}

void OrbitalView::build_scene() {
    scene_.spheres.clear();
    scene_.sticks.clear();
    const auto m = model_matrix();
    auto place = [&](const MapAtom& a) {
        return std::array<float, 3>{m[0] * float(a.x) + m[4] * float(a.y) + m[8] * float(a.z) + m[12],
                                    m[1] * float(a.x) + m[5] * float(a.y) + m[9] * float(a.z) + m[13],
                                    m[2] * float(a.x) + m[6] * float(a.y) + m[10] * float(a.z) + m[14]};
    };
    static const Store elements;   // covalent radii
    auto radius = [](int z) { return z >= 1 && z < kElementRows ? elements.elements[z].radius : 1.0f; };
    const float s = static_cast<float>(fit_ * zoom_) / kBohr;   // model units an Angstrom
    for (const MapAtom& a : grid_.atoms) {
        const auto p = place(a);
        scene_.spheres.push_back({p[0], p[1], p[2], 0.28f * radius(a.atomic_number) * s, element_entry(a.atomic_number), 1.0f});
    }
    for (std::size_t i = 0; i < grid_.atoms.size(); ++i) {
        for (std::size_t j = i + 1; j < grid_.atoms.size(); ++j) {
            const MapAtom &a = grid_.atoms[i], &b = grid_.atoms[j];
            const double d = std::hypot(a.x - b.x, a.y - b.y, a.z - b.z) * kBohr;
            if (d > 1.15 * (radius(a.atomic_number) + radius(b.atomic_number)) || d < 0.1) continue;
            const auto p = place(a), q = place(b);
            const std::array<float, 3> mid{(p[0] + q[0]) / 2, (p[1] + q[1]) / 2, (p[2] + q[2]) / 2};
            scene_.sticks.push_back({p[0], p[1], p[2], mid[0], mid[1], mid[2], element_entry(a.atomic_number), 1.0f});
            scene_.sticks.push_back({mid[0], mid[1], mid[2], q[0], q[1], q[2], element_entry(b.atomic_number), 1.0f});
        }
    }
    scene_.stick_radius = 0.12f * s;
}

void OrbitalView::initializeGL() {
    initializeOpenGLFunctions();
    if (!painter_.initialize()) qWarning("orbview: the molecule cannot be drawn: %s", qPrintable(painter_.error()));
    surface_ = std::make_unique<QOpenGLShaderProgram>();
    if (!surface_->addShaderFromSourceCode(QOpenGLShader::Vertex, kSurfaceVertex) ||
        !surface_->addShaderFromSourceCode(QOpenGLShader::Fragment, kSurfaceFragment) || !surface_->link()) {
        qWarning("orbview: the surfaces cannot be drawn: %s", qPrintable(surface_->log()));
        surface_.reset();
    } else {
        u_mvp_ = surface_->uniformLocation("u_mvp");
        u_mv_ = surface_->uniformLocation("u_mv");
        u_colour_ = surface_->uniformLocation("u_colour");
    }
    for (GpuMesh* g : {&gpu_positive_, &gpu_negative_}) {
        glGenVertexArrays(1, &g->vao);
        glGenBuffers(1, &g->buffer);
    }
    gl_ready_ = true;
}

void OrbitalView::upload(GpuMesh& g, const IsoMesh& m) {
    std::vector<float> interleaved;
    interleaved.reserve(m.vertices.size() * 2);
    for (std::size_t v = 0; v + 2 < m.vertices.size(); v += 3) {
        interleaved.insert(interleaved.end(), {m.vertices[v], m.vertices[v + 1], m.vertices[v + 2], m.normals[v],
                                               m.normals[v + 1], m.normals[v + 2]});
    }
    glBindVertexArray(g.vao);
    glBindBuffer(GL_ARRAY_BUFFER, g.buffer);
    glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(interleaved.size() * sizeof(float)), interleaved.data(),
                 GL_STATIC_DRAW);
    glEnableVertexAttribArray(0);
    glVertexAttribPointer(0, 3, GL_FLOAT, GL_FALSE, 6 * sizeof(float), nullptr);
    glEnableVertexAttribArray(1);
    glVertexAttribPointer(1, 3, GL_FLOAT, GL_FALSE, 6 * sizeof(float), reinterpret_cast<void*>(3 * sizeof(float)));
    glBindVertexArray(0);
    g.vertices = static_cast<int>(m.vertices.size() / 3);
}

void OrbitalView::draw_mesh(const GpuMesh& g, const std::array<float, 4>& colour, const float* mvp, const float* mv) {
    if (g.vertices == 0) return;
    glUniformMatrix4fv(u_mvp_, 1, GL_FALSE, mvp);
    glUniformMatrix4fv(u_mv_, 1, GL_FALSE, mv);
    glUniform4f(u_colour_, colour[0], colour[1], colour[2], colour[3]);
    glBindVertexArray(g.vao);
    glDrawArrays(GL_TRIANGLES, 0, g.vertices);
    glBindVertexArray(0);
}

void OrbitalView::paintGL() {
    const int w = static_cast<int>(width() * devicePixelRatio()), h = static_cast<int>(height() * devicePixelRatio());
    painter_.paint(scene_, w, h);
    if (!surface_ || grid_.values.empty()) return;
    if (meshes_dirty_) {
        positive_ = isosurface(grid_, level_);
        negative_ = two_lobes_ ? isosurface(grid_, -level_) : IsoMesh{};
        upload(gpu_positive_, positive_);
        upload(gpu_negative_, negative_);
        meshes_dirty_ = false;
    }
    const auto projection = to_float(perspective_matrix(double(std::max(w, 1)) / std::max(h, 1)));
    const auto mv = multiply(to_float(look_at_matrix()), model_matrix());
    const auto mvp = multiply(projection, mv);
    glViewport(0, 0, w, h);
    glEnable(GL_DEPTH_TEST);
    glDepthFunc(GL_LESS);
    // The surfaces' triangles turn counter-clockwise to the outside: only
    // the near side of each lobe is drawn, blended once over the molecule,
    // which shows through.
    glEnable(GL_CULL_FACE);
    glCullFace(GL_BACK);
    glFrontFace(GL_CCW);
    glDepthMask(GL_FALSE);
    glEnable(GL_BLEND);
    glBlendFuncSeparate(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, GL_ZERO, GL_ONE);
    surface_->bind();
    draw_mesh(gpu_negative_, kNegative, mvp.data(), mv.data());
    draw_mesh(gpu_positive_, kPositive, mvp.data(), mv.data());
    surface_->release();
    glDepthMask(GL_TRUE);
    glDisable(GL_CULL_FACE);
    glDisable(GL_BLEND);
    glDisable(GL_DEPTH_TEST);
}

void OrbitalView::mousePressEvent(QMouseEvent* e) { last_ = e->position().toPoint(); }

void OrbitalView::mouseMoveEvent(QMouseEvent* e) {
    if (!(e->buttons() & (Qt::LeftButton | Qt::RightButton))) return;
    const QPoint p = e->position().toPoint(), d = p - last_;
    last_ = p;
    turn(0.5 * d.x(), 0.5 * d.y());
}

void OrbitalView::wheelEvent(QWheelEvent* e) { set_zoom(zoom_ * (e->angleDelta().y() > 0 ? 1.1 : 1 / 1.1)); }

void OrbitalView::keyPressEvent(QKeyEvent* e) {
    switch (e->key()) {
        case Qt::Key_Left: return turn(-5, 0);
        case Qt::Key_Right: return turn(5, 0);
        case Qt::Key_Up: return turn(0, -5);
        case Qt::Key_Down: return turn(0, 5);
        case Qt::Key_Plus: return set_zoom(zoom_ * 1.1);
        case Qt::Key_Minus: return set_zoom(zoom_ / 1.1);
        default: QOpenGLWidget::keyPressEvent(e);
    }
}

}  // namespace zentol
