// quilctl doctor: why a speaker cannot reach the cloud. Runs the checks in
// order (configuration, device store, clock, each configured service host,
// credentials, system log) and returns one finding per check. Blocks; only
// the configured hosts are contacted, each host:port once, every step with
// its own time-out and the whole run bounded. Never writes to the device.
#pragma once

#include <string>
#include <vector>

namespace quilctl {
namespace doctor {

enum class Verdict { Ok = 0, Warn = 1, Fail = 2 };

const char* verdictName(Verdict verdict);  // "ok", "warn", "fail"

struct Finding {
    std::string area;   // "config", "store", "clock", "network", "credentials", "log"
    std::string check;  // what was checked: a key, a file, "host:port tls", ...
    Verdict verdict = Verdict::Ok;
    std::string value;   // what was measured; credentials masked
    std::string cause;   // for warn and fail: a stable name, e.g. "control-character"
    std::string advice;  // for warn and fail: what to do
};

struct Options {
    long long stepTimeoutMs = 3000;  // each look-up, connection and answer
    long long runTimeoutMs = 30000;  // the whole run
};

std::vector<Finding> run(const Options& options = Options());

// 0 when every finding is ok, 1 with a warning, 2 with a failure.
int exitCode(const std::vector<Finding>& findings);

// The findings as a JSON array of objects.
std::string toJson(const std::vector<Finding>& findings);

// A short table for a terminal: one line per check, advice under a problem.
std::string toTable(const std::vector<Finding>& findings);

}  // namespace doctor
}  // namespace quilctl
