#include <tuple>

#include "velmar/fake/FakeTest.h"
#include "velmar/quil/api/AIServiceTokenAPI.h"
#include "velmar/quil/api/TencentAccountAPI.h"
#include "velmar/quil/api/VEOTTokenAPI.h"
#include "velmar/quil/api/VemcTokenAPI.h"

using namespace velmar::quil::api;
namespace fake = velmar::fake;

namespace {

const char kBase[] = "https://cloud.test";

class TokenTest : public fake::FakeDeviceTest {
  protected:
    void SetUp() override {
        FakeDeviceTest::SetUp();
        fake::setDeviceValue("uid", "1001");
    }
};

TEST_F(TokenTest, RefusedAIServiceTokenIsSuccessWithAnEmptyToken) {
    std::string token = "old";
    long long expiresIn = 99;
    // The status, then the token and its lifetime as the call left them.
    auto get = [&](const std::string& body) {
        fake::pushBody(body);
        const int status = AIServiceTokenAPI::getServiceToken(token, expiresIn, kBase);
        return std::to_string(status) + " " + token + " " + std::to_string(expiresIn);
    };
    EXPECT_EQ(get("{\"code\": 5}"), "0  0");
    EXPECT_TRUE(fake::logged("invalid code: 5", 3));
    EXPECT_EQ(get("{\"code\":0,\"data\":{\"token\":\"ai-1\",\"expiresIn\":7200}}"), "0 ai-1 7200");

    // Unreadable answers are 1001; what was read before the gap stays written.
    EXPECT_EQ(get("{\"code\":0,\"data\":{\"token\":\"ai-2\"}}"), "1001 ai-2 7200");
    EXPECT_EQ(get("{\"code\":\"0\"}"), "1001 ai-2 7200");
    EXPECT_EQ(get("<html>"), "1001 ai-2 7200");
    EXPECT_TRUE(fake::logged("Invalid response: <html>", 4));
    fake::pushFailure();
    EXPECT_EQ(AIServiceTokenAPI::getServiceToken(token, expiresIn, kBase), 604);
    EXPECT_TRUE(fake::logged(
        "Failed to get ai service token (response: , error code: Error (code: 604", 4));
}

TEST_F(TokenTest, MessagingCloudTokenReportsAnswerTroubleOnlyByTheUntouchedToken) {
    std::string token = "kept";
    fake::pushBody("{\"code\": 3}");
    fake::pushBody("{\"code\":3,\"data\":\"refused\"}");
    fake::pushBody("{\"code\":0,\"data\":42}");
    fake::pushBody("garbage");
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(VemcTokenAPI::getToken(token, kBase), 0);
    EXPECT_EQ(token, "kept");
    EXPECT_TRUE(fake::logged("Invalid response: {\"code\": 3}", 4));

    fake::pushBody("{\"code\":0,\"data\":\"vemc-1\"}");
    EXPECT_EQ(VemcTokenAPI::getToken(token, kBase), 0);
    EXPECT_EQ(token, "vemc-1");
    const fake::Call& call = fake::calls().back();
    EXPECT_EQ(call.decodedParams().at("userId"), "1001");
    EXPECT_EQ(call.decodedParams().at("clientId"), "dev-42");

    size_t sent = fake::calls().size();
    fake::clearDeviceValue("uid");
    EXPECT_EQ(VemcTokenAPI::getToken(token, kBase), 101);
    fake::setDeviceValue("uid", "1001");
    fake::clearDeviceValue("deviceid");
    EXPECT_EQ(VemcTokenAPI::getToken(token, kBase), 101);
    EXPECT_TRUE(fake::logged("Failed to get device id", 4));
    EXPECT_EQ(fake::calls().size(), sent);
}

TEST_F(TokenTest, UploadMapsTheServiceCodes) {
    const std::pair<const char*, int> cases[] = {{"{\"code\":0}", 0},   {"{\"code\":1}", 1003},
                                                 {"{\"code\":2}", 101}, {"{\"code\":\"0\"}", 610},
                                                 {"not json", 610},     {"{\"code\":1.0}", 610}};
    for (const auto& [body, expected] : cases) {
        fake::pushBody(body);
        EXPECT_EQ(VEOTTokenAPI::upload("tok", "sess", "1001", kBase), expected) << body;
    }
    const fake::Call& call = fake::calls().at(0);
    EXPECT_EQ(call.decodedParams().at("sessionId"), "sess");
    EXPECT_EQ(call.decodedParams().at("token"), "tok");
    EXPECT_EQ(call.decodedParams().at("userId"), "1001");
    EXPECT_TRUE(fake::logged("veot token upload response: {\"code\":1}", 2));
}

TEST_F(TokenTest, DownloadWalksTheDataMembers) {
    std::string session = "s0";
    std::string token = "t0";
    int expire = -5;
    // The status, then what the walk left in the session, the token and the expiry.
    auto download = [&](const std::string& data,
                        const std::string& head = "\"code\":0,\"message\":\"ok\"") {
        fake::pushBody("{" + head + ",\"data\":" + data + "}");
        const int status = VEOTTokenAPI::download(session, token, expire, kBase);
        return std::to_string(status) + " " + session + " " + token + " " + std::to_string(expire);
    };
    EXPECT_EQ(download("{\"token\":\"t1\",\"sessionID\":\"s1\"}"), "0 s1 t1 -5")
        << "no \"expire\" in the answer";
    // A wrong type stops the walk; members before it are kept.
    EXPECT_EQ(download("{\"sessionID\":\"s2\",\"expire\":\"60\",\"token\":\"t2\"}"),
              "610 s2 t1 -5");
    EXPECT_TRUE(fake::logged("Invalid JSON response: ", 4));
    EXPECT_EQ(download("{\"token\":5,\"sessionID\":\"s3\"}"), "610 s2 t1 -5");
    EXPECT_EQ(download("{\"expire\":3600,\"other\":[]}"), "0 s2 t1 3600");
    EXPECT_EQ(download("{\"token\":\"t3\"}", "\"code\":4,\"message\":\"none\""), "101 s2 t1 3600");
    EXPECT_EQ(download("{\"token\":\"t3\"}", "\"code\":0"), "610 s2 t1 3600") << "no \"message\"";
    fake::pushBody("{");
    EXPECT_EQ(VEOTTokenAPI::download(session, token, expire, kBase), 610);
    EXPECT_EQ(token, "t1");
}

TEST_F(TokenTest, FailedRequestsPassTheirStatusOnWithEachEndpointsLine) {
    std::string session = "s0";
    std::string token = "t0";
    int expire = 5;
    TencentAccount account;
    for (int i = 0; i < 4; ++i)
        fake::pushFailure();
    EXPECT_EQ(VemcTokenAPI::getToken(token, kBase), 604);
    EXPECT_EQ(VEOTTokenAPI::upload("tok", "sess", "1001", kBase), 604);
    EXPECT_EQ(VEOTTokenAPI::download(session, token, expire, kBase), 604);
    EXPECT_EQ(TencentAccountAPI::getTencentAccount(account, kBase), 604);
    EXPECT_EQ(session, "s0");
    EXPECT_EQ(token, "t0");
    EXPECT_EQ(expire, 5);

    EXPECT_TRUE(fake::logged("HTTP request failed: Error (code: 604", 4));
    EXPECT_TRUE(
        fake::logged("Failed to upload veot token (response: , error code: Error (code: 604", 4));
    EXPECT_TRUE(fake::logged("veot token download response: ", 2));
    EXPECT_TRUE(fake::logged("DeviceAPI::request() failed with code: Error (code: 604", 4));
    size_t tencentLines = 0;
    for (const auto& line : fake::logs())
        tencentLines += line.level == 4 && line.text == "DeviceAPI::request() failed";
    EXPECT_EQ(tencentLines, 1u);
}

TEST_F(TokenTest, TencentAccountKeepsFieldsTheAnswerLeavesOut) {
    TencentAccount account;
    account.txID = "previous";
    fake::pushBody(
        "{\"code\":0,\"data\":{\"txAppID\":\"app\",\"txIDType\":\"wx\",\"txVendorUID\":\"v\","
        "\"txAccessToken\":\"at\",\"txRefreshToken\":\"rt\",\"txExpiresIn\":7776000000}}");
    EXPECT_EQ(TencentAccountAPI::getTencentAccount(account, kBase), 0);
    EXPECT_EQ(std::tie(account.txAppID, account.txID, account.txIDType, account.txVendorUID,
                       account.txAccessToken, account.txRefreshToken, account.txExpiresIn),
              std::make_tuple("app", "previous", "wx", "v", "at", "rt", 7776000000LL));

    const std::pair<const char*, int> cases[] = {{"{\"code\":1}", 1002},
                                                 {"{\"code\":9}", 101},
                                                 {"{\"code\":\"0\"}", 610},
                                                 {"{\"code\":0}", 610},
                                                 {"{\"code\":0,\"data\":3}", 610},
                                                 {"[]", 610},
                                                 {"no", 610}};
    for (const auto& [body, expected] : cases) {
        fake::pushBody(body);
        EXPECT_EQ(TencentAccountAPI::getTencentAccount(account, kBase), expected) << body;
    }
    EXPECT_TRUE(fake::logged("No super admin: {\"code\":1}", 4));
    EXPECT_EQ(account.txAppID, "app");
}

}  // namespace
