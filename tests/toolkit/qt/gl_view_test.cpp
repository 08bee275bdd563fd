// The real window drawing a small job through the Qt renderer.
#include <algorithm>
#include <cmath>

#include <QScreen>

#include "display/projection.h"
#include "display/scene.h"
#include "display/view.h"
#include "toolkit/qt/gl_surface.h"
#include "toolkit/qt/qt_test_support.h"

namespace zentol {
namespace {

// C in the middle with O to the right, N to the left, H above and S right
// behind it, farther from the eye.
const char* const kFixture =
    "     5 fix\n"
    "     1  C      0.000000    0.000000    0.000000     1     2     3     4     5\n"
    "     2  O      1.500000    0.000000    0.000000     6     1\n"
    "     3  N     -1.500000    0.000000    0.000000     8     1\n"
    "     4  H      0.000000    1.200000    0.000000     5     1\n"
    "     5  S      0.000000    0.000000   -1.800000    15     1\n";

struct Rgb {
    int r, g, b;
};

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
        ASSERT_EQ(s.store.nbonds, 4);
        drain();
    }

    ViewWidget* view() { return tk.main_window()->view(); }
    QImage frame() { return view()->grab_frame(); }
    static int differing_pixels(const QImage& a, const QImage& b, int tolerance) {
        int n = 0;
        for (int y = 0; y < a.height(); ++y)
            for (int x = 0; x < a.width(); ++x) n += !close_to(pixel(a, x, y), pixel(b, x, y), tolerance);
        return n;
    }

    // Where atom i is drawn in a picture of this size (its own aspect).
    QPoint at(int i, const QSize& size) const {
        const float z = s.flags.zoom;
        auto p = project_point(s.store.disp_x[i] * z, s.store.disp_y[i] * z, s.store.disp_z[i] * z,
                               Viewport{size.width(), size.height()});
        return {static_cast<int>(p.first * size.width()), static_cast<int>((1.0f - p.second) * size.height())};
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
    // Atoms 1-4 in their lit colours where they project in this picture.
    void expect_atoms_lit(const QImage& image) const {
        for (int i = 1; i <= 4; ++i) {
            const QPoint p = at(i, image.size());
            EXPECT_TRUE(close_to(pixel(image, p.x(), p.y()), lit(i), 8)) << "atom " << i;
        }
    }
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
    expect_atoms_lit(whole);

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
