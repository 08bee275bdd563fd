// zentol-orbview, installed as orbview: the orbital viewer. See --help.
#include <chrono>
#include <iostream>
#include <string>
#include <vector>

#include <QApplication>
#include <QTimer>

#include "orbview/orbital_view.h"
#include "orbview/orbview_window.h"
#include "text/fixed_format.h"
#include "wavefunction/viewer_start.h"

namespace {

const char* const kUsage =
    "usage: orbview FILE.cube\n"
    "       orbview JOB N MOPAC|MOPAS|MOPAD nn [IMX]\n"
    "       orbview pppmap FIREFLY\n"
    "       orbview JOB N [IMPX]\n"
    "\n"
    "Shows a molecular orbital (positive lobe red, negative blue, translucent), a\n"
    "spin density or a total density from a Gaussian cube file as isosurfaces with\n"
    "the molecule. Drag to turn, wheel or +/- to zoom; the slider sets the isovalue.\n"
    "\n"
    "Started by Zentol after a Mopac plot (MOPAC nn) it shows the map the map\n"
    "program wrote (named in pppmap.atl); leaving it, or Another Orbital, starts\n"
    "Zentol again on the job in Mopac mode (zentol JOB N MOPA nn).\n"
    "\n"
    "  --level X      isovalue in atomic units (default 0.05, density 0.02)\n"
    "  --turn Y[,X]   turn the picture Y degrees about the vertical (X about the\n"
    "                 horizontal) before showing it\n"
    "  --png FILE     save the picture as PNG and leave (no return to Zentol)\n"
    "  --leave        leave at once, as the user closing the window would\n"
    "  --benchmark N  turn N frames and print the frames a second\n"
    "  --help         show this text\n";

struct Options {
    std::vector<std::string> words;
    std::string png;
    double level = 0, turn_y = 0, turn_x = 0;
    int benchmark = 0;
    bool leave = false, help = false;
    std::string error;
};

Options parse(int argc, char** argv) {
    Options o;
    for (int k = 1; k < argc; ++k) {
        const std::string w = argv[k];
        const bool more = k + 1 < argc;
        if (w == "--help" || w == "-h") o.help = true;
        else if (w == "--png" && more) o.png = argv[++k];
        else if (w == "--leave") o.leave = true;
        else if (w == "--level" && more) o.level = zentol::text::read_f(argv[++k]).value_or(0);
        else if (w == "--benchmark" && more) o.benchmark = static_cast<int>(zentol::text::read_i(argv[++k]).value_or(0));
        else if (w == "--turn" && more) {
            auto v = zentol::text::read_reals(argv[++k], 2);
            if (v && !v->empty()) o.turn_y = (*v)[0], o.turn_x = v->size() > 1 ? (*v)[1] : 0;
        } else if (w.size() > 1 && w[0] == '-') o.error = w;
        else o.words.push_back(w);
    }
    return o;
}

int benchmark(zentol::OrbviewWindow& window, int frames) {
    zentol::OrbitalView* view = window.view();
    view->repaint();
    const auto start = std::chrono::steady_clock::now();
    for (int f = 0; f < frames; ++f) {
        view->turn(2, 0);
        view->repaint();
        QApplication::processEvents();
    }
    view->makeCurrent();
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    std::cout << frames << " frames in " << seconds << " s: " << frames / seconds << " frames/s, "
              << view->triangles() << " triangles, " << view->width() << " x " << view->height() << "\n";
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    // Help needs no display: answered before Qt looks for one.
    for (int k = 1; k < argc; ++k)
        if (std::string(argv[k]) == "--help" || std::string(argv[k]) == "-h") {
            std::cout << kUsage;
            return 0;
        }
    QApplication app(argc, argv);
    Options o = parse(argc, argv);
    if (o.help) {
        std::cout << kUsage;
        return 0;
    }
    zentol::ViewerStart start = zentol::read_viewer_words(o.words);
    if (!o.error.empty() || !start.error.empty()) {
        std::cerr << "orbview: " << (o.error.empty() ? start.error : "unknown option " + o.error) << "\n" << kUsage;
        return 2;
    }
    if (!o.png.empty() || o.benchmark > 0) start.kind.clear();   // a picture or a timing: no hand-back
    zentol::OrbviewWindow window(start);
    window.show();
    if (start.cube.empty()) {
        if (!o.words.empty()) std::cerr << "orbview: no map was found for " << o.words[0] << "\n";
    } else if (!window.open_cube(QString::fromStdString(start.cube))) {
        std::cerr << "orbview: cannot show " << start.cube << "\n";
        if (!o.png.empty()) return 1;
    }
    if (o.level > 0) window.set_level(o.level);
    if (o.turn_y != 0 || o.turn_x != 0) window.view()->turn(o.turn_y, o.turn_x);
    if (o.benchmark > 0) return benchmark(window, o.benchmark);
    if (!o.png.empty()) {
        window.view()->repaint();
        return window.save_png(QString::fromStdString(o.png)) ? 0 : 1;
    }
    if (o.leave) QTimer::singleShot(0, &window, [&window] { window.close(); });
    return app.exec();
}
