#include "toolkit/qt/view_widget.h"

#include <algorithm>

#include <QKeyEvent>
#include <QMouseEvent>
#include <QWheelEvent>
#include <QPalette>
#include <QVBoxLayout>

#include "toolkit/qt/gl_surface.h"

namespace zentol {

namespace {

// Logic button numbers: 1 left, 2 right, 3 middle; 0 for the others.
int button_number(Qt::MouseButton b) {
    switch (b) {
        case Qt::LeftButton: return 1;
        case Qt::RightButton: return 3;   // the right button is button 3 to every loop
        case Qt::MiddleButton: return 2;
        default: return 0;
    }
}

}  // namespace

int view_key_code(int qt_key, const QString& text) {
    if (qt_key >= Qt::Key_A && qt_key <= Qt::Key_Z) return 'A' + (qt_key - Qt::Key_A);
    switch (qt_key) {
        case Qt::Key_Escape: return kKeyEsc;
        case Qt::Key_Return:
        case Qt::Key_Enter: return 13;
        case Qt::Key_Backspace: return 8;
        case Qt::Key_Tab: return 9;
        case Qt::Key_Delete: return 127;
        case Qt::Key_PageDown: return 258;
        case Qt::Key_PageUp: return 259;
        case Qt::Key_Right: return 260;
        case Qt::Key_Left: return 261;
        case Qt::Key_Up: return 264;
        case Qt::Key_Down: return 265;
        default: break;
    }
    if (text.size() == 1) {
        char16_t c = text.at(0).unicode();
        if (c >= 32 && c < 127) return c;
    }
    return 0;
}

ViewWidget::ViewWidget(MessageSink sink, QWidget* parent) : QWidget(parent), sink_(std::move(sink)) {
    setObjectName("view");
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);   // moves without a button pressed, when the logic wants them
    // The right button belongs to the logic; no context menu may pop up.
    setContextMenuPolicy(Qt::PreventContextMenu);
    setAutoFillBackground(true);
    QPalette p = palette();
    p.setColor(QPalette::Window, Qt::black);
    setPalette(p);
    setMinimumSize(1, 1);

    surface_ = new GlSurface(this);
    QWidget* container = QWidget::createWindowContainer(surface_, this);
    container->setObjectName("gl_container");
    container->setFocusPolicy(Qt::NoFocus);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(container);
    connect(surface_, &GlSurface::exposed, this, [this] { sink_(Message{MessageType::Expose, 0, 0, 0}); });
}

void ViewWidget::show_scene(const Scene* scene) {
    scene_ = scene;
    if (!surface_) return;
    surface_->set_scene(scene);
    if (scene) surface_->render(scene);
}

GlSurface* ViewWidget::surface() const { return surface_.data(); }

QImage ViewWidget::grab_frame() { return surface_ ? surface_->grab(scene_) : QImage(); }

void ViewWidget::finish() {
    if (surface_) surface_->finish();
}

QString ViewWidget::gl_error() const { return surface_ ? surface_->error() : QString("no surface"); }

// Qt paints the widget whenever anything passed over it (a menu, a dialog,
// a tool tip); the GL window keeps the picture by itself, so the logic is
// not told. It hears only of the window coming back on the screen after
// being hidden or minimised (GlSurface::exposed).
void ViewWidget::paintEvent(QPaintEvent* event) { QWidget::paintEvent(event); }

void ViewWidget::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    sink_(Message{MessageType::Resize, 0, 0, 0});
}

void ViewWidget::keyPressEvent(QKeyEvent* event) {
    int code = view_key_code(event->key(), event->text());
    if (code == 0) {
        QWidget::keyPressEvent(event);
        return;
    }
    sink_(Message{MessageType::Key, code, 0, 0});
    event->accept();
}

Message ViewWidget::mouse_message(MessageType type, int button, const QPointF& pos) const {
    auto fraction = [](double v, int size) {
        return static_cast<float>(std::clamp(size > 0 ? v / size : 0.0, 0.0, 1.0));
    };
    return Message{type, button, fraction(pos.x(), width()), fraction(pos.y(), height())};
}

void ViewWidget::mousePressEvent(QMouseEvent* event) {
    int b = button_number(event->button());
    if (b == 0) return QWidget::mousePressEvent(event);
    setFocus(Qt::MouseFocusReason);
    sink_(mouse_message(MessageType::MouseDown, b, event->position()));
}

void ViewWidget::mouseReleaseEvent(QMouseEvent* event) {
    int b = button_number(event->button());
    if (b == 0) return QWidget::mouseReleaseEvent(event);
    sink_(mouse_message(MessageType::MouseUp, b, event->position()));
}

// One step is 15 degrees of wheel (120 eighths); finer wheels and touch
// pads add up to whole steps.
void ViewWidget::wheelEvent(QWheelEvent* event) {
    wheel_eighths_ += event->angleDelta().y();
    const int steps = wheel_eighths_ / 120;
    wheel_eighths_ -= steps * 120;
    if (steps != 0) sink_(Message{MessageType::Wheel, steps, 0, 0});
    event->accept();
}

void ViewWidget::mouseMoveEvent(QMouseEvent* event) {
    // The queue drops moves unless the logic enabled them.
    sink_(mouse_message(MessageType::MouseMove, 0, event->position()));
}

}  // namespace zentol
