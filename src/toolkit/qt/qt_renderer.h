// The renderer of the Qt program: each draw builds the scene of the display
// copy and shows it in the main window's view before returning; pictures
// for hard copy are drawn off-screen at any size.
#pragma once

#include <memory>
#include <optional>

#include <QImage>
#include <QPointer>

#include "display/renderer.h"
#include "display/scene.h"

namespace zentol {

class QtToolkit;
class ViewWidget;

class QtRenderer : public Renderer {
public:
    explicit QtRenderer(QtToolkit& toolkit);
    ~QtRenderer() override;
    QtRenderer(const QtRenderer&) = delete;
    QtRenderer& operator=(const QtRenderer&) = delete;

    // The GL state is set for every frame; nothing to do here.
    void init_gl_state() override {}
    // Builds the frame and shows it in the view; with no window open only
    // the scene is built.
    void draw(const Session& session) override;
    // The picture for hard copy, as rows of RGB.
    std::optional<Image> render_image(const Session& session, int width, int height) override;

    // The scene drawn off-screen at width x height (up to 5120 x 3840 and
    // beyond: larger than one framebuffer goes in tiles). A null image when
    // no OpenGL context can be had.
    QImage render_qimage(const Session& session, int width, int height);

    // The largest side of one off-screen pass; 0 is the GL limit.
    void set_tile_limit(int pixels) { tile_limit_ = pixels; }
    // Waits until the GL work of the frames shown so far is done.
    void finish();

    const Scene& scene() const { return scene_; }

private:
    struct Offscreen;
    ViewWidget* view() const;
    Offscreen* offscreen();

    QtToolkit& tk_;
    Scene scene_;
    QPointer<ViewWidget> shown_in_;
    std::unique_ptr<Offscreen> off_;
    int tile_limit_ = 0;
};

}  // namespace zentol
