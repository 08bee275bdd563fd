// The chart window of the Qt toolkit: what a chart becomes in Qt Charts,
// and the print dialog in front of the printer.
#include <QApplication>
#include <QChart>
#include <QChartView>
#include <QDialog>
#include <QFile>
#include <QLineEdit>
#include <QLineSeries>
#include <QTemporaryDir>
#include <QTimer>
#include <QValueAxis>
#include <gtest/gtest.h>

#include <functional>

#include "engines/orca/orca_listing.h"
#include "spectra/chart_spectrum.h"
#include "support/test_support.h"
#include "toolkit/files.h"
#include "toolkit/qt/qt_test_support.h"
#include "toolkit/qt/qt_toolkit.h"

namespace zentol {
namespace {

using qt_testing::on_modal;

QValueAxis* axis(QChart* chart, Qt::Orientation o) {
    const auto axes = chart->axes(o);
    return axes.size() == 1 ? qobject_cast<QValueAxis*>(axes.first()) : nullptr;
}

TEST(QtCharts, AChartShowsItsTitlesRangesAndPointsAndGoesToThePrinter) {
    QtToolkit tk;
    EXPECT_EQ(tk.chart_window(), nullptr);
    Chart c;
    c.title = "C1-C2-C3-C4 Dihedral";
    c.x_title = "Dihedral";
    c.y_title = "Energy kJ/mol";
    c.x_min = -180, c.x_max = 180, c.y_min = 0, c.y_max = 14.5;
    c.points = {{-180, 14.5}, {-60, 3.2}, {60, 0}, {180, 14.5}};
    tk.show_chart(c);
    ASSERT_NE(tk.chart_window(), nullptr);
    EXPECT_TRUE(tk.chart_window()->isVisible());
    EXPECT_EQ(tk.chart_window()->windowTitle(), "C1-C2-C3-C4 Dihedral");
    QChart* chart = tk.chart_window()->view()->chart();
    EXPECT_EQ(chart->title(), "C1-C2-C3-C4 Dihedral");
    ASSERT_EQ(chart->series().size(), 1);
    auto* series = qobject_cast<QLineSeries*>(chart->series().first());
    ASSERT_NE(series, nullptr);
    EXPECT_TRUE(series->pointsVisible());
    ASSERT_EQ(series->count(), 4);
    EXPECT_EQ(series->at(1), QPointF(-60, 3.2));
    QValueAxis* x = axis(chart, Qt::Horizontal);
    QValueAxis* y = axis(chart, Qt::Vertical);
    ASSERT_TRUE(x && y);
    EXPECT_EQ(x->titleText(), "Dihedral");
    EXPECT_EQ(y->titleText(), "Energy kJ/mol");
    EXPECT_DOUBLE_EQ(x->min(), -180);
    EXPECT_DOUBLE_EQ(y->max(), 14.5);

    // The next chart takes the same window; a flat profile still gets a
    // y range to draw in.
    ChartWindow* first = tk.chart_window();
    c.title = "flat";
    c.y_min = c.y_max = 0;
    c.points = {{0, 0}, {120, 0}};
    tk.show_chart(c);
    EXPECT_EQ(tk.chart_window(), first);
    chart = tk.chart_window()->view()->chart();
    ASSERT_EQ(chart->series().size(), 1);
    EXPECT_EQ(qobject_cast<QLineSeries*>(chart->series().first())->count(), 2);
    ASSERT_EQ(chart->axes().size(), 2);
    y = axis(chart, Qt::Vertical);
    ASSERT_NE(y, nullptr);
    EXPECT_LT(y->min(), 0);
    EXPECT_GT(y->max(), 0);

    // A cancelled print dialog prints nothing; with no printer installed
    // the dialog offers a PDF file, which then holds the chart.
    QTemporaryDir out;
    const QString pdf = out.filePath("chart.pdf");
    bool to_file = false;
    auto answer = [&](bool accept) {
        on_modal([&, accept](QDialog* d) {
            auto* name = d->findChild<QLineEdit*>("filename");
            if (accept && name && name->isEnabled()) {
                name->setText(pdf);
                to_file = true;
                return d->accept();
            }
            d->reject();
        });
    };
    answer(false);
    EXPECT_FALSE(tk.print_chart(c));
    answer(true);
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

// A spectrum of a real ORCA 6 listing: 1900 points with no markers, 4000
// cm-1 on the left, the bands hanging down from 0 at the top. With
// ZENTOL_SHOT_DIR set the window is saved there as a picture to look at.
TEST(QtCharts, AnIrSpectrumRunsBackwardsOnBothAxes) {
    auto listing = files::read_text_lines(testing::test_data("orca/orca6.0_dvb_raman.out"));
    ASSERT_TRUE(listing.has_value());
    OrcaFlags flags;
    const OrcaScan scan = scan_orca_listing(*listing, 0, "dvb", flags);
    ASSERT_TRUE(scan.ir.has_value());
    const StickSpectrum spectrum = spread_sticks(text::TextLines::from_lines(*scan.ir), 0.97f, 1);
    QtToolkit tk;
    tk.show_chart(stick_chart(spectrum, "dvb", 1, 0.97f));
    ASSERT_NE(tk.chart_window(), nullptr);
    EXPECT_EQ(tk.chart_window()->windowTitle(), "dvb IR spectrum");
    QChart* chart = tk.chart_window()->view()->chart();
    EXPECT_TRUE(chart->title().startsWith("dvb IR spectrum<br><small>Scale factor 0.97"));
    auto* series = qobject_cast<QLineSeries*>(chart->series().first());
    ASSERT_NE(series, nullptr);
    EXPECT_FALSE(series->pointsVisible());
    EXPECT_EQ(series->count(), 1900);
    QValueAxis* x = axis(chart, Qt::Horizontal);
    QValueAxis* y = axis(chart, Qt::Vertical);
    ASSERT_TRUE(x && y);
    EXPECT_TRUE(x->isReverse());
    EXPECT_TRUE(y->isReverse());
    EXPECT_EQ(x->tickType(), QValueAxis::TicksDynamic);
    EXPECT_DOUBLE_EQ(x->tickInterval(), 500);
    EXPECT_EQ(x->titleText(), "Wavenumber 1/cm");
    if (const char* dir = std::getenv("ZENTOL_SHOT_DIR")) {
        QApplication::processEvents();
        tk.chart_window()->grab().save(QString(dir) + "/ir_chart_window.png");
    }
    tk.close_all();
}

}  // namespace
}  // namespace zentol
