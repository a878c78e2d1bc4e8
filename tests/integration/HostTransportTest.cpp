// The Linux port's transport against the local cloud: wire form, faults,
// the size cap, TLS trust, proxies, the clock before the build time,
// connection reuse, pinned names and the resolver-list overload.
#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <thread>
#include <tuple>

#include "CloudFixture.h"
#include "host/ConnectionRules.h"
#include "velmar/http/HTTPRequest.h"
#include "velmar/quil/api/TimeSyncAPI.h"

using quilcloud::Received;
using quilcloud::Reply;
using quilcloud::Scripted;
using velmar::http::HTTPRequest;
namespace utils = velmar::utils;
using Clock = std::chrono::steady_clock;

namespace {

constexpr size_t kCap = 8 * 1024 * 1024;

struct Result {
    bool ok = false;
    int status = -1;
    std::string body = "stale";
    utils::ErrorType error = utils::ERROR_GENERAL;
    std::string message = "stale";
};

Result call(const std::string& base, const std::string& path, const std::string& params,
            const std::string& method, const std::vector<std::string>& headers = {},
            int timeoutMs = 5000) {
    Result r;
    r.ok = HTTPRequest::httpRequest(r.status, r.body, r.error, r.message, base, path, params,
                                    method, headers, timeoutMs);
    return r;
}

Result callUrl(const std::string& url, const std::string& params, const std::string& method,
               const std::string& cookie = "", const std::vector<std::string>& headers = {}) {
    Result r;
    r.ok = HTTPRequest::httpRequest(r.status, r.body, r.error, r.message, url, params, method,
                                    headers, 5000, cookie);
    return r;
}

Result callWithResolvers(const std::string& url, const std::string& servers, int timeoutMs = 5000) {
    Result r;
    r.ok = HTTPRequest::httpRequest(r.status, r.body, r.error, r.message, url, "", "GET", {},
                                    timeoutMs, "", servers);
    return r;
}

long long millisSince(Clock::time_point start) {
    return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count();
}

// A loopback socket: a resolver that never answers, or the listening end of
// a hand-written HTTP server.
class LoopbackSocket {
  public:
    explicit LoopbackSocket(int type) : fd_(socket(AF_INET, type | SOCK_CLOEXEC, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof(address);
        EXPECT_EQ(bind(fd_, reinterpret_cast<sockaddr*>(&address), length), 0);
        EXPECT_EQ(getsockname(fd_, reinterpret_cast<sockaddr*>(&address), &length), 0);
        port_ = ntohs(address.sin_port);
        if (type == SOCK_STREAM) {
            EXPECT_EQ(listen(fd_, 4), 0);
        }
    }
    ~LoopbackSocket() { close(fd_); }
    int fd() const { return fd_; }
    // A connection is waiting to be accepted, without waiting for one.
    bool connectionPending() const {
        pollfd entry{fd_, POLLIN, 0};
        return poll(&entry, 1, 0) == 1;
    }
    int port() const { return port_; }
    std::string endpoint() const { return "127.0.0.1:" + std::to_string(port_); }
    // Datagrams that arrived, without waiting.
    int pendingDatagrams() const {
        int count = 0;
        char buffer[512];
        while (recv(fd_, buffer, sizeof(buffer), MSG_DONTWAIT) >= 0)
            ++count;
        return count;
    }

  private:
    int fd_;
    int port_ = 0;
};

class HostTransportTest : public velmar::testing::CloudFixture {
  protected:
    void SetUp() override {
        CloudFixture::SetUp();
        for (const char* method : {"GET", "POST", "PUT", "DELETE"}) {
            cloud().route(method, "/echo", [](const Received& r, Reply& reply) {
                reply.json(200, "{\"method\":\"" + r.method + "\"}");
            });
        }
    }
    void TearDown() override {
        unsetenv("VELMAR_RESOLVE");
        unsetenv("VELMAR_DNS_SERVERS");
        CloudFixture::TearDown();
    }
    std::string port() { return std::to_string(cloud().port()); }
};

TEST_F(HostTransportTest, ParametersHeadersAndPathsTakeTheirWireForm) {
    const std::string params = HTTPRequest::encodeHTTPParams({{"a", "1 2"}, {"b", "x&y=z"}});
    const std::string cookie = HTTPRequest::buildCookieHeader({{"k", "v"}, {"sn", "4417/2026"}});
    Result get = call(baseUrl() + "//", "//echo", params, "GET", {cookie, "", "X-Tag: t1"});
    ASSERT_TRUE(get.ok) << get.message;
    EXPECT_EQ(get.status, 200);
    EXPECT_EQ(get.body, "{\"method\":\"GET\"}");
    EXPECT_EQ(get.error, utils::ERROR_NONE);
    EXPECT_EQ(get.message, "");
    Result post = call(baseUrl(), "echo", params, "POST");
    ASSERT_TRUE(post.ok) << post.message;
    Result form;
    form.ok = HTTPRequest::httpRequest(form.status, form.body, form.error, form.message, baseUrl(),
                                       "/echo", {{"id", {"1", "2"}}, {"p", {"a b"}}, {"q", {}}},
                                       "POST", {}, 5000);
    ASSERT_TRUE(form.ok) << form.message;
    // The full-URL overload: a URL with a query of its own, and the cookie argument.
    ASSERT_TRUE(callUrl(baseUrl() + "/echo?fixed=1", params, "GET", "deviceId=7300; n=1").ok);
    ASSERT_TRUE(callUrl(baseUrl() + "/echo", "", "GET").ok);
    ASSERT_TRUE(callUrl(baseUrl() + "/echo", params, "PUT").ok);
    ASSERT_TRUE(callUrl(baseUrl() + "/echo", "", "GET").ok);

    // Method, query, body and the one header that tells each case apart.
    auto r = cloud().received("/echo");
    ASSERT_EQ(r.size(), 7u);
    auto seen = [&r](size_t i, const std::string& header) {
        return std::make_tuple(r[i].method, r[i].query, r[i].body, r[i].header(header));
    };
    EXPECT_EQ(seen(0, "x-tag"), std::make_tuple("GET", params, "", "t1"));
    EXPECT_EQ(r[0].cookies.at("sn"), "4417/2026");
    EXPECT_EQ(seen(1, "content-type"),
              std::make_tuple("POST", "", params, "application/x-www-form-urlencoded"));
    EXPECT_EQ(seen(2, "x-none"), std::make_tuple("POST", "", "id=1&id=2&p=a%20b", ""));
    EXPECT_EQ(seen(3, "cookie"),
              std::make_tuple("GET", "fixed=1&" + params, "", "deviceId=7300; n=1"));
    EXPECT_EQ(seen(4, "cookie"), std::make_tuple("GET", "", "", "")) << "no parameters, no query";
    EXPECT_EQ(seen(5, "x-none"), std::make_tuple("PUT", "", params, ""));
    EXPECT_EQ(seen(6, "content-length"), std::make_tuple("GET", "", "", ""))
        << "a handle that just sent a body sends none with the next GET";

    // What would split the request line or a header is refused before sending.
    cloud().clearReceived();
    for (const Result& bad :
         {call(baseUrl(), "/echo", "", "GET\r\nX-Evil: 1"), call(baseUrl(), "/echo", "", ""),
          call(baseUrl(), "/echo", "", "GET", {"X-A: 1\r\nX-Evil: 1"}),
          callUrl(baseUrl() + "/echo", "", "GET", "a=1\r\nX-Evil: 1")}) {
        EXPECT_FALSE(bad.ok);
        EXPECT_EQ(bad.error, utils::ERROR_HTTP_INIT) << bad.message;
        EXPECT_EQ(bad.status, 0);
        EXPECT_EQ(bad.body, "");
    }
    EXPECT_TRUE(cloud().received().empty());
}

TEST_F(HostTransportTest, FaultsEndAsTransportFailuresWithTheirCause) {
    cloud().script("/slow", Scripted::delay(3000));
    auto start = Clock::now();
    Result slow = call(baseUrl(), "/slow", "", "GET", {}, 400);
    EXPECT_FALSE(slow.ok);
    EXPECT_EQ(slow.error, utils::ERROR_HTTP_TIMEOUT) << slow.message;
    EXPECT_GE(millisSince(start), 380);
    EXPECT_LT(millisSince(start), 1500);
    EXPECT_EQ(slow.message.rfind("timed out: ", 0), 0u) << slow.message;
    EXPECT_EQ(slow.body, "");

    cloud().script("/reset", Scripted::reset());
    Result reset = call(baseUrl(), "/reset", "", "GET");
    EXPECT_FALSE(reset.ok);
    EXPECT_EQ(reset.error, utils::ERROR_HTTP_FAILED) << reset.message;
    EXPECT_EQ(reset.message.rfind("transfer failed: ", 0), 0u) << reset.message;

    cloud().script("/cut", Scripted::truncate(std::string(1000, 'x')));
    Result cut = call(baseUrl(), "/cut", "", "GET");
    EXPECT_FALSE(cut.ok);
    EXPECT_EQ(cut.error, utils::ERROR_HTTP_FAILED);
    EXPECT_EQ(cut.body, "") << "half a body is no answer";
    EXPECT_NE(cut.message.find("transfer closed with 500 bytes remaining"), std::string::npos)
        << cut.message;

    Result nowhere = call("http://127.0.0.1:1", "/", "", "GET");
    EXPECT_FALSE(nowhere.ok);
    EXPECT_EQ(nowhere.status, 0);
    EXPECT_EQ(nowhere.error, utils::ERROR_HTTP_CONNECT) << nowhere.message;
    EXPECT_NE(nowhere.message.find("127.0.0.1"), std::string::npos) << nowhere.message;

    // The pooled handle that saw all of this still serves a plain call.
    Result after = call(baseUrl(), "/echo", "", "GET");
    EXPECT_TRUE(after.ok) << after.message;
    EXPECT_EQ(after.body, "{\"method\":\"GET\"}");
}

TEST_F(HostTransportTest, AnswersBeyondTheCapAreRefusedWithoutBeingBuffered) {
    cloud().script("/exact", Scripted::oversize(kCap));
    Result exact = call(baseUrl(), "/exact", "", "GET", {}, 20000);
    ASSERT_TRUE(exact.ok) << exact.message;
    EXPECT_EQ(exact.body.size(), kCap) << "the cap itself is allowed";

    cloud().script("/big", Scripted::oversize(kCap + 1));
    Result big = call(baseUrl(), "/big", "", "GET", {}, 20000);
    EXPECT_FALSE(big.ok);
    EXPECT_EQ(big.error, utils::ERROR_HTTP_TOO_LARGE) << big.message;
    EXPECT_EQ(big.body, "");

    // Without a length announced, the cap is enforced as the body arrives.
    LoopbackSocket server(SOCK_STREAM);
    std::atomic<size_t> sent{0};
    std::thread serve([&] {
        int client = accept(server.fd(), nullptr, nullptr);
        ASSERT_GE(client, 0);
        char request[4096];
        ASSERT_GT(recv(client, request, sizeof(request), 0), 0);
        const std::string head = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n";
        send(client, head.data(), head.size(), MSG_NOSIGNAL);
        const std::string chunk = "10000\r\n" + std::string(0x10000, 'y') + "\r\n";
        while (sent < 4 * kCap && send(client, chunk.data(), chunk.size(), MSG_NOSIGNAL) > 0)
            sent += 0x10000;
        close(client);
    });
    Result chunked = call("http://" + server.endpoint(), "/", "", "GET", {}, 20000);
    serve.join();
    EXPECT_FALSE(chunked.ok);
    EXPECT_EQ(chunked.error, utils::ERROR_HTTP_TOO_LARGE) << chunked.message;
    EXPECT_EQ(chunked.body, "");
    EXPECT_LT(sent.load(), 4 * kCap) << "the client stopped reading";
}

TEST_F(HostTransportTest, ConnectionsAreReusedAcrossCallsAndThreads) {
    cloud().clearReceived();
    for (int i = 0; i < 10; ++i)
        ASSERT_TRUE(call(baseUrl(), "/echo", "i=" + std::to_string(i), "POST").ok);
    EXPECT_EQ(cloud().connectionCount(), 1);

    cloud().clearReceived();
    std::atomic<int> failures{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < 15; ++i) {
                Result r = call(baseUrl(), "/echo", "", i % 2 ? "GET" : "POST");
                if (!r.ok || r.status != 200) ++failures;
            }
        });
    }
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(failures.load(), 0);
    EXPECT_EQ(cloud().received("/echo").size(), 60u);
    EXPECT_LE(cloud().connectionCount(), 8);
}

TEST_F(HostTransportTest, PinnedNamesFollowTheEnvironment) {
    const std::string url = "http://quil.test:" + port();
    setenv("VELMAR_RESOLVE", ("other.test:1:127.0.0.9, quil.test:" + port() + ":127.0.0.1").c_str(),
           1);
    Result pinned = call(url, "/echo", "", "GET");
    ASSERT_TRUE(pinned.ok) << pinned.message;
    EXPECT_EQ(cloud().received("/echo").back().header("host"), "quil.test:" + port());

    // A new address takes effect at once, even with a connection still open
    // to the old one (the cloud listens on 127.0.0.1 only).
    setenv("VELMAR_RESOLVE", ("quil.test:" + port() + ":127.0.0.2").c_str(), 1);
    Result moved = call(url, "/echo", "", "GET");
    EXPECT_FALSE(moved.ok);
    EXPECT_EQ(moved.error, utils::ERROR_HTTP_CONNECT) << moved.message;

    setenv("VELMAR_RESOLVE", ("quil.test:" + port() + ":127.0.0.1").c_str(), 1);
    EXPECT_TRUE(call(url, "/echo", "", "GET").ok);
}

class HostResolverTest : public HostTransportTest {
  protected:
    int dnsPort() const override { return 0; }
};

TEST_F(HostResolverTest, ResolverListAnswersPinTheHostForThatCallOnly) {
    const std::string url = "http://api.quil.test:" + port() + "/echo";
    // What a plain call would use for the name: nothing listens there.
    setenv("VELMAR_RESOLVE", ("api.quil.test:" + port() + ":127.0.0.2").c_str(), 1);

    Result r = callWithResolvers(url, cloud().dnsServers());
    ASSERT_TRUE(r.ok) << r.message;
    EXPECT_EQ(r.body, "{\"method\":\"GET\"}");
    ASSERT_FALSE(cloud().dnsQueries().empty());
    EXPECT_EQ(cloud().dnsQueries().back(), "api.quil.test");
    EXPECT_EQ(cloud().received("/echo").back().header("host"), "api.quil.test:" + port());

    Result plain = call(url, "", "", "GET");
    EXPECT_FALSE(plain.ok) << "the resolver's answer outlived its call";
    EXPECT_EQ(plain.error, utils::ERROR_HTTP_CONNECT) << plain.message;

    // The answer is what is used.
    cloud().setDnsAnswer("api.quil.test", "127.0.0.3");
    Result elsewhere = callWithResolvers(url, cloud().dnsServers());
    EXPECT_FALSE(elsewhere.ok);
    EXPECT_EQ(elsewhere.error, utils::ERROR_HTTP_CONNECT) << elsewhere.message;
    cloud().setDnsAnswer("api.quil.test", "127.0.0.1");
}

TEST_F(HostResolverTest, ResolversAreTheEnvironmentsOrTheCallersAndFailWithinTheTimeOut) {
    LoopbackSocket silent(SOCK_DGRAM);  // must never be asked
    const std::string url = "http://api.quil.test:" + port() + "/echo";

    setenv("VELMAR_DNS_SERVERS", cloud().dnsServers().c_str(), 1);
    Result r = callWithResolvers(url, silent.endpoint());
    EXPECT_TRUE(r.ok) << r.message;
    unsetenv("VELMAR_DNS_SERVERS");

    const size_t asked = cloud().dnsQueries().size();
    r = callWithResolvers(baseUrl() + "/echo", silent.endpoint());
    EXPECT_TRUE(r.ok) << r.message;
    r = callWithResolvers("http://[::1]:1/", silent.endpoint());
    EXPECT_EQ(r.error, utils::ERROR_HTTP_CONNECT) << r.message;
    EXPECT_EQ(cloud().dnsQueries().size(), asked);
    EXPECT_EQ(silent.pendingDatagrams(), 0);

    // A resolver that never answers is a resolve error within the time-out.
    auto start = Clock::now();
    r = callWithResolvers(url, silent.endpoint(), 400);
    EXPECT_FALSE(r.ok);
    EXPECT_EQ(r.error, utils::ERROR_HTTP_RESOLVE) << r.message;
    EXPECT_EQ(r.status, 0);
    EXPECT_GE(millisSince(start), 380);
    EXPECT_LT(millisSince(start), 1500);
    EXPECT_NE(r.message.find("api.quil.test"), std::string::npos) << r.message;
    EXPECT_GT(silent.pendingDatagrams(), 0) << "the given resolver was the one asked";

    r = callWithResolvers(url, "not-a-resolver");
    EXPECT_FALSE(r.ok);
    EXPECT_EQ(r.error, utils::ERROR_HTTP_RESOLVE);
    EXPECT_NE(r.message.find("bad resolver list"), std::string::npos) << r.message;

    // The time spent resolving counts against the call's time-out.
    cloud().script("/echo", Scripted::delay(3000));
    start = Clock::now();
    r = callWithResolvers(url, cloud().dnsServers(), 400);
    EXPECT_EQ(r.error, utils::ERROR_HTTP_TIMEOUT) << r.message;
    EXPECT_LT(millisSince(start), 1500);
}

class HostTlsTest : public velmar::testing::TlsCloudFixture {
  protected:
    void TearDown() override {
        unsetenv("VELMAR_RESOLVE");
        TlsCloudFixture::TearDown();
    }
};

TEST_F(HostTlsTest, HttpsIsTrustedThroughTheConfiguredAuthorityOnly) {
    cloud().route("GET", "/t", [](const Received&, Reply& reply) { reply.json(200, "{}"); });
    cloud().clearReceived();
    for (int i = 0; i < 5; ++i)
        ASSERT_EQ(call(baseUrl(), "/t", "", "GET").status, 200);
    EXPECT_EQ(cloud().connectionCount(), 1);

    // The certificate's names are checked, not only its signature.
    const std::string port = std::to_string(cloud().port());
    setenv("VELMAR_RESOLVE", ("quil.test:" + port + ":127.0.0.1").c_str(), 1);
    Result wrongName = call("https://quil.test:" + port, "/t", "", "GET");
    EXPECT_FALSE(wrongName.ok);
    EXPECT_EQ(wrongName.error, utils::ERROR_HTTP_TLS) << wrongName.message;

    const std::string caFile = cloud().caFile();
    unsetenv("VELMAR_CA_FILE");
    Result untrusted = call(baseUrl(), "/t", "", "GET");
    EXPECT_FALSE(untrusted.ok);
    EXPECT_EQ(untrusted.error, utils::ERROR_HTTP_TLS) << untrusted.message;
    EXPECT_EQ(untrusted.message.rfind("TLS failed: ", 0), 0u) << untrusted.message;

    setenv("VELMAR_CA_FILE", (root() / "no-such-ca.pem").c_str(), 1);
    Result missing = call(baseUrl(), "/t", "", "GET");
    EXPECT_EQ(missing.error, utils::ERROR_HTTP_TLS);
    EXPECT_NE(missing.message.find("VELMAR_CA_FILE"), std::string::npos) << missing.message;
    Result plain = call("http://127.0.0.1:1", "/", "", "GET");
    EXPECT_EQ(plain.error, utils::ERROR_HTTP_CONNECT) << "plain HTTP needs no CA bundle";

    // Another run's authority does not vouch for this one.
    quilcloud::Cloud::Options options;
    options.tls = true;
    quilcloud::Cloud other(options);
    ASSERT_TRUE(other.start()) << other.error();
    setenv("VELMAR_CA_FILE", other.caFile().c_str(), 1);
    EXPECT_EQ(call(baseUrl(), "/t", "", "GET").error, utils::ERROR_HTTP_TLS);
    EXPECT_TRUE(call(other.baseUrl(), "/t", "", "GET").ok);

    setenv("VELMAR_CA_FILE", caFile.c_str(), 1);
    EXPECT_TRUE(call(baseUrl(), "/t", "", "GET").ok);
}

// Proxies from the environment are ignored; $VELMAR_PROXY is the only proxy,
// whatever no_proxy says. The extra bundle is read again when it changes.
TEST_F(HostTlsTest, ProxiesAndTheExtraBundleComeFromTheLibrarysOwnVariables) {
    cloud().route("GET", "/t", [](const Received&, Reply& reply) { reply.json(200, "{}"); });
    LoopbackSocket proxy(SOCK_STREAM);
    const std::string proxyUrl = "http://" + proxy.endpoint();
    const std::string target = "127.0.0.1:" + std::to_string(cloud().port());
    const char* const environmentProxies[] = {"http_proxy", "https_proxy", "HTTPS_PROXY",
                                              "all_proxy", "ALL_PROXY"};
    enum class Outcome { Cloud, NamedProxy, Refused };
    struct Row {
        const char* name;
        bool environmentProxies;
        std::string velmarProxy;
        Outcome outcome;
    };
    const Row rows[] = {
        {"environment proxies", true, "", Outcome::Cloud},
        {"VELMAR_PROXY despite no_proxy", true, proxyUrl, Outcome::NamedProxy},
        {"VELMAR_PROXY refusing", false, "http://127.0.0.1:1", Outcome::Refused},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        for (const char* name : environmentProxies) {
            if (row.environmentProxies) {
                setenv(name, proxyUrl.c_str(), 1);
            } else {
                unsetenv(name);
            }
        }
        setenv("no_proxy", "127.0.0.1,localhost", 1);
        setenv("VELMAR_PROXY", row.velmarProxy.c_str(), 1);
        cloud().clearReceived();
        // The named proxy is asked for a tunnel to the cloud, and refuses it.
        std::string head;
        std::thread serve;
        if (row.outcome == Outcome::NamedProxy) {
            serve = std::thread([&proxy, &head] {
                int client = accept(proxy.fd(), nullptr, nullptr);
                ASSERT_GE(client, 0);
                char buffer[4096];
                const ssize_t n = recv(client, buffer, sizeof(buffer), 0);
                if (n > 0) head.assign(buffer, static_cast<size_t>(n));
                const std::string refusal = "HTTP/1.1 403 Forbidden\r\nContent-Length: 0\r\n\r\n";
                send(client, refusal.data(), refusal.size(), MSG_NOSIGNAL);
                close(client);
            });
        }
        Result r = call(baseUrl(), "/t", "", "GET");
        if (serve.joinable()) serve.join();

        EXPECT_EQ(r.ok, row.outcome == Outcome::Cloud) << r.message;
        EXPECT_EQ(cloud().received("/t").size(), row.outcome == Outcome::Cloud ? 1u : 0u);
        EXPECT_EQ(head.rfind("CONNECT " + target + " ", 0),
                  row.outcome == Outcome::NamedProxy ? 0u : std::string::npos)
            << head;
        if (row.outcome == Outcome::Refused) {
            EXPECT_EQ(r.error, utils::ERROR_HTTP_CONNECT) << r.message;
        }
        EXPECT_FALSE(proxy.connectionPending());
    }
    for (const char* name : environmentProxies)
        unsetenv(name);
    unsetenv("no_proxy");
    unsetenv("VELMAR_PROXY");

    // A bundle replaced in place counts from the next connection on. (That
    // the system roots stay trusted beside it cannot be shown here: no
    // system root vouches for a loopback server.)
    quilcloud::Cloud::Options options;
    options.tls = true;
    quilcloud::Cloud other(options);
    ASSERT_TRUE(other.start()) << other.error();
    const std::filesystem::path bundle = root() / "extra-ca.pem";
    auto install = [&](const std::string& from) {
        std::filesystem::copy_file(from, root() / "next.pem",
                                   std::filesystem::copy_options::overwrite_existing);
        std::filesystem::rename(root() / "next.pem", bundle);
    };
    install(cloud().caFile());
    setenv("VELMAR_CA_FILE", bundle.c_str(), 1);
    EXPECT_TRUE(call(baseUrl(), "/t", "", "GET").ok);
    install(other.caFile());
    EXPECT_EQ(call(baseUrl(), "/t", "", "GET").error, utils::ERROR_HTTP_TLS)
        << "an open connection made under the old bundle served the call";
    install(cloud().caFile());
    EXPECT_TRUE(call(baseUrl(), "/t", "", "GET").ok);
}

// While the clock reads earlier than the build, certificate dates are not
// checked (the time service must stay reachable); chain and name still are.
TEST_F(HostTlsTest, CertificateDatesGoUncheckedOnlyWhileTheClockReadsBeforeTheBuild) {
    quilcloud::Cloud::Options options;
    options.tls = true;
    options.certificateNotBeforeOffsetSeconds = 86400;
    quilcloud::Cloud future(options);
    ASSERT_TRUE(future.start()) << future.error();
    writeConfig({{"sTimeSyncURL", future.baseUrl() + "/time/sync"}});
    const std::string foreignCa = cloud().caFile();  // did not sign the future certificate

    const long long now = std::chrono::duration_cast<std::chrono::seconds>(
                              std::chrono::system_clock::now().time_since_epoch())
                              .count();
    const long long buildTime = velmar::http::detail::setBuildTimeForTest(0);
    struct Row {
        const char* name;
        long long buildTime;
        std::string caFile;
        bool reached;
        const char* failure;  // in the log when not reached
        size_t notices;       // lines about unchecked dates during the row
    };
    const Row rows[] = {
        {"clock past the build", now - 86400, future.caFile(), false, "not yet valid", 0},
        {"clock before the build", now + 2 * 86400, future.caFile(), true, "", 1},
        {"still before, foreign authority", now + 2 * 86400, foreignCa, false, "TLS failed", 0},
        {"clock set, no connection kept from before", now - 86400, future.caFile(), false,
         "not yet valid", 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        velmar::http::detail::setBuildTimeForTest(row.buildTime);
        setenv("VELMAR_CA_FILE", row.caFile.c_str(), 1);
        utils::ErrorType result = utils::ERROR_GENERAL;
        long long serverTime = 0;
        const std::string logs =
            logsOf([&] { result = velmar::quil::api::TimeSyncAPI::request(serverTime); });
        size_t notices = 0;
        for (size_t at = logs.find("not yet valid is accepted"); at != std::string::npos;
             at = logs.find("not yet valid is accepted", at + 1))
            ++notices;
        EXPECT_EQ(notices, row.notices) << logs;
        if (row.reached) {
            EXPECT_EQ(result, utils::ERROR_NONE) << logs;
            EXPECT_GE(serverTime, now * 1000);
        } else {
            EXPECT_EQ(result, utils::ERROR_HTTP_FAILED);
            EXPECT_NE(logs.find(row.failure), std::string::npos) << logs;
        }
    }
    velmar::http::detail::setBuildTimeForTest(buildTime);
}

}  // namespace
