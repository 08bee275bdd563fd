#include "toolkit/qt/plot_window.h"

#include <QPainter>

namespace zentol {

namespace {

QColor colour_of(int n) {
    auto c = colour_number(n);
    return QColor(c[0], c[1], c[2]);
}

}  // namespace

PlotWindow::PlotWindow(const Plot& plot, QWidget* parent) : QWidget(parent, Qt::Window), plot_(plot) {
    setObjectName("plot");
    setAttribute(Qt::WA_DeleteOnClose, false);
    resize(plot.width, plot.height);
    refresh();
}

void PlotWindow::refresh() {
    setWindowTitle(QString::fromStdString(plot_.title));
    update();
}

void PlotWindow::paintEvent(QPaintEvent*) {
    QPainter p(this);
    p.fillRect(rect(), Qt::white);
    p.setRenderHint(QPainter::Antialiasing);
    double w = plot_.right - plot_.left, h = plot_.top - plot_.bottom;
    if (w == 0 || h == 0) return;
    auto at = [&](double x, double y) {
        return QPointF((x - plot_.left) / w * width(), (plot_.top - y) / h * height());
    };
    for (const PlotItem& item : plot_.items) {
        p.setPen(QPen(colour_of(item.colour), 1.0));
        switch (item.kind) {
            case PlotItem::Line: p.drawLine(at(item.x1, item.y1), at(item.x2, item.y2)); break;
            case PlotItem::Circle: {
                QPointF c = at(item.x1, item.y1);
                double rx = item.x2 / std::abs(w) * width(), ry = item.x2 / std::abs(h) * height();
                p.drawEllipse(c, rx, ry);
                break;
            }
            case PlotItem::Text: p.drawText(at(item.x1, item.y1), QString::fromStdString(item.text)); break;
        }
    }
}

}  // namespace zentol
