// The directly addressed services: upgrade check, time, log uploads, the
// action log, binding and the account's user profile.
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <iostream>

#include "Command.h"
#include "Common.h"
#include "velmar/quil/QuilConfigUtils.h"
#include "velmar/quil/api/ActionLogAPI.h"
#include "velmar/quil/api/BindAPI.h"
#include "velmar/quil/api/GetUserProfileAPI.h"
#include "velmar/quil/api/LogUploadAPI.h"
#include "velmar/quil/api/TimeSyncAPI.h"
#include "velmar/quil/api/UpgradeAPI.h"

namespace quilctl {

namespace {

using velmar::quil::QuilConfigUtils;
using namespace velmar::quil::api;

// A device value, or "" when the device has none.
std::string deviceValue(bool (*get)(std::string&)) {
    std::string value;
    return get(value) ? value : std::string();
}

std::string nowMillis() {
    using namespace std::chrono;
    return std::to_string(
        duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count());
}

// One upload identifier per run: the hardware, the device and the moment.
std::string uploadId() {
    return LogUploadAPI::generateUploadID(deviceValue(QuilConfigUtils::getHardware),
                                          deviceValue(QuilConfigUtils::getDeviceID), nowMillis());
}

int runUpgradeCheck(const Args& args, Output& out) {
    const std::string platform =
        args.positional.size() > 0 ? args.positional[0] : deviceValue(QuilConfigUtils::getHardware);
    const std::string version = args.positional.size() > 1
                                    ? args.positional[1]
                                    : deviceValue(QuilConfigUtils::getROMVersion);
    std::string link;
    long long size = -1;
    const bool ok = UpgradeAPI::checkUpgrade(
        link, size, platform, deviceValue(QuilConfigUtils::getDeviceID), version,
        deviceValue(QuilConfigUtils::getROMChannel), deviceValue(QuilConfigUtils::getLocale),
        deviceValue(QuilConfigUtils::getCountryCode));
    out.add("platform", platform);
    out.add("version", version);
    // Cleared beforehand, the link tells an offer from none.
    out.add("offered", ok && !link.empty());
    if (ok && !link.empty()) {
        out.add("link", link);
        out.add("size", size);
    }
    return reportOk(out, ok);
}

int runTimeSync(const Args&, Output& out) {
    long long serverTime = 0;
    auto status = TimeSyncAPI::request(serverTime);
    if (status == velmar::utils::ERROR_NONE) out.add("serverTime", serverTime);
    return reportStatus(out, status);
}

int runLogUpload(const Args& args, Output& out) {
    const std::string payload =
        args.positional.empty() ? "quilctl log-upload at " + nowMillis() : args.positional[0];
    const std::string id = uploadId();
    std::string response;
    const bool ok = LogUploadAPI::upload(response, id, deviceValue(QuilConfigUtils::getROMVersion),
                                         deviceValue(QuilConfigUtils::getDeviceID), payload);
    out.add("uploadId", id);
    out.addDocument("response", response);
    return reportOk(out, ok);
}

int runLogUploadLite(const Args& args, Output& out) {
    const std::string id = uploadId();
    std::string response;
    const bool ok = LogUploadAPI::uploadLite(
        response, id, deviceValue(QuilConfigUtils::getROMVersion),
        deviceValue(QuilConfigUtils::getDeviceID), nowMillis(), args.positional[0]);
    out.add("uploadId", id);
    out.add("file", args.positional[0]);
    out.addDocument("response", response);
    return reportOk(out, ok);
}

int runActionLog(const Args& args, Output& out) {
    const std::string host = args.positional.size() > 1 ? args.positional[1] : cloudBaseUrl();
    std::string response;
    // The call prints its progress; standard output is kept for the one JSON object.
    std::streambuf* saved = std::cout.rdbuf(std::cerr.rdbuf());
    auto status = ActionLogAPI::upload(response, deviceValue(QuilConfigUtils::getDeviceID),
                                       args.positional[0], host);
    std::cout.rdbuf(saved);
    out.addDocument("response", response);
    return reportStatus(out, status);
}

int runBind(const Args& args, Output& out) {
    char* end = nullptr;
    errno = 0;
    const long long userId = std::strtoll(args.positional[0].c_str(), &end, 10);
    if (args.positional[0].empty() || *end != '\0' || errno == ERANGE) {
        std::cerr << "quilctl: USER_ID must be a decimal number\n";
        return 2;
    }
    std::string response;
    auto status = BindAPI::bind(response, userId, args.positional[1]);
    out.addDocument("response", response);
    return reportStatus(out, status);
}

int runUserProfile(const Args& args, Output& out) {
    unsigned long long userId = 0;
    auto status = GetUserProfileAPI::request(userId, args.positional[0], args.positional[1]);
    if (status == velmar::utils::ERROR_NONE) out.add("userId", userId);
    return reportStatus(out, status);
}

}  // namespace

std::vector<Command> directCommands() {
    return {
        {"upgrade-check", "[PLATFORM [VERSION]]",
         "ask the upgrade service for a newer image (default: this device's)", 0, 2,
         runUpgradeCheck},
        {"time-sync", "", "the time service's current time", 0, 0, runTimeSync},
        {"log-upload", "[PAYLOAD]", "post a signed log record to the log service", 0, 1,
         runLogUpload},
        {"log-upload-lite", "FILE", "upload a log archive as a multipart form", 1, 1,
         runLogUploadLite},
        {"action-log", "PAYLOAD [HOST]", "post an action-log record (default HOST: the cloud)", 1,
         2, runActionLog},
        {"bind", "USER_ID PAYLOAD", "bind the device to an account", 2, 2, runBind},
        {"user-profile", "CLIENT_ID TOKEN", "the user ID an account access token belongs to", 2, 2,
         runUserProfile},
    };
}

}  // namespace quilctl
