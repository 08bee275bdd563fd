// A structure file dragged from a file manager onto the real window: the
// window takes only local files, and the display loop opens the dropped
// file as a new job, as File > Open does.
#include <QApplication>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QMimeData>
#include <QTimer>
#include <QUrl>

#include "session/display_loop.h"
#include "toolkit/qt/window_job.h"

namespace zentol {
namespace {

using testing::read_file;
using testing::test_data;

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
// complex is the job, drawn.
using DropFileJob = qt_testing::JobWindowTest;

TEST_F(DropFileJob, TheDisplayLoopOpensTheDroppedFile) {
    open(read_file(test_data("water.xyz")), "water");
    if (IsSkipped() || HasFatalFailure()) return;
    const std::string sdf = dir / "mine/zn_propanoate.sdf";
    testing::write_file(sdf, read_file(test_data("structure_files/zn_propanoate.sdf")));
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
    qt_testing::keep_shot(shot, "dropped_file.png");
}

}  // namespace
}  // namespace zentol
