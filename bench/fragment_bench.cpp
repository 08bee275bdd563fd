// How much fragment work a frame costs: fragment-shader invocations (GL
// pipeline statistics) and samples that passed the depth test (occlusion
// query), each over the pixels the picture covers, for the comb molecule
// drawn off-screen at 800 x 600 while it turns.
// Run under a display: xvfb-run -a ./fragment_bench. A counter the GL cannot
// give is left out and said so at the start. The times include reading the
// depth back and counting; frame times are frame_bench's.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

#include <QApplication>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLExtraFunctions>
#include <QOpenGLFramebufferObject>

#include "bench_session.h"
#include "display/renderer.h"
#include "display/view.h"
#include "display/scene.h"
#include "toolkit/scripted_toolkit.h"
#include "toolkit/qt/scene_painter.h"

namespace {

using namespace zentol;
using namespace zentol::bench_molecules;

constexpr unsigned kFragmentShaderInvocations = 0x82F4;   // GL_ARB_pipeline_statistics_query
constexpr unsigned kSamplesPassed = 0x8914;               // desktop GL occlusion query
constexpr int kWidth = 800, kHeight = 600;

struct Counts {
    double shaded = 0, passed = 0, covered = 0, spheres = 0, sticks = 0;
};

struct Bench {
    ScriptedToolkit tk;
    NullRenderer renderer;
    Session s{tk, renderer};
    TempInstallation inst{s, "fragment-bench"};
    QOpenGLContext context;
    QOffscreenSurface surface;
    ScenePainter painter;
    std::unique_ptr<QOpenGLFramebufferObject> fbo;
    QOpenGLExtraFunctions* gl = nullptr;
    bool statistics = false;
    unsigned queries[2] = {0, 0};
    Scene scene;
    std::vector<float> depth = std::vector<float>(std::size_t(kWidth) * kHeight);

    bool open() {
        if (!context.create()) return false;
        surface.setFormat(context.format());
        surface.create();
        if (!context.makeCurrent(&surface) || !painter.initialize()) return false;
        gl = context.extraFunctions();
        statistics = context.hasExtension("GL_ARB_pipeline_statistics_query");
        std::printf("GL: %s, %s\n", reinterpret_cast<const char*>(gl->glGetString(GL_RENDERER)),
                    reinterpret_cast<const char*>(gl->glGetString(GL_VERSION)));
        if (!statistics)
            std::printf("GL_ARB_pipeline_statistics_query is missing: no shaded-fragment counts here\n");
        else if (std::strstr(reinterpret_cast<const char*>(gl->glGetString(GL_RENDERER)), "llvmpipe"))
            std::printf("llvmpipe counts 16 invocations for every 4x4 pixel block a primitive touches, and tests\n"
                        "depth only after a shader that writes depth: shaded_per_px counts blocks, not fragments\n");
        gl->glGenQueries(2, queries);
        fbo = std::make_unique<QOpenGLFramebufferObject>(kWidth, kHeight, QOpenGLFramebufferObject::Depth);
        return fbo->bind();
    }
    ~Bench() {
        if (context.makeCurrent(&surface)) {
            gl->glDeleteQueries(2, queries);
            fbo.reset();
            painter.release();
            context.doneCurrent();
        }
    }

    // One frame with both queries around it; the covered pixels are those
    // whose depth the frame set.
    Counts frame() {
        build_scene(s, scene);
        if (statistics) gl->glBeginQuery(kFragmentShaderInvocations, queries[0]);
        gl->glBeginQuery(kSamplesPassed, queries[1]);
        painter.paint(scene, kWidth, kHeight);
        gl->glEndQuery(kSamplesPassed);
        if (statistics) gl->glEndQuery(kFragmentShaderInvocations);
        Counts c;
        unsigned value = 0;
        if (statistics) {
            gl->glGetQueryObjectuiv(queries[0], GL_QUERY_RESULT, &value);
            c.shaded = value;
        }
        gl->glGetQueryObjectuiv(queries[1], GL_QUERY_RESULT, &value);
        c.passed = value;
        c.spheres = painter.spheres_drawn();
        c.sticks = painter.sticks_drawn();
        gl->glReadPixels(0, 0, kWidth, kHeight, GL_DEPTH_COMPONENT, GL_FLOAT, depth.data());
        for (float d : depth) c.covered += d < 1.0f;
        return c;
    }

    void run(benchmark::State& state) {
        Counts sum;
        int frames = 0;
        s.flags.view_action = 2;
        for (auto _ : state) {
            apply_pending_rotation(s);
            const Counts c = frame();
            sum.shaded += c.shaded;
            sum.passed += c.passed;
            sum.covered += c.covered;
            sum.spheres += c.spheres;
            sum.sticks += c.sticks;
            ++frames;
        }
        s.flags.view_action = 0;
        const double n = frames > 0 ? frames : 1;
        state.counters["covered_px"] = sum.covered / n;
        state.counters["spheres_drawn"] = sum.spheres / n;
        state.counters["sticks_drawn"] = sum.sticks / n;
        state.counters["passed_per_px"] = sum.covered > 0 ? sum.passed / sum.covered : 0;
        if (statistics) {
            state.counters["shaded"] = sum.shaded / n;
            state.counters["shaded_per_px"] = sum.covered > 0 ? sum.shaded / sum.covered : 0;
        }
    }
};

Bench* bench = nullptr;

void BM_Fragments2500Atoms(benchmark::State& state) {
    show_comb(bench->s, 2500);
    bench->run(state);
}

void BM_Fragments2500AtomsBondsOnly(benchmark::State& state) {
    show_comb(bench->s, 2500);
    bench->s.store.hide_atoms = true;
    bench->run(state);
}

// The largest atoms the Setup dialog offers: spheres that overlap, and
// front ones that hide most of those behind.
void BM_Fragments2500LargeAtoms(benchmark::State& state) {
    show_comb(bench->s, 2500);
    bench->s.opt.atom_size = 1.0f;
    bench->run(state);
    bench->s.opt.atom_size = Options().atom_size;
}

// The same with every sphere drawn, hidden or not: what leaving out the
// hidden ones saves.
void BM_Fragments2500LargeAtomsAllDrawn(benchmark::State& state) {
    bench->painter.set_culling(false);
    BM_Fragments2500LargeAtoms(state);
    bench->painter.set_culling(true);
}

void BM_Fragments1000Atoms(benchmark::State& state) {
    show_comb(bench->s, 1000);
    bench->run(state);
}

void BM_FragmentsDrag2500Atoms(benchmark::State& state) {
    show_comb(bench->s, 2500);
    bench->s.flags.mouse_rotating = true;
    bench->s.flags.sphere_slices = bench->s.flags.sphere_stacks = 8;
    bench->run(state);
}

// Counts, not times: a fixed number of frames, one rotation step apart.
void fragment_args(benchmark::internal::Benchmark* b) { b->Unit(benchmark::kMillisecond)->Iterations(60); }

BENCHMARK(BM_Fragments2500Atoms)->Apply(fragment_args);
BENCHMARK(BM_Fragments2500AtomsBondsOnly)->Apply(fragment_args);
BENCHMARK(BM_Fragments2500LargeAtoms)->Apply(fragment_args);
BENCHMARK(BM_Fragments2500LargeAtomsAllDrawn)->Apply(fragment_args);
BENCHMARK(BM_Fragments1000Atoms)->Apply(fragment_args);
BENCHMARK(BM_FragmentsDrag2500Atoms)->Apply(fragment_args);

}  // namespace

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    Bench b;
    if (!b.open()) {
        std::fprintf(stderr, "fragment_bench: no OpenGL context (run under xvfb-run -a)\n");
        return 1;
    }
    bench = &b;
    benchmark::RunSpecifiedBenchmarks();
    bench = nullptr;
    benchmark::Shutdown();
    return 0;
}
