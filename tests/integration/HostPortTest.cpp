// What the host port does beyond the porting contract (tests/port), which it
// also meets: its device store's file forms, modes and cache, tools under the
// root and their deadline, the log's masking, and the transport's connection
// rules (reuse, proxies, TLS trust, the clock before the build).
#include <arpa/inet.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <thread>
#include <tuple>

#include "CloudFixture.h"
#include "host/ConnectionRules.h"
#include "host/TestHooks.h"
#include "velmar/device/DeviceInfo.h"
#include "velmar/http/HTTPRequest.h"
#include "velmar/utils/ExecUtils.h"
#include "velmar/utils/FileUtils.h"
#include "velmar/utils/Logging.h"

using velmar::testing::readFile;
using velmar::utils::ExecUtils;
namespace fs = std::filesystem;

namespace {

// "ok status error" of a call through the base+path overload, or with
// `resolvers` through the resolver-list one.
std::string call(const std::string& base, const std::string& method = "GET",
                 const std::string& resolvers = "", int timeoutMs = 5000) {
    int status = 0;
    std::string body, text;
    velmar::utils::ErrorType error = velmar::utils::ERROR_NONE;
    using velmar::http::HTTPRequest;
    const bool ok = resolvers.empty()
                        ? HTTPRequest::httpRequest(status, body, error, text, base, "/t", "a=1",
                                                   method, {}, timeoutMs)
                        : HTTPRequest::httpRequest(status, body, error, text, base + "/t", "a=1",
                                                   method, {}, timeoutMs, "", resolvers);
    return std::to_string(ok) + " " + std::to_string(status) + " " + std::to_string(error);
}

std::string deviceId() {
    char buf[64];
    return deviceid_get(buf, sizeof(buf)) == 0 ? buf : "failed";
}

using HostPortTest = velmar::testing::CloudFixture;
using HostTlsTest = velmar::testing::TlsCloudFixture;
struct HostResolverTest : velmar::testing::CloudFixture {
    int dnsPort() const override { return 0; }
};

TEST_F(HostPortTest, StoreFilesLoseOneLineEndKeepCredentialsPrivateAndAreReadAgainWhenChanged) {
    for (const auto& [stored, value] :
         {std::pair{"7300\r\n", "7300"}, {"7300\r", "7300"}, {"7300\n\n", "7300\n"}}) {
        std::ofstream(devicePath("/data/device/deviceid")) << stored;
        EXPECT_EQ(deviceId(), value) << stored;
    }
    for (const auto& [stored, value] : {std::pair{"-67 \r\n", -67},
                                        {"12abc", 0},
                                        {"", 0},
                                        {"99999999999", 0},
                                        {"-99999999999", 0}}) {
        std::ofstream(devicePath("/data/device/rssi")) << stored;
        EXPECT_EQ(rssi_get(), value) << stored;
    }
    const auto mode = [this](const std::string& name) {
        return unsigned(fs::status(devicePath("/data/device/" + name)).permissions());
    };
    const mode_t umaskBefore = umask(0);
    for (const auto& [set, name] : {std::pair{device_token_sign_set, "device_token_sign"},
                                    {broker_host_set, "broker_host"}}) {
        const mode_t created = std::string(name) == "broker_host" ? 0644 : 0600;
        EXPECT_GE(set("v"), 0);
        EXPECT_EQ(mode(name), created) << name;
        chmod(devicePath(std::string("/data/device/") + name).c_str(), 0640);
        EXPECT_GE(set("w"), 0);
        EXPECT_EQ(mode(name), created == 0600 ? 0600u : 0640u) << name << ": owner's bits kept";
    }
    umask(umaskBefore);
    char buf[8];  // bad arguments and a directory are failures, not crashes
    EXPECT_TRUE(sn_get(nullptr, 8) != 0 && sn_get(buf, 0) != 0 && device_token_get(buf, -1) < 0 &&
                deviceid_set(nullptr) != 0 && file_read_string(nullptr, buf, 8) < 0 &&
                file_read_string("/data/device", buf, 8) < 0 && uid_set(nullptr) < 0 &&
                file_read_string("/data/device/sn", nullptr, 8) < 0 && uid_isvalid_str(nullptr));
    using velmar::utils::FileUtils;
    for (const char* target : {"", "/data/device/", "/data/device"})
        EXPECT_FALSE(FileUtils::writeAtomically(target, "x")) << target;
    setenv("VELMAR_ROOT", (root().string() + "//").c_str(), 1);
    EXPECT_EQ(FileUtils::devicePath("/a") + FileUtils::devicePath("rel"),
              root().string() + "/arel");
    setenv("VELMAR_ROOT", "", 1);
    EXPECT_EQ(FileUtils::devicePath("/a"), "/a");
    setenv("VELMAR_ROOT", root().c_str(), 1);

    // A settled value is kept, yet a rewrite in place of the same length, a
    // replacement and a removal are each seen at once.
    std::ofstream(devicePath("/data/device/deviceid")) << "7300123456\n";
    const auto settle = [] { std::this_thread::sleep_for(std::chrono::milliseconds(1100)); };
    settle();
    EXPECT_EQ(deviceId(), "7300123456");
    std::fstream(devicePath("/data/device/deviceid"), std::ios::in | std::ios::out) << "7300654321";
    EXPECT_EQ(deviceId(), "7300654321");
    settle();
    EXPECT_EQ(deviceid_set("7300999999"), 0);
    EXPECT_EQ(deviceId(), "7300999999");
    fs::remove(devicePath("/data/device/deviceid"));
    EXPECT_EQ(deviceId(), "failed");
}

TEST_F(HostPortTest, ToolsRunFromTheRootWithNothingOfTheCallerAndDieWithTheirGroupAtTheDeadline) {
    fs::create_directory_symlink(root(), root() / "it's");  // a quote reaches the shell
    setenv("VELMAR_ROOT", (root() / "it's/").c_str(), 1);
    std::ofstream(devicePath("/usr/bin/bind_device.sh"))
        << "#!/bin/sh\necho \"$1 $#\" | tee -a \"$0.log\"\n";
    fs::permissions(devicePath("/usr/bin/bind_device.sh"), fs::perms::owner_all);
    std::string output;
    EXPECT_EQ(ExecUtils::exec(output, " /usr/bin/bind_device.sh /usr/bin/x; exit 5"), 5);
    EXPECT_EQ(output, "/usr/bin/x 1\n") << "only the tool's own path is under the root";
    EXPECT_EQ(bind_uid() + dev_restore(), 0);
    EXPECT_EQ(readFile(devicePath("/usr/bin/bind_device.sh.log")),
              "/usr/bin/x 1\nbind 1\nunbind 1\n");
    EXPECT_EQ(ExecUtils::exec(output, "kill -9 $$"), 128 + 9);

    // A child left running holds the call no longer than the tool; a tool past
    // its deadline is killed with its whole group (a zombie is dead too).
    const auto running = [](const std::string& pid) {
        const std::string stat = readFile("/proc/" + pid + "/stat");
        return !stat.empty() && stat.find(") Z ") == std::string::npos;
    };
    velmar::host::detail::setToolTimeoutMsForTest(400);
    for (const auto& [script, status] : {std::pair{"", 0}, {"; sleep 30", -1}}) {
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(ExecUtils::exec(output, std::string("sleep 30 & echo $!") + script), status);
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(1400));
        const std::string child = output.substr(0, output.find('\n'));
        for (int i = 0; i < 100 && status != 0 && running(child); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        EXPECT_EQ(running(child), status == 0) << script;
        kill(std::stoi(child), SIGKILL);
    }
    velmar::host::detail::setToolTimeoutMsForTest(0);
}

TEST_F(HostPortTest, LogLinesKeepAtMostFourCharactersOfACredentialAndEscapeControls) {
    const std::pair<const char*, const char*> rows[] = {

        {"Cookie: deviceId=7300; deviceToken=Zm9vYmFyYmF6cXV4+/==; signatureV2=SIGNATURE_VALUE_1",
         "Cookie: deviceId=7300; deviceToken=Zm9v***; signatureV2=SIGN***"},
        {"Params: token=abcdefghijklmnop&_s=abcdefgh&s=0123456789abcdef&sn=SN1&B64SIGN=qwertyuiop",
         "Params: token=abcd***&_s=ab***&s=0123***&sn=SN1&B64SIGN=qw***"},
        {"{\"code\":0,\"data\":{\"sessionID\" : \"sess-1234567890x\",\"expire\":3600}}",
         "{\"code\":0,\"data\":{\"sessionID\" : \"sess***\",\"expire\":3600}}"},
        {"{\"code\":0,\"data\":\"keep-alive-key-0001\",\"txRefreshToken\":\"ab\"}",
         "{\"code\":0,\"data\":\"keep***\",\"txRefreshToken\":\"***\"}"},
        {"url=https%3A%2F%2Fx%2F%3Ftoken%3Dabcdefghijkl%26a%3D1 {\"config\":\"{\\\"accessToken\\\":"
         "\\\"abcdef123456\\\"}\"}",
         "url=https%3A%2F%2Fx%2F%3Ftoken%3Dabcd*** {\"config\":\"{\\\"accessToken\\\":"
         "\\\"abc***\\\"}\"}"},
        {"token=\"quoted-secret-1\" sign = spaced-value-1 tokens=1&mytoken=2&sign-in=3",
         "token=\"quo***\" sign = spa*** tokens=1&mytoken=2&sign-in=3"},
        {"a\r\nbook.cpp:1: forged\tline\x01\x7f", "a\\r\\nbook.cpp:1: forged\\tline\\x01\\x7f"},
        // Never half a UTF-8 character or half an escape; an empty or unclosed value.
        {"token='single-quoted' s=a\xc3\xa9\xc3\xa9\xc3\xa9\xc3\xa9\xc3\xa9 "
         "sign=abc\\defghijklmnop _s=&",
         "token='sin***' s=a*** sign=abc*** _s=&"},
        {"{\"sessionID\":\"a\\\"bcdefghijk\"} \\\"token\\\": \\\"unclosed-value",
         "{\"sessionID\":\"a\\\"***\"} \\\"token\\\": \\\"unc***"},
    };
    for (const auto& [statement, line] : rows) {
        const std::string at = std::to_string(__LINE__ + 1);
        const std::string logged = logsOf([s = statement] { VLOG(2) << s; });
        EXPECT_EQ(logged, "HostPortTest.cpp:" + at + ": " + line + "\n");
    }
}

TEST_F(HostResolverTest, TheListIsTheEnvironmentsOrTheCallersAndASilentOneFailsWithinTheTimeOut) {
    const int silent = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{AF_INET, 0, {htonl(INADDR_LOOPBACK)}, {}};
    socklen_t length = sizeof(address);
    bind(silent, reinterpret_cast<sockaddr*>(&address), length);
    getsockname(silent, reinterpret_cast<sockaddr*>(&address), &length);
    const std::string quiet = "127.0.0.1:" + std::to_string(ntohs(address.sin_port));
    const std::string named = "http://api.quil.test:" + std::to_string(cloud().port());
    setenv("VELMAR_DNS_SERVERS", cloud().dnsServers().c_str(), 1);
    EXPECT_EQ(call(named, "GET", quiet), "1 404 0") << "the environment's list replaces the call's";
    unsetenv("VELMAR_DNS_SERVERS");
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(call(named, "GET", quiet, 400), "0 0 601");
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(1500));
    EXPECT_EQ(call(named, "GET", "not-a-resolver"), "0 0 601");
    close(silent);
}

TEST_F(HostResolverTest, AChangedVelmarResolveSteersTheNextCallAndADroppedPinIsForgotten) {
    const std::string port = std::to_string(cloud().port()), named = "http://Quil.test:" + port;
    const std::string rows[][3] = {
        {"quil.test:" + port + ":127.0.0.1", "", "1 404 0"},
        {"quil.test:" + port + ":127.0.0.2", "", "0 0 602"},
        {" +QUIL.test:" + port + ":127.0.0.1 , -gone.test:1", "", "1 404 0"},
        {"other.test:1:127.0.0.1", cloud().dnsServers(), "1 404 0"}};
    for (const auto& [pins, resolvers, reached] : rows) {
        setenv("VELMAR_RESOLVE", pins.c_str(), 1);
        EXPECT_EQ(call(named, "GET", resolvers), reached) << pins;
    }
    unsetenv("VELMAR_RESOLVE");
}

TEST_F(HostTlsTest, OneConnectionServesEveryCallNoProxyButVelmarProxyAndTrustIsKeptStrict) {
    for (const char* method : {"POST", "GET", "GET"})
        EXPECT_EQ(call(baseUrl(), method), "1 404 0");
    EXPECT_EQ(cloud().connectionCount(), 1);
    EXPECT_EQ(cloud().received().back().header("content-length"), "") << "a GET after a POST";
    setenv("https_proxy", "http://127.0.0.1:1", 1);
    EXPECT_EQ(call(baseUrl()), "1 404 0") << "the environment's proxies are ignored";
    setenv("VELMAR_PROXY", "http://127.0.0.1:1", 1);
    EXPECT_EQ(call(baseUrl()), "0 0 602");
    unsetenv("https_proxy");
    unsetenv("VELMAR_PROXY");
    const std::string port = std::to_string(cloud().port());
    setenv("VELMAR_RESOLVE", ("quil.test:" + port + ":127.0.0.1").c_str(), 1);
    EXPECT_EQ(call("https://quil.test:" + port), "0 0 605") << "a name the certificate lacks";
    const std::string caFile = cloud().caFile();
    setenv("VELMAR_CA_FILE", (root() / "none.pem").c_str(), 1);
    EXPECT_EQ(call(baseUrl()), "0 0 605") << "a bundle that cannot be read";
    unsetenv("VELMAR_CA_FILE");
    EXPECT_EQ(call(baseUrl()), "0 0 605") << "the system alone does not know the run's authority";

    // A certificate not yet valid passes only while the clock reads before
    // the build; its chain still counts, and nothing made then outlives it.
    quilcloud::Cloud::Options options;
    options.tls = true;
    options.certificateNotBeforeOffsetSeconds = 86400;
    quilcloud::Cloud future(options);
    ASSERT_TRUE(future.start()) << future.error();
    const long long now = time(nullptr), buildTime = velmar::http::detail::setBuildTimeForTest(0);
    for (const auto& [build, ca, reached] : {std::tuple{now - 86400, future.caFile(), "0 0 605"},
                                             {now + 86400, future.caFile(), "1 404 0"},
                                             {now + 86400, caFile, "0 0 605"},
                                             {now - 86400, future.caFile(), "0 0 605"}}) {
        velmar::http::detail::setBuildTimeForTest(build);
        setenv("VELMAR_CA_FILE", ca.c_str(), 1);
        EXPECT_EQ(call(future.baseUrl()), reached) << build - now << " " << ca;
    }
    velmar::http::detail::setBuildTimeForTest(buildTime);
}

}  // namespace
