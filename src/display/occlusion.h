// What the opaque spheres drawn so far hide, kept on the CPU on a grid of
// 4 x 4 pixel cells (the blocks a software rasteriser shades at a time):
// for each cell, the eye distance beyond which nothing in it can show,
// because every pixel of the cell already has an opaque sphere's front no
// farther than that. A primitive whose every cell is hidden at its nearest
// distance, or which lies outside the picture, need not be drawn at all:
// its fragments would all fail the depth test. Drawing nearest first, as
// the painter does, lets the front layers hide most of what lies behind.
//
// Everything is in eye space (the camera at the origin looking down -z).
// A pixel's ray is (t, -1), t = eye.xy / -eye.z, and the picture places t
// at ndc = (kx t.x + ox, ky t.y + oy), as the painter's shaders do.
#pragma once

#include <vector>

namespace zentol {

struct ScreenCamera {
    int width = 0, height = 0;          // pixels of the framebuffer
    float kx = 1, ky = 1, ox = 0, oy = 0;
};

class OcclusionGrid {
public:
    static constexpr int kCell = 4;   // pixels a cell side

    // A new frame: nothing hidden yet. Allocates only when the picture
    // grows.
    void start(const ScreenCamera& camera);
    // True when no pixel of the sphere (centre c, radius r) can show.
    bool sphere_hidden(const float c[3], float r) const;
    // The same for the capped cylinder from a to b of radius r.
    bool stick_hidden(const float a[3], const float b[3], float r) const;
    // An opaque sphere that is drawn this frame. Spheres the near or far
    // plane cuts open hide nothing, nor do spheres a few cells across.
    void add_sphere(const float c[3], float r);
    // Whether any sphere added so far hides a cell. Until one does, testing
    // only finds what lies outside the picture, which the GL clips about as
    // cheaply: the painter tests nothing then.
    bool hides_anything() const { return occluders_; }

private:
    // Cells [x0, x1] x [y0, y1]; empty when the bounds lie off the picture.
    struct Cells {
        int x0 = 0, y0 = 0, x1 = -1, y1 = -1;
        bool empty() const { return x1 < x0 || y1 < y0; }
    };
    // The cells that pixels with t in [tx0, tx1] x [ty0, ty1] fall in.
    Cells cells_of(float tx0, float ty0, float tx1, float ty1) const;
    bool cell_hidden(int x, int y, float nearest) const;
    float corner_tx(int x) const { return corner_tx_[static_cast<std::size_t>(x)]; }
    float corner_ty(int y) const { return corner_ty_[static_cast<std::size_t>(y)]; }

    ScreenCamera camera_;
    bool occluders_ = false;                   // whether any cell is hidden yet
    int cols_ = 0, rows_ = 0;
    std::vector<float> far_;                   // per cell, rows from the bottom
    std::vector<float> corner_tx_, corner_ty_; // t of the cell corners
    std::vector<float> inverse_length_;        // 1 / |(t, -1)| at each corner
    std::vector<float> front_;                 // scratch: a sphere's front at corners
};

}  // namespace zentol
