// Signed requests of the device family: presence and ping.
#include "Command.h"
#include "Common.h"
#include "velmar/quil/api/PingAPI.h"
#include "velmar/quil/api/PresenceAPI.h"

namespace quilctl {

namespace {

using namespace velmar::quil::api;

int runPresence(const Args&, Output& out) {
    std::string response;
    auto status = PresenceAPI::getPresence(response, cloudBaseUrl());
    out.addDocument("response", response);
    return reportStatus(out, status);
}

int runPing(const Args& args, Output& out) {
    std::string response;
    auto status = PingAPI::pingDevice(response, cloudBaseUrl(), args.positional[0]);
    out.addDocument("response", response);
    return reportStatus(out, status);
}

}  // namespace

std::vector<Command> deviceCommands() {
    return {
        {"presence", "", "ask the cloud for the device's presence", 0, 0, runPresence},
        {"ping", "LEVEL", "ping the cloud with a ping level", 1, 1, runPing},
    };
}

}  // namespace quilctl
