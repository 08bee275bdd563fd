// The Qt toolkit's other windows, and two dialogs as the modes use them.
#include <QChart>
#include <QChartView>
#include <QClipboard>
#include <QDialogButtonBox>
#include <QLineEdit>
#include <QLineSeries>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTabWidget>
#include <QTcpServer>
#include <QTcpSocket>
#include <QValueAxis>

#include "analysis/lewis_command.h"
#include "display/renderer.h"
#include "spectra/transmission.h"
#include "toolkit/qt/qt_test_support.h"

namespace zentol {
namespace {

using qt_testing::keep_shot;
using qt_testing::on_modal;
using QtWindows = qt_testing::WindowTest;

TEST_F(QtWindows, TabDialogShowsEachPageOnItsTab) {
    testing::write_file(dir / "dialogs/50.dlg", "title Options\npage 51\npage 52\nfield 1 button OK\nfield 2 button Cancel\n");
    testing::write_file(dir / "dialogs/51.dlg", "title Display\nfield 1014 real Size\n[Ranges]\n1014 1 9\n");
    testing::write_file(dir / "dialogs/52.dlg", "title Tinker\nfield 1067 string Step\n");
    tk.set_ui_dir(dir.path());
    tk.WDialogLoad(50);
    tk.WDialogPutReal(1014, 2.5);
    QStringList tabs;
    on_modal([&](QDialog* d) {
        auto* t = d->findChild<QTabWidget*>("tabs");
        for (int i = 0; t && i < t->count(); ++i) tabs << t->tabText(i);
        auto* size = t->widget(0)->findChild<QLineEdit*>("field_1014");
        ASSERT_NE(size, nullptr);
        size->setText("4");
        d->findChild<QPushButton*>("field_1")->click();
    });
    tk.WDialogShow(1);
    EXPECT_EQ(tabs, (QStringList{"Display", "Tinker"}));
    EXPECT_DOUBLE_EQ(tk.WDialogGetReal(1014), 4.0);
}

TEST_F(QtWindows, EditorSavesWhatWasTyped) {
    std::string path = dir / "job.geo";
    testing::write_file(path, " Zentol job\n");
    on_modal([](QDialog* d) {
        auto* text = d->findChild<QPlainTextEdit*>("text");
        text->appendPlainText(" my note");
        auto* box = d->findChild<QDialogButtonBox*>();
        box->button(QDialogButtonBox::Save)->click();
        box->button(QDialogButtonBox::Close)->click();
    });
    tk.edit_text_file(path);
    EXPECT_EQ(testing::read_file(path), " Zentol job\n my note\n");
}

TEST_F(QtWindows, UpdateFetchReadsAnAnswerAndGivesUpOnSilence) {
    QTcpServer server, silent;   // the second accepts and never answers
    ASSERT_TRUE(server.listen(QHostAddress::LocalHost) && silent.listen(QHostAddress::LocalHost));
    QObject::connect(&server, &QTcpServer::newConnection, [&] {
        QTcpSocket* c = server.nextPendingConnection();
        QObject::connect(c, &QTcpSocket::readyRead, c, [c] {
            c->readAll();
            c->write("HTTP/1.0 200 OK\r\nContent-Length: 16\r\n\r\nversion 6001070\n");
            c->disconnectFromHost();
        });
    });
    auto url = [](const QTcpServer& on) { return "http://127.0.0.1:" + std::to_string(on.serverPort()) + "/ver.txt"; };
    EXPECT_EQ(tk.http_get(url(server), 3000), std::optional<std::string>("version 6001070\n"));
    EXPECT_FALSE(tk.http_get(url(silent), 300));
}

// Orca Input's Run is button 3: as button 2 Qt would close the dialog as
// Cancel.
TEST_F(QtWindows, OrcaInputRunsAsButtonThree) {
    tk.set_ui_dir(std::string(ZENTOL_DATA_DIR) + "/ui");
    ASSERT_TRUE(tk.WDialogLoad(125));
    on_modal([&](QDialog* d) {
        keep_shot(d->grab().toImage(), "dialog_125.png");
        d->findChild<QRadioButton*>("field_1053")->click();
        d->findChild<QPushButton*>("field_3")->click();
    });
    tk.WDialogShow(1);
    EXPECT_EQ(tk.last_button(), 3);
    EXPECT_EQ(tk.WDialogGetRadioButton(1051), 3);
    tk.WDialogUnload();
}

// The shipped Cr(CO)6 example shows its Covalent Bond Classification line in
// the viewer, above the tables.
TEST_F(QtWindows, LewisViewerShowsTheChromiumCarbonylClassificationFirst) {
    NullRenderer renderer;
    Session s{tk, renderer};
    qt_testing::install(s, tk, dir);
    tk.window_open(800, 600, "Zentol Lewis test");
    const std::string xyz = testing::read_file(std::string(ZENTOL_TEST_DATA) + "/../../examples/chromium-carbonyl.xyz");
    ASSERT_NO_FATAL_FAILURE(qt_testing::read_job(s, dir / "job", "chromium-carbonyl", xyz));

    QString shown;
    on_modal([&](QDialog* d) {
        shown = d->findChild<QPlainTextEdit*>("text")->toPlainText();
        d->reject();
    });
    lewis_command(s);

    EXPECT_TRUE(shown.startsWith("Lewis structure: 13 atoms, 12 bonds, charge 0\n"
                                 "Covalent Bond Classification CrL6  OS  0\n"))
        << shown.toStdString();
    EXPECT_TRUE(shown.contains("Cr1      1    6   -6    0   24    6"));
}

// The only series or axis of the list; null where there is not exactly one.
template <typename T, typename List>
T* only(const List& list) {
    return list.size() == 1 ? qobject_cast<T*>(list.first()) : nullptr;
}

// A profile, then an IR spectrum as the spectra build it (the profile's
// series and axes gone), then a flat profile, which still needs a y range.
TEST_F(QtWindows, ChartsShowTheirRangesAndPointsAndGoToThePrinter) {
    Chart c;
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

    Chart ir;
    ir.title = "dvb IR spectrum";
    ir.caption = "Scale factor 0.97";
    ir.x_min = 400, ir.x_max = 4000, ir.y_min = -1, ir.y_max = 0;
    ir.x_reversed = ir.y_reversed = true;
    ir.x_tick = 500;
    ir.markers = false;
    ir.points = {{400, 0}, {1600, -1}, {4000, 0}};
    tk.show_chart(ir);
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
    EXPECT_TRUE(y->min() < 0 && y->max() > 0) << y->min() << " to " << y->max();

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
}

// The drawn spectrum in the plot window, and its picture on the clipboard.
TEST_F(QtWindows, PlotWindowShowsTheCurveAndTheClipboardHoldsThePicture) {
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
    // No main window holds the plot: closing the toolkit must take it along.
    tk.close_all();
    EXPECT_EQ(tk.plot_window(), nullptr);
}

}  // namespace
}  // namespace zentol
