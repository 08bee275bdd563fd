// The Qt toolkit's other windows, and two dialogs as the modes use them.
#include <QDialogButtonBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTabWidget>
#include <QTcpServer>
#include <QTcpSocket>

#include "analysis/lewis_command.h"
#include "display/renderer.h"
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
    tk.WDialogPutInteger(1102, 2);
    on_modal([&](QDialog* d) {
        keep_shot(d->grab().toImage(), "dialog_125.png");
        d->findChild<QRadioButton*>("field_1053")->click();
        d->findChild<QPushButton*>("field_3")->click();
    });
    tk.WDialogShow(1);
    EXPECT_EQ(tk.last_button(), 3);
    EXPECT_EQ(tk.WDialogGetRadioButton(1051), 3);
    EXPECT_EQ(tk.WDialogGetInteger(1102), 2);
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

}  // namespace
}  // namespace zentol
