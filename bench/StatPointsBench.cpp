// The stat report of a 256 KiB log against merely reading its lines.
#include <benchmark/benchmark.h>

#include <fstream>

#include "HostEnvironment.h"
#include "velmar/quil/StatPointsUtils.h"

namespace {

void StatPoints_Library(benchmark::State& state) {
    for (auto _ : state) {
        std::string report =
            velmar::quil::StatPointsUtils::collectStatPoints(bench::host().statLog, false);
        benchmark::DoNotOptimize(report.data());
    }
}

// Line by line with the standard library, doing nothing with the lines.
void StatPoints_ReadLines(benchmark::State& state) {
    for (auto _ : state) {
        std::ifstream in(bench::host().statLog);
        std::string line;
        while (std::getline(in, line))
            benchmark::DoNotOptimize(line.data());
    }
}

}  // namespace

BENCHMARK(StatPoints_Library)->UseRealTime();
BENCHMARK(StatPoints_ReadLines)->UseRealTime();
