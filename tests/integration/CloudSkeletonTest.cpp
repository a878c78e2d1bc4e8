// The local cloud itself, seen from a plain HTTP client (cpp-httplib's, not
// the library's transport): what it records, how it routes, the faults it
// scripts, its TLS, its DNS responder, its registry and its binary.
#include <arpa/inet.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <httplib.h>
#include <netinet/in.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>
#include <signal.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>
#include <thread>

#include "quilcloud/Cloud.h"

extern char** environ;

namespace {

namespace fs = std::filesystem;
using quilcloud::Cloud;
using quilcloud::Received;
using quilcloud::Reply;
using quilcloud::Scripted;
using Clock = std::chrono::steady_clock;

// A client writing to a connection the cloud closed must see an error, not die.
const bool kSigpipeIgnored = [] { return signal(SIGPIPE, SIG_IGN) != SIG_ERR; }();

double secondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

class TempDir {
  public:
    TempDir() {
        char pattern[] = "/tmp/cloud-skeleton-XXXXXX";
        EXPECT_NE(mkdtemp(pattern), nullptr);
        path_ = pattern;
    }
    ~TempDir() {
        std::error_code ignored;
        fs::remove_all(path_, ignored);
    }
    const fs::path& path() const { return path_; }
    void write(const std::string& name, const std::string& content) const {
        std::ofstream(path_ / name, std::ios::binary) << content;
    }

  private:
    fs::path path_;
};

std::unique_ptr<Cloud> startCloud(bool tls, int dnsPort = -1) {
    Cloud::Options options;
    options.tls = tls;
    options.dnsPort = dnsPort;
    auto cloud = std::make_unique<Cloud>(options);
    EXPECT_TRUE(cloud->start()) << cloud->error();
    return cloud;
}

std::unique_ptr<httplib::Client> clientFor(const Cloud& cloud) {
    auto client = std::make_unique<httplib::Client>(cloud.baseUrl());
    if (!cloud.caFile().empty()) {
        client->set_ca_cert_path(cloud.caFile().c_str());
        client->enable_server_certificate_verification(true);
    }
    client->set_connection_timeout(2);
    client->set_read_timeout(5);
    return client;
}

TEST(CloudSkeletonTest, RecordsQueryFormCookiesHeadersAndParts) {
    auto cloud = startCloud(false);
    auto client = clientFor(*cloud);

    httplib::Headers headers = {{"Cookie", "deviceId=73001; sn=4417/2026; flag"},
                                {"X-Request-Tag", "a b"}};
    auto get = client->Get("/q/one?x=1&y=%20z%26&x=2", headers);
    ASSERT_TRUE(get);
    auto post = client->Post("/form/?requestId=r1&k=query", "k=form&pingLevel=2&sig=a%2Bb%3D",
                             "application/x-www-form-urlencoded");
    ASSERT_TRUE(post);
    httplib::MultipartFormDataItems parts = {
        {"log", "line 1\nline 2\n", "device.log", "text/plain"}, {"deviceId", "73001", "", ""}};
    ASSERT_TRUE(client->Post("/upload", parts));
    const std::string report(20000, 'r');  // beyond cpp-httplib's own 8 KiB form limit
    auto large =
        client->Post("/large", "data=" + report + "&n=1", "application/x-www-form-urlencoded");
    ASSERT_TRUE(large);
    EXPECT_EQ(large->status, 404);

    auto all = cloud->received();
    ASSERT_EQ(all.size(), 4u);
    const Received& r = all[0];
    EXPECT_EQ(r.method, "GET");
    EXPECT_EQ(r.path, "/q/one");
    EXPECT_EQ(r.query, "x=1&y=%20z%26&x=2");
    EXPECT_EQ(r.param("y"), " z&");
    EXPECT_EQ(r.param("x"), "2") << "the last of a repeated field wins";
    EXPECT_EQ(r.fields.count("x"), 2u);
    EXPECT_EQ(r.cookies.at("deviceId"), "73001");
    EXPECT_EQ(r.cookies.at("sn"), "4417/2026");
    EXPECT_EQ(r.cookies.count("flag"), 1u);
    EXPECT_EQ(r.header("x-request-tag"), "a b");
    EXPECT_EQ(r.header("X-Request-Tag"), "a b");
    EXPECT_EQ(r.headers.count("x-request-tag"), 1u) << "names are kept in lower case";
    EXPECT_EQ(r.headers.count("remote_addr"), 0u) << "only what came on the wire";
    EXPECT_EQ(r.remoteAddr, "127.0.0.1");
    EXPECT_GT(r.remotePort, 0);

    const Received& form = all[1];
    EXPECT_EQ(form.method, "POST");
    EXPECT_EQ(form.body, "k=form&pingLevel=2&sig=a%2Bb%3D");
    EXPECT_EQ(form.param("sig"), "a+b=");
    EXPECT_EQ(form.param("requestId"), "r1");
    EXPECT_EQ(form.param("k"), "form") << "the body's field comes after the query's";
    EXPECT_EQ(form.fields.count("k"), 2u);

    const Received& upload = all[2];
    EXPECT_EQ(upload.files.at("log"), "line 1\nline 2\n");
    EXPECT_EQ(upload.param("deviceId"), "73001");
    EXPECT_EQ(all[3].param("data"), report);
    EXPECT_EQ(all[3].param("n"), "1");

    EXPECT_EQ(cloud->received("/form/").size(), 1u);
    EXPECT_TRUE(cloud->received("/form").empty()) << "paths match exactly";
    cloud->clearReceived();
    EXPECT_TRUE(cloud->received().empty());
}

TEST(CloudSkeletonTest, RoutesByMethodAndPathAndAnswers404Otherwise) {
    auto cloud = startCloud(false);
    cloud->route("GET", "/time/sync", [](const Received& r, Reply& reply) {
        reply.json(200, "{\"t\":\"" + r.param("t") + "\"}");
        reply.headers.emplace_back("X-Served-By", "route");
    });
    cloud->route("POST", "/log/common/*", [](const Received& r, Reply& reply) {
        reply.json(201, "{\"prefix\":\"" + r.path + "\"}");
    });
    cloud->route("POST", "/log/common/special",
                 [](const Received&, Reply& reply) { reply.json(202, "{\"exact\":true}"); });
    cloud->route("get", "/boom", [](const Received&, Reply&) { throw std::runtime_error("x"); });
    auto client = clientFor(*cloud);

    auto res = client->Get("/time/sync?t=5");
    ASSERT_TRUE(res);
    EXPECT_EQ(res->status, 200);
    EXPECT_EQ(res->body, "{\"t\":\"5\"}");
    EXPECT_EQ(res->get_header_value("Content-Type"), "application/json");
    EXPECT_EQ(res->get_header_value("X-Served-By"), "route");
    res = client->Head("/time/sync");
    ASSERT_TRUE(res);
    EXPECT_EQ(res->status, 200);

    res = client->Post("/log/common/7300123456", "x", "text/plain");
    ASSERT_TRUE(res);
    EXPECT_EQ(res->status, 201);
    EXPECT_EQ(res->body, "{\"prefix\":\"/log/common/7300123456\"}");
    res = client->Post("/log/common/special", "x", "text/plain");
    ASSERT_TRUE(res);
    EXPECT_EQ(res->status, 202);

    res = client->Get("/no/such/\"thing\"");
    ASSERT_TRUE(res);
    EXPECT_EQ(res->status, 404);
    EXPECT_EQ(res->body, "{\"code\":404,\"message\":\"no such endpoint: /no/such/\\\"thing\\\"\"}");
    res = client->Get("/" + std::string(8000, 'p'));
    ASSERT_TRUE(res);
    EXPECT_EQ(res->status, 404);
    res = client->Post("/time/sync", "", "text/plain");
    ASSERT_TRUE(res);
    EXPECT_EQ(res->status, 405);
    res = client->Get("/boom");
    ASSERT_TRUE(res);
    EXPECT_EQ(res->status, 500);

    // A later route for the same method and path replaces the earlier one.
    cloud->route("GET", "/time/sync",
                 [](const Received&, Reply& reply) { reply.json(200, "{\"v\":2}"); });
    res = client->Get("/time/sync");
    ASSERT_TRUE(res);
    EXPECT_EQ(res->body, "{\"v\":2}");
    EXPECT_EQ(cloud->received().size(), 9u) << "every request is recorded, routed or not";
}

class CloudSkeletonFaultTest : public ::testing::TestWithParam<bool> {};

TEST_P(CloudSkeletonFaultTest, ScriptedAnswersAndFaultsReachTheClient) {
    auto cloud = startCloud(GetParam());
    cloud->route("GET", "/a", [](const Received&, Reply& reply) { reply.json(200, "route a"); });
    cloud->route("GET", "/b", [](const Received&, Reply& reply) { reply.json(200, "route b"); });
    auto client = clientFor(*cloud);
    auto status = [&](const char* path) {
        auto res = client->Get(path);
        return res ? res->status : -1;
    };

    // times counts down; the most recent matching script wins; then the route again.
    Scripted twice = Scripted::answer(503, "{\"code\":503}");
    twice.times = 2;
    cloud->script("*", Scripted::answer(500, "any"));
    cloud->script("/a", twice);
    EXPECT_EQ(status("/a"), 503);
    EXPECT_EQ(status("/b"), 500);
    auto res = client->Get("/a");
    ASSERT_TRUE(res);
    EXPECT_EQ(res->status, 503);
    EXPECT_EQ(res->body, "{\"code\":503}");
    EXPECT_EQ(status("/a"), 500) << "the two uses are spent; the \"*\" script remains";
    cloud->clearScripts();
    EXPECT_EQ(status("/a"), 200);
    Scripted notModified = Scripted::answer(304, "");
    notModified.times = 1;
    cloud->script("/a", notModified);
    EXPECT_EQ(status("/a"), 304);

    // Reset: the connection closes without a byte of answer; the next one is served.
    cloud->script("/a", Scripted::reset());
    res = client->Get("/a");
    EXPECT_FALSE(res);
    EXPECT_EQ(status("/b"), 200);

    // Truncate: half the announced body, then the connection closes.
    cloud->script("/a", Scripted::truncate(std::string(1000, 't')));
    std::string partial;
    res = client->Get("/a", [&](const char* data, size_t size) {
        partial.append(data, size);
        return true;
    });
    EXPECT_FALSE(res);
    EXPECT_EQ(partial, std::string(500, 't'));

    // Oversize: exactly that many bytes.
    const size_t big = 3 * 1024 * 1024 + 17;
    cloud->script("/a", Scripted::oversize(big));
    res = client->Get("/a");
    ASSERT_TRUE(res);
    EXPECT_EQ(res->status, 200);
    EXPECT_EQ(res->body.size(), big);
    EXPECT_EQ(res->body.find_first_not_of('x'), std::string::npos);

    // Delay: a client that waits less gives up; one that waits long enough gets the route.
    cloud->script("/a", Scripted::delay(1500));
    auto impatient = clientFor(*cloud);
    impatient->set_read_timeout(0, 200 * 1000);
    auto start = Clock::now();
    res = impatient->Get("/a");
    EXPECT_FALSE(res);
    EXPECT_LT(secondsSince(start), 1.2);
    start = Clock::now();
    res = client->Get("/a");
    ASSERT_TRUE(res);
    EXPECT_EQ(res->body, "route a");
    EXPECT_GE(secondsSince(start), 1.4);
    Scripted slowBody = Scripted::delay(100);
    slowBody.body = "late";
    cloud->script("/b", slowBody);
    res = client->Get("/b");
    ASSERT_TRUE(res);
    EXPECT_EQ(res->body, "late");

    // A delay as long as a whole test run does not hold up stop().
    cloud->script("/a", Scripted::delay(600 * 1000));
    const size_t before = cloud->received("/a").size();
    std::thread waiting([&] { EXPECT_FALSE(clientFor(*cloud)->Get("/a")); });
    while (cloud->received("/a").size() == before)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    start = Clock::now();
    cloud->stop();
    EXPECT_LT(secondsSince(start), 2.0);
    waiting.join();
}

INSTANTIATE_TEST_SUITE_P(HttpAndHttps, CloudSkeletonFaultTest, ::testing::Values(false, true),
                         [](const auto& info) { return info.param ? "Https" : "Http"; });

TEST(CloudSkeletonTest, ConnectionsAreCountedKeptAliveAndEndedByStop) {
    auto cloud = startCloud(true);
    auto client = clientFor(*cloud);
    client->set_keep_alive(true);
    for (int i = 0; i < 5; ++i)
        ASSERT_TRUE(client->Get("/x"));
    EXPECT_EQ(cloud->connectionCount(), 1);
    auto other = clientFor(*cloud);
    ASSERT_TRUE(other->Get("/x"));
    EXPECT_EQ(cloud->connectionCount(), 2);

    // Both connections are now idle and kept alive; stop() must not wait them out.
    auto start = Clock::now();
    cloud->stop();
    cloud->stop();
    EXPECT_LT(secondsSince(start), 2.0);
    EXPECT_FALSE(clientFor(*cloud)->Get("/x")) << "nothing listens after stop()";

    // A restarted cloud comes back on the same port.
    const int port = cloud->port();
    ASSERT_TRUE(cloud->start()) << cloud->error();
    EXPECT_EQ(cloud->port(), port);
    EXPECT_TRUE(clientFor(*cloud)->Get("/x"));
    Cloud::Options samePort;
    samePort.port = port;
    Cloud second(samePort);
    EXPECT_FALSE(second.start()) << "a port in use is not shared";
    EXPECT_NE(second.error(), "");

    // A burst of clients connecting at once is served without any of them
    // waiting for a dropped SYN to be resent (a second at least).
    auto plain = startCloud(false);
    std::vector<std::thread> clients;
    std::atomic<int> served{0};
    auto start2 = Clock::now();
    for (int i = 0; i < 50; ++i) {
        clients.emplace_back([&] {
            auto res = clientFor(*plain)->Get("/burst");
            if (res && res->status == 404) ++served;
        });
    }
    for (auto& c : clients)
        c.join();
    EXPECT_EQ(served, 50);
    EXPECT_LT(secondsSince(start2), 0.9);
    EXPECT_EQ(plain->connectionCount(), 50);
}

bool certificateNames(const std::string& pemFile, const std::vector<std::string>& hosts,
                      const std::vector<std::string>& ips) {
    FILE* in = std::fopen(pemFile.c_str(), "r");
    if (!in) return false;
    X509* cert = PEM_read_X509(in, nullptr, nullptr, nullptr);
    std::fclose(in);
    if (!cert) return false;
    bool ok = true;
    for (const auto& host : hosts)
        ok = ok && X509_check_host(cert, host.c_str(), host.size(), 0, nullptr) == 1;
    for (const auto& ip : ips)
        ok = ok && X509_check_ip_asc(cert, ip.c_str(), 0) == 1;
    X509_free(cert);
    return ok;
}

TEST(CloudSkeletonTest, HttpsIsVerifiedAgainstTheRunsOwnCa) {
    TempDir dir;
    Cloud::Options options;
    options.tls = true;
    options.workDir = (dir.path() / "cloud").string();
    options.extraNames = {"api.cloud.test", "127.0.0.9"};
    Cloud cloud(options);
    ASSERT_TRUE(cloud.start()) << cloud.error();
    EXPECT_EQ(cloud.baseUrl(), "https://127.0.0.1:" + std::to_string(cloud.port()));
    EXPECT_EQ(cloud.caFile(), options.workDir + "/ca.pem");
    EXPECT_TRUE(fs::exists(options.workDir + "/server.key"));
    EXPECT_EQ(fs::status(options.workDir + "/server.key").permissions() & fs::perms::others_read,
              fs::perms::none);
    EXPECT_TRUE(certificateNames(options.workDir + "/server.pem", {"localhost", "api.cloud.test"},
                                 {"127.0.0.1", "::1", "127.0.0.9"}));
    EXPECT_FALSE(certificateNames(options.workDir + "/server.pem", {"other.test"}, {}));

    auto trusted = clientFor(cloud);
    auto res = trusted->Get("/anything");
    ASSERT_TRUE(res) << httplib::to_string(res.error());
    EXPECT_EQ(res->status, 404);

    // Another run's CA, or none, does not vouch for this server.
    auto otherRun = startCloud(true);
    std::string otherCa = otherRun->caFile();
    fs::path otherDir = fs::path(otherCa).parent_path();
    EXPECT_TRUE(fs::exists(otherCa));
    httplib::Client stranger(cloud.baseUrl());
    stranger.set_ca_cert_path(otherCa.c_str());
    stranger.enable_server_certificate_verification(true);
    res = stranger.Get("/anything");
    EXPECT_FALSE(res);
    EXPECT_EQ(res.error(), httplib::Error::SSLServerVerification);
    otherRun.reset();
    EXPECT_FALSE(fs::exists(otherDir)) << "a temporary work dir goes with its cloud";
}

// A standard query for `name` of `type` with ID `id`.
std::string dnsQuery(uint16_t id, const std::string& name, uint16_t type) {
    std::string q = {char(id >> 8), char(id & 0xff), 0x01, 0x00, 0, 1, 0, 0, 0, 0, 0, 0};
    size_t start = 0;
    while (start <= name.size()) {
        size_t dot = std::min(name.find('.', start), name.size());
        q += char(dot - start);
        q += name.substr(start, dot - start);
        start = dot + 1;
    }
    q += std::string(1, '\0') + char(type >> 8) + char(type & 0xff) + '\0' + '\1';
    return q;
}

class UdpClient {
  public:
    explicit UdpClient(int port) : fd_(socket(AF_INET, SOCK_DGRAM, 0)) {
        to_.sin_family = AF_INET;
        to_.sin_port = htons(static_cast<uint16_t>(port));
        to_.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        timeval timeout{2, 0};
        setsockopt(fd_, SOL_SOCKET, SO_RCVTIMEO, &timeout, sizeof(timeout));
    }
    ~UdpClient() { close(fd_); }
    void send(const std::string& packet) {
        sendto(fd_, packet.data(), packet.size(), 0, reinterpret_cast<sockaddr*>(&to_),
               sizeof(to_));
    }
    std::string receive() {
        char buffer[1024];
        ssize_t n = recv(fd_, buffer, sizeof(buffer), 0);
        return n > 0 ? std::string(buffer, static_cast<size_t>(n)) : std::string();
    }

  private:
    int fd_;
    sockaddr_in to_{};
};

TEST(CloudSkeletonTest, DnsResponderAnswersQueriesAndIgnoresGarbage) {
    auto cloud = startCloud(false, 0);
    ASSERT_GT(cloud->dnsPort(), 0);
    EXPECT_EQ(cloud->dnsServers(), "127.0.0.1:" + std::to_string(cloud->dnsPort()));
    cloud->setDnsAnswer("Broker.Cloud.Test.", "127.0.0.5");
    UdpClient udp(cloud->dnsPort());

    // Truncations and bit flips of a real query, and noise: never answered,
    // never a crash (the sanitizer build watches the parser's reads). Each
    // batch ends with a real query, whose answer must be the next to come;
    // batches stay small so the socket's buffer never drops the real one.
    const std::string valid = dnsQuery(0x1234, "api.cloud.test", 1);
    std::mt19937 random(7);
    std::vector<std::string> garbage = {"", valid.substr(0, 12) + char(0xc0) + valid.substr(13)};
    for (size_t n = 0; n < valid.size(); ++n)
        garbage.push_back(valid.substr(0, n));
    for (int i = 0; i < 300; ++i) {
        std::string noisy = valid;
        noisy[random() % noisy.size()] ^= static_cast<char>(1 + random() % 255);
        noisy[2] |= char(0x80);  // marked as a response
        garbage.push_back(noisy);
        std::string noise(random() % 64, '\0');
        for (auto& c : noise)
            c = static_cast<char>(random());
        if (noise.size() > 2) noise[2] = char(0x80);
        garbage.push_back(noise);
    }
    std::string answer;
    for (size_t i = 0; i < garbage.size(); i += 40) {
        for (size_t j = i; j < std::min(i + 40, garbage.size()); ++j)
            udp.send(garbage[j]);
        udp.send(valid);
        answer = udp.receive();
        ASSERT_EQ(answer.size(), valid.size() + 16) << "garbage answered, or no answer";
    }
    EXPECT_EQ(answer.substr(0, 2), valid.substr(0, 2));
    EXPECT_EQ(static_cast<uint8_t>(answer[3]) & 0x0f, 0) << "NOERROR";
    EXPECT_EQ(answer[7], 1) << "one answer";
    EXPECT_EQ(answer.substr(12, valid.size() - 12), valid.substr(12));
    EXPECT_EQ(answer.substr(answer.size() - 4), std::string("\x7f\0\0\1", 4));

    udp.send(dnsQuery(7, "broker.cloud.test", 1));
    answer = udp.receive();
    ASSERT_FALSE(answer.empty());
    EXPECT_EQ(answer.substr(answer.size() - 4), std::string("\x7f\0\0\x05", 4));

    udp.send(dnsQuery(8, "api.cloud.test", 28));
    answer = udp.receive();
    ASSERT_GE(answer.size(), 12u);
    EXPECT_EQ(static_cast<uint8_t>(answer[3]) & 0x0f, 0);
    EXPECT_EQ(answer[7], 0) << "AAAA: no record, no error";

    auto asked = cloud->dnsQueries();
    ASSERT_GE(asked.size(), 3u);
    EXPECT_EQ(asked[asked.size() - 3], "api.cloud.test");
    EXPECT_EQ(asked[asked.size() - 2], "broker.cloud.test");

    auto start = Clock::now();
    cloud->stop();
    EXPECT_LT(secondsSince(start), 1.0);
}

TEST(CloudSkeletonTest, RegistryReadsADeviceStore) {
    TempDir store;
    store.write("deviceid", "7300123456\n");
    store.write("sn", "4417/20260001\n\n");
    store.write("channel_secret", "3c9a1f0e");
    store.write("uid", "not-a-number\n");
    quilcloud::Registry registry;
    ASSERT_TRUE(registry.loadDeviceStore(store.path().string()));
    auto device = registry.find("7300123456");
    ASSERT_TRUE(device);
    EXPECT_EQ(device->sn, "4417/20260001\n") << "exactly one trailing newline goes";
    EXPECT_EQ(device->channelSecret, "3c9a1f0e");
    EXPECT_EQ(device->mac, "") << "a missing file is an empty value";
    EXPECT_EQ(device->superAdmin, -1);

    // Reloading updates the identity and keeps what the services stored.
    registry.update("7300123456", [](quilcloud::Device& d) { d.settings["ota"] = "on"; });
    store.write("uid", "88123\n");
    ASSERT_TRUE(registry.loadDeviceStore(store.path().string()));
    EXPECT_EQ(registry.find("7300123456")->superAdmin, 88123);
    EXPECT_EQ(registry.find("7300123456")->settings.at("ota"), "on");
    EXPECT_EQ(registry.size(), 1u);

    TempDir empty;
    EXPECT_FALSE(registry.loadDeviceStore(empty.path().string()));
    EXPECT_FALSE(registry.loadDeviceStore("/nonexistent/store"));

    Cloud::Options options;
    options.deviceStore = store.path().string();
    Cloud cloud(options);
    EXPECT_TRUE(cloud.registry().find("7300123456")) << "registered before start()";
}

// The binary as the demo drives it.
TEST(CloudSkeletonTest, BinaryWritesItsReadyFileAndStopsOnSigterm) {
    // The build tree: named by the environment, or the one this test runs from.
    const char* binaryDir = getenv("VELMAR_BINARY_DIR");
    const fs::path tree = binaryDir
                              ? fs::path(binaryDir)
                              : fs::read_symlink("/proc/self/exe").parent_path().parent_path();
    const std::string binary = (tree / "emulator/quil-cloud").string();
    if (access(binary.c_str(), X_OK) != 0) GTEST_SKIP() << "no " << binary << " (tools not built)";
    TempDir dir;
    const std::string ready = (dir.path() / "ready.json").string();
    auto spawn = [&](std::vector<std::string> args) {
        args.insert(args.begin(), binary);
        std::vector<char*> argv;
        for (auto& a : args)
            argv.push_back(a.data());
        argv.push_back(nullptr);
        pid_t pid = -1;
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, 1, (dir.path() / "out").c_str(),
                                         O_WRONLY | O_CREAT | O_TRUNC, 0644);
        posix_spawn_file_actions_addopen(&actions, 2, (dir.path() / "err").c_str(),
                                         O_WRONLY | O_CREAT | O_TRUNC, 0644);
        EXPECT_EQ(posix_spawn(&pid, binary.c_str(), &actions, nullptr, argv.data(), environ), 0);
        posix_spawn_file_actions_destroy(&actions);
        return pid;
    };
    auto exitCode = [](pid_t pid) {
        int status = 0;
        for (int i = 0; i < 500 && waitpid(pid, &status, WNOHANG) == 0; ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    };
    auto slurp = [&](const char* name) {
        std::ifstream in(dir.path() / name);
        return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    };

    EXPECT_EQ(exitCode(spawn({"--bind", "192.0.2.1"})), 1);
    EXPECT_NE(slurp("err").find("not a loopback address"), std::string::npos) << slurp("err");

    pid_t pid = spawn({"--tls", "--dns-port", "0", "--work-dir", (dir.path() / "w").string(),
                       "--ready-file", ready, "--verbose"});
    for (int i = 0; i < 500 && !fs::exists(ready); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    std::string json = slurp("ready.json");
    auto field = [&](const std::string& name) {
        size_t at = json.find("\"" + name + "\":\"");
        if (at == std::string::npos) return std::string();
        at += name.size() + 4;
        return json.substr(at, json.find('"', at) - at);
    };
    const std::string baseUrl = field("baseUrl");
    EXPECT_EQ(baseUrl.rfind("https://127.0.0.1:", 0), 0u) << json;
    EXPECT_EQ(field("caFile"), (dir.path() / "w/ca.pem").string());
    EXPECT_EQ(field("dnsServers").rfind("127.0.0.1:", 0), 0u) << json;
    httplib::Client client(baseUrl);
    client.set_ca_cert_path(field("caFile").c_str());
    client.enable_server_certificate_verification(true);
    auto res = client.Get("/nowhere");
    ASSERT_TRUE(res);
    EXPECT_EQ(res->status, 404);

    kill(pid, SIGTERM);
    EXPECT_EQ(exitCode(pid), 0);
    EXPECT_EQ(slurp("out"), baseUrl + "\n");
    EXPECT_NE(slurp("err").find("GET /nowhere -> 404"), std::string::npos) << slurp("err");
}

}  // namespace
