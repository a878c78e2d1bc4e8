// Account-scoped endpoints through the host port against the local cloud:
// what one call stores, the next one reads, per user.
#include "CloudFixture.h"
#include "Endpoints.h"

using namespace velmar::quil::api;

namespace {

using AccountTest = velmar::testing::CloudFixture;

TEST_F(AccountTest, CallDurationIsCountedForTheAdministrator) {
    bindAdministrator(52001);
    std::string response;
    std::string seconds = "90";
    ASSERT_EQ(VoipDurationAPI::add(response, baseUrl(), seconds), 0);
    ASSERT_EQ(VoipDurationAPI::getStatus(response, baseUrl()), 0);
    EXPECT_NE(response.find("\"usedSec\":90"), std::string::npos) << response;
    EXPECT_EQ(cloud().received("/duration/current_month/add/linux").at(0).param("userId"), "52001");
}

TEST_F(AccountTest, PrivacySettingsAreKeptPerUser) {
    const unsigned long long big = 18446744073709551615ULL;
    ASSERT_EQ(PrivacySettingsAPI::setPrivacySettings(baseUrl(), big, "{\"voiceprint\":false}"), 0);
    std::string settings;
    ASSERT_EQ(PrivacySettingsAPI::getPrivacySettings(settings, baseUrl(), big), 0);
    EXPECT_EQ(settings, "{\n    \"value\": \"{\\\"voiceprint\\\":false}\"\n}");
    ASSERT_EQ(PrivacySettingsAPI::getPrivacySettings(settings, baseUrl(), 8), 0);
    EXPECT_EQ(settings, "{}");
}

}  // namespace
