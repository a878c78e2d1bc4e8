#include "velmar/quil/QuilConfigUtils.h"

#include <stdexcept>

#include "velmar/fake/FakeTest.h"

using velmar::quil::QuilConfigUtils;
namespace fake = velmar::fake;

namespace {

class QuilConfigUtilsTest : public fake::FakeTest {};

TEST_F(QuilConfigUtilsTest, EachGetterReadsItsStatusWithItsOwnConvention) {
    std::string out = "untouched";
    // Zero means success for the simple getters: a filled buffer with a
    // non-zero status is still a failure.
    fake::setDeviceValue("deviceid", "dev-1");
    fake::setStatus("deviceid_get", 1);
    EXPECT_FALSE(QuilConfigUtils::getDeviceID(out));
    EXPECT_EQ(out, "untouched");
    fake::clearStatus("deviceid_get");
    EXPECT_TRUE(QuilConfigUtils::getDeviceID(out));
    EXPECT_EQ(out, "dev-1");

    // Only a negative status fails the token pair and the upgrade date; a
    // failed signature read keeps the token read before it.
    fake::setDeviceValue("device_token", "tok");
    std::string token, signature = "before";
    EXPECT_FALSE(QuilConfigUtils::getDeviceTokenAndSignature(token, signature));
    EXPECT_EQ(token + "/" + signature, "tok/before");
    fake::setDeviceValue("device_token_sign", "sig");
    fake::setStatus("device_token_get", 3);
    fake::setStatus("device_token_sign_get", 1);
    EXPECT_TRUE(QuilConfigUtils::getDeviceTokenAndSignature(token, signature));
    EXPECT_EQ(token + "/" + signature, "tok/sig");

    fake::setDeviceValue("upgrade_date", "");
    fake::setStatus("upgrade_date_get", 0);
    std::string date = "old";
    EXPECT_TRUE(QuilConfigUtils::getUpgradeCheckDate(date));  // empty is a value here
    EXPECT_EQ(date, "");
    fake::setStatus("upgrade_date_get", -2);
    EXPECT_FALSE(QuilConfigUtils::getUpgradeCheckDate(date));

    // An empty value is a failure for the simple getters.
    fake::setDeviceValue("model", "");
    std::string hardware = "kept";
    EXPECT_FALSE(QuilConfigUtils::getHardware(hardware));
    EXPECT_EQ(hardware, "kept");
}

TEST_F(QuilConfigUtilsTest, BufferSizesFollowTheValueKind) {
    // 63 characters fit the 64-byte buffer of a simple value, 64 do not.
    std::string out;
    fake::setDeviceValue("imei", std::string(63, 'i'));
    EXPECT_TRUE(QuilConfigUtils::getIMEI(out));
    fake::setDeviceValue("imei", std::string(64, 'i'));
    EXPECT_FALSE(QuilConfigUtils::getIMEI(out));

    // Tokens get 256 bytes, the broker host 128 and its port 16.
    std::string token, signature;
    fake::setDeviceValue("device_token", std::string(255, 't'));
    fake::setDeviceValue("device_token_sign", std::string(255, 's'));
    EXPECT_TRUE(QuilConfigUtils::getDeviceTokenAndSignature(token, signature));
    EXPECT_EQ(token.size(), 255u);

    std::string host;
    int port = 0;
    fake::setDeviceValue("broker_host", std::string(127, 'h'));
    fake::setDeviceValue("broker_port", "1883");
    EXPECT_TRUE(QuilConfigUtils::getBrokerAddress(host, port));
    EXPECT_EQ(host.size(), 127u);
    EXPECT_EQ(port, 1883);
    fake::setDeviceValue("broker_port", std::string(16, '1'));
    EXPECT_FALSE(QuilConfigUtils::getBrokerAddress(host, port));
}

TEST_F(QuilConfigUtilsTest, SerialNumberFallsBackToTheMacAddress) {
    // Whether a serial number was found, and the one left in "none".
    auto sn = [] {
        std::string value = "none";
        const bool found = QuilConfigUtils::getSN(value);
        return (found ? "found " : "failed ") + value;
    };
    EXPECT_EQ(sn(), "failed none");
    fake::setDeviceValue("mac", "a4:cf:12:00:00:01");
    EXPECT_EQ(sn(), "found SN/a4:cf:12:00:00:01");
    // A serial number the platform reports as failed is not used either.
    fake::setDeviceValue("sn", "1234/5678");
    fake::setStatus("sn_get", -1);
    EXPECT_EQ(sn(), "found SN/a4:cf:12:00:00:01");
    fake::clearStatus("sn_get");
    EXPECT_EQ(sn(), "found 1234/5678");
}

TEST_F(QuilConfigUtilsTest, SuperAdminIsMinusOneWhenInvalidAndThrowsWhenUnparsable) {
    // Whether an administrator was read, and the ID left in 77.
    auto admin = [] {
        long long userId = 77;
        const bool read = QuilConfigUtils::getSuperAdmin(userId);
        return (read ? "read " : "failed ") + std::to_string(userId);
    };
    EXPECT_EQ(admin(), "failed 77");
    fake::setDeviceValue("uid", "9007199254740993");
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

TEST_F(QuilConfigUtilsTest, BadBrokerPortIsLoggedAndLeavesTheHostAlone) {
    fake::setDeviceValue("broker_host", "broker.local");
    fake::setDeviceValue("broker_port", "eighty");
    std::string host = "old-host";
    int port = 5;
    EXPECT_FALSE(QuilConfigUtils::getBrokerAddress(host, port));
    EXPECT_EQ(host, "old-host");
    EXPECT_EQ(port, 5);
    ASSERT_FALSE(fake::logs().empty());
    EXPECT_EQ(fake::logs().back().level, 4);
    EXPECT_EQ(fake::logs().back().text.rfind("Hit an error: ", 0), 0u);
    EXPECT_NE(fake::logs().back().text.find(", output: eighty"), std::string::npos);
}

TEST_F(QuilConfigUtilsTest, OtaStatusLosesExactlyOneTrailingNewline) {
    std::string status = "kept";
    EXPECT_FALSE(QuilConfigUtils::getOTAStatus(status));
    EXPECT_EQ(status, "kept");
    fake::setFile("/data/status/ota", "upgrading\n\n");
    EXPECT_TRUE(QuilConfigUtils::getOTAStatus(status));
    EXPECT_EQ(status, "upgrading\n");
    fake::setFile("/data/status/ota", "");
    EXPECT_TRUE(QuilConfigUtils::getOTAStatus(status));
    EXPECT_EQ(status, "");
}

TEST_F(QuilConfigUtilsTest, SettersStripQuotesAndWriteTheSecretFirst) {
    EXPECT_TRUE(QuilConfigUtils::setDeviceIDAndChannelSecret("dev'ice", "'secret'"));
    EXPECT_EQ(fake::deviceValue("deviceid").value_or(""), "device");
    EXPECT_EQ(fake::deviceValue("channel_secret").value_or(""), "secret");
    ASSERT_EQ(fake::deviceCalls().size(), 2u);
    EXPECT_EQ(fake::deviceCalls()[0], "channel_secret_set(secret)");
    EXPECT_EQ(fake::deviceCalls()[1], "deviceid_set(device)");

    // A failed secret write keeps the old device ID.
    fake::setStatus("channel_secret_set", 1);
    EXPECT_FALSE(QuilConfigUtils::setDeviceIDAndChannelSecret("other", "other-secret"));
    EXPECT_EQ(fake::deviceValue("deviceid").value_or(""), "device");

    // Token setters succeed on any non-negative status.
    fake::setStatus("device_token_set", 12);
    EXPECT_TRUE(QuilConfigUtils::setDeviceTokenAndSignature("t'o'k", "sig"));
    EXPECT_EQ(fake::deviceValue("device_token_sign").value_or(""), "sig");
    fake::setStatus("device_token_sign_set", -1);
    EXPECT_FALSE(QuilConfigUtils::setDeviceTokenAndSignature("tok", "sig"));
    EXPECT_TRUE(QuilConfigUtils::setUpgradeCheckDate("'2026-11-23'"));
    EXPECT_EQ(fake::deviceValue("upgrade_date").value_or(""), "2026-11-23");

    EXPECT_TRUE(QuilConfigUtils::setBrokerAddress("broker.local", -8883));
    EXPECT_EQ(fake::deviceValue("broker_port").value_or(""), "-8883");
    fake::setStatus("broker_host_set", 1);
    EXPECT_FALSE(QuilConfigUtils::setBrokerAddress("broker2", 1));
    EXPECT_EQ(fake::deviceValue("broker_port").value_or(""), "-8883");
}

}  // namespace
