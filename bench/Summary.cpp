// The table `make bench` ends with: each figure the ratio of two benchmarks
// of the same run (their medians over the repetitions), so that it holds on a
// busy machine where the absolute times do not.
//
// usage: bench_summary HOST.json FAKE.json PEAK_RSS_KIB STRIPPED_BYTES
#include <rapidjson/document.h>
#include <rapidjson/istreamwrapper.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <string>

namespace {

struct Figure {
    double time = 0;       // real time per iteration, microseconds
    double perSecond = 0;  // items per second, where counted
};

std::map<std::string, Figure> gRuns;

// Run name -> figure: the median where there are repetitions, else the run.
void load(const char* file) {
    std::ifstream in(file);
    rapidjson::IStreamWrapper stream(in);
    rapidjson::Document doc;
    doc.ParseStream(stream);
    if (doc.HasParseError() || !doc.IsObject() || !doc.HasMember("benchmarks")) return;
    for (const auto& b : doc["benchmarks"].GetArray()) {
        const std::string run = b["run_name"].GetString();
        const bool aggregate = b.HasMember("aggregate_name");
        if (aggregate && std::string(b["aggregate_name"].GetString()) != "median") continue;
        if (!aggregate && gRuns.count(run) != 0) continue;
        if (b.HasMember("error_occurred") && b["error_occurred"].GetBool()) continue;
        const std::string unit = b["time_unit"].GetString();
        const double scale = unit == "ns" ? 1e-3 : unit == "ms" ? 1e3 : unit == "s" ? 1e6 : 1;
        Figure f;
        f.time = b["real_time"].GetDouble() * scale;
        if (b.HasMember("items_per_second")) f.perSecond = b["items_per_second"].GetDouble();
        gRuns[run] = f;
    }
}

const Figure* find(const std::string& name) {
    auto it = gRuns.find(name);
    return it == gRuns.end() ? nullptr : &it->second;
}

std::string format(const char* pattern, double value) {
    char text[64];
    std::snprintf(text, sizeof(text), pattern, value);
    return text;
}

std::string micros(double us) {
    return format(us < 10 ? "%.2f us" : "%.0f us", us);
}

void row(const std::string& figure, const std::string& measured, const std::string& detail,
         const std::string& target) {
    std::printf("| %s | %s | %s | %s |\n", figure.c_str(), measured.c_str(), detail.c_str(),
                target.c_str());
}

// "<= 1.10 met" / ">= 1.20 MISSED"; no target when `limit` is 0.
std::string verdict(double ratio, double limit, bool atMost) {
    if (limit <= 0) return "";
    const bool met = atMost ? ratio <= limit : ratio >= limit;
    return format(atMost ? "<= %.2f" : ">= %.2f", limit) + (met ? " met" : " MISSED");
}

// Time of `a` over time of `b`, which may be at most `limit` (0: no target).
void timeRatio(const std::string& figure, const std::string& a, const std::string& b, double limit,
               const char* missing = "not run") {
    const Figure* fa = find(a + "/real_time");
    const Figure* fb = find(b + "/real_time");
    if (fa == nullptr || fb == nullptr || fb->time <= 0) {
        row(figure, missing, "", limit > 0 ? format("<= %.2f", limit) : "");
        return;
    }
    const double ratio = fa->time / fb->time;
    row(figure, format("%.2f", ratio), micros(fa->time) + " / " + micros(fb->time),
        verdict(ratio, limit, true));
}

// Calls per second of `threads` threads over those of one.
void scaling(const std::string& series, const std::string& label, int threads, double floor) {
    const std::string base = "Throughput_Library/" + series + "/real_time/threads:";
    const Figure* one = find(base + "1");
    const Figure* many = find(base + std::to_string(threads));
    const std::string figure = label + ", " + std::to_string(threads) + " threads / 1 thread";
    if (one == nullptr || many == nullptr || one->perSecond <= 0) {
        row(figure, "not run", "", "");
        return;
    }
    const double ratio = many->perSecond / one->perSecond;
    row(figure, format("%.2f", ratio),
        format("%.0f", many->perSecond) + " / " + format("%.0f calls/s", one->perSecond),
        verdict(ratio, floor, false));
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 5) {
        std::fprintf(stderr,
                     "usage: bench_summary HOST.json FAKE.json PEAK_RSS_KIB STRIPPED_BYTES\n");
        return 2;
    }
    load(argv[1]);
    load(argv[2]);

    std::printf("\n| figure | ratio | medians | target |\n|---|---|---|---|\n");
    for (const char* scheme : {"http", "https"}) {
        const std::string s = scheme;
        const std::string upper = s == "http" ? "HTTP" : "HTTPS";
        timeRatio("signed request (getPresence) / bare libcurl, reused handle, " + upper,
                  "Request_Library/" + s, "Request_BareReused/" + s, 1.10);
        timeRatio("host transport alone / bare libcurl, reused handle, " + upper,
                  "Request_Transport/" + s, "Request_BareReused/" + s, 1.10);
    }
    timeRatio("fresh connection per call / signed request (reused), HTTP", "Request_BareFresh/http",
              "Request_Library/http", 0);
    timeRatio("fresh connection and full TLS handshake per call / signed request (reused)",
              "Request_BareFresh/https", "Request_Library/https", 0);
    timeRatio("fresh connection, TLS session resumed / signed request (reused)",
              "Request_BareFreshResumed", "Request_Library/https", 0);
    // The instant server shares the two cores with the callers; the distant
    // one (2 ms to answer) leaves them waiting, and the waits must overlap.
    for (int threads : {2, 4, 8})
        scaling("instant", "throughput, instant server", threads, 1.2);
    for (int threads : {2, 4, 8})
        scaling("distant", "throughput, server 2 ms away", threads, 0.8 * threads);
    timeRatio("stat report of a 256 KiB log / reading its lines", "StatPoints_Library",
              "StatPoints_ReadLines", 2.0);
    timeRatio("getSongListInfo, 1000 songs, fake transport / json-c parse and write back",
              "SongListInfo_Library", "SongListInfo_JsonC", 1.5,
              "not built (no MusicSongInfoAPI in this tree)");
    row("peak resident memory, one `quilctl presence` over HTTPS",
        std::to_string(std::atol(argv[3])) + " KiB", "", "");
    row("libvelmar_quil.so, stripped", std::to_string(std::atol(argv[4]) / 1024) + " KiB",
        std::to_string(std::atol(argv[4])) + " bytes", "");
    return 0;
}
