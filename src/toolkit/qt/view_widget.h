// The molecule view: the central area of the main window. It shows the
// scenes the renderer hands it in an OpenGL window that fills it, and turns
// its mouse, key, expose and resize events into messages.
#pragma once

#include <functional>

#include <QImage>
#include <QPointer>
#include <QWidget>

#include "toolkit/toolkit.h"

class QString;

namespace zentol {

struct Scene;
class GlSurface;

using MessageSink = std::function<void(const Message&)>;

// Key codes as the logic knows them, from a Qt key and its text:
//   letters          their upper-case ASCII code, whatever the shift state
//   Esc 27, Return and Enter 13, Backspace 8, Tab 9, Delete 127
//   cursor keys by role: PageDown 258, PageUp 259, Right 260, Left 261,
//                        Up 264, Down 265
//   other printable keys the ASCII code of their text
// Returns 0 for keys the logic is not told about (modifiers, F keys, ...).
int view_key_code(int qt_key, const QString& text);

class ViewWidget : public QWidget {
    Q_OBJECT
public:
    explicit ViewWidget(MessageSink sink, QWidget* parent = nullptr);

    // Shows this scene now: drawn and swapped to the screen before
    // returning, when the view is on the screen; else it is drawn when the
    // view comes up. The scene must outlive the view or be replaced
    // (nullptr: forget it). The logic's own frames are never reported back
    // as Expose messages: it would draw again, and again.
    void show_scene(const Scene* scene);
    // The current scene drawn off-screen at the view's size by the view's
    // own context: the picture on the screen, for tests.
    QImage grab_frame();
    // Waits until the GL work of the frames shown so far is done.
    void finish();
    // Why the view cannot draw (no usable OpenGL), or empty.
    QString gl_error() const;
    GlSurface* surface() const;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    // A mouse message at a position in widget pixels, given as fractions of
    // the widget from its top left, kept within 0..1.
    Message mouse_message(MessageType type, int button, const QPointF& pos) const;

    MessageSink sink_;
    QPointer<GlSurface> surface_;   // owned by its container, a child of this widget
    const Scene* scene_ = nullptr;
    int wheel_eighths_ = 0;   // wheel turn not yet a whole step (fine-grained wheels and pads)
};

}  // namespace zentol
