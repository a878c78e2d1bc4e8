#include <openssl/evp.h>
#include <openssl/hmac.h>

#include <regex>
#include <tuple>

#include "FakeHelpers.h"
#include "velmar/crypto/BaseEncoding.h"

using velmar::quil::QuilConfigUtils;
using velmar::quil::api::DeviceAPI;

namespace {

const char kSecret[] = "0123456789abcdef-tail-of-secret";

// The one Cookie header of `call` ("Cookie: a=1; b=2") as a map.
std::map<std::string, std::string> cookiesOf(const fake::Call& call) {
    std::map<std::string, std::string> out;
    const std::string text = call.headers.size() == 1 ? call.headers[0] : "";
    const std::regex pair("(?:^Cookie: |; )([^=;]*)=([^;]*)");
    for (std::sregex_iterator it(text.begin(), text.end(), pair), end; it != end; ++it)
        out[(*it)[1]] = (*it)[2];
    return out;
}

std::string expectedToken(const std::string& key, const std::string& text) {
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int size = 0;
    HMAC(EVP_sha256(), key.data(), static_cast<int>(key.size()),
         reinterpret_cast<const unsigned char*>(text.data()), text.size(), digest, &size);
    return velmar::crypto::BaseEncoding::encodeB64(
        std::vector<unsigned char>(digest, digest + size));
}

class DeviceAPITest : public fake::FakeDeviceTest {
  protected:
    // The cookies of a request sent with the device as it now is.
    static std::map<std::string, std::string> sentCookies() {
        fake::pushBody("{}");
        std::string response;
        EXPECT_EQ(DeviceAPI::request(response, kBase, "/p", "GET", {}), 0);
        return cookiesOf(fake::calls().back());
    }
    void SetUp() override {
        FakeDeviceTest::SetUp();
        fake::setDeviceValue("sn", "SN0001");
        fake::setDeviceValue("channel_secret", kSecret);
        fake::setDeviceValue("device_token", "stored-token");
        fake::setDeviceValue("device_token_sign", "stored-sign");
        fake::setDeviceValue("uid", "1001");
    }
};

TEST_F(DeviceAPITest, SendsTheSignedRequestWithOneCookieHeader) {
    fake::pushBody("{\"code\":0}");
    const std::map<std::string, std::string> params{{"requestId", "caller-id"}, {"k", "a b"}};
    std::string response;
    int status = -1;
    EXPECT_EQ(DeviceAPI::request(response, status, kBase, "/device/x/", "POST", params), 0);
    EXPECT_EQ(response, "{\"code\":0}");
    EXPECT_EQ(status, 200);
    EXPECT_EQ(params.at("requestId"), "caller-id");  // the caller's map is not touched

    ASSERT_EQ(fake::calls().size(), 1u);
    const fake::Call& call = fake::calls()[0];
    EXPECT_EQ(call.overload, fake::Overload::BaseAndPath);
    EXPECT_EQ(std::tie(call.baseUrl, call.path, call.method),
              std::make_tuple(kBase, "/device/x/", "POST"));
    // The first UUID is the request ID, the second the nonce.
    const std::string requestId = "00000000-0000-4000-8000-000000000001";
    const std::string nonce = "00000000-0000-4000-8000-000000000002";
    EXPECT_EQ(call.params, "k=a%20b&requestId=" + requestId);

    auto cookies = cookiesOf(call);
    EXPECT_EQ(cookies.size(), 7u);
    EXPECT_EQ(cookies["userId"], "1001");
    EXPECT_EQ(cookies["sn"], "SN0001");
    EXPECT_EQ(cookies["deviceId"], "dev-42");
    EXPECT_EQ(cookies["nonce"], nonce);
    // Only the secret's first sixteen bytes sign.
    EXPECT_EQ(cookies["deviceToken"], expectedToken(std::string(kSecret, 16), "dev-42/" + nonce));
    EXPECT_EQ(cookies["deviceTokenV2"], "stored-token");
    EXPECT_EQ(cookies["signatureV2"], "stored-sign");
    EXPECT_TRUE(fake::logged("!!!!!!params is :k=a%20b&requestId=" + requestId, 4));
    EXPECT_EQ(fake::liveByteStrings(), 0);
}

// A longer one signs with its first sixteen bytes (above); a short secret is
// used as it is (zero padding is what HMAC does anyway) and nothing past its
// end is read.
TEST_F(DeviceAPITest, ASecretShorterThanSixteenBytesSignsAsItIs) {
    fake::setDeviceValue("channel_secret", "short");
    EXPECT_EQ(sentCookies()["deviceToken"],
              expectedToken("short", "dev-42/00000000-0000-4000-8000-000000000002"));
}

TEST_F(DeviceAPITest, CookiesCarryWhatTheDeviceCanSupply) {
    // Without an HMAC the request still goes, without the three signature cookies.
    fake::failHmac(true);
    auto cookies = sentCookies();
    EXPECT_EQ(cookies.count("deviceToken") + cookies.count("deviceTokenV2") +
                  cookies.count("signatureV2"),
              0u);
    EXPECT_EQ(cookies.count("nonce"), 1u);
    EXPECT_TRUE(fake::logged("Failed to generate hmac_sha256", 4));
    fake::failHmac(false);

    // A stored pair that cannot be read is logged and sent as far as it was read.
    fake::clearDeviceValue("device_token_sign");
    cookies = sentCookies();
    EXPECT_EQ(cookies.at("deviceTokenV2") + "/" + cookies.at("signatureV2"), "stored-token/");
    EXPECT_TRUE(fake::loggedExactly("Failed to get device-token-V2/signature", 3));
    fake::clearDeviceValue("device_token");
    cookies = sentCookies();
    EXPECT_EQ(cookies.at("deviceTokenV2") + "/" + cookies.at("signatureV2"), "/");

    // "userId" is 0 without an administrator and -1 for one the platform calls invalid.
    fake::clearDeviceValue("uid");
    EXPECT_EQ(sentCookies()["userId"], "0");
    fake::setDeviceValue("uid", "garbage");
    fake::setUidInvalid(1);
    EXPECT_EQ(sentCookies()["userId"], "-1");
}

TEST_F(DeviceAPITest, TransportFailureIs604AndLeavesTheResponseAlone) {
    fake::pushAnswer({true, 502, "bad gateway", utils::ERROR_HTTP_TIMEOUT, "timed out"});
    std::string response = "previous";
    int status = -1;
    EXPECT_EQ(DeviceAPI::request(response, status, kBase, "/p", "GET", {}), 604);
    EXPECT_EQ(response, "previous");
    EXPECT_EQ(status, 502);
    EXPECT_TRUE(fake::logged(
        "httpRequest() failed (requestId: 00000000-0000-4000-8000-000000000001; status: 502; "
        "error message: timed out; error code: " +
            errorText(utils::ERROR_HTTP_TIMEOUT) + ")",
        4));

    // An error status that the transport delivered is not judged here.
    fake::pushBody("{\"code\":500}", 500);
    EXPECT_EQ(DeviceAPI::request(response, kBase, "/p", "GET", {}), 0);
    EXPECT_EQ(response, "{\"code\":500}");
}

TEST_F(DeviceAPITest, AStoredValueThatWouldForgeACookieOrEndTheLineSendsNothing) {
    const std::pair<const char*, const char*> hostile[] = {
        {"sn", "SN1; userId=1"}, {"sn", "SN1,x=2"}, {"deviceid", "7300\r\nX-Evil: 1"},
        {"sn", "SN1\x01"},       {"sn", "SN1\x7f"}, {"device_token", "tok;en"},
    };
    for (const auto& [name, value] : hostile) {
        SCOPED_TRACE(name + std::string("=") + value);
        SetUp();
        fake::setDeviceValue(name, value);
        std::string response = "previous";
        int status = -1;
        EXPECT_EQ(DeviceAPI::request(response, status, kBase, "/p", "GET", {}), 604);
        EXPECT_TRUE(fake::calls().empty());
        EXPECT_EQ(response, "previous");
        const std::string cookie = std::string(name) == "deviceid"       ? "deviceId"
                                   : std::string(name) == "device_token" ? "deviceTokenV2"
                                                                         : "sn";
        EXPECT_TRUE(fake::loggedExactly("cookie \"" + cookie +
                                            "\" refused: its value holds ';', ',' or a control "
                                            "character",
                                        4));
        for (const auto& line : fake::logs())
            EXPECT_EQ(line.text.find(value), std::string::npos) << line.text;
    }
    // Quotes, blanks, '=' and bytes beyond ASCII are a cookie value's own.
    SetUp();
    fake::setDeviceValue("sn", "SN \"1\"=\xc3\xa9");
    EXPECT_EQ(sentCookies().at("sn"), "SN \"1\"=\xc3\xa9");
}

TEST_F(DeviceAPITest, RegistrationCheckSignsItselfSendsNoCookiesAndReadsOnlyTheCode) {
    fake::pushBody("{\"code\":0}");
    std::string status;
    ASSERT_EQ(DeviceAPI::checkRegistrationStatus(status, kBase), 0);
    EXPECT_EQ(status, "valid");

    const fake::Call& call = fake::calls().at(0);
    EXPECT_EQ(call.overload, fake::Overload::BaseAndPath);
    EXPECT_TRUE(call.headers.empty());
    // The one UUID drawn is the nonce: no request ID goes along.
    EXPECT_EQ(fake::uuidCount(), 1);
    const std::string nonce = "00000000-0000-4000-8000-000000000001";
    // The parameters' names are pinned with the route.
    EXPECT_EQ(call.decodedParams().at("nonce"), nonce);
    EXPECT_EQ(call.decodedParams().at("b64Sign"),
              expectedToken(std::string(kSecret, 16), "dev-42/" + nonce));
    EXPECT_EQ(fake::liveByteStrings(), 0);

    // The status, then what the check left of "before".
    auto check = [](const fake::Answer& answer) {
        fake::pushAnswer(answer);
        std::string before = "before";
        const int result = DeviceAPI::checkRegistrationStatus(before, kBase);
        return std::to_string(result) + " " + before;
    };
    // Any other code is an invalid registration; a true transport result is
    // a delivered answer whatever error value came with it.
    EXPECT_EQ(check({true, 200, "{\"code\":-1}", utils::ERROR_NONE, ""}), "0 invalid");
    EXPECT_EQ(check({true, 500, "{\"code\":3}", utils::ERROR_HTTP_TIMEOUT, "late"}), "0 invalid");
    EXPECT_EQ(check({true, 200, "{\"message\":\"ok\"}", utils::ERROR_NONE, ""}), "604 before");
    EXPECT_TRUE(fake::loggedExactly("Invalid result: {\"message\":\"ok\"}", 4));
    EXPECT_EQ(check({true, 200, "<html>", utils::ERROR_NONE, ""}), "604 before");
    EXPECT_TRUE(fake::loggedExactly("Invalid result: <html>", 4));
    // A transport failure is reported without a line of its own.
    const size_t lines = fake::logs().size();
    EXPECT_EQ(check({false, 0, "", utils::ERROR_HTTP_CONNECT, ""}), "604 before");
    EXPECT_EQ(fake::logs().size(), lines);
    // Without a signature nothing is sent.
    fake::failHmac(true);
    EXPECT_EQ(check(fake::Answer()), "101 before");
    EXPECT_EQ(fake::calls().size(), 6u);
    EXPECT_TRUE(fake::loggedExactly("Failed to generate hmac_sha256", 4));
}

TEST_F(DeviceAPITest, SuperAdminIsTheAnswersDataWhateverItsCode) {
    long long userId = 0;
    fake::pushBody("{\"code\":612,\"message\":\"not bound\",\"data\":-1}");
    ASSERT_EQ(DeviceAPI::getSuperAdmin(userId, kBase, true), 0);
    EXPECT_EQ(userId, -1);
    fake::pushBody("{\"code\":0,\"data\":52001}");
    ASSERT_EQ(DeviceAPI::getSuperAdmin(userId, kBase, false), 0);
    EXPECT_EQ(userId, 52001);

    fake::pushBody("{\"code\":0}");
    EXPECT_EQ(DeviceAPI::getSuperAdmin(userId, kBase, false), 604);
    EXPECT_TRUE(fake::loggedExactly("Invalid response: {\"code\":0}", 4));
    fake::pushFailure();
    EXPECT_EQ(DeviceAPI::getSuperAdmin(userId, kBase, false), 604);
    EXPECT_TRUE(fake::loggedExactly("request failed: " + errorText(utils::ERROR_HTTP_FAILED), 4));
    EXPECT_EQ(userId, 52001);
}

TEST_F(DeviceAPITest, KeepAliveKeyIsKeptUnlessTheAnswerCarriesOne) {
    std::string key = "old-key";
    fake::pushBody("{\"code\":0,\"data\":\"k-123\"}");
    QuilConfigUtils::keepAliveKeyGet(key);
    EXPECT_EQ(key, "k-123");

    fake::pushBody("{\"code\":5}");
    EXPECT_EQ(DeviceAPI::keepAliveKeyGet(key, kBase), 0);
    EXPECT_EQ(key, "k-123");
    // A failed request leaves nothing to parse.
    fake::pushFailure();
    EXPECT_EQ(DeviceAPI::keepAliveKeyGet(key, kBase), 604);
    EXPECT_TRUE(fake::loggedExactly("Invalid response: ", 4));
    EXPECT_EQ(key, "k-123");
}

}  // namespace
