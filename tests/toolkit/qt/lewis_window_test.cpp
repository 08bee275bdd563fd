// The Lewis command in the real window: the shipped Cr(CO)6 example shows
// its Covalent Bond Classification line in the viewer, above the tables,
// and writes the same line to the job's log.
#include <filesystem>

#include <QApplication>
#include <QDialog>
#include <QImage>
#include <QPlainTextEdit>
#include <gtest/gtest.h>

#include "analysis/lewis_command.h"
#include "display/renderer.h"
#include "session/config.h"
#include "session/session.h"
#include "session/store_ops.h"
#include "structure_files/geo_log.h"
#include "structure_files/xyz_file.h"
#include "support/test_support.h"
#include "toolkit/qt/qt_test_support.h"
#include "toolkit/qt/qt_toolkit.h"

namespace zentol {
namespace {

TEST(LewisWindow, ChromiumCarbonylShowsItsClassificationInTheViewer) {
    testing::TempDir dir;
    QtToolkit tk;
    NullRenderer renderer;
    Session s{tk, renderer};
    s.inst = installation_at(dir / "inst", dir / "work", ZENTOL_DATA_DIR);
    prepare_installation(s.inst);
    tk.set_ui_dir(s.inst.data_dir + "/ui");
    tk.window_open(800, 600, "Zentol Lewis test");
    const std::string job_dir = dir / "job";
    std::filesystem::create_directories(job_dir);
    std::filesystem::copy_file(std::string(ZENTOL_TEST_DATA) + "/../../examples/chromium-carbonyl.xyz",
                               job_dir + "/chromium-carbonyl.xyz");
    std::filesystem::current_path(job_dir);
    s.job.name = "chromium-carbonyl";
    element_lookup(s.store, &tk, "", kLookupConfirmAll);
    int status = 0;
    read_job_xyz(s, status);
    ASSERT_EQ(status, kXyzRead);
    open_job_log(s, false, " Zentol chromium-carbonyl");

    QString shown;
    QSize size;
    qt_testing::on_modal([&](QDialog* d) {
        auto* text = d->findChild<QPlainTextEdit*>("text");
        ASSERT_NE(text, nullptr);
        shown = text->toPlainText();
        size = d->grab().size();
        d->reject();
    });
    lewis_command(s);
    close_job_log(s);
    tk.close_all();

    const QStringList lines = shown.split('\n');
    ASSERT_GE(lines.size(), 3);
    EXPECT_EQ(lines[0], "Lewis structure: 13 atoms, 12 bonds, charge 0");
    EXPECT_EQ(lines[1], "Covalent Bond Classification CrL6  OS  0");
    EXPECT_TRUE(shown.contains("Cr1      1    6   -6    0   24    6"));
    EXPECT_FALSE(size.isEmpty());
    const std::string geo = testing::read_file(job_dir + "/chromium-carbonyl.geo");
    EXPECT_NE(geo.find("Covalent Bond Classification CrL6  OS  0\n"), std::string::npos) << geo;
}

}  // namespace
}  // namespace zentol
