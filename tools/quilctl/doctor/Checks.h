// Internal to the doctor: the families of checks and what they hand on.
#pragma once

#include <chrono>
#include <map>
#include <string>
#include <vector>

#include "Doctor.h"

namespace quilctl {
namespace doctor {

class Report {
  public:
    explicit Report(std::string area) : mArea(std::move(area)) {}
    void ok(const std::string& check, const std::string& value);
    void warn(const std::string& check, const std::string& value, const std::string& cause,
              const std::string& advice);
    void fail(const std::string& check, const std::string& value, const std::string& cause,
              const std::string& advice);
    void appendTo(std::vector<Finding>& all) const;
    bool failed() const;

  private:
    std::string mArea;
    std::vector<Finding> mFindings;
};

// A device path ("/data/device/sn") under $VELMAR_ROOT when it is set.
std::string devicePath(const std::string& path);

// Control characters written as escapes ("\r", "\n", "\xHH").
std::string escaped(const std::string& text);

// A credential as the log writer shows it: at most its first four characters.
std::string maskedCredential(const std::string& value);

// The service URLs the configuration holds (key -> URL); only well-formed ones.
using ServiceUrls = std::map<std::string, std::string>;

void checkConfig(Report& report, ServiceUrls& urls);
void checkStore(Report& report);
void checkLog(Report& report);

// The clock against the build time; `serverMillis` is the time service's
// answer (-1 when none) with `why` telling why not.
void checkClock(Report& report, long long serverMillis, const std::string& why);

// Each configured host:port contacted once; fills the time service's answer
// and whether the device cloud service's host answered.
struct NetworkResult {
    long long serverMillis = -1;
    std::string timeWhy = "sTimeSyncURL is not configured";
    bool apiReachable = false;
};
void checkNetwork(Report& report, const ServiceUrls& urls, const Options& options,
                  std::chrono::steady_clock::time_point deadline, NetworkResult& result);

void checkCredentials(Report& report, const ServiceUrls& urls, const NetworkResult& network);

}  // namespace doctor
}  // namespace quilctl
