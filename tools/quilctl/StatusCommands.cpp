// Device status per category, the work-day calendar and the stereo server.
#include "Command.h"
#include "Common.h"
#include "velmar/quil/api/DeviceStatusAPI.h"
#include "velmar/quil/api/StereoAPI.h"
#include "velmar/quil/api/WorkDayConfigAPI.h"

namespace quilctl {

namespace {

using namespace velmar::quil::api;

int runStatusSet(const Args& args, Output& out) {
    auto status =
        DeviceStatusAPI::setDeviceStatus(cloudBaseUrl(), args.positional[0], args.positional[1]);
    return reportStatus(out, status);
}

int runStatusGet(const Args& args, Output& out) {
    std::string value;
    auto status = DeviceStatusAPI::getDeviceStatus(value, cloudBaseUrl(), args.positional[0]);
    if (status == velmar::utils::ERROR_NONE) out.add("deviceStatus", value);
    return reportStatus(out, status);
}

int runWorkDay(const Args& args, Output& out) {
    std::string config;
    const std::string version = args.positional.empty() ? "" : args.positional[0];
    auto status = WorkDayConfigAPI::getWorkDayConfig(config, cloudBaseUrl(), version);
    // An empty config with status 0: the copy for VERSION is current.
    out.add("notModified", status == velmar::utils::ERROR_NONE && config.empty());
    out.addDocument("config", config);
    return reportStatus(out, status);
}

int runStereo(const Args&, Output& out) {
    std::string response;
    auto status = StereoAPI::SetServer(response, cloudBaseUrl());
    out.addDocument("response", response);
    return reportStatus(out, status);
}

}  // namespace

std::vector<Command> statusCommands() {
    return {
        {"device-status-set", "CATEGORY STATUS", "report the device status of one category", 2, 2,
         runStatusSet},
        {"device-status-get", "CATEGORY", "the device status stored for one category", 1, 1,
         runStatusGet},
        {"workday-config", "[VERSION]", "the work-day calendar, unless VERSION is current", 0, 1,
         runWorkDay},
        {"stereo-server", "", "ask for a stereo-pairing server for this hardware", 0, 0, runStereo},
    };
}

}  // namespace quilctl
