// A structure file dragged from a file manager onto the real window: the
// window takes only local files, and the display loop opens the dropped
// file as a new job, as File > Open does.
#include <gtest/gtest.h>

#include <QApplication>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QMimeData>
#include <QOpenGLContext>
#include <QTimer>
#include <QUrl>

#include <filesystem>

#include "session/config.h"
#include "session/display_loop.h"
#include "session/session.h"
#include "session/store_ops.h"
#include "structure_files/xyz_file.h"
#include "support/test_support.h"
#include "toolkit/qt/main_window.h"
#include "toolkit/qt/qt_renderer.h"
#include "toolkit/qt/qt_toolkit.h"

namespace zentol {
namespace {

using testing::TempDir;
using testing::read_file;
using testing::test_data;
using testing::write_file;

QMimeData* urls(const QList<QUrl>& list) {
    auto* data = new QMimeData;
    data->setUrls(list);
    return data;
}

// A drop of the data at the middle of the view; whether the window took it.
bool drop_on(QWidget* window, QMimeData* data) {
    const QPointF at(window->width() / 2.0, window->height() / 2.0);
    QDragEnterEvent enter(at.toPoint(), Qt::CopyAction, data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(window, &enter);
    if (!enter.isAccepted()) {
        delete data;
        return false;
    }
    QDropEvent drop(at, Qt::CopyAction, data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(window, &drop);
    delete data;
    return drop.isAccepted();
}

TEST(DropFile, OnlyLocalFilesAreTakenAndTheirPathArrives) {
    QtToolkit tk;
    tk.window_open(800, 600, "drop");
    tk.wait_hundredths(5);
    while (tk.pending_messages()) tk.next_message();
    EXPECT_FALSE(drop_on(tk.main_window(), urls({QUrl("https://example.org/water.pdb")})));
    auto* text = new QMimeData;
    text->setText("water");
    EXPECT_FALSE(drop_on(tk.main_window(), text));
    EXPECT_TRUE(drop_on(tk.main_window(), urls({QUrl::fromLocalFile("/data/my molecules/water.pdb")})));
    Message m;
    while (tk.pending_messages() && m.type != MessageType::FileDropped) m = tk.next_message();
    EXPECT_EQ(m.type, MessageType::FileDropped);
    EXPECT_EQ(m.path, "/data/my molecules/water.pdb");
    tk.close_all();
}

// The display loop of the real window opens a dropped SDF file: the zinc
// complex is the job, drawn; the picture is kept for a look by eye when
// ZENTOL_SHOT names a file.
TEST(DropFile, TheDisplayLoopOpensTheDroppedFile) {
    QOpenGLContext probe;
    if (!probe.create()) GTEST_SKIP() << "no OpenGL on this display (run under xvfb-run)";
    TempDir dir;
    QtToolkit tk;
    QtRenderer renderer{tk};
    Session s{tk, renderer};
    s.inst = installation_at(dir / "inst", dir / "work", ZENTOL_DATA_DIR);
    prepare_installation(s.inst);
    tk.set_ui_dir(s.inst.data_dir + "/ui");
    tk.window_open(800, 600, "Zentol drop test");
    tk.menu_load(30001);
    tk.WMenuToolbar(30101);
    tk.status_bar_parts({400, 1500, 620, 700, 620, 700, 600, 600, 3200, 1000});
    tk.wait_hundredths(10);
    write_file(dir / "job/water.xyz", read_file(test_data("water.xyz")));
    const std::string sdf = dir / "mine/zn_propanoate.sdf";
    write_file(sdf, read_file(test_data("structure_files/zn_propanoate.sdf")));
    std::filesystem::current_path(dir / "job");
    s.job.name = "water";
    element_lookup(s.store, &tk, "", kLookupConfirmAll);
    int status = 0;
    read_job_xyz(s, status);
    ASSERT_EQ(status, kXyzRead);
    prepare_display(s);
    save_and_reload(s);
    QImage shot;
    QTimer::singleShot(100, [&] {
        drop_on(tk.main_window(), urls({QUrl::fromLocalFile(QString::fromStdString(sdf))}));
        QTimer::singleShot(300, [&] {
            shot = tk.main_window()->grab().toImage();
            tk.main_window()->close();
        });
    });
    s.flags.session_running = 10;
    display_loop(s);
    EXPECT_EQ(s.job.name, "zn_propanoate");
    EXPECT_EQ(s.store.natoms, 15);
    EXPECT_EQ(tk.status_field(2), "1:zn_propanoate");
    EXPECT_EQ(read_file(sdf), read_file(test_data("structure_files/zn_propanoate.sdf")));
    if (const char* out = std::getenv("ZENTOL_SHOT")) shot.save(out);
    tk.close_all();
}

}  // namespace
}  // namespace zentol
