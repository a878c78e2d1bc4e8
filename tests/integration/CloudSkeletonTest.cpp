// The local cloud itself, seen from a plain HTTP client (cpp-httplib's, not
// the library's transport): the parts every other suite leans on without
// telling a broken cloud from a broken library. Its recording, routing, faults
// (reset, truncation, oversize, delay) and TLS trust are exercised through the
// library by HostTransportTest and the endpoint suites.
#include <arpa/inet.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <httplib.h>
#include <netinet/in.h>
#include <signal.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <random>
#include <regex>
#include <thread>

#include "CloudFixture.h"

extern char** environ;

namespace {

namespace fs = std::filesystem;
using quilcloud::Cloud;
using quilcloud::Received;
using quilcloud::Reply;
using quilcloud::Scripted;
using velmar::testing::SampleDevice;
using Clock = std::chrono::steady_clock;

// A client writing to a connection the cloud closed must see an error, not die.
const bool kSigpipeIgnored = [] { return signal(SIGPIPE, SIG_IGN) != SIG_ERR; }();

double secondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

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

class CloudSkeletonFaultTest : public ::testing::TestWithParam<bool> {};

TEST_P(CloudSkeletonFaultTest, ScriptsTakeTurnsAndNoWaitingRequestHoldsUpStop) {
    auto cloud = startCloud(GetParam());
    cloud->route("GET", "/a", [](const Received&, Reply& reply) { reply.json(200, "route a"); });
    auto client = clientFor(*cloud);
    auto status = [&](const char* path) {
        auto res = client->Get(path);
        return res ? res->status : -1;
    };

    // The most recent matching script wins, for as many requests as it is given.
    Scripted once = Scripted::answer(503, "{}");
    once.times = 1;
    cloud->script("*", Scripted::answer(500, "any"));
    cloud->script("/a", once);
    EXPECT_EQ(status("/a"), 503);
    EXPECT_EQ(status("/a"), 500);
    cloud->clearScripts();
    EXPECT_EQ(status("/a"), 200);

    // Neither a delay as long as a whole test run nor an idle kept-alive
    // connection holds up stop().
    client->set_keep_alive(true);
    EXPECT_EQ(status("/b"), 404);
    cloud->script("/a", Scripted::delay(600 * 1000));
    const size_t before = cloud->received("/a").size();
    std::thread waiting([&] { EXPECT_FALSE(clientFor(*cloud)->Get("/a")); });
    while (cloud->received("/a").size() == before)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    const auto start = Clock::now();
    cloud->stop();
    EXPECT_LT(secondsSince(start), 2.0);
    waiting.join();
}

INSTANTIATE_TEST_SUITE_P(HttpAndHttps, CloudSkeletonFaultTest, ::testing::Values(false, true),
                         [](const auto& info) { return info.param ? "Https" : "Http"; });

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

    const auto start = Clock::now();
    cloud->stop();
    EXPECT_LT(secondsSince(start), 1.0);
}

// A sandboxed device store, and a root for the binary's files.
using CloudSkeletonSandboxTest = velmar::testing::CloudFixture;

// Every signed request is checked against what the cloud read from the store:
// a misread store would look like a library that signs wrong.
TEST_F(CloudSkeletonSandboxTest, DeviceStoreIsRegisteredBeforeStart) {
    store("sn", std::string(SampleDevice::sn) + "\n");  // two newlines in the file
    store("uid", "88123");
    Cloud::Options options;
    options.deviceStore = devicePath("/data/device").string();
    Cloud cloud(options);
    auto device = cloud.registry().find(SampleDevice::deviceId);
    ASSERT_TRUE(device);
    EXPECT_EQ(device->sn, std::string(SampleDevice::sn) + "\n") << "exactly one newline goes";
    EXPECT_EQ(device->channelSecret, SampleDevice::channelSecret);
    EXPECT_EQ(device->superAdmin, 88123);
}

// The binary as the demo drives it.
TEST_F(CloudSkeletonSandboxTest, BinaryWritesItsReadyFileAndStopsOnSigterm) {
    // The build tree: named by the environment, or the one this test runs from.
    const char* binaryDir = getenv("VELMAR_BINARY_DIR");
    const fs::path tree = binaryDir
                              ? fs::path(binaryDir)
                              : fs::read_symlink("/proc/self/exe").parent_path().parent_path();
    const std::string binary = (tree / "emulator/quil-cloud").string();
    if (access(binary.c_str(), X_OK) != 0) GTEST_SKIP() << "no " << binary << " (tools not built)";
    const fs::path dir = root();
    const std::string ready = (dir / "ready.json").string();
    auto spawn = [&](std::vector<std::string> args) {
        args.insert(args.begin(), binary);
        std::vector<char*> argv;
        for (auto& a : args)
            argv.push_back(a.data());
        argv.push_back(nullptr);
        pid_t pid = -1;
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, 1, (dir / "out").c_str(),
                                         O_WRONLY | O_CREAT | O_TRUNC, 0644);
        posix_spawn_file_actions_addopen(&actions, 2, (dir / "err").c_str(),
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
    auto slurp = [&](const char* name) { return velmar::testing::readFile(dir / name); };

    EXPECT_EQ(exitCode(spawn({"--bind", "192.0.2.1"})), 1);
    EXPECT_NE(slurp("err").find("not a loopback address"), std::string::npos) << slurp("err");

    pid_t pid = spawn({"--tls", "--dns-port", "0", "--work-dir", (dir / "w").string(),
                       "--ready-file", ready, "--verbose"});
    for (int i = 0; i < 500 && !fs::exists(ready); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    std::string json = slurp("ready.json");
    auto field = [&json](const std::string& name) {
        std::smatch value;
        std::regex_search(json, value, std::regex("\"" + name + "\" *: *\"([^\"]*)\""));
        return value.str(1);
    };
    const std::string baseUrl = field("baseUrl");
    EXPECT_EQ(baseUrl.rfind("https://127.0.0.1:", 0), 0u) << json;
    EXPECT_EQ(field("caFile"), (dir / "w/ca.pem").string());
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
