// The device's identity as the library reads it.
#include <vector>

#include "Command.h"
#include "Common.h"
#include "velmar/quil/QuilConfigUtils.h"

namespace quilctl {

namespace {

using velmar::quil::QuilConfigUtils;

int runIdentity(const Args&, Output& out) {
    std::vector<std::string> missing;
    auto text = [&](const char* key, bool (*get)(std::string&), bool secret = false) {
        std::string value;
        if (get(value)) {
            out.add(key, secret ? masked(value) : value);
        } else {
            missing.push_back(key);
        }
    };
    text("sn", QuilConfigUtils::getSN);
    text("mac", QuilConfigUtils::getMAC);
    text("deviceId", QuilConfigUtils::getDeviceID);
    text("channelSecret", QuilConfigUtils::getChannelSecret, true);
    text("veotDid", QuilConfigUtils::getVeotDID);
    text("romVersion", QuilConfigUtils::getROMVersion);
    text("romChannel", QuilConfigUtils::getROMChannel);
    text("hardware", QuilConfigUtils::getHardware);
    text("veBrainAppId", QuilConfigUtils::getVeBrainAppID);
    text("countryCode", QuilConfigUtils::getCountryCode);
    text("imei", QuilConfigUtils::getIMEI);
    text("carrier", QuilConfigUtils::getCarrier);
    text("locale", QuilConfigUtils::getLocale);
    text("bssid", QuilConfigUtils::getBSSID);
    text("otaStatus", QuilConfigUtils::getOTAStatus);
    text("upgradeCheckDate", QuilConfigUtils::getUpgradeCheckDate);

    try {
        long long admin = 0;
        if (QuilConfigUtils::getSuperAdmin(admin)) {
            out.add("superAdmin", admin);
        } else {
            missing.push_back("superAdmin");
        }
    } catch (const std::exception& e) {
        out.add("superAdminError", std::string(e.what()));
    }
    std::string host;
    int port = 0;
    if (QuilConfigUtils::getBrokerAddress(host, port)) {
        out.add("brokerHost", host);
        out.add("brokerPort", port);
    } else {
        missing.push_back("brokerAddress");
    }
    std::string token, signature;
    if (QuilConfigUtils::getDeviceTokenAndSignature(token, signature)) {
        out.add("deviceToken", masked(token));
        out.add("deviceTokenSign", masked(signature));
    } else {
        missing.push_back("deviceToken");
    }
    out.addStrings("missing", missing);
    return 0;
}

}  // namespace

std::vector<Command> identityCommands() {
    return {
        {"identity", "", "print every identity value the library reads (credentials masked)", 0, 0,
         runIdentity},
    };
}

}  // namespace quilctl
