// Serial-number lookups, the carrier operator and the Andlink device ID.
// The lookups take --preview to ask the preview user-profile service.
#include "Command.h"
#include "Common.h"
#include "velmar/quil/api/CarrierOperator.h"
#include "velmar/quil/api/CmccAndlinkAPI.h"
#include "velmar/quil/api/DeviceSnCmei.h"
#include "velmar/quil/api/DeviceSnCtei.h"
#include "velmar/quil/api/DeviceSnProfile.h"

namespace quilctl {

namespace {

using namespace velmar::quil::api;

int lookup(const Args& args, Output& out, velmar::utils::ErrorType (*call)(std::string&, bool)) {
    std::string result;
    auto status = call(result, args.has("--preview"));
    out.add("preview", args.has("--preview"));
    out.addDocument("result", result);
    return reportStatus(out, status);
}

int runCmei(const Args& args, Output& out) {
    return lookup(args, out, DeviceSnCmei::getDeviceCmeiBySn);
}
int runCtei(const Args& args, Output& out) {
    return lookup(args, out, DeviceSnCtei::getDeviceCteiBySn);
}
int runProfile(const Args& args, Output& out) {
    return lookup(args, out, DeviceSnProfile::getDeviceProfileBySn);
}
int runCarrierStatus(const Args& args, Output& out) {
    return lookup(args, out, CarrierOperator::getCarrierOperatorStatus);
}

int runCarrierSet(const Args& args, Output& out) {
    // No status of its own: a refused text shows in the log (--verbose).
    CarrierOperator::setCarrierOperatorStatus(args.positional[0]);
    out.add("file", "/data/messagingagent/carrier");
    return 0;
}

int runAndlinkGet(const Args&, Output& out) {
    std::string id;
    auto status = CmccAndlinkAPI::getDeviceID(id, cloudBaseUrl());
    // An empty ID with status 0 is the cloud's refusal.
    out.add("cmccDeviceId", id);
    return reportStatus(out, status);
}

int runAndlinkSet(const Args& args, Output& out) {
    auto status = CmccAndlinkAPI::setDeviceID(args.positional[0], cloudBaseUrl());
    return reportStatus(out, status);
}

}  // namespace

std::vector<Command> serialCommands() {
    return {
        {"cmei", "[--preview]", "the device's CMEI by serial number", 0, 0, runCmei},
        {"ctei", "[--preview]", "the device's CTEI by serial number", 0, 0, runCtei},
        {"profile", "[--preview]", "the device profile", 0, 0, runProfile},
        {"carrier-status", "[--preview]", "the carrier-operator status of the serial number", 0, 0,
         runCarrierStatus},
        {"carrier-set-status", "JSON", "store a carrier-operator status on the device", 1, 1,
         runCarrierSet},
        {"andlink-get", "", "the Andlink device ID the cloud keeps", 0, 0, runAndlinkGet},
        {"andlink-set", "ID", "store an Andlink device ID in the cloud", 1, 1, runAndlinkSet},
    };
}

}  // namespace quilctl
