// The Linux port's transport against the local cloud: wire form, faults,
// TLS trust, reuse and the resolver-list overload.
#include <stdlib.h>

#include <chrono>

#include "CloudFixture.h"
#include "velmar/http/HTTPRequest.h"

using velmar::http::HTTPRequest;
namespace utils = velmar::utils;

namespace {

struct Result {
    bool ok = false;
    int status = -1;
    std::string body;
    utils::ErrorType error = utils::ERROR_NONE;
    std::string message;
};

Result call(const std::string& base, const std::string& path, const std::string& params,
            const std::string& method, std::vector<std::string> headers = {},
            int timeoutMs = 5000) {
    Result r;
    r.ok = HTTPRequest::httpRequest(r.status, r.body, r.error, r.message, base, path, params,
                                    method, headers, timeoutMs);
    return r;
}

class HostTransportTest : public velmar::testing::CloudFixture {
  protected:
    void SetUp() override {
        CloudFixture::SetUp();
        cloud().route("GET", "/echo", [](const quilcloud::Received&, quilcloud::Reply& reply) {
            reply.json(200, "{\"echo\":true}");
        });
        cloud().route("POST", "/echo", [](const quilcloud::Received&, quilcloud::Reply& reply) {
            reply.json(201, "{\"posted\":true}");
        });
    }
};

TEST_F(HostTransportTest, PlacesParametersCookiesAndPathAsTheWireFormSays) {
    const std::string params = HTTPRequest::encodeHTTPParams({{"a", "1 2"}, {"b", "x&y"}});
    Result get = call(baseUrl() + "/", "/echo", params, "GET",
                      {HTTPRequest::buildCookieHeader({{"k", "v"}, {"n", "2"}}), ""});
    ASSERT_TRUE(get.ok) << get.message;
    EXPECT_EQ(get.status, 200);
    EXPECT_EQ(get.body, "{\"echo\":true}");

    Result post = call(baseUrl(), "echo", params, "POST");
    ASSERT_TRUE(post.ok) << post.message;
    EXPECT_EQ(post.status, 201);

    auto received = cloud().received("/echo");
    ASSERT_EQ(received.size(), 2u);
    EXPECT_EQ(received[0].method, "GET");
    EXPECT_EQ(received[0].query, params);
    EXPECT_EQ(received[0].body, "");
    EXPECT_EQ(received[0].cookies.at("k"), "v");
    EXPECT_EQ(received[0].cookies.at("n"), "2");
    EXPECT_EQ(received[1].method, "POST");
    EXPECT_EQ(received[1].query, "");
    EXPECT_EQ(received[1].body, params);
    EXPECT_EQ(received[1].param("b"), "x&y");
    EXPECT_NE(received[1].header("content-type").find("application/x-www-form-urlencoded"),
              std::string::npos);

    // Multi-valued form fields: every value its own pair.
    Result form;
    form.ok =
        HTTPRequest::httpRequest(form.status, form.body, form.error, form.message, baseUrl(),
                                 "/echo", {{"id", {"1", "2"}}, {"p", {"a b"}}}, "POST", {}, 5000);
    ASSERT_TRUE(form.ok) << form.message;
    EXPECT_EQ(cloud().received("/echo").back().body, "id=1&id=2&p=a%20b");

    // Any status is an answer; only the exchange failing is a failure.
    cloud().script("/echo", quilcloud::Scripted::answer(503, "busy"));
    Result busy = call(baseUrl(), "/echo", "", "GET");
    EXPECT_TRUE(busy.ok);
    EXPECT_EQ(busy.status, 503);
    EXPECT_EQ(busy.body, "busy");
}

TEST_F(HostTransportTest, FaultsEndAsClearTransportFailures) {
    cloud().script("/slow", quilcloud::Scripted::delay(3000));
    auto start = std::chrono::steady_clock::now();
    Result slow = call(baseUrl(), "/slow", "", "GET", {}, 300);
    auto took = std::chrono::steady_clock::now() - start;
    EXPECT_FALSE(slow.ok);
    EXPECT_EQ(slow.error, utils::ERROR_HTTP_TIMEOUT) << slow.message;
    EXPECT_LT(took, std::chrono::milliseconds(2000));

    cloud().script("/reset", quilcloud::Scripted::reset());
    Result reset = call(baseUrl(), "/reset", "", "GET");
    EXPECT_FALSE(reset.ok);
    EXPECT_NE(reset.error, utils::ERROR_NONE);
    EXPECT_FALSE(reset.message.empty());

    cloud().script("/cut", quilcloud::Scripted::truncate(std::string(1000, 'x')));
    Result cut = call(baseUrl(), "/cut", "", "GET");
    EXPECT_FALSE(cut.ok);
    EXPECT_EQ(cut.body, "");
    EXPECT_NE(cut.message.find("transfer closed"), std::string::npos) << cut.message;

    cloud().script("/big", quilcloud::Scripted::oversize(9u * 1024 * 1024));
    Result big = call(baseUrl(), "/big", "", "GET");
    EXPECT_FALSE(big.ok);
    EXPECT_EQ(big.error, utils::ERROR_HTTP_TOO_LARGE) << big.message;
    EXPECT_EQ(big.body, "");

    Result nowhere = call("http://127.0.0.1:9", "/", "", "GET");
    EXPECT_FALSE(nowhere.ok);
    EXPECT_EQ(nowhere.error, utils::ERROR_HTTP_CONNECT) << nowhere.message;
}

TEST_F(HostTransportTest, ConnectionsAreReusedBetweenCalls) {
    cloud().clearReceived();
    for (int i = 0; i < 10; ++i)
        ASSERT_TRUE(call(baseUrl(), "/echo", "", "GET").ok);
    EXPECT_LT(cloud().connectionCount(), 10);
}

TEST_F(HostTransportTest, PinnedNamesAndTheResolverListReachLoopback) {
    const std::string port = std::to_string(cloud().port());
    setenv("VELMAR_RESOLVE", ("quil.test:" + port + ":127.0.0.1").c_str(), 1);
    Result pinned = call("http://quil.test:" + port, "/echo", "", "GET");
    unsetenv("VELMAR_RESOLVE");
    EXPECT_TRUE(pinned.ok) << pinned.message;
}

class HostResolverTest : public velmar::testing::CloudFixture {
  protected:
    int dnsPort() const override { return 0; }
};

TEST_F(HostResolverTest, ResolverListOverloadAsksTheGivenResolvers) {
    cloud().route("GET", "/up", [](const quilcloud::Received&, quilcloud::Reply& reply) {
        reply.json(200, "{}");
    });
    const std::string url = "http://upgrade.quil.test:" + std::to_string(cloud().port()) + "/up";
    std::vector<std::string> none;
    Result r;
    r.ok = HTTPRequest::httpRequest(r.status, r.body, r.error, r.message, url, "", "GET", none,
                                    5000, "", cloud().dnsServers());
    ASSERT_TRUE(r.ok) << r.message;
    auto asked = cloud().dnsQueries();
    ASSERT_FALSE(asked.empty());
    EXPECT_EQ(asked.back(), "upgrade.quil.test");

    // The override replaces a caller's list, which is never contacted.
    setenv("VELMAR_DNS_SERVERS", cloud().dnsServers().c_str(), 1);
    r.ok = HTTPRequest::httpRequest(r.status, r.body, r.error, r.message, url, "", "GET", none,
                                    5000, "", "192.0.2.1");
    unsetenv("VELMAR_DNS_SERVERS");
    EXPECT_TRUE(r.ok) << r.message;

    // A resolver that never answers ends in a resolve failure within the time-out.
    r.ok = HTTPRequest::httpRequest(r.status, r.body, r.error, r.message, url, "", "GET", none, 300,
                                    "", "127.0.0.1:9");
    EXPECT_FALSE(r.ok);
    EXPECT_EQ(r.error, utils::ERROR_HTTP_RESOLVE) << r.message;
}

class HostTlsTest : public velmar::testing::TlsCloudFixture {};

TEST_F(HostTlsTest, HttpsIsTrustedOnlyThroughTheConfiguredAuthority) {
    std::string body, message;
    int status = 0;
    utils::ErrorType error = utils::ERROR_NONE;
    EXPECT_TRUE(HTTPRequest::httpRequest(status, body, error, message, baseUrl(), "/device/nowhere",
                                         "", "GET", {}, 5000))
        << message;
    EXPECT_EQ(status, 404);
    unsetenv("VELMAR_CA_FILE");
    EXPECT_FALSE(HTTPRequest::httpRequest(status, body, error, message, baseUrl(),
                                          "/device/nowhere", "", "GET", {}, 5000));
    EXPECT_EQ(error, utils::ERROR_HTTP_TLS) << message;
}

}  // namespace
