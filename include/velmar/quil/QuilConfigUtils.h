#pragma once

#include <mutex>
#include <string>

#include "velmar/quil/Export.h"

namespace velmar {
namespace quil {

// The device's identity and persistent settings, read from and written to
// the platform. Static functions only; true is success.
class VELMAR_QUIL_EXPORT QuilConfigUtils {
  public:
    QuilConfigUtils() = delete;

    // Does nothing; kept so that callers may initialise symmetrically.
    static bool initialize();

    static bool getVeotDID(std::string& did);
    static bool getDeviceID(std::string& deviceId);
    static bool getChannelSecret(std::string& secret);
    static bool getROMVersion(std::string& version);
    static bool getROMChannel(std::string& channel);
    static bool getHardware(std::string& hardware);
    static bool getVeBrainAppID(std::string& appId);
    static bool getMAC(std::string& mac);
    static bool getCountryCode(std::string& countryCode);
    static bool getIMEI(std::string& imei);
    static bool getCarrier(std::string& carrier);

    // Delivers the signal-strength number (callers rely on it under this name).
    static bool getBSSID(std::string& value);
    // The serial number, or "SN/" + MAC when the device has none stored.
    static bool getSN(std::string& sn);
    // The locally stored administrator id; -1 when the stored text fails the
    // platform's validity test. Throws std::invalid_argument/out_of_range
    // when a text that passed the test does not parse.
    static bool getSuperAdmin(long long& userId);
    // "zh_TW" for country code "TW", "zh_CN" otherwise.
    static bool getLocale(std::string& locale);
    static bool getBrokerAddress(std::string& host, int& port);
    static bool getOTAStatus(std::string& status);
    static bool getUpgradeCheckDate(std::string& date);
    // May have written `token` when the signature read fails.
    static bool getDeviceTokenAndSignature(std::string& token, std::string& signature);

    // Setters strip single quotes from the values first.
    static bool setDeviceIDAndChannelSecret(const std::string& deviceId,
                                            const std::string& channelSecret);
    static bool setDeviceTokenAndSignature(const std::string& token, const std::string& signature);
    static bool setUpgradeCheckDate(const std::string& date);
    static bool setBrokerAddress(const std::string& host, int port);

    // The low-power keep-alive key from the device cloud service named in the
    // messaging configuration; `key` stays as it was when the call fails.
    static void keepAliveKeyGet(std::string& key);

    // The voice assistant's service level and the user-experience-plan
    // switch, kept by the platform's tools. The level getter empties `level`
    // when the tool fails or prints no JSON; only "preview", "product" and
    // "preview4test" can be set.
    static bool getVEBrainLevel(std::string& level);
    static bool setVEBrainLevel(const std::string& level);
    static bool getExperiencePlan(bool& enabled);
    static bool setExperiencePlan(bool enabled);

    // Brings the stored administrator in line with the cloud's, running the
    // platform's bind or unbind action when it changed. True when the device
    // agrees with the cloud afterwards; false when the cloud could not be
    // asked or the new id not stored. Throws as getSuperAdmin does on a
    // stored id that does not parse.
    static bool syncAdminStatus(bool master);
    // Forgets the stored administrator.
    static bool clearAdminStatus();
    // Held for the whole of syncAdminStatus (network call included) and of
    // clearAdminStatus, so that they never interleave.
    static std::mutex sAdminStatusMutex;
};

}  // namespace quil
}  // namespace velmar
