// The drawn spectrum in the real plot window, and its picture on the
// system clipboard.
#include <QClipboard>
#include <QGuiApplication>
#include <QImage>
#include <gtest/gtest.h>

#include <cstdlib>

#include "spectra/transmission.h"
#include "toolkit/qt/qt_test_support.h"
#include "toolkit/qt/qt_toolkit.h"

namespace zentol {
namespace {

TEST(QtSpectrum, PlotWindowShowsTheCurveAndTheClipboardHoldsThePicture) {
    QtToolkit tk;
    tk.WindowOpenChild("water IR spectrum", 800, 600);
    const auto heights = transmission_heights(transmission_bands({{1595, 1.0}, {3700, 0.6}, {3800, 0.4}}, 1.0));
    draw_transmission(tk, heights, "water", 1.0);
    ASSERT_NE(tk.plot_window(), nullptr);
    const QImage shot = tk.plot_window()->grab().toImage();
    ASSERT_EQ(shot.size(), QSize(800, 600));
    if (const char* keep = std::getenv("ZENTOL_KEEP_SHOTS")) shot.save(QString(keep) + "/spectrum_window.png");
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
}

}  // namespace
}  // namespace zentol
