#pragma once

#include <mutex>
#include <string>

#include "velmar/quil/Export.h"

namespace velmar {
namespace quil {

/// The device's identity and persistent settings, read from and written to
/// the platform's device store and tools.
///
/// Static functions only; true is success. A getter that fails leaves its
/// out-parameters untouched unless it says otherwise. The store's getters and
/// setters return at once; keepAliveKeyGet() and syncAdminStatus() make one
/// cloud call (15 s at most), the assistant-level and experience-plan calls
/// run a platform tool (30 s at most on the host port). Safe from several
/// threads at once; only syncAdminStatus() and clearAdminStatus() take a lock.
class VELMAR_QUIL_EXPORT QuilConfigUtils {
  public:
    QuilConfigUtils() = delete;

    /// Does nothing; kept so that callers may initialise symmetrically.
    /// @return true
    static bool initialize();

    /// @name The device store's plain values
    /// Each is false when the value is missing, empty or longer than 63 bytes.
    ///@{

    /// @param[out] did the IoT platform's device ID (`iot_did`)
    /// @return whether `did` was read
    static bool getVeotDID(std::string& did);
    /// @param[out] deviceId the device ID the cloud registered (`deviceid`)
    /// @return whether `deviceId` was read
    static bool getDeviceID(std::string& deviceId);
    /// @param[out] secret the channel secret that signs every device request (`channel_secret`)
    /// @return whether `secret` was read
    static bool getChannelSecret(std::string& secret);
    /// @param[out] version the firmware version (`version`)
    /// @return whether `version` was read
    static bool getROMVersion(std::string& version);
    /// @param[out] channel the firmware's release channel (`channel`)
    /// @return whether `channel` was read
    static bool getROMChannel(std::string& channel);
    /// @param[out] hardware the hardware model (`model`)
    /// @return whether `hardware` was read
    static bool getHardware(std::string& hardware);
    /// @param[out] appId the voice assistant's application ID (`appid`)
    /// @return whether `appId` was read
    static bool getVeBrainAppID(std::string& appId);
    /// @param[out] mac the MAC address (`mac`)
    /// @return whether `mac` was read
    static bool getMAC(std::string& mac);
    /// @param[out] countryCode the country code, e.g. "TW" (`countrycode`)
    /// @return whether `countryCode` was read
    static bool getCountryCode(std::string& countryCode);
    /// @param[out] imei the IMEI (`imei`)
    /// @return whether `imei` was read
    static bool getIMEI(std::string& imei);
    /// @param[out] carrier the network carrier (`carrier`)
    /// @return whether `carrier` was read
    static bool getCarrier(std::string& carrier);
    ///@}

    /// Delivers the signal-strength number (callers rely on it under this name).
    /// @param[out] value the platform's signal strength in decimal ("0" when unknown)
    /// @return true
    static bool getBSSID(std::string& value);
    /// The serial number the device is known by.
    /// @param[out] sn the serial number, or "SN/" + MAC when the device has none stored
    /// @return false when neither is stored
    static bool getSN(std::string& sn);
    /// The locally stored administrator (the account the device is bound to).
    /// @param[out] userId the stored ID; -1 when the stored text fails the
    ///     platform's validity test (`uid_isvalid_str`)
    /// @return false when no administrator is stored
    /// @throws std::invalid_argument, std::out_of_range when a text that passed
    ///     the validity test does not parse as a signed 64-bit decimal
    static bool getSuperAdmin(long long& userId);
    /// The device's locale, from its country code.
    /// @param[out] locale "zh_TW" for country code "TW", "zh_CN" otherwise (also without one)
    /// @return true
    static bool getLocale(std::string& locale);
    /// The messaging broker the device connects to.
    /// @param[out] host the broker's host (`broker_host`, up to 127 bytes)
    /// @param[out] port the broker's port (`broker_port`)
    /// @return false when either is missing, or the port text does not start
    ///     with a number that fits an int (logged)
    static bool getBrokerAddress(std::string& host, int& port);
    /// The firmware-update status the platform keeps.
    /// @param[out] status the text of "/data/status/ota" without one trailing
    ///     newline; may be empty
    /// @return false when the file cannot be read
    static bool getOTAStatus(std::string& status);
    /// When the upgrade service was last asked, as setUpgradeCheckDate() stored it.
    /// @param[out] date the date of the last upgrade check (`upgrade_date`); may be empty
    /// @return false when the platform reports a failure
    static bool getUpgradeCheckDate(std::string& date);
    /// The device token pair the cloud issued (renewed with
    /// api::DeviceAPI::requestDeviceTokenV2()).
    /// @param[out] token the device token (`device_token`); written even when
    ///     the signature read then fails
    /// @param[out] signature its signature (`device_token_sign`)
    /// @return false when either read fails
    static bool getDeviceTokenAndSignature(std::string& token, std::string& signature);

    /// @name Setters
    /// Each strips single quotes from the values first (the platform stores
    /// them through shell-quoted commands) and is true when everything was stored.
    ///@{

    /// Stores the secret first: if that fails, the old device ID stays with the old secret.
    /// @param deviceId the device ID the cloud registered
    /// @param channelSecret its channel secret
    /// @return whether both were stored
    static bool setDeviceIDAndChannelSecret(const std::string& deviceId,
                                            const std::string& channelSecret);
    /// Stores the token first, then its signature.
    /// @param token the device token from the cloud's renewal or transfer answer
    /// @param signature its signature
    /// @return whether both were stored
    static bool setDeviceTokenAndSignature(const std::string& token, const std::string& signature);
    /// @param date the date of this upgrade check, in the caller's format
    /// @return whether it was stored
    static bool setUpgradeCheckDate(const std::string& date);
    /// Stores the host first, then the port.
    /// @param host the broker's host
    /// @param port the broker's port
    /// @return whether both were stored
    static bool setBrokerAddress(const std::string& host, int port);
    ///@}

    /// The low-power keep-alive key from the device cloud service named by
    /// `sQuilAPIURL` in the messaging configuration (api::DeviceAPI::keepAliveKeyGet()).
    /// @param[out] key the key; stays as it was when the call fails or the answer carries none
    static void keepAliveKeyGet(std::string& key);

    /// The voice assistant's service level, as "/usr/bin/vebrain_level get" prints it.
    /// @param[out] level its "level"; emptied when the tool fails or prints no JSON
    /// @return false when the tool fails, prints no JSON or no string "level" (logged)
    static bool getVEBrainLevel(std::string& level);
    /// Runs "/usr/bin/vebrain_level LEVEL".
    /// @param level "preview", "product" or "preview4test"; any other is refused
    ///     without running the tool (the level reaches the shell unquoted)
    /// @return false when refused or the tool fails (logged)
    static bool setVEBrainLevel(const std::string& level);
    /// The user-experience-plan switch, as "/usr/bin/experience_plan get" prints it.
    /// @param[out] enabled whether its "enable" is "true"
    /// @return false when the tool fails or "enable" is not exactly "true" or "false" (logged)
    static bool getExperiencePlan(bool& enabled);
    /// Runs "/usr/bin/experience_plan true" or "... false".
    /// @param enabled the new state
    /// @return false when the tool fails (logged)
    static bool setExperiencePlan(bool enabled);

    /// Brings the stored administrator in line with the cloud's
    /// (api::DeviceAPI::getSuperAdmin()), running the platform's bind action
    /// (`bind_uid`, a new administrator) or unbind action (`dev_restore`,
    /// none) when it changed, then storing the new ID ("-1" for none).
    /// Holds sAdminStatusMutex throughout, network call included.
    /// @param master whether to ask the cloud's master copy
    /// @return true when the device agrees with the cloud afterwards; false
    ///     when the cloud could not be asked (nothing changed) or the new ID
    ///     not stored (the bind or unbind action has run)
    /// @throws std::invalid_argument, std::out_of_range as getSuperAdmin() does
    ///     on a stored ID that does not parse
    static bool syncAdminStatus(bool master);
    /// Forgets the stored administrator (`uid_clean`), under sAdminStatusMutex.
    /// @return whether the platform forgot it
    static bool clearAdminStatus();
    /// Held for the whole of syncAdminStatus() and of clearAdminStatus(), so
    /// that they never interleave. Not recursive: a caller that takes it must
    /// not call either of them while it holds it.
    static std::mutex sAdminStatusMutex;
};

}  // namespace quil
}  // namespace velmar
