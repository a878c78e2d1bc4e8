#include <iterator>
#include <stdexcept>

#include "FakeHelpers.h"

using namespace velmar::quil::api;

namespace {

class AccountTest : public fake::FakeDeviceTest {
  protected:
    void SetUp() override {
        FakeDeviceTest::SetUp();
        fake::setDeviceValue("uid", "9007199254740993");
    }
};

std::string gText = "60";  // the text argument of the calls that take one

// The calls that send the administrator's user ID, and one that only carries it in a cookie.
TEST_F(AccountTest, WithoutSuperAdminNothingIsSentAndAnUnparsableOneThrowsAsEverywhere) {
    using Call = int (*)(std::string&);
    const std::pair<Call, bool> rows[] = {
        {[](std::string& r) -> int { return ClientInfoListAPI::getClientList(r, kBase); }, true},
        {[](std::string& r) -> int { return VoipDurationAPI::getStatus(r, kBase); }, true},
        {[](std::string& r) -> int { return VoipDurationAPI::add(r, kBase, gText); }, true},
        {[](std::string& r) -> int { return CommonConfigAPI::getConfig(r, kBase, gText); }, true},
        {[](std::string& r) -> int { return VemcTokenAPI::getToken(r, kBase); }, true},
        {[](std::string& r) -> int { return PresenceAPI::getPresence(r, kBase); }, false},
    };
    for (size_t row = 0; row < std::size(rows); ++row) {
        SCOPED_TRACE(row);
        const auto& [call, scoped] = rows[row];
        SetUp();
        std::string response = "kept";
        fake::clearDeviceValue("uid");
        if (scoped) {
            EXPECT_EQ(call(response), 101);
            EXPECT_EQ(response, "kept");
            EXPECT_TRUE(fake::calls().empty());
            ASSERT_EQ(fake::logs().size(), 1u);
            EXPECT_EQ(fake::logs()[0].level, 4);
            EXPECT_EQ(fake::logs()[0].text, "Failed to get user id");
        }
        // A stored ID the platform accepts but that overflows 64 bits.
        fake::setDeviceValue("uid", "99999999999999999999999");
        EXPECT_THROW(call(response), std::out_of_range);
        EXPECT_TRUE(fake::calls().empty());
    }
}

TEST_F(AccountTest, RawAnswersPassThroughUnparsedForTheSuperAdmin) {
    fake::pushBody("{\"code\": 3}");
    fake::pushBody("not json at all");
    fake::pushBody("{}");
    std::string response;
    std::string duration = "75";
    std::string name = "alarm_tones";
    EXPECT_EQ(ClientInfoListAPI::getClientList(response, kBase), 0);
    EXPECT_EQ(response, "{\"code\": 3}");
    EXPECT_EQ(VoipDurationAPI::add(response, kBase, duration), 0);
    EXPECT_EQ(response, "not json at all");
    EXPECT_EQ(CommonConfigAPI::getConfig(response, kBase, name), 0);

    fake::pushFailure();
    response = "kept";
    EXPECT_EQ(VoipDurationAPI::getStatus(response, kBase), 604);
    EXPECT_EQ(response, "kept");
    EXPECT_TRUE(fake::logged("HTTP request failed: Error (code: 604", 4));
}

TEST_F(AccountTest, PrivacySettingsSendTheFullUnsignedUserIdWithoutAnAdmin) {
    fake::clearDeviceValue("uid");
    fake::pushBody("{\"code\":0}");
    EXPECT_EQ(PrivacySettingsAPI::setPrivacySettings(kBase, 18446744073709551615ULL, "v=1"), 0);

    // Refused, code of the wrong type, not JSON: all 604, each with its line.
    for (const std::string line :
         {"Failed response: {\"code\":1}", "Invalid response: {\"code\":\"0\"}",
          "Invalid response: [1,2]"}) {
        fake::pushBody(line.substr(line.find(": ") + 2));
        EXPECT_EQ(PrivacySettingsAPI::setPrivacySettings(kBase, 1, "v"), 604) << line;
        EXPECT_TRUE(fake::logged(line, 4));
    }
}

TEST_F(AccountTest, PrivacySettingsHandBackOnlyTheDataObjectIndented) {
    std::string settings = "kept";
    fake::pushFailure();
    EXPECT_EQ(PrivacySettingsAPI::getPrivacySettings(settings, kBase, 7), 604);
    // The last answer is nested past any real one: refused instead of overflowing the writer.
    for (const std::string& body :
         {std::string("{\"code\":0,\"data\":[\"a\"]}"),
          std::string("{\"code\":0,\"data\":\"text\"}"), std::string("{\"code\":2,\"data\":{}}"),
          "{\"code\":0,\"data\":{\"x\":" + std::string(200000, '[') + std::string(200000, ']') +
              "}}"}) {
        fake::pushBody(body);
        EXPECT_EQ(PrivacySettingsAPI::getPrivacySettings(settings, kBase, 7), 604)
            << body.substr(0, 40);
    }
    EXPECT_EQ(settings, "kept");

    fake::pushBody("{\"code\":0,\"data\":{}}");
    EXPECT_EQ(PrivacySettingsAPI::getPrivacySettings(settings, kBase, 7), 0);
    EXPECT_EQ(settings, "{}");
    fake::pushBody("{\"code\":0,\"message\":\"ok\",\"data\":{\"voice\":true,\"keep\":[30]}}");
    EXPECT_EQ(PrivacySettingsAPI::getPrivacySettings(settings, kBase, 7), 0);
    EXPECT_EQ(settings, "{\n    \"voice\": true,\n    \"keep\": [\n        30\n    ]\n}");
}

}  // namespace
