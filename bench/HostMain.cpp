// The benchmarks of the shipped library on the host port. Every figure the
// summary prints is a ratio of two of them, measured in this same run.
#include <benchmark/benchmark.h>
#include <stdlib.h>

#include <cstdio>
#include <fstream>

#include "HostEnvironment.h"

namespace bench {

namespace {

HostEnvironment* gHost = nullptr;

// 256 KiB of valid stat lines: read whole, no line refused.
void writeStatLog(const std::string& path) {
    constexpr size_t kSize = 256 * 1024;
    std::ofstream out(path, std::ios::binary);
    size_t written = 0;
    char line[64];
    for (int i = 0;; ++i) {
        const int n =
            std::snprintf(line, sizeof(line), "stat_points_none metric_%05d=%d\n", i, i * 7 % 1000);
        if (written + static_cast<size_t>(n) > kSize) break;
        out.write(line, n);
        written += static_cast<size_t>(n);
    }
}

}  // namespace

HostEnvironment& host() {
    return *gHost;
}

}  // namespace bench

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;

    bench::HostEnvironment environment;
    bench::gHost = &environment;
    std::string error;
    if (!quilcloud::makeCertificates(environment.device.path(""), {}, 0, environment.certificate,
                                     error)) {
        std::fprintf(stderr, "bench: %s\n", error.c_str());
        return 1;
    }
    for (bench::LoopbackServer* server :
         {&environment.http, &environment.https, &environment.distant}) {
        if (!server->start()) {
            std::fprintf(stderr, "bench: %s\n", server->error().c_str());
            return 1;
        }
    }
    bench::writeStatLog(environment.statLog);
    setenv("VELMAR_ROOT", environment.device.root().c_str(), 1);
    setenv("VELMAR_CA_FILE", environment.certificate.caFile.c_str(), 1);

    // Whether Request_Library ran with a log daemon listening, as on the device.
    benchmark::AddCustomContext("log_daemon",
                                std::getenv("VELMAR_BENCH_LOG_SOCKET") != nullptr ? "yes" : "no");
    bench::Sandbox::settle();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
