#include "toolkit/qt/chart_window.h"

#include <algorithm>
#include <memory>

#include <QChart>
#include <QChartView>
#include <QLineSeries>
#include <QPainter>
#include <QPrintDialog>
#include <QPrinter>
#include <QVBoxLayout>
#include <QValueAxis>

#include "toolkit/qt/qt_toolkit.h"

namespace zentol {

namespace {

// An axis over an empty range would draw nothing: it is widened to 1 unit.
void set_range(QValueAxis* axis, double low, double high) {
    if (!(high > low)) {
        const double mid = low == high ? low : 0.5 * (low + high);
        low = mid - 0.5;
        high = mid + 0.5;
    }
    axis->setRange(low, high);
}

}  // namespace

void fill_chart(QChart* target, const Chart& chart) {
    target->removeAllSeries();
    for (QAbstractAxis* axis : target->axes()) {
        target->removeAxis(axis);
        delete axis;
    }
    QString title = QString::fromStdString(chart.title).toHtmlEscaped();
    if (!chart.caption.empty())
        title += "<br><small>" + QString::fromStdString(chart.caption).toHtmlEscaped() + "</small>";
    target->setTitle(title);
    target->legend()->hide();

    auto* series = new QLineSeries;
    series->setPointsVisible(chart.markers);
    for (const ChartPoint& p : chart.points) series->append(p.x, p.y);
    target->addSeries(series);

    auto* x = new QValueAxis;
    x->setTitleText(QString::fromStdString(chart.x_title));
    set_range(x, chart.x_min, chart.x_max);
    x->setReverse(chart.x_reversed);
    if (chart.x_tick > 0) {
        // Ticks on round numbers (500, 1000, ...) rather than spread evenly
        // from the range's odd ends.
        x->setTickType(QValueAxis::TicksDynamic);
        x->setTickAnchor(0);
        x->setTickInterval(chart.x_tick);
        x->setLabelFormat("%.0f");
    }
    auto* y = new QValueAxis;
    y->setTitleText(QString::fromStdString(chart.y_title));
    set_range(y, chart.y_min, chart.y_max);
    y->setReverse(chart.y_reversed);
    target->addAxis(x, Qt::AlignBottom);
    target->addAxis(y, Qt::AlignLeft);
    series->attachAxis(x);
    series->attachAxis(y);
}

QChartView* make_chart_view(const Chart& chart, QWidget* parent) {
    auto* view = new QChartView(parent);
    view->setRenderHint(QPainter::Antialiasing);
    fill_chart(view->chart(), chart);
    return view;
}

ChartWindow::ChartWindow(QWidget* parent) : QWidget(parent, Qt::Window), view_(make_chart_view(Chart{}, this)) {
    setObjectName("chart");
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(view_);
    resize(720, 520);
}

void ChartWindow::set_chart(const Chart& chart) {
    setWindowTitle(QString::fromStdString(chart.title));
    fill_chart(view_->chart(), chart);
}

}  // namespace zentol

namespace zentol {

// The toolkit's chart calls.

void QtToolkit::show_chart(const Chart& chart) {
    if (!chart_window_) {
        chart_window_ = new ChartWindow(main_window());
        // Closed by the user, the window is gone until the next chart.
        chart_window_->setAttribute(Qt::WA_DeleteOnClose);
    }
    chart_window_->set_chart(chart);
    chart_window_->show();
    chart_window_->raise();
}

bool QtToolkit::print_chart(const Chart& chart) {
    QPrinter printer(QPrinter::HighResolution);
    printer.setPageOrientation(QPageLayout::Landscape);
    printer.setDocName(QString::fromStdString(chart.title));
    QPrintDialog dialog(&printer, main_window());
    dialog.setWindowTitle("Print Chart");
    if (dialog.exec() != QDialog::Accepted) return false;

    // The chart is laid out in a view of its own at screen resolution, in
    // the page's proportions, and scaled up to fill the page.
    const QRectF page = printer.pageRect(QPrinter::DevicePixel);
    if (page.width() < 1 || page.height() < 1) return false;
    const int width = 1000;
    const int height = std::max(1, static_cast<int>(width * page.height() / page.width()));
    std::unique_ptr<QChartView> view(make_chart_view(chart, nullptr));
    view->setAttribute(Qt::WA_DontShowOnScreen);
    view->resize(width, height);
    view->show();
    QPainter painter;
    if (!painter.begin(&printer)) return false;
    const double scale = std::min(page.width() / width, page.height() / height);
    painter.scale(scale, scale);
    view->render(&painter);
    return painter.end();
}

}  // namespace zentol
