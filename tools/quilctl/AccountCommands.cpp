// Services of the account that administers the device.
#include <cerrno>
#include <cstdlib>

#include "Command.h"
#include "Common.h"
#include "velmar/quil/api/ClientInfoListAPI.h"
#include "velmar/quil/api/CommonConfigAPI.h"
#include "velmar/quil/api/PrivacySettingsAPI.h"
#include "velmar/quil/api/VoipDurationAPI.h"

namespace quilctl {

namespace {

using namespace velmar::quil::api;
using velmar::utils::ErrorType;

int rawAnswer(Output& out, ErrorType status, const std::string& response) {
    out.addDocument("response", response);
    return reportStatus(out, status);
}

// A user ID in full unsigned 64-bit range; false when USERID is not one.
bool parseUserId(const std::string& text, unsigned long long& userId) {
    if (text.empty() || text.find_first_not_of("0123456789") != std::string::npos) return false;
    errno = 0;
    userId = std::strtoull(text.c_str(), nullptr, 10);
    return errno == 0;
}

int runClientList(const Args&, Output& out) {
    std::string response;
    auto status = ClientInfoListAPI::getClientList(response, cloudBaseUrl());
    return rawAnswer(out, status, response);
}

int runVoipStatus(const Args&, Output& out) {
    std::string response;
    auto status = VoipDurationAPI::getStatus(response, cloudBaseUrl());
    return rawAnswer(out, status, response);
}

int runVoipAdd(const Args& args, Output& out) {
    std::string response;
    std::string seconds = args.positional[0];
    auto status = VoipDurationAPI::add(response, cloudBaseUrl(), seconds);
    return rawAnswer(out, status, response);
}

int runCommonConfig(const Args& args, Output& out) {
    std::string response;
    std::string name = args.positional[0];
    auto status = CommonConfigAPI::getConfig(response, cloudBaseUrl(), name);
    return rawAnswer(out, status, response);
}

int runPrivacySet(const Args& args, Output& out) {
    unsigned long long userId = 0;
    if (!parseUserId(args.positional[0], userId)) {
        return reportStatus(out, velmar::utils::ERROR_INVALID_ARGUMENT);
    }
    auto status =
        PrivacySettingsAPI::setPrivacySettings(cloudBaseUrl(), userId, args.positional[1]);
    return reportStatus(out, status);
}

int runPrivacyGet(const Args& args, Output& out) {
    unsigned long long userId = 0;
    if (!parseUserId(args.positional[0], userId)) {
        return reportStatus(out, velmar::utils::ERROR_INVALID_ARGUMENT);
    }
    std::string settings;
    auto status = PrivacySettingsAPI::getPrivacySettings(settings, cloudBaseUrl(), userId);
    if (status == velmar::utils::ERROR_NONE) out.addDocument("settings", settings);
    return reportStatus(out, status);
}

}  // namespace

std::vector<Command> accountCommands() {
    return {
        {"client-list", "", "the administrator's client devices", 0, 0, runClientList},
        {"voip-status", "", "voice-call time used this month", 0, 0, runVoipStatus},
        {"voip-add", "SECONDS", "add voice-call time to this month", 1, 1, runVoipAdd},
        {"common-config", "NAME", "a named configuration of the account", 1, 1, runCommonConfig},
        {"privacy-set", "USERID VALUE", "store a user's privacy settings on this device", 2, 2,
         runPrivacySet},
        {"privacy-get", "USERID", "a user's privacy settings on this device", 1, 1, runPrivacyGet},
    };
}

}  // namespace quilctl
