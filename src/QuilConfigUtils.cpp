#include "velmar/quil/QuilConfigUtils.h"

#include <cstdio>
#include <cstring>
#include <stdexcept>

#include "api/ConfiguredService.h"
#include "velmar/device/DeviceInfo.h"
#include "velmar/quil/api/DeviceAPI.h"
#include "velmar/utils/ConfigFile.h"
#include "velmar/utils/Logging.h"
#include "velmar/utils/StringUtils.h"

namespace velmar {
namespace quil {

using utils::StringUtils;

namespace {

// Buffer sizes the platform functions are called with.
constexpr int kValueSize = 64;
constexpr int kLongValueSize = 128;  // broker host, upgrade-check date, OTA status
constexpr int kPortSize = 16;
constexpr int kTokenSize = 256;  // device token and its signature

using Getter = int (*)(char*, int);

// The simple getters: zero status and a non-empty buffer make a value.
bool readValue(Getter get, std::string& out) {
    char buffer[kValueSize];
    std::memset(buffer, 0, sizeof(buffer));
    if (get(buffer, sizeof(buffer)) != 0 || buffer[0] == '\0') return false;
    out = buffer;
    return true;
}

std::string noQuotes(const std::string& text) {
    return StringUtils::removeAll(text, '\'');
}

}  // namespace

bool QuilConfigUtils::initialize() {
    return true;
}

bool QuilConfigUtils::getVeotDID(std::string& did) {
    return readValue(iot_did_get, did);
}
bool QuilConfigUtils::getDeviceID(std::string& deviceId) {
    return readValue(deviceid_get, deviceId);
}
bool QuilConfigUtils::getChannelSecret(std::string& secret) {
    return readValue(channel_secret_get, secret);
}
bool QuilConfigUtils::getROMVersion(std::string& version) {
    return readValue(version_get, version);
}
bool QuilConfigUtils::getROMChannel(std::string& channel) {
    return readValue(channel_get, channel);
}
bool QuilConfigUtils::getHardware(std::string& hardware) {
    return readValue(model_get, hardware);
}
bool QuilConfigUtils::getVeBrainAppID(std::string& appId) {
    return readValue(appid_get, appId);
}
bool QuilConfigUtils::getMAC(std::string& mac) {
    return readValue(mac_get, mac);
}
bool QuilConfigUtils::getCountryCode(std::string& countryCode) {
    return readValue(countrycode_get, countryCode);
}
bool QuilConfigUtils::getIMEI(std::string& imei) {
    return readValue(imei_get, imei);
}
bool QuilConfigUtils::getCarrier(std::string& carrier) {
    return readValue(carrier_get, carrier);
}

bool QuilConfigUtils::getBSSID(std::string& value) {
    char buffer[kValueSize];
    std::snprintf(buffer, sizeof(buffer), "%d", rssi_get());
    value = buffer;
    return true;
}

bool QuilConfigUtils::getSN(std::string& sn) {
    char buffer[kValueSize];
    std::memset(buffer, 0, sizeof(buffer));
    if (sn_get(buffer, sizeof(buffer)) == 0 && buffer[0] != '\0') {
        sn = buffer;
        return true;
    }
    // Devices without a stored serial number are known by their MAC address.
    std::memset(buffer, 0, sizeof(buffer));
    if (mac_get(buffer, sizeof(buffer)) != 0 || buffer[0] == '\0') return false;
    sn = std::string("SN/") + buffer;
    return true;
}

bool QuilConfigUtils::getSuperAdmin(long long& userId) {
    char buffer[kValueSize];
    std::memset(buffer, 0, sizeof(buffer));
    uid_get(buffer, sizeof(buffer));  // an empty buffer tells a missing value
    if (buffer[0] == '\0') return false;
    if (uid_isvalid_str(buffer) != 0) {
        userId = -1;
        return true;
    }
    userId = std::stoll(buffer, nullptr, 10);  // parse errors reach the caller
    return true;
}

bool QuilConfigUtils::getLocale(std::string& locale) {
    std::string countryCode;
    getCountryCode(countryCode);
    locale = countryCode == "TW" ? "zh_TW" : "zh_CN";
    return true;
}

bool QuilConfigUtils::getBrokerAddress(std::string& host, int& port) {
    char hostBuffer[kLongValueSize];
    char portBuffer[kPortSize];
    std::memset(hostBuffer, 0, sizeof(hostBuffer));
    std::memset(portBuffer, 0, sizeof(portBuffer));
    if (broker_host_get(hostBuffer, sizeof(hostBuffer)) != 0 || hostBuffer[0] == '\0') return false;
    if (broker_port_get(portBuffer, sizeof(portBuffer)) != 0 || portBuffer[0] == '\0') return false;
    int parsed = 0;
    try {
        parsed = std::stoi(portBuffer, nullptr, 10);
    } catch (const std::exception& e) {  // GCOVR_EXCL_BR_LINE: std::stoi throws nothing else
        VLOG(4) << "Hit an error: " << e.what() << ", "
                << "output: " << portBuffer;
        return false;
    }
    port = parsed;
    host = hostBuffer;
    return true;
}

bool QuilConfigUtils::getOTAStatus(std::string& status) {
    char buffer[kLongValueSize];
    std::memset(buffer, 0, sizeof(buffer));
    if (file_read_string("/data/status/ota", buffer, sizeof(buffer)) < 0) return false;
    std::string text = buffer;
    if (!text.empty() && text.back() == '\n') text.pop_back();
    status = text;
    return true;
}

bool QuilConfigUtils::getUpgradeCheckDate(std::string& date) {
    char buffer[kLongValueSize];
    std::memset(buffer, 0, sizeof(buffer));
    if (upgrade_date_get(buffer, sizeof(buffer)) < 0) return false;
    date = buffer;
    return true;
}

bool QuilConfigUtils::getDeviceTokenAndSignature(std::string& token, std::string& signature) {
    char buffer[kTokenSize];
    std::memset(buffer, 0, sizeof(buffer));
    if (device_token_get(buffer, sizeof(buffer)) < 0) return false;
    token = buffer;
    std::memset(buffer, 0, sizeof(buffer));
    if (device_token_sign_get(buffer, sizeof(buffer)) < 0) return false;
    signature = buffer;
    return true;
}

bool QuilConfigUtils::setDeviceIDAndChannelSecret(const std::string& deviceId,
                                                  const std::string& channelSecret) {
    // The secret goes first: if it fails, the old device ID stays with the old secret.
    if (channel_secret_set(noQuotes(channelSecret).c_str()) != 0) return false;
    return deviceid_set(noQuotes(deviceId).c_str()) == 0;
}

bool QuilConfigUtils::setDeviceTokenAndSignature(const std::string& token,
                                                 const std::string& signature) {
    if (device_token_set(noQuotes(token).c_str()) < 0) return false;
    return device_token_sign_set(noQuotes(signature).c_str()) >= 0;
}

bool QuilConfigUtils::setUpgradeCheckDate(const std::string& date) {
    return upgrade_date_set(noQuotes(date).c_str()) >= 0;
}

bool QuilConfigUtils::setBrokerAddress(const std::string& host, int port) {
    if (broker_host_set(noQuotes(host).c_str()) != 0) return false;
    char buffer[kPortSize];
    std::snprintf(buffer, sizeof(buffer), "%d", port);
    return broker_port_set(buffer) == 0;
}

void QuilConfigUtils::keepAliveKeyGet(std::string& key) {
    api::DeviceAPI::keepAliveKeyGet(key,
                                    api::detail::configuredUrl(utils::ConfigFile::sQuilAPIURL));
}

}  // namespace quil
}  // namespace velmar
