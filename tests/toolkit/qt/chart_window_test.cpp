// The chart and plot windows of the Qt toolkit: what a chart becomes in Qt
// Charts, the print dialog in front of the printer, and a spectrum drawn in
// the plot window.
#include <QChart>
#include <QChartView>
#include <QClipboard>
#include <QFile>
#include <QLineEdit>
#include <QLineSeries>
#include <QTemporaryDir>
#include <QValueAxis>

#include "spectra/transmission.h"
#include "toolkit/qt/qt_test_support.h"

namespace zentol {
namespace {

using qt_testing::keep_shot;
using qt_testing::on_modal;
using QtCharts = qt_testing::WindowTest;

QValueAxis* axis(QChart* chart, Qt::Orientation o) {
    const auto axes = chart->axes(o);
    return axes.size() == 1 ? qobject_cast<QValueAxis*>(axes.first()) : nullptr;
}

QLineSeries* only_series(QChart* chart) {
    return chart->series().size() == 1 ? qobject_cast<QLineSeries*>(chart->series().first()) : nullptr;
}

// A profile with its markers, then in the same window an IR spectrum as the
// spectra build it (no markers, 4000 cm-1 on the left, the bands hanging
// down from 0 at the top, x ticks on round numbers, the scale factor under
// the title), then a flat profile, which still gets a y range to draw in.
TEST_F(QtCharts, ChartsShowTheirRangesAndPointsAndGoToThePrinter) {
    Chart c;
    c.title = "C1-C2-C3-C4 Dihedral";
    c.x_min = -180, c.x_max = 180, c.y_min = 0, c.y_max = 14.5;
    c.points = {{-180, 14.5}, {-60, 3.2}, {60, 0}, {180, 14.5}};
    tk.show_chart(c);
    ASSERT_NE(tk.chart_window(), nullptr);
    EXPECT_TRUE(tk.chart_window()->isVisible());
    QChart* chart = tk.chart_window()->view()->chart();
    QLineSeries* series = only_series(chart);
    ASSERT_NE(series, nullptr);
    EXPECT_TRUE(series->pointsVisible());
    ASSERT_EQ(series->count(), 4);
    EXPECT_EQ(series->at(1), QPointF(-60, 3.2));
    QValueAxis* x = axis(chart, Qt::Horizontal);
    QValueAxis* y = axis(chart, Qt::Vertical);
    ASSERT_TRUE(x && y);
    EXPECT_DOUBLE_EQ(x->min(), -180);
    EXPECT_DOUBLE_EQ(y->max(), 14.5);
    EXPECT_FALSE(x->isReverse() || y->isReverse());

    ChartWindow* first = tk.chart_window();
    Chart ir;
    ir.title = "dvb IR spectrum";
    ir.caption = "Scale factor 0.97";
    ir.x_min = 400, ir.x_max = 4000, ir.y_min = -1, ir.y_max = 0;
    ir.x_reversed = ir.y_reversed = true;
    ir.x_tick = 500;
    ir.markers = false;
    ir.points = {{400, 0}, {1600, -1}, {4000, 0}};
    tk.show_chart(ir);
    EXPECT_EQ(tk.chart_window(), first);
    chart = tk.chart_window()->view()->chart();
    EXPECT_EQ(chart->title(), "dvb IR spectrum<br><small>Scale factor 0.97</small>");
    ASSERT_NE(only_series(chart), nullptr);   // the profile's series and axes are gone
    EXPECT_FALSE(only_series(chart)->pointsVisible());
    x = axis(chart, Qt::Horizontal);
    y = axis(chart, Qt::Vertical);
    ASSERT_TRUE(x && y);
    EXPECT_TRUE(x->isReverse());
    EXPECT_TRUE(y->isReverse());
    EXPECT_EQ(x->tickType(), QValueAxis::TicksDynamic);
    EXPECT_DOUBLE_EQ(x->tickInterval(), 500);
    QApplication::processEvents();
    keep_shot(tk.chart_window()->grab().toImage(), "ir_chart_window.png");

    c.y_min = c.y_max = 0;
    c.points = {{0, 0}, {120, 0}};
    tk.show_chart(c);
    y = axis(tk.chart_window()->view()->chart(), Qt::Vertical);
    ASSERT_NE(y, nullptr);
    EXPECT_LT(y->min(), 0);
    EXPECT_GT(y->max(), 0);

    // A cancelled print dialog prints nothing; with no printer installed
    // the dialog offers a PDF file, which then holds the chart.
    on_modal([](QDialog* d) { d->reject(); });
    EXPECT_FALSE(tk.print_chart(c));
    QTemporaryDir out;
    const QString pdf = out.filePath("chart.pdf");
    bool to_file = false;
    on_modal([&](QDialog* d) {
        auto* name = d->findChild<QLineEdit*>("filename");
        if (!name || !name->isEnabled()) return d->reject();
        name->setText(pdf);
        to_file = true;
        d->accept();
    });
    const bool printed = tk.print_chart(c);
    if (to_file) {
        EXPECT_TRUE(printed);
        QFile file(pdf);
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        EXPECT_TRUE(file.read(5) == "%PDF-");
        EXPECT_GT(file.size(), 2000);
    }
    tk.close_all();
    EXPECT_EQ(tk.chart_window(), nullptr);
}

// The drawn spectrum in the plot window, and its picture on the clipboard.
TEST_F(QtCharts, PlotWindowShowsTheCurveAndTheClipboardHoldsThePicture) {
    tk.WindowOpenChild("water IR spectrum", 800, 600);
    const auto heights = transmission_heights(transmission_bands({{1595, 1.0}, {3700, 0.6}, {3800, 0.4}}, 1.0));
    draw_transmission(tk, heights, "water", 1.0);
    ASSERT_NE(tk.plot_window(), nullptr);
    const QImage shot = tk.plot_window()->grab().toImage();
    ASSERT_EQ(shot.size(), QSize(800, 600));
    keep_shot(shot, "spectrum_window.png");
    // The band at 1595 cm-1 rises from the baseline in blue.
    const int n = 1595 / 2 - 99;
    const QColor band = shot.pixelColor(static_cast<int>(transmission_x(n) * 800),
                                        static_cast<int>((1 - heights[static_cast<std::size_t>(n - 1)]) * 600));
    EXPECT_GT(band.blue(), 150);
    EXPECT_LT(band.red(), 150);
    EXPECT_EQ(shot.pixelColor(790, 300), QColor(Qt::white));

    Image picture;
    picture.width = 4;
    picture.height = 2;
    picture.rgb.assign(4 * 2 * 3, 0);
    picture.rgb[0] = 255;   // the first pixel red
    ASSERT_TRUE(tk.copy_image_to_clipboard(picture));
    const QImage held = QGuiApplication::clipboard()->image();
    if (!held.isNull()) {   // some platforms keep no clipboard without a display
        EXPECT_EQ(held.size(), QSize(4, 2));
        EXPECT_EQ(held.pixelColor(0, 0), QColor(255, 0, 0));
    }
    tk.WindowCloseChild();
    EXPECT_EQ(tk.plot_window(), nullptr);
}

}  // namespace
}  // namespace zentol
