// Tinker's failures as the chemist sees them in the real window: the
// message of a run that stopped on undefined parameters, its lines broken
// where the text breaks them and the end of the log readable.
#include <cstdlib>

#include <QApplication>
#include <QDir>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>
#include <gtest/gtest.h>

#include "engines/tinker/tinker_outcome.h"
#include "toolkit/files.h"
#include "toolkit/qt/qt_test_support.h"
#include "toolkit/qt/qt_toolkit.h"

namespace zentol {
namespace {

TEST(TinkerMessages, AStoppedRunIsToldWithTheEndOfItsLog) {
    QtToolkit tk;
    tk.set_ui_dir(ZENTOL_DATA_DIR "/ui");
    tk.window_open(800, 600, "Zentol test");
    tk.wait_hundredths(5);
    const auto log = files::read_lines(std::string(ZENTOL_TEST_DATA) + "/tinker/undef_analyze_E/ZENTOL.LOG");
    ASSERT_TRUE(log);
    const std::string text = tinker_failure_text("dynamic", judge_tinker_log(*log, kTrajectoryResult), *log);

    QString shown;
    qt_testing::on_modal([&](QDialog* d) {
        auto* box = qobject_cast<QMessageBox*>(d);
        ASSERT_TRUE(box);
        shown = box->text();
        // A picture for whoever looks at the run: ZENTOL_SHOTS names a folder.
        if (const char* dir = std::getenv("ZENTOL_SHOTS"))
            box->grab().save(QDir(dir).filePath("tinker_failure.png"));
        box->button(QMessageBox::Ok)->click();
    });
    tk.WMessageBox(kButtonsOk, MessageIcon::Exclamation, 1, text, "Tinker");
    const QStringList lines = shown.split('\n');
    ASSERT_GE(lines.size(), 10);
    EXPECT_TRUE(lines[0].startsWith("Tinker's dynamic stopped: MM3 lacks parameters"));
    EXPECT_EQ(lines[1], "Repeated use of Undefined and Optimize may work");
    EXPECT_EQ(lines.last(), " Tinker is Unable to Continue; Terminating the Current Calculation");
}

}  // namespace
}  // namespace zentol
