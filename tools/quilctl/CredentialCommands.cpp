// The device's standing with the cloud: registration, the token pair, the
// keep-alive key and the super administrator. Credentials are shown masked.
#include <rapidjson/document.h>

#include <stdexcept>

#include "Command.h"
#include "Common.h"
#include "velmar/quil/QuilConfigUtils.h"
#include "velmar/quil/api/DeviceAPI.h"

namespace quilctl {

namespace {

using velmar::quil::QuilConfigUtils;
using velmar::quil::api::DeviceAPI;
using velmar::utils::ERROR_NONE;
using velmar::utils::ErrorType;

int runRegisterCheck(const Args&, Output& out) {
    std::string registration;
    auto status = DeviceAPI::checkRegistrationStatus(registration, cloudBaseUrl());
    if (status == ERROR_NONE) out.add("registration", registration);
    return reportStatus(out, status);
}

int runSuperAdmin(const Args& args, Output& out) {
    long long userId = 0;
    auto status = DeviceAPI::getSuperAdmin(userId, cloudBaseUrl(), args.has("--master"));
    if (status == ERROR_NONE) out.add("superAdmin", userId);
    return reportStatus(out, status);
}

// The local cloud answers a renewal or transfer with
// {"code":0,"data":{"deviceTokenV2":T,"signatureV2":S}}; like the messaging
// agent, the pair is stored for every later request. Anything else is shown
// as it came and nothing is stored.
int storeTokenPair(ErrorType (*call)(std::string&, const std::string&), Output& out) {
    std::string response;
    auto status = call(response, cloudBaseUrl());
    if (status != ERROR_NONE) return reportStatus(out, status);
    rapidjson::Document answer;
    answer.Parse(response.c_str());
    const rapidjson::Value* data = nullptr;
    if (answer.IsObject() && answer.HasMember("code") && answer["code"] == 0 &&
        answer.HasMember("data") && answer["data"].IsObject()) {
        data = &answer["data"];
    }
    if (data == nullptr || !data->HasMember("deviceTokenV2") ||
        !(*data)["deviceTokenV2"].IsString() || !data->HasMember("signatureV2") ||
        !(*data)["signatureV2"].IsString()) {
        out.addDocument("response", response);
        out.add("stored", false);
        reportStatus(out, status);
        return 1;
    }
    const std::string token = (*data)["deviceTokenV2"].GetString();
    const std::string signature = (*data)["signatureV2"].GetString();
    out.add("deviceTokenV2", masked(token));
    out.add("signatureV2", masked(signature));
    const bool stored = QuilConfigUtils::setDeviceTokenAndSignature(token, signature);
    out.add("stored", stored);
    reportStatus(out, status);
    return stored ? 0 : 1;
}

int runTokenRenew(const Args&, Output& out) {
    return storeTokenPair(DeviceAPI::requestDeviceTokenV2, out);
}

int runTokenTransfer(const Args&, Output& out) {
    return storeTokenPair(DeviceAPI::requestDeviceTransfer, out);
}

int runKeepAliveKey(const Args&, Output& out) {
    std::string key;
    auto status = DeviceAPI::keepAliveKeyGet(key, cloudBaseUrl());
    if (!key.empty()) out.add("key", masked(key));
    return reportStatus(out, status);
}

int runAdminSync(const Args& args, Output& out) {
    try {
        const bool ok = QuilConfigUtils::syncAdminStatus(args.has("--master"));
        long long stored = 0;
        if (QuilConfigUtils::getSuperAdmin(stored)) out.add("superAdmin", stored);
        return reportOk(out, ok);
    } catch (const std::exception& e) {
        // The stored id does not parse; the administrator lock is free again.
        out.add("error", std::string(e.what()));
        return reportOk(out, false);
    }
}

int runAdminClear(const Args&, Output& out) {
    return reportOk(out, QuilConfigUtils::clearAdminStatus());
}

}  // namespace

std::vector<Command> credentialCommands() {
    return {
        {"register-check", "", "whether the cloud holds the device's registration as valid", 0, 0,
         runRegisterCheck},
        {"super-admin", "[--master]", "the cloud's super administrator of the device", 0, 0,
         runSuperAdmin},
        {"token-renew", "", "renew the device token pair and store the new one", 0, 0,
         runTokenRenew},
        {"token-transfer", "", "move the device onto a token pair and store it", 0, 0,
         runTokenTransfer},
        {"keepalive-key", "", "the key of the low-power keep-alive mode", 0, 0, runKeepAliveKey},
        {"admin-sync", "[--master]", "bring the stored administrator in line with the cloud's", 0,
         0, runAdminSync},
        {"admin-clear", "", "forget the stored administrator", 0, 0, runAdminClear},
    };
}

}  // namespace quilctl
