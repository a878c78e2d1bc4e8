// Account-scoped endpoints through the host port against the local cloud.
#include "CloudFixture.h"
#include "velmar/quil/api/ClientInfoListAPI.h"
#include "velmar/quil/api/CommonConfigAPI.h"
#include "velmar/quil/api/PrivacySettingsAPI.h"
#include "velmar/quil/api/VoipDurationAPI.h"

using namespace velmar::quil::api;
using velmar::testing::SampleDevice;

namespace {

class AccountTest : public velmar::testing::CloudFixture {};

TEST_F(AccountTest, AdministratorReachesTheAccountServices) {
    std::string response;
    EXPECT_EQ(ClientInfoListAPI::getClientList(response, baseUrl()), 101);
    EXPECT_TRUE(cloud().received().empty());

    bindAdministrator(52001);
    ASSERT_EQ(ClientInfoListAPI::getClientList(response, baseUrl()), 0);
    EXPECT_NE(response.find(SampleDevice::deviceId), std::string::npos) << response;

    std::string seconds = "90";
    ASSERT_EQ(VoipDurationAPI::add(response, baseUrl(), seconds), 0);
    ASSERT_EQ(VoipDurationAPI::getStatus(response, baseUrl()), 0);
    EXPECT_NE(response.find("\"usedSec\":90"), std::string::npos) << response;

    std::string name = "night_mode";
    ASSERT_EQ(CommonConfigAPI::getConfig(response, baseUrl(), name), 0);
    EXPECT_NE(response.find("\"start\":\"22:00\""), std::string::npos) << response;
    EXPECT_EQ(cloud().received("/common_config/linux").at(0).param("userId"), "52001");
}

TEST_F(AccountTest, PrivacySettingsAreKeptPerUser) {
    const unsigned long long big = 18446744073709551615ULL;
    ASSERT_EQ(PrivacySettingsAPI::setPrivacySettings(baseUrl(), big, "{\"voiceprint\":false}"), 0);
    ASSERT_EQ(PrivacySettingsAPI::setPrivacySettings(baseUrl(), 7, "plain text"), 0);
    std::string settings;
    ASSERT_EQ(PrivacySettingsAPI::getPrivacySettings(settings, baseUrl(), big), 0);
    EXPECT_EQ(settings, "{\n    \"value\": \"{\\\"voiceprint\\\":false}\"\n}");
    ASSERT_EQ(PrivacySettingsAPI::getPrivacySettings(settings, baseUrl(), 7), 0);
    EXPECT_EQ(settings, "{\n    \"value\": \"plain text\"\n}");
    ASSERT_EQ(PrivacySettingsAPI::getPrivacySettings(settings, baseUrl(), 8), 0);
    EXPECT_EQ(settings, "{}");
}

}  // namespace
