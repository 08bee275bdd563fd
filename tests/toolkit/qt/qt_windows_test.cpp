// Tab dialogs, the editor and viewer windows, pictures and the update fetch
// of the Qt toolkit.
#include <QApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QImage>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTimer>
#include <gtest/gtest.h>

#include <functional>

#include "support/test_support.h"
#include "toolkit/qt/qt_test_support.h"
#include "toolkit/qt/qt_toolkit.h"

namespace zentol {
namespace {

using qt_testing::on_modal;

TEST(QtWindows, TabDialogShowsEachPageOnItsTab) {
    testing::TempDir ui;
    testing::write_file(ui / "dialogs/50.dlg", "title Options\npage 51\npage 52\nfield 1 button OK\nfield 2 button Cancel\n");
    testing::write_file(ui / "dialogs/51.dlg", "title Display\nfield 1014 real Size\n[Ranges]\n1014 1 9\n");
    testing::write_file(ui / "dialogs/52.dlg", "title Tinker\nfield 1067 string Step\n");
    QtToolkit tk;
    tk.set_ui_dir(ui.path());
    tk.WDialogLoad(50);
    tk.WDialogPutReal(1014, 2.5);
    tk.WDialogPutString(1067, "a");
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
    EXPECT_EQ(tk.last_button(), 1);
    EXPECT_DOUBLE_EQ(tk.WDialogGetReal(1014), 4.0);
}

TEST(QtWindows, EditorSavesWhatWasTypedAndViewerShowsText) {
    testing::TempDir dir;
    std::string path = dir / "job.geo";
    testing::write_file(path, " Zentol job\n");
    QtToolkit tk;
    on_modal([](QDialog* d) {
        auto* text = d->findChild<QPlainTextEdit*>("text");
        text->appendPlainText(" my note");
        auto* box = d->findChild<QDialogButtonBox*>();
        box->button(QDialogButtonBox::Save)->click();
        box->button(QDialogButtonBox::Close)->click();
    });
    tk.edit_text_file(path);
    EXPECT_EQ(testing::read_file(path), " Zentol job\n my note\n");

    QString shown;
    on_modal([&](QDialog* d) {
        shown = d->findChild<QPlainTextEdit*>("text")->toPlainText();
        d->reject();
    });
    tk.show_text("Table", "a b\n1 2\n");
    EXPECT_EQ(shown, "a b\n1 2\n");
}

TEST(QtWindows, PicturesOfEveryFormatOpenAtTheirSize) {
    testing::TempDir dir;
    QtToolkit tk;
    Image image;
    image.width = 64, image.height = 48;
    image.rgb.assign(64 * 48 * 3, 0);
    for (std::size_t p = 0; p < image.rgb.size(); p += 3) image.rgb[p] = 200;   // red
    for (const char* ext : {".png", ".jpg", ".bmp", ".pcx"}) {
        std::string path = dir / (std::string("pic") + ext);
        ASSERT_TRUE(tk.save_image(image, path, std::string(ext) == ".jpg" ? 75 : -1)) << ext;
        if (std::string(ext) == ".pcx") continue;   // Qt has no PCX reader; its header is tested elsewhere
        QImage back(QString::fromStdString(path));
        ASSERT_FALSE(back.isNull()) << ext;
        EXPECT_EQ(back.size(), QSize(64, 48)) << ext;
        EXPECT_NEAR(qRed(back.pixel(10, 10)), 200, 4) << ext;
    }
}

TEST(QtWindows, UpdateFetchReadsAnAnswerAndGivesUpOnSilence) {
    QtToolkit tk;
    QTcpServer server;
    ASSERT_TRUE(server.listen(QHostAddress::LocalHost));
    QObject::connect(&server, &QTcpServer::newConnection, [&] {
        QTcpSocket* c = server.nextPendingConnection();
        QObject::connect(c, &QTcpSocket::readyRead, c, [c] {
            c->readAll();
            c->write("HTTP/1.0 200 OK\r\nContent-Length: 16\r\n\r\nversion 6001070\n");
            c->disconnectFromHost();
        });
    });
    std::string base = "http://127.0.0.1:" + std::to_string(server.serverPort());
    EXPECT_EQ(tk.http_get(base + "/brevan_ver.txt", 3000), std::optional<std::string>("version 6001070\n"));

    QTcpServer silent;   // accepts and never answers
    ASSERT_TRUE(silent.listen(QHostAddress::LocalHost));
    EXPECT_FALSE(tk.http_get("http://127.0.0.1:" + std::to_string(silent.serverPort()) + "/x", 300));
}

}  // namespace
}  // namespace zentol

namespace zentol {
namespace {

TEST(QtWindows, PlotWindowPaintsInUserUnits) {
    QtToolkit tk;
    tk.WindowOpenChild("plot", 200, 100);
    tk.IGrUnits(0, 0, 2, 1);
    tk.IGrColourN(24);   // red
    tk.IGrMoveTo(0, 0.5);
    tk.IGrLineTo(2, 0.5);
    ASSERT_NE(tk.plot_window(), nullptr);
    QImage shot = tk.plot_window()->grab().toImage();
    ASSERT_EQ(shot.size(), QSize(200, 100));
    QColor on = shot.pixelColor(100, 50), off = shot.pixelColor(100, 20);
    EXPECT_GT(on.red(), 200);
    EXPECT_GT(on.red() - on.green(), 100);   // red, softened by the smoothing of the line
    EXPECT_EQ(off, QColor(Qt::white));
    tk.WindowCloseChild();
    EXPECT_EQ(tk.plot_window(), nullptr);
}

}  // namespace
}  // namespace zentol
