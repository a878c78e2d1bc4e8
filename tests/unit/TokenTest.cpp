// The service tokens, and the lines with which the device service calls
// report a failure, on the fake port.
#include <tuple>

#include "FakeHelpers.h"

using namespace velmar::quil::api;

namespace {

class TokenTest : public fake::FakeDeviceTest {
  protected:
    void SetUp() override {
        FakeDeviceTest::SetUp();
        fake::setDeviceValue("uid", "1001");
        fake::setDeviceValue("iot_did", "did-1");
        fake::setDeviceValue("model", "quil.speaker.v2");
    }
};

// The calls with several failures of their own, outputs dropped.
int aiToken() {
    std::string token;
    long long expiresIn = 0;
    return AIServiceTokenAPI::getServiceToken(token, expiresIn, kBase);
}
int veotDownload() {
    std::string session, token;
    int expire = 0;
    return VEOTTokenAPI::download(session, token, expire, kBase);
}
int tencentAccount() {
    TencentAccount account;
    return TencentAccountAPI::getTencentAccount(account, kBase);
}

TEST_F(TokenTest, EachFailureEndsWithItsOwnLine) {
    const std::string failed =
        " (response: , error code: " + errorText(utils::ERROR_HTTP_FAILED) + ")";
    const char* const kFailed = nullptr;  // the transport refuses the request
    const struct {
        const char* answer;
        int (*call)();
        int status;
        int level;
        std::string line;  // the last line logged
    } rows[] = {
        {kFailed, aiToken, 604, 4, "Failed to get ai service token" + failed},
        {"<html>", aiToken, 1001, 4, "Invalid response: <html>"},
        {"{\"code\":\"0\"}", aiToken, 1001, 4,
         "Failed to get ai service token (response: {\"code\":\"0\"})"},
        {"{\"code\":0,\"data\":{\"token\":\"t\"}}", aiToken, 1001, 4,
         "Failed to get ai service token (response: {\"code\":0,\"data\":{\"token\":\"t\"}})"},
        {kFailed,
         [] {
             std::string t;
             return int(VemcTokenAPI::getToken(t, kBase));
         },
         604, 4, "HTTP request failed: " + errorText(utils::ERROR_HTTP_FAILED)},
        {kFailed, [] { return int(VEOTTokenAPI::upload("t", "s", "1", kBase)); }, 604, 4,
         "Failed to upload veot token" + failed},
        {kFailed, veotDownload, 604, 4,
         "DeviceAPI::request() failed with code: " + errorText(utils::ERROR_HTTP_FAILED)},
        {"{", veotDownload, 610, 4, "Invalid response: {"},
        // JSON null is JSON of the wrong shape.
        {"null", veotDownload, 610, 4, "Invalid JSON response: null"},
        {"{\"code\":4,\"message\":\"m\",\"data\":{}}", veotDownload, 101, 4,
         "Request not success: {\"code\":4,\"message\":\"m\",\"data\":{}}"},
        {kFailed, tencentAccount, 604, 4, "DeviceAPI::request() failed"},
        {"no", tencentAccount, 610, 4, "Invalid response: no"},
        {"[]", tencentAccount, 610, 4, "Failed to get tencent account (response: [])"},
        {"{\"code\":1}", tencentAccount, 1002, 4, "No super admin: {\"code\":1}"},
        {"{\"code\":9}", tencentAccount, 101, 4, "unknown error. response: {\"code\":9}"},
        {"{\"code\":0,\"data\":null}", tencentAccount, 610, 4,
         "Invalid response: {\"code\":0,\"data\":null}"},
        // No line of its own: the signed request's is the last.
        {kFailed, [] { return int(PrivacySettingsAPI::setPrivacySettings(kBase, 1, "v")); }, 604, 4,
         "httpRequest() failed (requestId: 00000000-0000-4000-8000-000000000001; status: 0; "
         "error message: no scripted answer; error code: " +
             errorText(utils::ERROR_HTTP_CONNECT) + ")"},
        {kFailed, [] { return int(DeviceStatusAPI::setDeviceStatus(kBase, "volume", "30")); }, 604,
         2,
         "Set device status result [catagory: volume; status: 30; response: ; error code: " +
             errorText(utils::ERROR_HTTP_FAILED) + "]"},
        {"{\"code\":0}", [] { return int(CmccAndlinkAPI::setDeviceID("cm-1", kBase)); }, 0, 2,
         "set andlink did response: {\"code\":0}"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.line);
        SetUp();
        if (row.answer != kFailed) fake::pushBody(row.answer);
        EXPECT_EQ(row.call(), row.status);
        ASSERT_FALSE(fake::logs().empty());
        EXPECT_EQ(fake::logs().back().level, row.level);
        EXPECT_EQ(fake::logs().back().text, row.line);
    }
}

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
    EXPECT_TRUE(fake::loggedExactly("invalid code: 5", 3));
    EXPECT_EQ(get("{\"code\":0,\"data\":{\"token\":\"ai-1\",\"expiresIn\":7200}}"), "0 ai-1 7200");
    // What was read before the gap stays written.
    EXPECT_EQ(get("{\"code\":0,\"data\":{\"token\":\"ai-2\"}}"), "1001 ai-2 7200");
    EXPECT_EQ(get("{\"code\":0,\"data\":{\"expiresIn\":1}}"), "1001 ai-2 7200");
    EXPECT_EQ(get("{\"code\":0}"), "1001 ai-2 7200");
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
    EXPECT_TRUE(fake::loggedExactly("Invalid response: {\"code\": 3}", 4));

    fake::pushBody("{\"code\":0,\"data\":\"vemc-1\"}");
    EXPECT_EQ(VemcTokenAPI::getToken(token, kBase), 0);
    EXPECT_EQ(token, "vemc-1");

    size_t sent = fake::calls().size();
    fake::clearDeviceValue("deviceid");
    EXPECT_EQ(VemcTokenAPI::getToken(token, kBase), 101);
    EXPECT_TRUE(fake::loggedExactly("Failed to get device id", 4));
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
    EXPECT_TRUE(fake::loggedExactly("veot token upload response: {\"code\":1}", 2));
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
    EXPECT_EQ(download("{\"token\":\"t3\"}", "\"code\":0"), "610 s2 t1 3600") << "no \"message\"";
    EXPECT_EQ(download("[]"), "610 s2 t1 3600") << "\"data\" no object";
    EXPECT_TRUE(
        fake::loggedExactly("veot token download response: {\"code\":0,\"message\":"
                            "\"ok\",\"data\":[]}",
                            2));
}

TEST_F(TokenTest, TencentAccountKeepsFieldsTheAnswerLeavesOut) {
    TencentAccount account;
    account.txID = "previous";
    fake::pushBody(
        "{\"code\":0,\"data\":{\"txAppID\":\"app\",\"txIDType\":\"wx\",\"txVendorUID\":\"v\","
        "\"txAccessToken\":\"at\",\"txRefreshToken\":\"rt\",\"txExpiresIn\":7776000000}}");
    EXPECT_EQ(TencentAccountAPI::getTencentAccount(account, kBase), 0);
    const auto fields = [&] {
        return std::tie(account.txAppID, account.txID, account.txIDType, account.txVendorUID,
                        account.txAccessToken, account.txRefreshToken, account.txExpiresIn);
    };
    const auto read = std::make_tuple("app", "previous", "wx", "v", "at", "rt", 7776000000LL);
    EXPECT_EQ(fields(), read);
    // A "data" that is no object holds no keys: nothing changes, and that is no failure.
    for (const char* data : {"3", "\"txID\"", "[{\"txID\":\"x\"}]"}) {
        fake::pushBody(std::string("{\"code\":0,\"data\":") + data + "}");
        EXPECT_EQ(TencentAccountAPI::getTencentAccount(account, kBase), 0) << data;
        EXPECT_EQ(fields(), read) << data;
    }
}

}  // namespace
