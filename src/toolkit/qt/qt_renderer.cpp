#include "toolkit/qt/qt_renderer.h"

#include <algorithm>
#include <vector>

#include <QGuiApplication>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFramebufferObject>
#include <QOpenGLFunctions>

#include "session/session.h"
#include "toolkit/qt/main_window.h"
#include "toolkit/qt/qt_toolkit.h"
#include "toolkit/qt/scene_painter.h"

namespace zentol {

// A context of its own for pictures, so hard copy works at any size
// whether the window is up or not.
struct QtRenderer::Offscreen {
    QOpenGLContext context;
    QOffscreenSurface surface;
    ScenePainter painter;
    int max_side = 0;

    ~Offscreen() {
        if (painter.ready() && context.makeCurrent(&surface)) {
            painter.release();
            context.doneCurrent();
        }
    }
};

QtRenderer::QtRenderer(QtToolkit& toolkit) : tk_(toolkit) {}

QtRenderer::~QtRenderer() {
    if (shown_in_) shown_in_->show_scene(nullptr);
}

ViewWidget* QtRenderer::view() const {
    MainWindow* w = tk_.main_window();
    return w ? w->view() : nullptr;
}

void QtRenderer::draw(const Session& s) {
    build_scene(s, scene_);
    ViewWidget* v = view();
    if (!v) return;
    if (shown_in_ && shown_in_ != v) shown_in_->show_scene(nullptr);
    shown_in_ = v;
    v->show_scene(&scene_);
}

void QtRenderer::finish() {
    if (ViewWidget* v = view()) v->finish();
}

QtRenderer::Offscreen* QtRenderer::offscreen() {
    if (off_) return off_->painter.ready() ? off_.get() : nullptr;
    if (!qGuiApp) return nullptr;
    off_ = std::make_unique<Offscreen>();
    Offscreen& o = *off_;
    if (!o.context.create()) return nullptr;
    o.surface.setFormat(o.context.format());
    o.surface.create();
    if (!o.context.makeCurrent(&o.surface)) return nullptr;
    if (!o.painter.initialize()) {
        qWarning("zentol: cannot draw pictures: %s", qPrintable(o.painter.error()));
        o.context.doneCurrent();
        return nullptr;
    }
    QOpenGLFunctions* f = o.context.functions();
    GLint texture = 0, renderbuffer = 0, viewport[2] = {0, 0};
    f->glGetIntegerv(GL_MAX_TEXTURE_SIZE, &texture);
    f->glGetIntegerv(GL_MAX_RENDERBUFFER_SIZE, &renderbuffer);
    f->glGetIntegerv(GL_MAX_VIEWPORT_DIMS, viewport);
    o.max_side = std::max(64, std::min({texture, renderbuffer, viewport[0], viewport[1]}));
    o.context.doneCurrent();
    return &o;
}

QImage QtRenderer::render_qimage(const Session& s, int width, int height) {
    if (width <= 0 || height <= 0) return {};
    Offscreen* o = offscreen();
    if (!o || !o->context.makeCurrent(&o->surface)) return {};
    build_scene(s, scene_);
    const int limit = tile_limit_ > 0 ? std::min(tile_limit_, o->max_side) : o->max_side;
    const int tile_w = std::min(width, limit), tile_h = std::min(height, limit);
    QOpenGLFramebufferObject fbo(tile_w, tile_h, QOpenGLFramebufferObject::Depth);
    QImage out(width, height, QImage::Format_RGB32);
    std::vector<unsigned char> pixels(static_cast<std::size_t>(tile_w) * tile_h * 4);
    QOpenGLFunctions* f = o->context.functions();
    fbo.bind();
    for (int y0 = 0; y0 < height; y0 += tile_h) {
        for (int x0 = 0; x0 < width; x0 += tile_w) {
            const int w = std::min(tile_w, width - x0), h = std::min(tile_h, height - y0);
            const Tile tile{width, height, x0, y0, w, h};
            o->painter.paint(scene_, w, h, &tile);
            f->glPixelStorei(GL_PACK_ALIGNMENT, 1);
            f->glReadPixels(0, 0, w, h, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
            // GL rows run upwards from the bottom of the tile.
            for (int r = 0; r < h; ++r) {
                auto* line = reinterpret_cast<QRgb*>(out.scanLine(height - 1 - (y0 + r))) + x0;
                const unsigned char* p = pixels.data() + static_cast<std::size_t>(r) * w * 4;
                for (int c = 0; c < w; ++c, p += 4) line[c] = qRgb(p[0], p[1], p[2]);
            }
        }
    }
    fbo.release();
    o->context.doneCurrent();
    return out;
}

std::optional<Image> QtRenderer::render_image(const Session& s, int width, int height) {
    QImage picture = render_qimage(s, width, height);
    if (picture.isNull()) return std::nullopt;
    Image image;
    image.width = width;
    image.height = height;
    image.rgb.resize(static_cast<std::size_t>(width) * height * 3);
    std::size_t at = 0;
    for (int y = 0; y < height; ++y) {
        const auto* line = reinterpret_cast<const QRgb*>(picture.constScanLine(y));
        for (int x = 0; x < width; ++x) {
            image.rgb[at++] = static_cast<std::uint8_t>(qRed(line[x]));
            image.rgb[at++] = static_cast<std::uint8_t>(qGreen(line[x]));
            image.rgb[at++] = static_cast<std::uint8_t>(qBlue(line[x]));
        }
    }
    return image;
}

}  // namespace zentol
