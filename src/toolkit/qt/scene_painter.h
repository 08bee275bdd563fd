// Draws a Scene with OpenGL into whatever framebuffer is bound, through the
// fixed camera of projection.h. Spheres and sticks are ray-cast in the
// fragment shader on one screen quad each (drawn instanced), so their
// outlines and shading are exact whatever the tessellation, and the cost is
// a few vertices a primitive instead of a tessellated mesh; text is drawn as
// textured quads from a glyph atlas, standing in the model's xy plane.
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

private:
    struct Glyph {
        float x, y, w, h;           // box relative to the pen, em units, y up
        float u0, v0, u1, v1;       // atlas coordinates, v0 at the box bottom
        float advance;
    };

    bool build_programs();
    void build_atlas();
    void set_camera(QOpenGLShaderProgram& p, int width, int height, const Tile* tile);
    void draw_spheres(const Scene& scene, int width, int height, const Tile* tile);
    void draw_sticks(const Scene& scene, int width, int height, const Tile* tile);
    void draw_labels(const Scene& scene, int width, int height, const Tile* tile);
    void draw_circles(const Scene& scene, int width, int height);
    void upload(unsigned buffer, const std::vector<float>& data);

    bool ready_ = false;
    QString error_;
    std::unique_ptr<QOpenGLShaderProgram> sphere_prog_, stick_prog_, text_prog_, circle_prog_;
    unsigned quad_ = 0;                                   // the four corners of a unit square
    unsigned sphere_vao_ = 0, stick_vao_ = 0, text_vao_ = 0, circle_vao_ = 0;
    unsigned sphere_buf_ = 0, stick_buf_ = 0, text_buf_ = 0, circle_buf_ = 0;
    unsigned atlas_ = 0;
    Glyph glyphs_[96] = {};                               // ASCII 32..126, index c - 32
    std::vector<float> data_;                             // instance data of one draw, sized once
};

}  // namespace zentol
