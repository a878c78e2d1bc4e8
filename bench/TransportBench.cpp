// The signed request against a bare libcurl request to the same server, the
// cost of a fresh connection per call, and calls from several threads at once.
#include <benchmark/benchmark.h>
#include <curl/curl.h>
#include <syslog.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "BareRequest.h"
#include "HostEnvironment.h"
#include "velmar/http/HTTPRequest.h"
#include "velmar/quil/api/PresenceAPI.h"

namespace {

using bench::host;
using velmar::quil::api::PresenceAPI;

bool bareGet(CURL* curl, bool tls) {
    static const std::string kNoCa;
    return bench::bareGet(curl, host().server(tls).baseUrl(),
                          tls ? host().certificate.caFile : kNoCa);
}

void Request_Library(benchmark::State& state, bool tls) {
    const std::string base = host().server(tls).baseUrl();
    for (auto _ : state) {
        std::string response;
        if (PresenceAPI::getPresence(response, base) != 0) {
            state.SkipWithError("the signed request failed");
            break;
        }
    }
}

// The signed request as on a machine without a log daemon, where glibc tries
// to connect to one for every line. Under scripts/with-log-daemon the
// daemon's socket ($VELMAR_BENCH_LOG_SOCKET) is renamed away for the run, so
// that both figures come from the same process, interleaved; without it
// there is no daemon anyway. Only a socket in the private /dev that script
// makes (it leaves a marker there) is ever renamed, never a machine's own.
void Request_LibraryNoLogDaemon(benchmark::State& state, bool tls) {
    const char* socket = std::getenv("VELMAR_BENCH_LOG_SOCKET");
    std::string path = socket != nullptr ? socket : "";
    if (!path.empty()) {
        const std::string marker = path.substr(0, path.rfind('/') + 1) + ".velmar-bench-private";
        if (access(marker.c_str(), F_OK) != 0) {
            state.SkipWithError("the log socket is not in a private /dev of the benchmark's");
            return;
        }
    }
    const std::string hidden = path + ".hidden";
    if (!path.empty() && std::rename(path.c_str(), hidden.c_str()) != 0) {
        state.SkipWithError("cannot hide the log daemon's socket");
        return;
    }
    closelog();  // a connected socket would outlive the rename
    Request_Library(state, tls);
    if (!path.empty()) std::rename(hidden.c_str(), path.c_str());
    closelog();
}

// The host port's transport alone, for the same GET: what the port adds to
// libcurl, apart from the signing that the library adds on top.
void Request_Transport(benchmark::State& state, bool tls) {
    const std::string base = host().server(tls).baseUrl();
    const std::string query =
        std::string(bench::kBarePath).substr(std::strlen("/device/presence/?"));
    const std::vector<std::string> headers{bench::kBareCookie};
    for (auto _ : state) {
        int status = 0;
        std::string body, message;
        velmar::utils::ErrorType error = velmar::utils::ERROR_NONE;
        if (!velmar::http::HTTPRequest::httpRequest(status, body, error, message, base,
                                                    "/device/presence/", query, "GET", headers,
                                                    15000)) {
            state.SkipWithError("the transport failed");
            break;
        }
    }
}

// One handle for every call: its connection (and TLS session) is reused.
void Request_BareReused(benchmark::State& state, bool tls) {
    CURL* curl = curl_easy_init();
    for (auto _ : state) {
        if (!bareGet(curl, tls)) {
            state.SkipWithError("the bare request failed");
            break;
        }
    }
    curl_easy_cleanup(curl);
}

// A new handle per call: a new connection and, over HTTPS, a full handshake,
// which is what a transport without reuse pays every time.
void Request_BareFresh(benchmark::State& state, bool tls) {
    for (auto _ : state) {
        CURL* curl = curl_easy_init();
        const bool ok = bareGet(curl, tls);
        curl_easy_cleanup(curl);
        if (!ok) {
            state.SkipWithError("the bare request failed");
            break;
        }
    }
}

// A new connection per call, but the TLS session resumed from a share.
void Request_BareFreshResumed(benchmark::State& state) {
    CURLSH* share = curl_share_init();
    curl_share_setopt(share, CURLSHOPT_SHARE, CURL_LOCK_DATA_SSL_SESSION);
    for (auto _ : state) {
        CURL* curl = curl_easy_init();
        curl_easy_setopt(curl, CURLOPT_SHARE, share);
        const bool ok = bareGet(curl, true);
        curl_easy_cleanup(curl);
        if (!ok) {
            state.SkipWithError("the bare request failed");
            break;
        }
    }
    curl_share_cleanup(share);
}

// Several daemon threads calling at once: no lock may serialise the calls.
// Against the instant server the calls contend for the two cores with the
// server itself; against the distant one they mostly wait, and the waits of
// several threads must overlap.
void Throughput_Library(benchmark::State& state, bool distant) {
    const std::string base = (distant ? host().distant : host().https).baseUrl();
    for (auto _ : state) {
        std::string response;
        if (PresenceAPI::getPresence(response, base) != 0) {
            state.SkipWithError("the signed request failed");
            break;
        }
    }
    state.SetItemsProcessed(state.iterations());
}

}  // namespace

BENCHMARK_CAPTURE(Request_Library, http, false)->UseRealTime();
BENCHMARK_CAPTURE(Request_LibraryNoLogDaemon, http, false)->UseRealTime();
BENCHMARK_CAPTURE(Request_Transport, http, false)->UseRealTime();
BENCHMARK_CAPTURE(Request_BareReused, http, false)->UseRealTime();
BENCHMARK_CAPTURE(Request_BareFresh, http, false)->UseRealTime();
BENCHMARK_CAPTURE(Request_Library, https, true)->UseRealTime();
BENCHMARK_CAPTURE(Request_LibraryNoLogDaemon, https, true)->UseRealTime();
BENCHMARK_CAPTURE(Request_Transport, https, true)->UseRealTime();
BENCHMARK_CAPTURE(Request_BareReused, https, true)->UseRealTime();
BENCHMARK_CAPTURE(Request_BareFresh, https, true)->UseRealTime();
BENCHMARK(Request_BareFreshResumed)->UseRealTime();
BENCHMARK_CAPTURE(Throughput_Library, instant, false)
    ->Threads(1)
    ->Threads(2)
    ->Threads(4)
    ->Threads(8)
    ->UseRealTime();
BENCHMARK_CAPTURE(Throughput_Library, distant, true)
    ->Threads(1)
    ->Threads(2)
    ->Threads(4)
    ->Threads(8)
    ->UseRealTime();
