// Start to first frame: the real program's start-up on the benzene example,
// from entering main to the first frame on the screen, in a fresh process
// each time (Qt, the window, the configuration, the job, the first draw).
// Run under a display: xvfb-run -a ./startup_bench [runs]. Prints each run
// and the median in milliseconds.
#include <sys/wait.h>
#include <unistd.h>

#include <QApplication>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "session/config.h"
#include "session/session.h"
#include "session/startup.h"
#include "toolkit/qt/main_window.h"
#include "toolkit/qt/qt_renderer.h"
#include "toolkit/qt/qt_toolkit.h"

namespace {

using Clock = std::chrono::steady_clock;

// Counts the frames, so the timer knows when the first one is up.
class CountingRenderer : public zentol::QtRenderer {
public:
    using QtRenderer::QtRenderer;
    void draw(const zentol::Session& s) override {
        QtRenderer::draw(s);
        ++frames;
    }
    int frames = 0;
};

// One start, in this process: prints the milliseconds to the first frame.
int one_start(const std::string& root, Clock::time_point begin) {
    int argc = 1;
    char name[] = "zentol";
    char* argv[] = {name, nullptr};
    QApplication app(argc, argv);
    zentol::QtToolkit tk;
    CountingRenderer renderer(tk);
    zentol::Session s(tk, renderer);
    s.inst = zentol::installation_at(root + "/inst", root + "/work", ZENTOL_DATA_DIR);
    zentol::prepare_installation(s.inst);
    s.engines = zentol::read_engines_def(s.inst);
    tk.set_ui_dir(s.inst.data_dir + "/ui");
    const std::string job = s.inst.default_scratch + "/benzene.xyz";
    std::filesystem::copy_file(std::string(ZENTOL_DATA_DIR) + "/../examples/benzene.xyz", job,
                               std::filesystem::copy_options::overwrite_existing);
    double ms = -1;
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, [&] {
        if (renderer.frames < 1 || ms >= 0) return;
        ms = std::chrono::duration<double, std::milli>(Clock::now() - begin).count();
        if (tk.main_window()) tk.main_window()->close();
    });
    poll.start(0);
    zentol::run_program(s, {"zentol", job});
    std::printf("%.1f\n", ms);
    return ms >= 0 ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    const auto begin = Clock::now();
    if (argc == 3 && std::string(argv[1]) == "--once") return one_start(argv[2], begin);
    const int runs = argc > 1 ? std::max(1, std::atoi(argv[1])) : 7;
    std::vector<double> times;
    // One installation for all runs, the first of which (not counted) makes
    // it: the later ones start as a user's second start does.
    char dir[] = "/tmp/zentol-startup-XXXXXX";
    if (!::mkdtemp(dir)) return 1;
    for (int k = 0; k <= runs; ++k) {
        int fds[2];
        if (::pipe(fds) != 0) return 1;
        pid_t child = ::fork();
        if (child == 0) {
            ::dup2(fds[1], 1);
            ::execl("/proc/self/exe", argv[0], "--once", dir, static_cast<char*>(nullptr));
            _exit(127);
        }
        ::close(fds[1]);
        char buf[64] = {};
        ssize_t n = ::read(fds[0], buf, sizeof buf - 1);
        ::close(fds[0]);
        ::waitpid(child, nullptr, 0);
        if (k == 0) continue;
        if (n > 0) times.push_back(std::atof(buf));
        std::printf("run %d: %s", k, n > 0 ? buf : "no frame\n");
    }
    std::error_code ec;
    std::filesystem::remove_all(dir, ec);
    if (times.empty()) return 1;
    std::sort(times.begin(), times.end());
    std::printf("start to first frame, benzene: median %.1f ms over %zu runs\n", times[times.size() / 2], times.size());
    return 0;
}
