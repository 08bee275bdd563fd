// The molecule view: the central area of the main window. For now it is a
// plain widget with a black background that turns its mouse, key, paint and
// resize events into messages; drawing will move here with OpenGL.
#pragma once

#include <functional>

#include <QWidget>

#include "toolkit/toolkit.h"

class QString;

namespace zentol {

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

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;

private:
    // A mouse message at a position in widget pixels, given as fractions of
    // the widget from its top left, kept within 0..1.
    Message mouse_message(MessageType type, int button, const QPointF& pos) const;

    MessageSink sink_;
};

}  // namespace zentol
