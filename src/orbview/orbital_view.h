// The 3-D view of the orbital viewer: the molecule drawn by the scene's own
// painter (ray-cast balls and sticks, the scene's camera and lighting) and
// the map's isosurfaces over it as translucent triangle meshes, positive
// lobe in one colour and negative in another. Turned by dragging or the
// cursor keys and zoomed by the wheel, as Zentol's view is.
#pragma once

#include <array>
#include <memory>

#include <QOpenGLExtraFunctions>
#include <QOpenGLWidget>

#include "display/scene.h"
#include "toolkit/qt/scene_painter.h"
#include "wavefunction/cube_file.h"
#include "wavefunction/marching_cubes.h"

class QOpenGLShaderProgram;

namespace zentol {

class OrbitalView : public QOpenGLWidget, protected QOpenGLExtraFunctions {
    Q_OBJECT
public:
    explicit OrbitalView(QWidget* parent = nullptr);
    ~OrbitalView() override;

    // Shows a map (and its molecule); the isosurfaces follow at `level`.
    void set_map(CubeGrid grid);
    // Rebuilds the surfaces at this level (of the absolute value).
    void set_level(float level);
    float level() const { return level_; }
    bool has_map() const { return !grid_.values.empty(); }
    // True when the map has values of both signs (an orbital, a spin map).
    bool two_lobes() const { return two_lobes_; }
    const CubeGrid& grid() const { return grid_; }
    std::size_t triangles() const { return positive_.triangles() + negative_.triangles(); }

    // Turns the picture about the screen's y and x axes, in degrees.
    void turn(double about_y, double about_x);
    void set_zoom(double zoom);

    // Colours of the lobes (rgba).
    static constexpr std::array<float, 4> kPositive{0.90f, 0.15f, 0.12f, 0.55f};
    static constexpr std::array<float, 4> kNegative{0.15f, 0.35f, 0.95f, 0.55f};

protected:
    void initializeGL() override;
    void paintGL() override;
    void mousePressEvent(QMouseEvent* e) override;
    void mouseMoveEvent(QMouseEvent* e) override;
    void wheelEvent(QWheelEvent* e) override;
    void keyPressEvent(QKeyEvent* e) override;

private:
    struct GpuMesh {
        unsigned vao = 0, buffer = 0;
        int vertices = 0;
    };
    void upload(GpuMesh& g, const IsoMesh& m);
    void draw_mesh(const GpuMesh& g, const std::array<float, 4>& colour, const float* mvp, const float* mv);
    void build_scene();
    std::array<float, 16> model_matrix() const;

    CubeGrid grid_;
    IsoMesh positive_, negative_;
    bool two_lobes_ = false;
    bool meshes_dirty_ = false;
    float level_ = 0.05f;
    std::array<double, 3> centre_{};   // bohr
    double fit_ = 1.0;                 // model units a bohr at zoom 1
    double zoom_ = 1.0;
    std::array<double, 9> rotation_{1, 0, 0, 0, 1, 0, 0, 0, 1};
    QPoint last_;

    Scene scene_;
    ScenePainter painter_;
    std::unique_ptr<QOpenGLShaderProgram> surface_;
    int u_mvp_ = -1, u_mv_ = -1, u_colour_ = -1;
    GpuMesh gpu_positive_, gpu_negative_;
    bool gl_ready_ = false;
};

}  // namespace zentol
