// The chart and plot windows of the Qt toolkit.
#include <QChart>
#include <QChartView>
#include <QClipboard>
#include <QLineEdit>
#include <QLineSeries>
#include <QValueAxis>

#include "spectra/transmission.h"
#include "toolkit/qt/qt_test_support.h"

namespace zentol {
namespace {

using qt_testing::keep_shot;
using qt_testing::on_modal;
using QtCharts = qt_testing::WindowTest;

// The only series or axis of the list; null where there is not exactly one.
template <typename T, typename List>
T* only(const List& list) {
    return list.size() == 1 ? qobject_cast<T*>(list.first()) : nullptr;
}

// A profile, then in the same window an IR spectrum as the spectra build
// it, then a flat profile, which still needs a y range to draw in.
TEST_F(QtCharts, ChartsShowTheirRangesAndPointsAndGoToThePrinter) {
    Chart c;
    c.title = "C1-C2-C3-C4 Dihedral";
    c.x_min = -180, c.x_max = 180, c.y_min = 0, c.y_max = 14.5;
    c.points = {{-180, 14.5}, {-60, 3.2}, {60, 0}, {180, 14.5}};
    tk.show_chart(c);
    ASSERT_NE(tk.chart_window(), nullptr);
    QChart* chart = tk.chart_window()->view()->chart();
    auto* series = only<QLineSeries>(chart->series());
    ASSERT_NE(series, nullptr);
    EXPECT_TRUE(series->pointsVisible());
    EXPECT_EQ(series->points(), (QList<QPointF>{{-180, 14.5}, {-60, 3.2}, {60, 0}, {180, 14.5}}));
    auto* x = only<QValueAxis>(chart->axes(Qt::Horizontal));
    auto* y = only<QValueAxis>(chart->axes(Qt::Vertical));
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
    series = only<QLineSeries>(chart->series());   // the profile's series and axes are gone
    x = only<QValueAxis>(chart->axes(Qt::Horizontal));
    y = only<QValueAxis>(chart->axes(Qt::Vertical));
    ASSERT_TRUE(series && x && y);
    EXPECT_FALSE(series->pointsVisible());
    EXPECT_TRUE(x->isReverse() && y->isReverse());
    EXPECT_EQ(x->tickType(), QValueAxis::TicksDynamic);
    EXPECT_DOUBLE_EQ(x->tickInterval(), 500);
    QApplication::processEvents();
    keep_shot(tk.chart_window()->grab().toImage(), "ir_chart_window.png");

    c.y_min = c.y_max = 0;
    c.points = {{0, 0}, {120, 0}};
    tk.show_chart(c);
    y = only<QValueAxis>(tk.chart_window()->view()->chart()->axes(Qt::Vertical));
    ASSERT_NE(y, nullptr);
    EXPECT_LT(y->min(), 0);
    EXPECT_GT(y->max(), 0);

    // A cancelled print dialog prints nothing; with no printer installed
    // the dialog offers a PDF file, which then holds the chart.
    on_modal([](QDialog* d) { d->reject(); });
    EXPECT_FALSE(tk.print_chart(c));
    const std::string pdf = dir / "chart.pdf";
    bool to_file = false;
    on_modal([&](QDialog* d) {
        auto* name = d->findChild<QLineEdit*>("filename");
        if (!name || !name->isEnabled()) return d->reject();
        name->setText(QString::fromStdString(pdf));
        to_file = true;
        d->accept();
    });
    const bool printed = tk.print_chart(c);
    if (to_file) {
        EXPECT_TRUE(printed);
        const std::string bytes = testing::read_file(pdf);
        EXPECT_EQ(bytes.substr(0, 5), "%PDF-");
        EXPECT_GT(bytes.size(), 2000u);
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

    Image picture{4, 2, std::vector<std::uint8_t>(4 * 2 * 3, 0)};
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
