// Draws a Scene with OpenGL into whatever framebuffer is bound, through the
// fixed camera of projection.h. Spheres and sticks are ray-cast in the
// fragment shader on one screen triangle or quad each that just holds the
// primitive's outline, so their outlines and shading are exact whatever the
// tessellation, and the cost is a few vertices a primitive instead of a
// tessellated mesh; text is drawn as textured quads from a glyph atlas,
// standing in the model's xy plane.
//
// Nothing is allocated per frame: the vertex arrays and the GL buffers grow
// to the largest frame drawn and are refilled in place (see
// scene_batches.h for why every vertex carries its whole primitive and
// there is no instancing). Where the GL has conservative depth, a
// primitive's triangles lie at its nearest depth, so that the primitives,
// drawn front to back, hide what is behind them before it is shaded.
//
// The lighting is the fixed-function formula of the scene, evaluated per
// pixel: one directional light from (1,1,1), diffuse 1, specular 1 with
// shininess 50, ambient 0.1 plus the default global ambient 0.2, colour as
// ambient and diffuse material.
#pragma once

#include <memory>
#include <vector>

#include <QOpenGLExtraFunctions>
#include <QString>

#include "toolkit/qt/scene_batches.h"

class QOpenGLShaderProgram;

namespace zentol {

struct Scene;

// A part of a larger picture: the pixels [x, x+width) x [y, y+height) of a
// full_width x full_height frame, y from the bottom.
struct Tile {
    int full_width = 0, full_height = 0;
    int x = 0, y = 0, width = 0, height = 0;
};

class ScenePainter : protected QOpenGLExtraFunctions {
public:
    ScenePainter();
    ~ScenePainter();
    ScenePainter(const ScenePainter&) = delete;
    ScenePainter& operator=(const ScenePainter&) = delete;

    // With the context current: shaders, buffers, the glyph atlas. False
    // when the context cannot run the shaders; error() tells why.
    bool initialize();
    // With the same context current: frees the GL objects.
    void release();
    bool ready() const { return ready_; }
    const QString& error() const { return error_; }

    // One frame into the bound framebuffer, whose size is width x height.
    // A tile draws only its part of the full frame, at the tile's size.
    void paint(const Scene& scene, int width, int height, const Tile* tile = nullptr);

    // The clear colour alone, for a view that has nothing to show yet.
    void clear(float r, float g, float b, int width, int height);

    // glFinish: for timing and before reading pixels.
    void finish() { glFinish(); }

    // Whether primitives wholly hidden behind opaque spheres or outside the
    // picture are left undrawn (on unless a test compares).
    void set_culling(bool on) { culling_ = on; }
    // Spheres and sticks the last frame drew.
    int spheres_drawn() const { return batches_.sphere_count(); }
    int sticks_drawn() const { return batches_.stick_count(); }

private:
    struct Glyph {
        float x, y, w, h;           // box relative to the pen, em units, y up
        float u0, v0, u1, v1;       // atlas coordinates, v0 at the box bottom
        float advance;
    };

    // One kind of primitive: its program, the uniforms every frame sets,
    // and the vertex array over its buffer.
    struct Kind {
        std::unique_ptr<QOpenGLShaderProgram> program;
        int view = -1, proj = -1, depth = -1, pixels = -1, ray = -1;
        unsigned vao = 0, buffer = 0;
        std::size_t capacity = 0;   // floats the buffer holds
        int corners = 4;            // vertices a primitive: 3 a triangle, 4 a quad
    };

    bool build_programs();
    void build_atlas();
    void make_vertex_array(Kind& kind, std::initializer_list<int> sizes);
    void reserve(Kind& kind, std::size_t floats);
    void reserve_quads(std::size_t quads);
    static ScreenCamera camera_for(int width, int height, const Tile* tile);
    void use(Kind& kind, const ScreenCamera& camera);
    void draw(Kind& kind, const std::vector<float>& vertices, int primitives, int floats_a_primitive);
    void draw_labels(const Scene& scene, const ScreenCamera& camera);
    void draw_circles(const Scene& scene, const ScreenCamera& camera);

    bool ready_ = false;
    QString error_;
    bool conservative_depth_ = false;
    bool culling_ = true;
    float depth_[2] = {0, 0};
    Kind spheres_, sticks_, text_, circles_;
    int stick_radius_ = -1, text_scale_ = -1, text_colour_ = -1, text_atlas_ = -1;
    unsigned corners_ = 0;                                // element buffer: two triangles a quad
    std::size_t quads_ = 0;                               // quads it holds
    unsigned atlas_ = 0;
    Glyph glyphs_[96] = {};                               // ASCII 32..126, index c - 32
    SceneBatches batches_;
    std::vector<float> glyph_vertices_, circle_vertices_; // grown as needed, sized once
};

}  // namespace zentol
