// The real window as a user drives it: the display loop runs while Qt
// events arrive from timers, as from keys, menus and a file manager.
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QMenuBar>
#include <QMimeData>
#include <QUrl>

#include <array>
#include <cmath>
#include <functional>
#include <vector>

#include "display/image.h"
#include "display/projection.h"
#include "session/display_loop.h"
#include "toolkit/qt/qt_test_support.h"

namespace zentol {
namespace {

// One atom in the middle, for the roundness of a sphere.
const char* const kOneAtom = "     1 one\n     1  S      0.000000    0.000000    0.000000    15\n";

// A drop of the URL at the middle of the window; whether the window took it.
bool drop_on(QWidget* window, const QUrl& url) {
    QMimeData data;
    data.setUrls({url});
    const QPointF at(window->width() / 2.0, window->height() / 2.0);
    QDragEnterEvent enter(at.toPoint(), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(window, &enter);
    if (!enter.isAccepted()) return false;
    QDropEvent drop(at, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(window, &drop);
    return drop.isAccepted();
}

class WindowSession : public qt_testing::JobWindowTest {
protected:
    // Runs the display loop while the steps run one after another, each
    // 60 ms after the last; the last step closes the window.
    void run_loop(std::vector<std::function<void()>> steps) {
        steps.push_back([this] { tk.main_window()->close(); });
        schedule(std::move(steps), 0);
        s.flags.session_running = 10;
        display_loop(s);
    }
    void schedule(std::vector<std::function<void()>> steps, std::size_t k) {
        if (k >= steps.size()) return;
        QTimer::singleShot(60, [this, steps = std::move(steps), k]() mutable {
            steps[k]();
            schedule(std::move(steps), k + 1);
        });
    }

    QWidget* view() { return tk.main_window()->view(); }
    void key(int qt_key) {
        QKeyEvent press(QEvent::KeyPress, qt_key, Qt::NoModifier);
        QApplication::sendEvent(view(), &press);
    }
    void command(int id) {
        if (QAction* a = tk.main_window()->menu_action(id)) a->trigger();
        else ADD_FAILURE() << "no menu item " << id;
    }
    std::vector<float> turn() const {
        std::vector<float> xyz;
        for (int i = 1; i <= s.store.disp_natoms; ++i)
            xyz.insert(xyz.end(), {s.store.disp_x[i], s.store.disp_y[i], s.store.disp_z[i]});
        return xyz;
    }
};

// Width and height of the disc around the middle of a picture: the run of
// pixels that are not the background of the corner.
std::array<int, 2> disc_size(const QImage& image) {
    const QColor bg = image.pixelColor(0, 0);
    auto lit = [&](int x, int y) {
        QColor c = image.pixelColor(x, y);
        return std::abs(c.red() - bg.red()) + std::abs(c.green() - bg.green()) + std::abs(c.blue() - bg.blue()) > 30;
    };
    const int cx = image.width() / 2, cy = image.height() / 2;
    int left = cx, right = cx, top = cy, bottom = cy;
    while (left > 0 && lit(left - 1, cy)) --left;
    while (right < image.width() - 1 && lit(right + 1, cy)) ++right;
    while (top > 0 && lit(cx, top - 1)) --top;
    while (bottom < image.height() - 1 && lit(cx, bottom + 1)) ++bottom;
    return {right - left + 1, bottom - top + 1};
}

TEST_F(WindowSession, ATurnSurvivesMenusADialogAndAHardCopy) {
    open(testing::read_file(std::string(ZENTOL_TEST_DATA) + "/../../examples/benzene.xyz"));
    if (IsSkipped() || HasFatalFailure()) return;
    std::vector<std::pair<const char*, std::vector<float>>> turns;   // after each stage
    std::vector<std::function<void()>> steps;
    auto note = [&](const char* after) { steps.push_back([&, after] { turns.emplace_back(after, turn()); }); };
    for (int k = 0; k < 12; ++k) steps.push_back([this] { key(Qt::Key_Right); });
    steps.push_back([&] { key(Qt::Key_Up); });
    note("the turn");
    // Every menu of the bar opened and closed, as a user browsing them.
    for (QAction* top : tk.main_window()->menuBar()->actions()) {
        if (QMenu* m = top->menu()) {
            steps.push_back([this, m] { m->popup(view()->mapToGlobal(QPoint(20, 20))); });
            steps.push_back([m] { m->close(); });
        }
    }
    note("the menus");
    steps.push_back([&] {
        qt_testing::on_modal([](QDialog* d) { d->reject(); });   // Setup, cancelled
        command(40004);
    });
    note("a dialog");
    steps.push_back([&] {
        qt_testing::on_modal([](QDialog* d) {
            d->accept();   // PNG, the job's name
            qt_testing::on_modal([](QDialog* r) { r->accept(); });   // 1280 x 960
        });
        command(40064);
    });
    note("a hard copy");
    run_loop(steps);

    ASSERT_EQ(turns.size(), 4u);
    for (const auto& [after, xyz] : turns) {
        ASSERT_EQ(xyz.size(), turns[0].second.size()) << after;
        for (std::size_t k = 0; k < xyz.size(); ++k) EXPECT_NEAR(xyz[k], turns[0].second[k], 1e-4f) << after;
    }
    // The hard copy holds the turned molecule.
    auto png = decode_png(testing::read_file(dir / "job/mol_01.png"));
    ASSERT_TRUE(png);
    EXPECT_EQ(png->width, 1280);
    for (int i = 1; i <= 6; ++i) {   // the carbons: grey, not the black background
        auto p = project_point(s.store.disp_x[i] * s.flags.zoom, s.store.disp_y[i] * s.flags.zoom,
                               s.store.disp_z[i] * s.flags.zoom, Viewport{1280, 960});
        auto rgb = pixel(*png, static_cast<int>(p.first * 1280), static_cast<int>((1 - p.second) * 960));
        EXPECT_GT(rgb[0] + rgb[1] + rgb[2], 90) << "atom " << i;
    }
}

TEST_F(WindowSession, ASphereIsRoundAtEverySizeAndInAHardCopy) {
    open(kOneAtom);
    if (IsSkipped() || HasFatalFailure()) return;
    for (QSize size : {QSize(800, 600), QSize(700, 900)}) {
        tk.main_window()->resize(size);
        tk.wait_hundredths(20);
        project_atoms(s);
        draw_scene(s);
        QImage frame = tk.main_window()->view()->grab_frame();
        auto [w, h] = disc_size(frame);
        EXPECT_GT(w, 10);
        EXPECT_LE(std::abs(w - h), 2) << size.width() << "x" << size.height() << ": " << w << " x " << h;
    }
    auto copy = renderer.render_image(s, 1280, 960);
    ASSERT_TRUE(copy);
    QImage picture(copy->rgb.data(), copy->width, copy->height, copy->width * 3, QImage::Format_RGB888);
    auto [w, h] = disc_size(picture);
    EXPECT_LE(std::abs(w - h), 2) << "hard copy: " << w << " x " << h;
}

// What the loop does with a dropped file is the session tests' part.
TEST_F(WindowSession, OnlyLocalFilesAreTakenAndTheirPathArrives) {
    tk.window_open(800, 600, "drop");
    drain();
    EXPECT_FALSE(drop_on(tk.main_window(), QUrl("https://example.org/water.pdb")));
    EXPECT_TRUE(drop_on(tk.main_window(), QUrl::fromLocalFile("/data/my molecules/water.pdb")));
    Message m;
    while (tk.pending_messages() && m.type != MessageType::FileDropped) m = tk.next_message();
    EXPECT_EQ(m.type, MessageType::FileDropped);
    EXPECT_EQ(m.path, "/data/my molecules/water.pdb");
}

}  // namespace
}  // namespace zentol
