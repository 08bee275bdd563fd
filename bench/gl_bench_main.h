// The main of a benchmark that draws: Qt's application object first, then
// one bench object (the window or the GL context) alive while the
// benchmarks run, reached through `current`.
#pragma once

#include <benchmark/benchmark.h>

#include <QApplication>

namespace zentol::bench_molecules {

template <class Bench>
int run_gl_benchmarks(int argc, char** argv, Bench*& current) {
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    Bench b;
    current = &b;
    benchmark::RunSpecifiedBenchmarks();
    current = nullptr;
    benchmark::Shutdown();
    return 0;
}

}  // namespace zentol::bench_molecules
