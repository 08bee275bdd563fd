// Shared by the window tests of the Qt toolkit.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>
#include <type_traits>

#include <QApplication>
#include <QDialog>
#include <QImage>
#include <QOpenGLContext>
#include <QPointer>
#include <QTimer>
#include <gtest/gtest.h>

#include "display/projection.h"
#include "session/config.h"
#include "session/session.h"
#include "session/store_ops.h"
#include "structure_files/xyz_file.h"
#include "support/test_support.h"
#include "toolkit/qt/main_window.h"
#include "toolkit/qt/qt_renderer.h"
#include "toolkit/qt/qt_toolkit.h"

namespace zentol::qt_testing {

// Acts on the modal widget of type W once it is up. Gives up after ms_left,
// rejecting whatever is modal, so a broken dialog cannot hang the test; a
// window the act left open is a failure too.
template <typename W = QDialog>
void on_modal(std::type_identity_t<std::function<void(W*)>> act, int ms_left = 5000) {
    QTimer::singleShot(20, [act, ms_left] {
        if (auto* w = qobject_cast<W*>(QApplication::activeModalWidget()); w && w->isVisible()) {
            QPointer<W> acted = w;
            act(w);
            QTimer::singleShot(3000, [acted] {
                if (!acted || !acted->isVisible()) return;
                ADD_FAILURE() << "the modal window stayed open";
                while (auto* d = qobject_cast<QDialog*>(QApplication::activeModalWidget())) d->reject();
            });
            return;
        }
        if (ms_left > 0) return on_modal<W>(act, ms_left - 20);
        ADD_FAILURE() << "no modal window appeared";
        if (auto* d = qobject_cast<QDialog*>(QApplication::activeModalWidget())) d->reject();
    });
}

// With ZENTOL_SHOT_DIR set the picture is kept there under this name.
inline void keep_shot(const QImage& image, const char* name) {
    if (const char* dir = std::getenv("ZENTOL_SHOT_DIR")) image.save(QString(dir) + "/" + name);
}

// The installation under dir, and its ui for the toolkit.
inline void install(Session& s, QtToolkit& tk, const testing::TempDir& dir) {
    s.inst = installation_at(dir / "inst", dir / "work", ZENTOL_DATA_DIR);
    prepare_installation(s.inst);
    tk.set_ui_dir(s.inst.data_dir + "/ui");
}

// The XYZ text as name.xyz in job_dir, read as the job and ready to draw
// (radii taken without questions).
inline void read_job(Session& s, const std::string& job_dir, const std::string& name, const std::string& xyz) {
    testing::write_file(job_dir + "/" + name + ".xyz", xyz);
    std::filesystem::current_path(job_dir);
    s.job.name = name;
    element_lookup(s.store, &s.tk, "", kLookupConfirmAll);
    int status = 0;
    read_job_xyz(s, status);
    ASSERT_EQ(status, kXyzRead);
    prepare_display(s);
    save_and_reload(s);
}

// A toolkit whose windows close after the test.
class WindowTest : public ::testing::Test {
protected:
    void TearDown() override { tk.close_all(); }
    void settle() { tk.wait_hundredths(5); }
    void drain() {
        settle();
        while (tk.pending_messages()) tk.next_message();
    }

    testing::TempDir dir;
    QtToolkit tk;
};

// The real window drawing through OpenGL, skipped where there is none.
class JobWindowTest : public WindowTest {
protected:
    // The window as the program opens it, with the Display menu, tool bar
    // and status fields; the job from the XYZ text.
    void open(const std::string& xyz, const char* name = "mol", int width = 800, int height = 600) {
        QOpenGLContext probe;
        if (!probe.create()) GTEST_SKIP() << "no OpenGL on this display (run under xvfb-run)";
        install(s, tk, dir);
        tk.window_open(width, height, "Zentol window test");
        tk.menu_load(30001);
        tk.WMenuToolbar(30101);
        tk.status_bar_parts({400, 1500, 620, 700, 620, 700, 600, 600, 3200, 1000});
        tk.wait_hundredths(10);
        read_job(s, dir / "job", name, xyz);
    }
    ViewWidget* view() { return tk.main_window()->view(); }
    // Where atom i is drawn in a picture of this size (its own aspect).
    QPoint at(int i, const QSize& size) const {
        const float z = s.flags.zoom;
        auto p = project_point(s.store.disp_x[i] * z, s.store.disp_y[i] * z, s.store.disp_z[i] * z,
                               Viewport{size.width(), size.height()});
        return {static_cast<int>(p.first * size.width()), static_cast<int>((1.0f - p.second) * size.height())};
    }

    QtRenderer renderer{tk};
    Session s{tk, renderer};
};

}  // namespace zentol::qt_testing
