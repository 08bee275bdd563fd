// The real window: a small job drawn through the Qt renderer, checked by its
// pixels, and the window as a user drives it, the display loop running while
// Qt events arrive from timers, as from keys, menus and a file manager.
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QMenuBar>
#include <QMimeData>
#include <QScreen>
#include <QUrl>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <vector>

#include "display/image.h"
#include "display/projection.h"
#include "display/scene.h"
#include "display/view.h"
#include "session/display_loop.h"
#include "toolkit/qt/gl_surface.h"
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
        const QPoint p = at(i, {1280, 960});
        auto rgb = pixel(*png, p.x(), p.y());
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
        auto [w, h] = disc_size(view()->grab_frame());
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
    EXPECT_EQ(m.path, "/data/my molecules/water.pdb");
}

// C in the middle with O to the right, N to the left, H above and S right
// behind it, farther from the eye.
const char* const kFixture =
    "     5 fix\n"
    "     1  C      0.000000    0.000000    0.000000     1     2     3     4     5\n"
    "     2  O      1.500000    0.000000    0.000000     6     1\n"
    "     3  N     -1.500000    0.000000    0.000000     8     1\n"
    "     4  H      0.000000    1.200000    0.000000     5     1\n"
    "     5  S      0.000000    0.000000   -1.800000    15     1\n";

struct Rgb { int r, g, b; };

Rgb pixel(const QImage& image, int x, int y) {
    QColor c = image.pixelColor(std::clamp(x, 0, image.width() - 1), std::clamp(y, 0, image.height() - 1));
    return {c.red(), c.green(), c.blue()};
}

::testing::AssertionResult close_to(Rgb a, Rgb b, int tolerance) {
    if (std::max({std::abs(a.r - b.r), std::abs(a.g - b.g), std::abs(a.b - b.b)}) <= tolerance)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "got (" << a.r << "," << a.g << "," << a.b << "), want (" << b.r << ","
                                         << b.g << "," << b.b << ") within " << tolerance;
}

class GlViewTest : public qt_testing::JobWindowTest {
protected:
    void SetUp() override {
        open(kFixture, "fix");
        if (IsSkipped() || HasFatalFailure()) return;
        drain();
    }

    QImage frame() { return view()->grab_frame(); }
    static int differing_pixels(const QImage& a, const QImage& b, int tolerance) {
        int n = 0;
        for (int y = 0; y < a.height(); ++y)
            for (int x = 0; x < a.width(); ++x) n += !close_to(pixel(a, x, y), pixel(b, x, y), tolerance);
        return n;
    }

    Rgb palette(int entry) const {
        auto c = [](float v) { return static_cast<int>(std::lround(v * 255)); };
        return {c(s.palette.r[entry]), c(s.palette.g[entry]), c(s.palette.b[entry])};
    }
    // The colour of atom i's sphere where its centre projects, drawn in
    // this palette entry: ambient 0.2 + 0.1, the diffuse share and the
    // highlight of the light from (1,1,1), the surface there facing the eye.
    Rgb lit(int i, int entry) const {
        const double z = kEyeDistance - s.store.disp_z[i] * s.flags.zoom;
        const double x = -s.store.disp_x[i] * s.flags.zoom, y = -s.store.disp_y[i] * s.flags.zoom;
        const double n = std::sqrt(x * x + y * y + z * z);
        const double diffuse = (x + y + z) / n / std::sqrt(3.0);
        const double h[3] = {0.32505758, 0.32505758, 0.88807383};
        const double highlight = 255 * std::pow((x * h[0] + y * h[1] + z * h[2]) / n, 50);
        Rgb c = palette(entry);
        auto channel = [&](int v) { return std::min(255, static_cast<int>(v * (0.3 + diffuse) + highlight)); };
        return {channel(c.r), channel(c.g), channel(c.b)};
    }
    Rgb lit(int i) const { return lit(i, static_cast<int>(std::lround(s.store.atom_colour[i]))); }
    // Pixels far darker than the background within a box.
    static int dark_pixels(const QImage& image, QRect box) {
        int n = 0;
        for (int y = box.top(); y <= box.bottom(); ++y)
            for (int x = box.left(); x <= box.right(); ++x) n += qGray(image.pixel(x, y)) < 100;
        return n;
    }
};

TEST_F(GlViewTest, OwnDrawsAreNotReportedAsExposure) {
    // Draws in quick succession, as a rotation makes them.
    for (int k = 0; k < 10; ++k) draw_scene(s);
    settle();
    EXPECT_EQ(tk.pending_messages(), 0u);   // else expose -> draw -> expose would never end

    tk.main_window()->hide();
    settle();
    tk.main_window()->show();
    settle();
    bool exposed = false;
    while (tk.pending_messages()) exposed = exposed || tk.next_message().type == MessageType::Expose;
    EXPECT_TRUE(exposed);
    // The picture on the screen came back by itself, before the logic drew again.
    GlSurface* w = view()->surface();
    EXPECT_EQ(differing_pixels(w->screen()->grabWindow(w->winId()).toImage(), frame(), 2), 0);
}

TEST_F(GlViewTest, PicksDragsAndLabelsChangeThePicture) {
    const QPoint o = at(2, frame().size());
    s.view.pick_list[1] = 2;
    s.view.pick_count = 1;
    draw_scene(s);
    EXPECT_TRUE(close_to(pixel(frame(), o.x(), o.y()), lit(2, 16), 8));
    s.view.pick_count = 0;

    // A small molecule keeps its whole picture while it is dragged: above
    // O's centre, off its bond, the atom is still there.
    const int above = o.y() - 6;
    draw_scene(s);
    const Rgb still = pixel(frame(), o.x(), above);
    EXPECT_FALSE(close_to(still, palette(1), 30));
    s.flags.mouse_rotating = true;
    draw_scene(s);
    EXPECT_TRUE(close_to(pixel(frame(), o.x(), above), still, 8));
    s.flags.mouse_rotating = false;

    // Black labels to the right of each atom, where the scene puts them.
    QSize size = frame().size();
    s.opt.labels_on = true;
    Scene with_labels;
    build_scene(s, with_labels);
    s.opt.labels_on = false;
    const SceneLabel& l = with_labels.labels[3];
    auto p = project_point(l.x, l.y, l.z, Viewport{size.width(), size.height()});
    QRect box(static_cast<int>(p.first * size.width()), static_cast<int>((1 - p.second) * size.height()) - 25, 40, 30);
    draw_scene(s);
    const int without = dark_pixels(frame(), box);
    s.opt.labels_on = true;
    draw_scene(s);
    EXPECT_GT(dark_pixels(frame(), box), without + 20);
}

// Each atom in its lit colour on the background, where it projects: also
// what shows that the nearer C hides S behind it.
TEST_F(GlViewTest, PicturesForHardCopyAnySizeAndTiled) {
    ASSERT_TRUE(view()->gl_error().isEmpty()) << view()->gl_error().toStdString();
    QImage whole = renderer.render_qimage(s, 640, 480);
    ASSERT_EQ(whole.size(), QSize(640, 480));
    EXPECT_TRUE(close_to(pixel(whole, 0, 0), palette(1), 1));
    for (int i = 1; i <= 4; ++i) {
        const QPoint p = at(i, whole.size());
        EXPECT_TRUE(close_to(pixel(whole, p.x(), p.y()), lit(i), 8)) << "atom " << i;
    }

    // Drawn in pieces of 100 x 100 the picture is the same.
    renderer.set_tile_limit(100);
    QImage tiled = renderer.render_qimage(s, 640, 480);
    renderer.set_tile_limit(0);
    ASSERT_EQ(tiled.size(), whole.size());
    EXPECT_LE(differing_pixels(tiled, whole, 3), 20);

    // A picture far larger than the window.
    auto big = renderer.render_image(s, 5120, 3840);
    ASSERT_TRUE(big.has_value());
    ASSERT_EQ(big->rgb.size(), 5120u * 3840u * 3u);
    QPoint c = at(2, QSize(5120, 3840));
    const std::size_t k = (static_cast<std::size_t>(c.y()) * 5120 + c.x()) * 3;
    EXPECT_TRUE(close_to({big->rgb[k], big->rgb[k + 1], big->rgb[k + 2]}, lit(2), 8));
}

TEST_F(GlViewTest, APickCircleRingsThePickedAtom) {
    auto magenta_near = [&](const QImage& image, int atom) {
        const QPoint c = at(atom, image.size());
        const int r = static_cast<int>(0.01 * image.width());
        int hits = 0;
        for (int dx : {-r - 1, -r, -r + 1, r - 1, r, r + 1}) {
            const Rgb p = pixel(image, c.x() + dx, c.y());
            hits += p.r > 180 && p.b > 180 && p.g < 90;
        }
        return hits;
    };
    EXPECT_EQ(magenta_near(frame(), 2), 0);
    show_pick_circle(s, 2);
    drain();
    QImage image = frame();
    EXPECT_GE(magenta_near(image, 2), 2);   // both sides of the ring
    EXPECT_EQ(magenta_near(image, 3), 0);
    clear_pick_circles(s);
    drain();
    EXPECT_EQ(magenta_near(frame(), 2), 0);
}

}  // namespace
}  // namespace zentol
