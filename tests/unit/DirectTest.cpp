// The directly addressed services on the fake port. Signature vectors were
// computed outside this code base (Python's hashlib and base64).
#include <stdlib.h>

#include <map>
#include <tuple>

#include "FakeHelpers.h"
#include "api/OwnCurl.h"

using namespace velmar::quil::api;
using Params = std::map<std::string, std::string>;

namespace {

const char kUpgradeSecret[] = "3f6a1c9e-2b7d-4e80-9c5a-71d0e4b2f863";
const char kResolvers[] = "1.1.1.1,8.8.8.8,9.9.9.9";
const char kOffer[] = "{\"code\":\"0\",\"data\":{\"upgradeInfo\":{\"link\":\"L\",\"size\":7}}}";

class DirectTest : public fake::FakeTest {
  protected:
    void SetUp() override {
        FakeTest::SetUp();
        fake::setConfig("sVeWiFiAPIURL", "https://upgrade.test");
        fake::setConfig("sVeWiFiLOGURL", "https://log.test");
        fake::setConfig("sTimeSyncURL", "https://time.test/sync");
        fake::setConfig("sQuilAPIURL", "https://cloud.test");
    }

    static bool check(std::string& link, long long& size) {
        return UpgradeAPI::checkUpgrade(link, size, "quil.speaker.v2", "f-01", "2.14.3", "release",
                                        "zh_CN", "CN");
    }
    static fake::Answer answer(bool ok, int status, velmar::utils::ErrorType error) {
        return {ok, status, kOffer, error, ""};
    }
};

TEST_F(DirectTest, UpgradeSignatureSortsWholePairsAndAppendsTheSecret) {
    const std::pair<Params, const char*> vectors[] = {
        {{{"a", "1"}, {"ab", "2"}}, "AFA1A1C6342A653567A5F5EC18785A1C"},
        {{}, "F3563C0986C8CD32CFD901D5434FB000"},
        // "a+=2" sorts before "a=1", against the key order of the map.
        {{{"a", "1"}, {"a+", "2"}}, "3DA907446359F2E38B2E3EC3A122946D"},
        // Its Base64 holds "+", "/" and "=": the standard alphabet, padded.
        {{{"k", "~~~?>"}}, "B8230D16C1A90DA641CBB8260F74ABC8"},
    };
    std::string key = kUpgradeSecret;
    for (const auto& [params, expected] : vectors) {
        std::string s;
        UpgradeAPI::computeS(s, params, key);
        EXPECT_EQ(s, expected) << params.size();
    }
}

TEST_F(DirectTest, UpgradeCheckSendsTheSignedQueryToThePlatformPath) {
    std::string link;
    long long size = 0;
    fake::pushBody(kOffer);
    ASSERT_TRUE(check(link, size));
    ASSERT_EQ(fake::calls().size(), 1u);  // no retry after a success
    const fake::Call& call = fake::calls().at(0);
    EXPECT_EQ(call.overload, fake::Overload::Url);
    // The parameters are pinned with the route; the signature covers them all.
    EXPECT_EQ(call.decodedParams().at("s"), "A9AC0A5D852F510AF59438E6D95695F0");
    EXPECT_TRUE(fake::logged("URL: https://upgrade.test/rs/grayupgrade/v2/quil.speaker.v2", 2));
    EXPECT_TRUE(fake::logged("Params: channel=release&countryCode=CN&", 2));
}

TEST_F(DirectTest, UpgradeRetriesOnceThroughTheResolverListOnlyAfterAFailure) {
    using velmar::utils::ERROR_HTTP_FAILED;
    using velmar::utils::ERROR_NONE;
    std::string link;
    long long size = 0;
    // A transport failure, a 200 with an error value, a non-200: each gets one retry.
    for (const fake::Answer& first :
         {answer(false, 0, velmar::utils::ERROR_HTTP_CONNECT), answer(true, 200, ERROR_HTTP_FAILED),
          answer(true, 503, ERROR_NONE)}) {
        SetUp();
        fake::pushAnswer(first);
        fake::pushBody(kOffer);
        EXPECT_TRUE(check(link, size));
        ASSERT_EQ(fake::calls().size(), 2u);
        const fake::Call& retry = fake::calls().at(1);
        EXPECT_EQ(retry.overload, fake::Overload::UrlWithDns);
        EXPECT_EQ(retry.dnsServers, kResolvers);
        // The same request again.
        const fake::Call& call = fake::calls().at(0);
        EXPECT_EQ(std::tie(retry.url, retry.params, retry.method, retry.timeoutMs, retry.cookie),
                  std::tie(call.url, call.params, call.method, call.timeoutMs, call.cookie));
        EXPECT_EQ(retry.headers, call.headers);
        EXPECT_TRUE(fake::logged(std::string("try use dns list ") + kResolvers + " and retry", 4));
    }
    EXPECT_TRUE(fake::logged("HTTPRequest failed (status: 503, error code: Error (code: 0", 4));

    SetUp();
    fake::pushAnswer(answer(true, 500, ERROR_NONE));
    fake::pushFailure(velmar::utils::ERROR_HTTP_RESOLVE, "no such host");
    fake::pushBody(kOffer);  // never asked for: there is no third attempt
    EXPECT_FALSE(check(link, size));
    EXPECT_EQ(fake::calls().size(), 2u);
    EXPECT_TRUE(
        fake::logged("HTTPRequest failed (status: 0, error code: Error (code: 601, message: ", 4));
    EXPECT_TRUE(fake::logged(", error message: no such host)", 4));
}

TEST_F(DirectTest, UpgradeAnswerCases) {
    struct Case {
        const char* body;
        bool ok;
        const char* link;
        long long size;
        const char* line;
    };
    const Case cases[] = {
        {kOffer, true, "L", 7, nullptr},
        {"{\"code\":\"0\",\"data\":{}}", true, "", -1, "No need to upgrade: "},
        {"{\"code\":0,\"data\":{}}", false, "", -1, "Invalid result: "},
        {"{\"code\":\"3\",\"data\":{}}", false, "", -1, "Error result: "},
        {"{\"code\":\"0\"}", false, "", -1, "Invalid result: "},
        {"{\"code\":\"0\",\"data\":{\"upgradeInfo\":{\"size\":7}}}", false, "", -1,
         "Invalid result: "},
        {"{\"code\":\"0\",\"data\":{\"upgradeInfo\":{\"link\":\"L\"}}}", false, "L", -1,
         "Invalid result: "},
        {"<html>", false, "", -1, "Invalid JSON: "},
    };
    for (const Case& c : cases) {
        SetUp();
        fake::pushBody(c.body);
        std::string link;
        long long size = -1;
        EXPECT_EQ(check(link, size), c.ok) << c.body;
        EXPECT_EQ(link, c.link) << c.body;
        EXPECT_EQ(size, c.size) << c.body;
        if (c.line != nullptr) {
            EXPECT_TRUE(fake::logged(std::string(c.line) + c.body, c.ok ? 2 : 4)) << c.body;
        }
    }
}

TEST_F(DirectTest, TimeSyncTakesAnIntegerTimeFromA200Only) {
    long long serverTime = -1;
    fake::pushBody("{\"code\":0,\"data\":{\"t\":42}}");
    EXPECT_EQ(TimeSyncAPI::request(serverTime), 0);
    EXPECT_EQ(serverTime, 42);
    const fake::Call& call = fake::calls().at(0);
    EXPECT_EQ(std::tie(call.overload, call.cookie), std::make_tuple(fake::Overload::Url, ""));
    // The answer's line ends in an end of line of its own.
    EXPECT_TRUE(fake::loggedExactly("time sync result: {\"code\":0,\"data\":{\"t\":42}}\n", 2));

    // With a 200 the transport's error value is not looked at.
    fake::pushAnswer(
        {true, 200, "{\"code\":0,\"data\":{\"t\":43}}", velmar::utils::ERROR_HTTP_TIMEOUT, ""});
    EXPECT_EQ(TimeSyncAPI::request(serverTime), 0);
    EXPECT_EQ(serverTime, 43);

    for (const char* body :
         {"{\"code\":\"0\",\"data\":{\"t\":1}}", "{\"code\":0,\"data\":{\"t\":1.5}}",
          "{\"code\":0,\"data\":{\"t\":\"1\"}}", "{\"code\":2,\"data\":{\"t\":1}}",
          "{\"code\":0,\"data\":[1]}", "{\"code\":0}", "null", "t=1",
          // A code beyond 32 bits is no 0; a time beyond 64 bits is no integer.
          "{\"code\":4294967296,\"data\":{\"t\":1}}",
          "{\"code\":0,\"data\":{\"t\":9223372036854775808}}",
          "{\"code\":0,\"data\":{\"t\":18446744073709551616}}"}) {
        fake::pushBody(body);
        EXPECT_EQ(TimeSyncAPI::request(serverTime), 610) << body;
        EXPECT_TRUE(fake::logged(std::string("Invalid result: ") + body, 4)) << body;
    }
    fake::pushBody("gone", 404);
    EXPECT_EQ(TimeSyncAPI::request(serverTime), 604);
    EXPECT_TRUE(fake::loggedExactly(
        "HTTPRequest::httpGet() none 200 status code: 404; result: gone (error: )", 4));
    fake::pushFailure();
    EXPECT_EQ(TimeSyncAPI::request(serverTime), 604);
    EXPECT_TRUE(
        fake::logged("HTTPRequest::httpGet() not successful (error: connection refused)", 4));
    EXPECT_EQ(serverTime, 43);
}

TEST_F(DirectTest, LogUploadSignsTheRawFormWithUrlSafeBase64) {
    EXPECT_EQ(LogUploadAPI::generateUploadID("a", "b", "c"), "common-a-b-c");
    EXPECT_EQ(LogUploadAPI::generateUploadID("", "", ""), "common---");

    std::string response;
    fake::pushBody("refused", 500);  // the status is the caller's to judge
    EXPECT_TRUE(LogUploadAPI::upload(response, "common-x", "2.14.3", "dev-4", "p=1&q"));
    EXPECT_EQ(response, "refused");
    // The digest's standard Base64 holds a "+", sent as "-".
    EXPECT_EQ(fake::calls().at(0).decodedParams(),
              (Params{{"_n", "00000000-0000-4000-8000-000000000001"},
                      {"_t", "1700000000000"},
                      {"_s", "Fr6s3biIs-2DlZHQPjGdYQ"},
                      {"extra_data", "eyJ2ZXJzaW9uIjoiMi4xNC4zIiwgInN1ZmZpeCI6Imd6In0"},
                      {"id", "dev-4"},
                      {"payload", "p=1&q"}}));

    fake::pushFailure();
    EXPECT_FALSE(LogUploadAPI::upload(response, "common-x", "1", "d", "p"));
    EXPECT_TRUE(fake::logged("httpRequest() failed", 4));
    fake::pushAnswer({true, 200, "", velmar::utils::ERROR_HTTP_TOO_LARGE, ""});
    EXPECT_FALSE(LogUploadAPI::upload(response, "common-x", "1", "d", "p"));
    EXPECT_TRUE(fake::logged("httpRequest() failed with error: Error (code: 607", 4));
}

TEST_F(DirectTest, LiteUploadGoesOverIPv4WithItsOwnDeadlineAndKeepAlive) {
    // Nothing listens there, and nothing leaves loopback; blank pins are skipped.
    fake::setConfig("sVeWiFiLOGURL", "http://127.0.0.1:9");
    setenv("VELMAR_RESOLVE", "log.test:80:127.0.0.1, \t,x.test:1:127.0.0.1", 1);
    static std::vector<std::pair<CURLoption, long>> options;
    options.clear();
    detail::observeLongOptionsForTest(
        [](CURLoption option, long value) { options.emplace_back(option, value); });
    std::string response;
    EXPECT_FALSE(LogUploadAPI::uploadLite(response, "common-l", "1", "d", "1", "/no/such/file"));
    detail::observeLongOptionsForTest(nullptr);
    unsetenv("VELMAR_RESOLVE");
    EXPECT_TRUE(fake::logged("curl_easy_perform() failed: ", 4));
    EXPECT_EQ(options,
              (std::vector<std::pair<CURLoption, long>>{{CURLOPT_TIMEOUT_MS, 100000},
                                                        {CURLOPT_NOSIGNAL, 1},
                                                        {CURLOPT_TCP_KEEPALIVE, 1},
                                                        {CURLOPT_IPRESOLVE, CURL_IPRESOLVE_V4}}));

    // Trust that cannot be read stops the upload before it is sent.
    fake::setConfig("sVeWiFiLOGURL", "https://127.0.0.1:9");
    setenv("VELMAR_CA_FILE", "/no/such/bundle.pem", 1);
    EXPECT_FALSE(LogUploadAPI::uploadLite(response, "common-l", "1", "d", "1", "/no/such/file"));
    unsetenv("VELMAR_CA_FILE");
    EXPECT_TRUE(fake::loggedExactly(
        "Upload not set up: cannot read the CA bundle /no/such/bundle.pem named by VELMAR_CA_FILE",
        4));
}

TEST_F(DirectTest, ActionLogNonceIsAUuidGroupAndBigEndianMinutes) {
    fake::pushUuid("abcdef12-3456-4789-8abc-def012345678");
    fake::setNow((0x100000000LL + 0x01020304) * 60000 + 59999);  // minutes beyond 32 bits
    fake::pushBody("{\"code\":0}");
    std::string response;
    const std::string printed = stdoutOf([&] {
        EXPECT_EQ(ActionLogAPI::upload(response, "d-1", "rec", "https://collector.test"), 0);
    });

    // "abcdef12" and the minutes' low 32 bits, 01 02 03 04, in Base64.
    EXPECT_EQ(fake::calls().at(0).params, "_nonce=YWJjZGVmMTIBAgME&payload=rec");
    EXPECT_EQ(fake::randomDraws(), (std::vector<unsigned>{32, 16}));
    EXPECT_EQ(printed,
              "did: d-1\npayload: rec\nhost: https://collector.test\nnonce: YWJjZGVmMTIBAgME\n"
              "success: 1\nstatusCode: 200\nresponse: {\"code\":0}\n"
              "errorCode: Error (code: 0, message: success)\nerrorMessage: \n");

    // Unreachable, with no device ID: still 0, the failure only printed.
    std::string none;
    const std::string failed = stdoutOf(
        [&] { EXPECT_EQ(ActionLogAPI::upload(none, "", "rec", "https://collector.test"), 0); });
    EXPECT_EQ(none, "");
    EXPECT_EQ(fake::calls().at(1).path, "/action/v2/c/");
    EXPECT_NE(failed.find("success: 0\nstatusCode: 0\n"), std::string::npos) << failed;
}

TEST_F(DirectTest, CallerValuesInAPathStayOneSegment) {
    const std::pair<const char*, const char*> segments[] = {
        {"quil.speaker-v2_~+=@:!$&'()*,;\xc3\xa9", "quil.speaker-v2_~+=@:!$&'()*,;\xc3\xa9"},
        {"../../admin", "..%2F..%2Fadmin"},
        {"a?b#c%d e\\f", "a%3Fb%23c%25d%20e%5Cf"},
        {"x\r\ny\x7f", "x%0D%0Ay%7F"},
    };
    for (const auto& [value, sent] : segments) {
        SCOPED_TRACE(value);
        SetUp();
        std::string link;
        long long size = 0;
        UpgradeAPI::checkUpgrade(link, size, value, "f", "1", "c", "l", "CN");
        std::string response;
        LogUploadAPI::upload(response, value, "1", "d", "p");
        stdoutOf([&] { ActionLogAPI::upload(response, value, "rec", "https://collector.test"); });
        ASSERT_EQ(fake::calls().size(), 4u) << "the upgrade check retries once";
        EXPECT_EQ(fake::calls().at(0).url,
                  std::string("https://upgrade.test/rs/grayupgrade/v2/") + sent);
        EXPECT_EQ(fake::calls().at(0).decodedParams().at("platform"), value)
            << "the query keeps it";
        EXPECT_EQ(fake::calls().at(2).path, std::string("/log/common/") + sent);
        EXPECT_EQ(fake::calls().at(3).path, std::string("/action/v2/c/") + sent);
    }
    // A whole "." or ".." climbs the path however it is encoded: nothing is sent.
    for (const char* dots : {".", ".."}) {
        SetUp();
        std::string link;
        long long size = 0;
        std::string response;
        EXPECT_FALSE(UpgradeAPI::checkUpgrade(link, size, dots, "f", "1", "c", "l", "CN"));
        EXPECT_FALSE(LogUploadAPI::upload(response, dots, "1", "d", "p"));
        EXPECT_FALSE(LogUploadAPI::uploadLite(response, dots, "1", "d", "1", "/no/such/file"));
        ::testing::internal::CaptureStdout();
        EXPECT_EQ(ActionLogAPI::upload(response, dots, "rec", "https://collector.test"), 0);
        EXPECT_NE(::testing::internal::GetCapturedStdout().find("success: 0\n"), std::string::npos);
        EXPECT_TRUE(fake::calls().empty()) << dots;
    }
}

TEST_F(DirectTest, BindPostsAFreshRequestIdAndIgnoresTheStatus) {
    std::string response;
    fake::pushBody("{\"code\":9}", 500);
    EXPECT_EQ(BindAPI::bind(response, -1, "pl"), 0);
    EXPECT_EQ(response, "{\"code\":9}");
    fake::pushAnswer({true, 200, "late", velmar::utils::ERROR_HTTP_TIMEOUT, ""});
    EXPECT_EQ(BindAPI::bind(response, 1001, "pl"), 604);
    fake::pushFailure();
    EXPECT_EQ(BindAPI::bind(response, 1001, "pl"), 604);

    const fake::Call& first = fake::calls().at(0);
    EXPECT_EQ(first.fields.at("payload"), std::vector<std::string>{"pl"});
    EXPECT_EQ(first.fields.at("userId"), std::vector<std::string>{"-1"});
    EXPECT_NE(first.fields.at("requestId"), fake::calls().at(1).fields.at("requestId"));
    EXPECT_TRUE(fake::loggedExactly(
        "httpRequest() failed (requestId: " + fake::calls().at(2).fields.at("requestId").at(0) +
            "; status: 0; error message: connection refused; error code: " +
            errorText(utils::ERROR_HTTP_CONNECT) + ")",
        4));
}

TEST_F(DirectTest, UserProfileAnswerCases) {
    const std::pair<const char*, int> cases[] = {
        {"{\"result\":\"error\"}", 101},
        {"{\"result\":\"ok\",\"data\":[]}", 101},
        {"{\"result\":\"ok\",\"data\":{}}", 101},
        {"{\"result\":\"ok\",\"data\":{\"userId\":\"5\"}}", 101},
        {"{\"result\":0}", 604},
        {"[\"ok\"]", 604},
        {"", 604},
    };
    unsigned long long userId = 1;
    for (const auto& [body, expected] : cases) {
        fake::pushBody(body);
        EXPECT_EQ(GetUserProfileAPI::request(userId, "client", "tok"), expected) << body;
    }
    EXPECT_EQ(userId, 1u);
    EXPECT_TRUE(fake::logged("Invalid Type displayname!", 4));
    EXPECT_TRUE(fake::logged("Invalid result:document.IsNull!", 4));
    EXPECT_TRUE(fake::loggedExactly("Request params=clientId=client&token=tok", 2));
    EXPECT_TRUE(fake::loggedExactly("Response info={\"result\":\"error\"}", 2));
    EXPECT_TRUE(fake::loggedExactly("Get result =error", 2));

    // A body that came with a transport error is still read.
    fake::pushAnswer({false, 200, "{\"result\":\"ok\",\"data\":{\"userId\":18446744073709551615}}",
                      velmar::utils::ERROR_HTTP_TIMEOUT, ""});
    EXPECT_EQ(GetUserProfileAPI::request(userId, "client", "tok"), 0);
    EXPECT_EQ(userId, 18446744073709551615ull);
    EXPECT_TRUE(
        fake::loggedExactly("httpRequest() failed (status: 200; error message: ; error code: " +
                                errorText(utils::ERROR_HTTP_TIMEOUT) + ")",
                            4));
    EXPECT_TRUE(fake::logged("Get userId =18446744073709551615", 2));
    // So is one that came with an error value alone; a negative ID is read as its bits.
    fake::pushAnswer({true, 200, "{\"result\":\"ok\",\"data\":{\"userId\":-2}}",
                      velmar::utils::ERROR_HTTP_TIMEOUT, ""});
    EXPECT_EQ(GetUserProfileAPI::request(userId, "client", "tok"), 0);
    EXPECT_EQ(userId, 18446744073709551614ull);
}

}  // namespace
