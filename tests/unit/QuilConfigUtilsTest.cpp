
#include <stdexcept>

#include "FakeHelpers.h"

using velmar::quil::QuilConfigUtils;

namespace {

class QuilConfigUtilsTest : public fake::FakeTest {};

// "read " or "failed ", then the value the call left.
std::string outcome(bool found, const std::string& value) {
    return (found ? "read " : "failed ") + value;
}

TEST_F(QuilConfigUtilsTest, SimpleGettersTakeANonEmptyValueOfAZeroStatusInSixtyFourBytes) {
    using Getter = bool (*)(std::string&);
    const std::pair<const char*, Getter> getters[] = {
        {"iot_did", QuilConfigUtils::getVeotDID},
        {"deviceid", QuilConfigUtils::getDeviceID},
        {"channel_secret", QuilConfigUtils::getChannelSecret},
        {"version", QuilConfigUtils::getROMVersion},
        {"channel", QuilConfigUtils::getROMChannel},
        {"model", QuilConfigUtils::getHardware},
        {"appid", QuilConfigUtils::getVeBrainAppID},
        {"mac", QuilConfigUtils::getMAC},
        {"countrycode", QuilConfigUtils::getCountryCode},
        {"imei", QuilConfigUtils::getIMEI},
        {"carrier", QuilConfigUtils::getCarrier},
    };
    for (const auto& [name, get] : getters) {
        SCOPED_TRACE(name);
        fake::reset();
        auto read = [get = get] {
            std::string value = "kept";
            return outcome(get(value), value);
        };
        EXPECT_EQ(read(), "failed kept");
        fake::setDeviceValue(name, std::string(63, 'v'));
        EXPECT_EQ(read(), "read " + std::string(63, 'v'));
        // A filled buffer under a non-zero status is still a failure.
        fake::setStatus(std::string(name) + "_get", 1);
        EXPECT_EQ(read(), "failed kept");
        fake::clearStatus(std::string(name) + "_get");
        fake::setDeviceValue(name, std::string(64, 'v'));
        EXPECT_EQ(read(), "failed kept");
        fake::setDeviceValue(name, "");
        EXPECT_EQ(read(), "failed kept");
    }
}

TEST_F(QuilConfigUtilsTest, TokenPairAndDatesFailOnlyOnANegativeStatus) {
    // Only a negative status fails the token pair; a failed signature read
    // keeps the token read before it.
    fake::setDeviceValue("device_token", std::string(255, 't'));
    std::string token, signature = "before";
    EXPECT_FALSE(QuilConfigUtils::getDeviceTokenAndSignature(token, signature));
    EXPECT_EQ(token + "/" + signature, std::string(255, 't') + "/before");
    fake::setDeviceValue("device_token", "tok");
    fake::setDeviceValue("device_token_sign", std::string(255, 's'));
    fake::setStatus("device_token_get", 3);
    fake::setStatus("device_token_sign_get", 1);
    EXPECT_TRUE(QuilConfigUtils::getDeviceTokenAndSignature(token, signature));
    EXPECT_EQ(token + "/" + signature, "tok/" + std::string(255, 's'));

    // The upgrade date and the OTA status get 128 bytes, and may be empty.
    std::string date = "old";
    fake::setDeviceValue("upgrade_date", "");
    EXPECT_TRUE(QuilConfigUtils::getUpgradeCheckDate(date));
    EXPECT_EQ(date, "");
    fake::setDeviceValue("upgrade_date", std::string(127, 'd'));
    fake::setStatus("upgrade_date_get", 5);
    EXPECT_TRUE(QuilConfigUtils::getUpgradeCheckDate(date));
    EXPECT_EQ(date, std::string(127, 'd'));
    fake::setStatus("upgrade_date_get", -2);
    EXPECT_FALSE(QuilConfigUtils::getUpgradeCheckDate(date));
    std::string status = "kept";
    EXPECT_FALSE(QuilConfigUtils::getOTAStatus(status));
    EXPECT_EQ(status, "kept");
    fake::setFile("/data/status/ota", std::string(200, 'o'));
    EXPECT_TRUE(QuilConfigUtils::getOTAStatus(status));
    EXPECT_EQ(status, std::string(127, 'o'));
    // Exactly one trailing newline goes.
    fake::setFile("/data/status/ota", "upgrading\n\n");
    EXPECT_TRUE(QuilConfigUtils::getOTAStatus(status));
    EXPECT_EQ(status, "upgrading\n");
    fake::setFile("/data/status/ota", "");
    EXPECT_TRUE(QuilConfigUtils::getOTAStatus(status));
    EXPECT_EQ(status, "");
}

TEST_F(QuilConfigUtilsTest, BrokerAddressTakesBothValuesOrNeither) {
    auto read = [] {
        std::string host = "old-host";
        int port = 5;
        const bool found = QuilConfigUtils::getBrokerAddress(host, port);
        return outcome(found, host + ":" + std::to_string(port));
    };
    EXPECT_EQ(read(), "failed old-host:5");
    fake::setDeviceValue("broker_host", std::string(127, 'h'));
    fake::setDeviceValue("broker_port", "1883");
    EXPECT_EQ(read(), "read " + std::string(127, 'h') + ":1883");
    fake::setDeviceValue("broker_port", std::string(16, '1'));
    EXPECT_EQ(read(), "failed old-host:5");
    fake::setDeviceValue("broker_port", "");
    EXPECT_EQ(read(), "failed old-host:5");
    fake::setDeviceValue("broker_host", "");
    EXPECT_EQ(read(), "failed old-host:5");

    fake::setDeviceValue("broker_host", "broker.local");
    fake::setDeviceValue("broker_port", "eighty");
    EXPECT_EQ(read(), "failed old-host:5");
    ASSERT_FALSE(fake::logs().empty());
    EXPECT_EQ(fake::logs().back().level, 4);
    EXPECT_EQ(fake::logs().back().text.rfind("Hit an error: ", 0), 0u);
    EXPECT_NE(fake::logs().back().text.find(", output: eighty"), std::string::npos);
}

TEST_F(QuilConfigUtilsTest, SerialNumberFallsBackToTheMacAddress) {
    auto sn = [] {
        std::string value = "none";
        return outcome(QuilConfigUtils::getSN(value), value);
    };
    EXPECT_EQ(sn(), "failed none");
    fake::setDeviceValue("mac", "");
    EXPECT_EQ(sn(), "failed none");
    fake::setDeviceValue("mac", "a4:cf:12:00:00:01");
    fake::setDeviceValue("sn", "");
    EXPECT_EQ(sn(), "read SN/a4:cf:12:00:00:01");
    // A serial number the platform reports as failed is not used either.
    fake::setDeviceValue("sn", "1234/5678");
    fake::setStatus("sn_get", -1);
    EXPECT_EQ(sn(), "read SN/a4:cf:12:00:00:01");
    fake::setStatus("mac_get", 1);
    EXPECT_EQ(sn(), "failed none");
    fake::clearStatus("sn_get");
    EXPECT_EQ(sn(), "read 1234/5678");
}

TEST_F(QuilConfigUtilsTest, SuperAdminIsMinusOneWhenInvalidAndThrowsWhenUnparsable) {
    auto admin = [] {
        long long userId = 77;
        const bool found = QuilConfigUtils::getSuperAdmin(userId);
        return outcome(found, std::to_string(userId));
    };
    EXPECT_EQ(admin(), "failed 77");
    fake::setDeviceValue("uid", "9007199254740993");
    EXPECT_EQ(admin(), "read 9007199254740993");
    // The buffer alone tells: uid_get's status is not looked at.
    fake::setStatus("uid_get", -1);
    EXPECT_EQ(admin(), "read 9007199254740993");
    fake::setUidInvalid(1);
    EXPECT_EQ(admin(), "read -1");

    fake::setUidInvalid(0);
    fake::setDeviceValue("uid", "not-a-number");
    EXPECT_THROW(admin(), std::invalid_argument);
    fake::setDeviceValue("uid", "99999999999999999999");
    EXPECT_THROW(admin(), std::out_of_range);
}

TEST_F(QuilConfigUtilsTest, LocaleIsTaiwaneseOnlyForExactlyTWAndBssidIsTheSignalStrength) {
    EXPECT_TRUE(QuilConfigUtils::initialize());  // nothing to set up first
    std::string locale;
    EXPECT_TRUE(QuilConfigUtils::getLocale(locale));
    EXPECT_EQ(locale, "zh_CN") << "no country code";
    for (const char* code : {"tw", "CN", "TWN", "TW"}) {
        fake::setDeviceValue("countrycode", code);
        EXPECT_TRUE(QuilConfigUtils::getLocale(locale));
        EXPECT_EQ(locale, std::string(code) == "TW" ? "zh_TW" : "zh_CN") << code;
    }

    std::string bssid;
    fake::setRssi(-57);
    EXPECT_TRUE(QuilConfigUtils::getBSSID(bssid));
    EXPECT_EQ(bssid, "-57");
}

TEST_F(QuilConfigUtilsTest, SettersStripQuotesAndStopAtTheFirstRefusedWrite) {
    // The result, then the writes made, with `refused` answering `status`.
    auto writes = [](bool (*set)(), const char* refused = "", int status = 0) {
        fake::reset();
        if (*refused != '\0') fake::setStatus(refused, status);
        std::string made = set() ? "true" : "false";
        for (const std::string& call : fake::deviceCalls())
            made += " " + call;
        return made;
    };
    auto ids = [] { return QuilConfigUtils::setDeviceIDAndChannelSecret("d'1", "'s'"); };
    auto tokens = [] { return QuilConfigUtils::setDeviceTokenAndSignature("t'o'k", "sig"); };
    auto date = [] { return QuilConfigUtils::setUpgradeCheckDate("'2026-11-23'"); };
    auto broker = [] { return QuilConfigUtils::setBrokerAddress("b'1", -8883); };
    // The secret goes first, so that a refusal keeps the old device ID.
    EXPECT_EQ(writes(ids), "true channel_secret_set(s) deviceid_set(d1)");
    EXPECT_EQ(writes(ids, "channel_secret_set", 1), "false channel_secret_set(s)");
    EXPECT_EQ(writes(ids, "deviceid_set", 1), "false channel_secret_set(s) deviceid_set(d1)");
    // The token pair and the date take any status that is not negative.
    EXPECT_EQ(writes(tokens, "device_token_set", 12),
              "true device_token_set(tok) device_token_sign_set(sig)");
    EXPECT_EQ(writes(tokens, "device_token_set", -1), "false device_token_set(tok)");
    EXPECT_EQ(writes(tokens, "device_token_sign_set", -1),
              "false device_token_set(tok) device_token_sign_set(sig)");
    EXPECT_EQ(writes(date), "true upgrade_date_set(2026-11-23)");
    EXPECT_EQ(writes(date, "upgrade_date_set", -1), "false upgrade_date_set(2026-11-23)");
    EXPECT_EQ(writes(broker), "true broker_host_set(b1) broker_port_set(-8883)");
    EXPECT_EQ(writes(broker, "broker_host_set", 1), "false broker_host_set(b1)");
    EXPECT_EQ(writes(broker, "broker_port_set", 1),
              "false broker_host_set(b1) broker_port_set(-8883)");
}

}  // namespace
