// The table `make bench` ends with: each figure the ratio of two benchmarks
// of the same run (their medians over the repetitions), so that it holds on a
// busy machine where the absolute times do not.
//
// usage: bench_summary HOST.json FAKE.json FOOTPRINT
//
// FOOTPRINT holds the `key=value` lines of scripts/footprint; where it lacks a
// figure, its row says "not run".
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

// `key=value` lines of scripts/footprint.
std::map<std::string, std::string> gFootprint;

// Whether the host benchmarks ran with a log daemon listening.
bool gLogDaemon = false;

// Run name -> figure: the median where there are repetitions, else the run.
void load(const char* file) {
    std::ifstream in(file);
    rapidjson::IStreamWrapper stream(in);
    rapidjson::Document doc;
    doc.ParseStream(stream);
    if (doc.HasParseError() || !doc.IsObject() || !doc.HasMember("benchmarks")) return;
    if (doc.HasMember("context") && doc["context"].HasMember("log_daemon") &&
        doc["context"]["log_daemon"].IsString())
        gLogDaemon |= std::string(doc["context"]["log_daemon"].GetString()) == "yes";
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

void loadFootprint(const char* file) {
    std::ifstream in(file);
    std::string line;
    while (std::getline(in, line)) {
        const size_t equals = line.find('=');
        if (equals != std::string::npos)
            gFootprint[line.substr(0, equals)] = line.substr(equals + 1);
    }
}

// The footprint value `key`, or a negative number where it was not measured.
double footprint(const std::string& key) {
    auto it = gFootprint.find(key);
    return it == gFootprint.end() || it->second.empty() ? -1 : std::atof(it->second.c_str());
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

// Heap allocations of one signed call over those of the bare request.
void allocations(const std::string& scheme, const std::string& upper) {
    const std::string figure =
        "heap allocations per call, signed request / bare libcurl, reused handle, " + upper;
    const double library = footprint("alloc.library." + scheme + ".count");
    const double bare = footprint("alloc.bare." + scheme + ".count");
    if (library < 0 || bare <= 0) {
        row(figure, "not run", "", "<= 1.50");
        return;
    }
    const double ratio = library / bare;
    row(figure, format("%.2f", ratio),
        format("%.0f", library) + " / " + format("%.0f allocations", bare) + ", " +
            format("%.0f", footprint("alloc.library." + scheme + ".bytes")) + " / " +
            format("%.0f bytes", footprint("alloc.bare." + scheme + ".bytes")),
        verdict(ratio, 1.5, true));
}

// Stripped sizes per architecture, one row per shipped file.
void sizes() {
    const char* arches[] = {"x86_64", "aarch64", "armhf"};
    std::printf("\n| stripped size | x86_64 | aarch64 | armhf | target |\n|---|---|---|---|---|\n");
    for (const char* file : {"libvelmar_quil.so", "libvelmar_port.so", "quilctl"}) {
        std::printf("| %s |", file);
        for (const char* arch : arches) {
            const double bytes = footprint(std::string("size.") + arch + "." + file);
            std::printf(" %s |",
                        bytes < 0 ? "not built" : format("%.0f KiB", bytes / 1024).c_str());
        }
        std::string target;
        if (std::string(file) == "libvelmar_quil.so") {
            const double armhf = footprint("size.armhf.libvelmar_quil.so");
            target = "armhf < 150 KiB";
            if (armhf >= 0) target += armhf < 150 * 1024 ? " met" : " MISSED";
        }
        std::printf(" %s |\n", target.c_str());
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4) {
        std::fprintf(stderr, "usage: bench_summary HOST.json FAKE.json FOOTPRINT\n");
        return 2;
    }
    load(argv[1]);
    load(argv[2]);
    loadFootprint(argv[3]);

    std::printf("\n| figure | ratio | medians | target |\n|---|---|---|---|\n");
    for (const char* scheme : {"http", "https"}) {
        const std::string s = scheme;
        const std::string upper = s == "http" ? "HTTP" : "HTTPS";
        // Without a log daemon glibc tries to connect to one for every line;
        // the speaker runs one, so its figure is the one the target is for.
        timeRatio("signed request (getPresence) / bare libcurl, reused handle, " + upper +
                      ", log daemon listening (as on the device)",
                  gLogDaemon ? "Request_Library/" + s : "", "Request_BareReused/" + s, 1.10,
                  gLogDaemon ? "not run" : "not run (no mount namespace for a log daemon)");
        timeRatio("signed request (getPresence) / bare libcurl, reused handle, " + upper +
                      ", no log daemon",
                  "Request_LibraryNoLogDaemon/" + s, "Request_BareReused/" + s, 1.10);
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
    allocations("http", "HTTP");
    allocations("https", "HTTPS");
    const double quilctl = footprint("rss.quilctl");
    const double curl = footprint("rss.curl");
    const std::string rss = "peak resident memory, one `quilctl presence` / `curl`, HTTPS";
    if (quilctl <= 0 || curl <= 0) {
        row(rss, "not run", "", "<= 1.10");
    } else {
        row(rss, format("%.2f", quilctl / curl),
            format("%.0f", quilctl) + " / " + format("%.0f KiB", curl),
            verdict(quilctl / curl, 1.10, true));
    }
    // The same, curl trusting the system bundle as well as the CA file, as
    // quilctl does: what quilctl adds beyond parsing the system's roots.
    const double curlSystem = footprint("rss.curl_system");
    if (quilctl > 0 && curlSystem > 0) {
        row("peak resident memory, `quilctl presence` / `curl` trusting the system bundle too",
            format("%.2f", quilctl / curlSystem),
            format("%.0f", quilctl) + " / " + format("%.0f KiB", curlSystem), "");
    }
    sizes();
    return 0;
}
