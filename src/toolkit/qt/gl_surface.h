// The native OpenGL window that fills the molecule view. Frames are drawn
// into it and swapped to the screen directly, at once, when the logic asks:
// no paint event and no composition by the widget system in between (which
// costs more than a whole frame of a large molecule on a software
// rasteriser). Input that reaches the window is passed on to the view.
#pragma once

#include <memory>

#include <QImage>
#include <QWindow>

#include "toolkit/qt/scene_painter.h"

class QOpenGLContext;

namespace zentol {

struct Scene;

class GlSurface : public QWindow {
    Q_OBJECT
public:
    // input: the widget that gets the window's mouse and key events.
    explicit GlSurface(QObject* input);
    ~GlSurface() override;

    // Draws the scene (black when nullptr) and swaps. False when the window
    // is not on the screen or has no OpenGL.
    bool render(const Scene* scene);
    // The scene drawn off-screen at the window's size, with its context.
    QImage grab(const Scene* scene);
    void finish();
    // Why the window cannot draw, or empty.
    QString error() const { return error_; }

    // The scene that an exposure redraws; the view keeps it up to date.
    void set_scene(const Scene* scene) { scene_ = scene; }

signals:
    // The window came back on the screen (mapped again, restored) after
    // having been shown once.
    void exposed();

protected:
    void exposeEvent(QExposeEvent* event) override;
    bool event(QEvent* event) override;

private:
    bool make_current();
    void release();
    QSize pixel_size() const;

    QObject* input_;
    std::unique_ptr<QOpenGLContext> context_;
    ScenePainter painter_;
    const Scene* scene_ = nullptr;
    QString error_;
    bool failed_ = false;
    bool was_exposed_ = false;
    bool shown_before_ = false;
};

}  // namespace zentol
