// The directly addressed services through the host port against the local
// cloud. The upgrade check's resolver list is always replaced by the cloud's
// own DNS responder; the fixed account address is pinned to a second cloud
// that carries the account name in its certificate.
#include <unistd.h>

#include <fstream>

#include "CloudFixture.h"
#include "Endpoints.h"

using namespace velmar::quil::api;

namespace {

class DirectTest : public velmar::testing::LoopbackResolverFixture {
  protected:
    static bool check(std::string& link, long long& size, const std::string& version) {
        return UpgradeAPI::checkUpgrade(link, size, "quil.speaker.v2", "f-01", version, "release",
                                        "zh_CN", "CN");
    }
};

TEST_F(DirectTest, UpgradeCheckFindsTheOfferForAnOlderVersionOnly) {
    std::string link;
    long long size = -1;
    ASSERT_TRUE(check(link, size, "2.14.3"));
    EXPECT_EQ(link, "https://ota.velmar-cloud.test/images/quil.speaker.v2/2.15.0/update.bin");
    EXPECT_EQ(size, 73400320);

    link.clear();
    size = -1;
    ASSERT_TRUE(check(link, size, "2.15.0"));
    EXPECT_EQ(link, "");
    EXPECT_EQ(size, -1);
    // Answered first time: the resolver list was never needed.
    EXPECT_EQ(cloud().received().size(), 2u);
    EXPECT_TRUE(cloud().dnsQueries().empty());
}

TEST_F(DirectTest, UpgradeRetryResolvesThroughTheLoopbackResolver) {
    const std::string port = std::to_string(cloud().port());
    writeConfig({{"sVeWiFiAPIURL", "http://upgrade.velmar-cloud.test:" + port}});
    // The first attempt is pinned to an address where nothing listens.
    setenv("VELMAR_RESOLVE", ("upgrade.velmar-cloud.test:" + port + ":127.0.0.2").c_str(), 1);
    cloud().setDnsAnswer("upgrade.velmar-cloud.test", "127.0.0.1");
    std::string link;
    long long size = -1;
    const std::string logged = logsOf([&] { EXPECT_TRUE(check(link, size, "2.14.3")); });
    EXPECT_EQ(size, 73400320);
    EXPECT_EQ(cloud().dnsQueries(), std::vector<std::string>{"upgrade.velmar-cloud.test"});
    EXPECT_EQ(cloud().received().size(), 1u);
    EXPECT_NE(logged.find("HTTPRequest failed (status: 0, error code: Error (code: 602"),
              std::string::npos)
        << logged;
}

TEST_F(DirectTest, UpgradeCheckFailsWithoutAConfiguredService) {
    std::string link;
    long long size = -1;
    writeConfig({});
    const std::string logged = logsOf([&] { EXPECT_FALSE(check(link, size, "2.14.3")); });
    EXPECT_NE(logged.find("URL: /rs/grayupgrade/v2/quil.speaker.v2"), std::string::npos) << logged;
    EXPECT_EQ(link, "");
    EXPECT_TRUE(cloud().dnsQueries().empty());
}

// The upgrade and log services check what the library signs: the library's
// own request is accepted when replayed as it was, and refused with one value
// changed under the same signature.
TEST_F(DirectTest, UpgradeAndLogServicesRefuseAValueChangedAfterSigning) {
    std::string link;
    long long size = -1;
    ASSERT_TRUE(check(link, size, "2.14.3"));
    std::string response;
    ASSERT_TRUE(LogUploadAPI::upload(response, "common-s", "2.14.3", "dev-1", "original"));
    const std::string upgradeUrl = baseUrl() + "/rs/grayupgrade/v2/quil.speaker.v2";
    const std::string logUrl = baseUrl() + "/log/common/common-s";
    const std::string query = cloud().received("/rs/grayupgrade/v2/quil.speaker.v2").at(0).query;
    const std::string form = cloud().received("/log/common/common-s").at(0).body;

    // `params` with `from` replaced by `to`, sent again: the answer must begin with `expected`.
    auto replay = [](const std::string& url, const std::string& method, std::string params,
                     const std::string& from, const std::string& to, const std::string& expected) {
        const size_t at = params.find(from);
        ASSERT_NE(at, std::string::npos) << params;
        params.replace(at, from.size(), to);
        int status = 0;
        std::string answer;
        velmar::utils::ErrorType error = velmar::utils::ERROR_NONE;
        std::string errorMessage;
        ASSERT_TRUE(velmar::http::HTTPRequest::httpRequest(status, answer, error, errorMessage, url,
                                                           params, method, {}, 15000, ""))
            << errorMessage;
        answer = std::to_string(status) + " " + answer;
        EXPECT_EQ(answer.rfind(expected, 0), 0u) << answer;
    };
    replay(upgradeUrl, "GET", query, "version=2.14.3", "version=2.14.3", "200 {\"code\":\"0\"");
    replay(upgradeUrl, "GET", query, "version=2.14.3", "version=2.14.2", "200 {\"code\":\"401\"");
    replay(logUrl, "POST", form, "payload=original", "payload=original", "200 ");
    replay(logUrl, "POST", form, "payload=original", "payload=forged", "403 ");
}

TEST_F(DirectTest, TimeSyncGivesTheServiceTimeOr604WithoutAService) {
    const long long before = std::chrono::duration_cast<std::chrono::milliseconds>(
                                 std::chrono::system_clock::now().time_since_epoch())
                                 .count();
    long long serverTime = 0;
    ASSERT_EQ(TimeSyncAPI::request(serverTime), 0);
    EXPECT_GE(serverTime, before);
    EXPECT_LT(serverTime, before + 60000);
    writeConfig({});
    EXPECT_EQ(TimeSyncAPI::request(serverTime), 604);
}

TEST_F(DirectTest, LogUploadsArriveIntact) {
    // A form beyond the 8 KiB a plain HTTP server library takes by default.
    const std::string payload = "line 1\nx&y=z" + std::string(20000, 'r');
    std::string response;
    ASSERT_TRUE(LogUploadAPI::upload(response, "common-a-b-c", "2.14.3", "dev-1", payload));
    EXPECT_NE(response.find("\"code\":0"), std::string::npos) << response;
    auto form = cloud().received("/log/common/common-a-b-c");
    ASSERT_EQ(form.size(), 1u);
    EXPECT_TRUE(form[0].param("payload") == payload);

    // Every byte value, twice over, and a size beyond one socket write.
    std::string archive;
    for (int i = 0; i < 200000; ++i)
        archive += static_cast<char>((i * 7 + i / 256) & 0xff);
    const std::string path = (root() / "logs.tar.gz").string();
    std::ofstream(path, std::ios::binary) << archive;
    // Appended: what the string held, as much as the answer's bound, counts not against it.
    const std::string held(8 * 1024 * 1024, 'k');
    response = held;
    ASSERT_TRUE(
        LogUploadAPI::uploadLite(response, "common-l", "2.14.3", "dev-1", "1700000000", path));
    EXPECT_EQ(response.compare(0, held.size(), held), 0);
    EXPECT_EQ(response.substr(held.size(), 1), "{") << response.substr(held.size());
    auto lite = cloud().received("/log/lite/common/common-l");
    ASSERT_EQ(lite.size(), 1u);
    EXPECT_TRUE(lite[0].files.at("payload") == archive);
    EXPECT_EQ(lite[0].param("id"), "dev-1");
    EXPECT_EQ(lite[0].param("mode"), "useRomTime");
    EXPECT_EQ(lite[0].param("_t"), "1700000000");
    EXPECT_EQ(lite[0].param("extra_data"), "{\"version\":\"2.14.3\", \"suffix\":\"tar.gz\"}");

    const std::string logged = logsOf([&] {
        EXPECT_FALSE(LogUploadAPI::uploadLite(response, "common-l", "2.14.3", "dev-1", "1",
                                              path + ".missing"));
    });
    EXPECT_NE(logged.find("curl_easy_perform() failed: "), std::string::npos) << logged;
}

TEST_F(DirectTest, ActionLogAndBindingReachTheirServices) {
    std::string response;
    ::testing::internal::CaptureStdout();
    EXPECT_EQ(ActionLogAPI::upload(response, "d-1", "{\"a\":1}", baseUrl()), 0);
    const std::string printed = ::testing::internal::GetCapturedStdout();
    EXPECT_NE(printed.find("success: 1\nstatusCode: 200\n"), std::string::npos) << printed;
    EXPECT_EQ(cloud().received("/action/v2/c/d-1").at(0).param("payload"), "{\"a\":1}");

    ASSERT_EQ(BindAPI::bind(response, 1001, "bind-payload"), 0);
    EXPECT_NE(response.find("\"code\":0"), std::string::npos) << response;
    EXPECT_EQ(cloud().received("/bind/").at(0).param("userId"), "1001");
}

TEST_F(DirectTest, UserProfileAnswersForATokenTheAccountServiceIssued) {
    if (!startAccountCloud()) GTEST_SKIP() << "no loopback port 443 to serve the account on";
    const std::string token = accountToken("userId=4242&clientId=app-1");
    ASSERT_FALSE(token.empty());

    unsigned long long userId = 0;
    ASSERT_EQ(GetUserProfileAPI::request(userId, "app-1", token), 0);
    EXPECT_EQ(userId, 4242u);
    EXPECT_EQ(GetUserProfileAPI::request(userId, "app-2", token), 101);
    EXPECT_EQ(GetUserProfileAPI::request(userId, "app-1", token + "x"), 101);

    // The library's own libcurl upload keeps to the same TLS and pinning rules.
    writeConfig({{"sVeWiFiLOGURL", std::string("https://") + kAccountHost}});
    const std::string path = (root() / "small.tar.gz").string();
    std::ofstream(path) << "abc";
    std::string response;
    EXPECT_TRUE(LogUploadAPI::uploadLite(response, "common-t", "1", "d", "1", path));
    EXPECT_EQ(account_->received("/log/lite/common/common-t").size(), 1u);
    unsetenv("VELMAR_CA_FILE");  // the run's own CA is then unknown
    EXPECT_FALSE(LogUploadAPI::uploadLite(response, "common-t", "1", "d", "1", path));
}

}  // namespace
