#include "toolkit/qt/gl_surface.h"

#include <QCoreApplication>
#include <QExposeEvent>
#include <QOpenGLContext>
#include <QOpenGLFramebufferObject>
#include <QPlatformSurfaceEvent>

#include "display/scene.h"

namespace zentol {

GlSurface::GlSurface(QObject* input) : input_(input) {
    setSurfaceType(QSurface::OpenGLSurface);
    QSurfaceFormat f = QSurfaceFormat::defaultFormat();
    f.setDepthBufferSize(24);
    f.setSamples(0);
    setFormat(f);
    // The keys belong to the main window, where the menus' mnemonics work
    // too; clicks come here and are passed on.
    setFlag(Qt::WindowDoesNotAcceptFocus);
}

GlSurface::~GlSurface() { release(); }

void GlSurface::release() {
    if (context_ && painter_.ready() && context_->makeCurrent(this)) {
        painter_.release();
        context_->doneCurrent();
    }
    context_.reset();
}

QSize GlSurface::pixel_size() const {
    const qreal ratio = devicePixelRatio();
    return {static_cast<int>(width() * ratio), static_cast<int>(height() * ratio)};
}

bool GlSurface::make_current() {
    if (failed_ || !handle()) return false;
    if (!context_) {
        context_ = std::make_unique<QOpenGLContext>();
        context_->setFormat(requestedFormat());
        if (!context_->create()) {
            failed_ = true;
            error_ = "no OpenGL context";
            context_.reset();
            return false;
        }
    }
    if (!context_->makeCurrent(this)) return false;
    if (!painter_.ready() && !painter_.initialize()) {
        failed_ = true;
        error_ = painter_.error();
        qWarning("zentol: the view cannot draw: %s", qPrintable(error_));
        return false;
    }
    return true;
}

bool GlSurface::render(const Scene* scene) {
    if (!isExposed() || !make_current()) return false;
    const QSize px = pixel_size();
    if (scene) painter_.paint(*scene, px.width(), px.height());
    else painter_.clear(0, 0, 0, px.width(), px.height());
    context_->swapBuffers(this);
    return true;
}

QImage GlSurface::grab(const Scene* scene) {
    const QSize px = pixel_size();
    if (px.isEmpty() || !make_current()) return {};
    QOpenGLFramebufferObject fbo(px, QOpenGLFramebufferObject::Depth);
    fbo.bind();
    if (scene) painter_.paint(*scene, px.width(), px.height());
    else painter_.clear(0, 0, 0, px.width(), px.height());
    QImage image = fbo.toImage();
    fbo.release();
    return image;
}

void GlSurface::finish() {
    if (context_ && painter_.ready() && context_->makeCurrent(this)) painter_.finish();
}

void GlSurface::exposeEvent(QExposeEvent*) {
    // Nothing keeps the picture of a native window while it is covered:
    // whatever comes back on the screen is drawn again at once.
    const bool now = isExposed();
    if (now) render(scene_);
    // The first showing is the start, which draws anyway; only a return to
    // the screen after being hidden or minimised is news to the logic.
    if (now && !was_exposed_ && shown_before_) emit exposed();
    if (now) shown_before_ = true;
    was_exposed_ = now;
}

bool GlSurface::event(QEvent* event) {
    switch (event->type()) {
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonRelease:
        case QEvent::MouseButtonDblClick:
        case QEvent::MouseMove:
        case QEvent::Wheel:
        case QEvent::KeyPress:
        case QEvent::KeyRelease:
            // The window lies exactly over the view, so positions carry over.
            if (input_) return QCoreApplication::sendEvent(input_, event);
            break;
        case QEvent::PlatformSurface:
            if (static_cast<QPlatformSurfaceEvent*>(event)->surfaceEventType() ==
                QPlatformSurfaceEvent::SurfaceAboutToBeDestroyed)
                release();
            break;
        default:
            break;
    }
    return QWindow::event(event);
}

}  // namespace zentol
