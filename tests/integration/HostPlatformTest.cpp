// The Linux port's device store, configuration, files, commands, logging and
// random sources, under a sandbox root.
#include <fcntl.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <sstream>
#include <thread>

#include <gtest/gtest.h>

#include "CloudFixture.h"
#include "host/TestHooks.h"
#include "velmar/crypto/RandomUtils.h"
#include "velmar/device/DeviceInfo.h"
#include "velmar/utils/ConfigFile.h"
#include "velmar/utils/ExecUtils.h"
#include "velmar/utils/FileUtils.h"
#include "velmar/utils/Logging.h"
#include "velmar/utils/TimeUtils.h"
#include "velmar/utils/UUIDUtils.h"

namespace fs = std::filesystem;
using namespace velmar::utils;

namespace {

class HostPlatformTest : public ::testing::Test {
  protected:
    void SetUp() override {
        // A space and a quote in the root: it reaches a shell command line.
        char pattern[] = "/tmp/velmar host 'root'-XXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        root_ = pattern;
        for (const char* dir : {"data/device", "data/status", "usr/bin"})
            fs::create_directories(root_ / dir);
        setenv("VELMAR_ROOT", root_.c_str(), 1);
    }
    void TearDown() override {
        unsetenv("VELMAR_ROOT");
        std::error_code ignored;
        fs::remove_all(root_, ignored);
    }

    fs::path path(const std::string& devicePath) const { return root_ / devicePath.substr(1); }
    void write(const std::string& devicePath, const std::string& content) const {
        std::ofstream(path(devicePath), std::ios::binary) << content;
    }
    std::string read(const std::string& devicePath) const {
        return velmar::testing::readFile(path(devicePath));
    }
    std::set<std::string> entries(const std::string& devicePath) const {
        std::set<std::string> names;
        for (const auto& entry : fs::directory_iterator(path(devicePath)))
            names.insert(entry.path().filename().string());
        return names;
    }
    void tool(const std::string& devicePath, const std::string& script) const {
        write(devicePath, "#!/bin/sh\n" + script);
        fs::permissions(path(devicePath), fs::perms::owner_all);
    }

    fs::path root_;
};

// How a device-store function reports: 0 for success, any non-negative
// status, or only a positive one.
enum Convention { kZero, kNotNegative, kPositive };
bool succeeded(Convention convention, int status) {
    return convention == kZero          ? status == 0
           : convention == kNotNegative ? status >= 0
                                        : status > 0;
}

struct StoreValue {
    const char* file;
    int (*get)(char*, int);
    Convention getConvention;
    int (*set)(const char*) = nullptr;
    Convention setConvention = kZero;
};

const StoreValue kValues[] = {
    {"sn", sn_get, kZero},
    {"mac", mac_get, kZero},
    {"deviceid", deviceid_get, kZero, deviceid_set, kZero},
    {"channel_secret", channel_secret_get, kZero, channel_secret_set, kZero},
    {"iot_did", iot_did_get, kZero},
    {"version", version_get, kZero},
    {"channel", channel_get, kZero},
    {"model", model_get, kZero},
    {"appid", appid_get, kZero},
    {"countrycode", countrycode_get, kZero},
    {"imei", imei_get, kZero},
    {"carrier", carrier_get, kZero},
    {"uid", uid_get, kZero, uid_set, kPositive},
    {"broker_host", broker_host_get, kZero, broker_host_set, kZero},
    {"broker_port", broker_port_get, kZero, broker_port_set, kZero},
    {"upgrade_date", upgrade_date_get, kNotNegative, upgrade_date_set, kNotNegative},
    {"device_token", device_token_get, kNotNegative, device_token_set, kNotNegative},
    {"device_token_sign", device_token_sign_get, kNotNegative, device_token_sign_set, kNotNegative},
};

TEST_F(HostPlatformTest, EveryValueIsReadAndReplacedWithItsOwnStatusConventions) {
    for (const auto& v : kValues) {
        SCOPED_TRACE(v.file);
        char buf[32] = "junk";
        EXPECT_FALSE(succeeded(v.getConvention, v.get(buf, sizeof(buf))));
        EXPECT_STREQ(buf, "");

        const std::string value = std::string("v-") + v.file;
        write(std::string("/data/device/") + v.file, value + "\n");
        EXPECT_EQ(v.get(buf, sizeof(buf)), v.getConvention == kZero ? 0 : int(value.size()));
        EXPECT_EQ(std::string(buf), value);
        if (v.set == nullptr) continue;
        EXPECT_TRUE(succeeded(v.setConvention, v.set(("new-" + value).c_str())));
        EXPECT_TRUE(succeeded(v.getConvention, v.get(buf, sizeof(buf))));
        EXPECT_EQ(std::string(buf), "new-" + value);
        EXPECT_FALSE(succeeded(v.setConvention, v.set(nullptr)));
    }
    EXPECT_EQ(entries("/data/device").size(), std::size(kValues)) << "a temporary file left";

    // Exactly one trailing newline goes; a value must fit with its NUL.
    char buf[8];
    write("/data/device/sn", "ab\n\n");
    ASSERT_EQ(sn_get(buf, sizeof(buf)), 0);
    EXPECT_STREQ(buf, "ab\n");
    write("/data/device/sn", "1234567\n");
    EXPECT_EQ(sn_get(buf, sizeof(buf)), 0);
    EXPECT_STREQ(buf, "1234567");
    write("/data/device/sn", "1234567");
    EXPECT_EQ(sn_get(buf, sizeof(buf)), 0);
    write("/data/device/device_token", "12345678");
    EXPECT_LT(device_token_get(buf, sizeof(buf)), 0);
    EXPECT_STREQ(buf, "");
    write("/data/device/device_token", std::string(1 << 20, 't'));
    EXPECT_LT(device_token_get(buf, sizeof(buf)), 0);
    write("/data/device/device_token", "");
    EXPECT_EQ(device_token_get(buf, sizeof(buf)), 0) << "an empty value is a value";

    EXPECT_NE(sn_get(nullptr, 8), 0);
    EXPECT_NE(sn_get(buf, 0), 0);
    EXPECT_NE(sn_get(buf, -1), 0);
    EXPECT_LT(device_token_get(buf, 0), 0);
    fs::remove(path("/data/device/mac"));
    fs::create_directory(path("/data/device/mac"));
    EXPECT_NE(mac_get(buf, sizeof(buf)), 0) << "a directory is no value";

    write("/data/device/rssi", "-61\n");
    EXPECT_EQ(rssi_get(), -61);
    for (const char* bad : {"", "abc", "12abc", "99999999999", "\n"}) {
        write("/data/device/rssi", bad);
        EXPECT_EQ(rssi_get(), 0) << bad;
    }
    fs::remove(path("/data/device/rssi"));
    EXPECT_EQ(rssi_get(), 0);
}

TEST_F(HostPlatformTest, SettersKeepTheValueWholeAndFailWithoutAStore) {
    char buf[64];
    EXPECT_GT(uid_set(""), 0) << "positive even when nothing but the value's end is written";
    ASSERT_EQ(channel_secret_set("line\n"), 0);
    ASSERT_EQ(channel_secret_get(buf, sizeof(buf)), 0);
    EXPECT_STREQ(buf, "line\n") << "a value ending in a newline reads back as it was written";

    EXPECT_EQ(uid_clean(), 0);
    EXPECT_NE(uid_get(buf, sizeof(buf)), 0);
    EXPECT_EQ(uid_clean(), 0) << "nothing to forget is no failure";
    fs::create_directory(path("/data/device/uid"));
    write("/data/device/uid/keep", "x");
    EXPECT_EQ(uid_clean(), -1);
    fs::remove_all(path("/data/device/uid"));

    fs::remove_all(path("/data/device"));
    for (const auto& v : kValues)
        EXPECT_TRUE(v.set == nullptr || v.set("1") == -1) << v.file;
    EXPECT_EQ(uid_clean(), 0);

    for (const char* valid :
         {"0", "12345", "-1", "-88123", "9223372036854775807", "-9223372036854775808"})
        EXPECT_EQ(uid_isvalid_str(valid), 0) << valid;
    for (const char* invalid :
         {"", "-", "12a", " 1", "1 ", "+1", "--1", "1-2", "9223372036854775808",
          "-9223372036854775809", "99999999999999999999"})
        EXPECT_NE(uid_isvalid_str(invalid), 0) << invalid;
    EXPECT_NE(uid_isvalid_str(nullptr), 0);
}

TEST_F(HostPlatformTest, CredentialsAreStoredPrivateAndLineEndsAreCut) {
    const mode_t umaskBefore = ::umask(0);
    const struct {
        const char* file;
        int (*set)(const char*);
        mode_t mode;
    } rows[] = {
        {"channel_secret", channel_secret_set, 0600},
        {"device_token", device_token_set, 0600},
        {"device_token_sign", device_token_sign_set, 0600},
        {"deviceid", deviceid_set, 0644},
        {"broker_host", broker_host_set, 0644},
    };
    for (const auto& row : rows) {
        struct stat info;
        EXPECT_GE(row.set("value"), 0) << row.file;
        ASSERT_EQ(stat(path("/data/device/").append(row.file).c_str(), &info), 0);
        EXPECT_EQ(info.st_mode & 0777, row.mode) << row.file << " created";
        // Replaced: the owner's bits kept, and a credential made private.
        chmod(path("/data/device/").append(row.file).c_str(), 0640);
        EXPECT_GE(row.set("again"), 0) << row.file;
        ASSERT_EQ(stat(path("/data/device/").append(row.file).c_str(), &info), 0);
        EXPECT_EQ(info.st_mode & 0777, row.mode == 0600 ? 0600u : 0640u) << row.file << " replaced";
    }
    ::umask(umaskBefore);

    char buf[64];
    for (const char* stored : {"7300\r\n", "7300\r", "7300\n"}) {
        write("/data/device/deviceid", stored);
        ASSERT_EQ(deviceid_get(buf, sizeof(buf)), 0);
        EXPECT_STREQ(buf, "7300") << "stored as " << ::testing::PrintToString(stored);
    }
}

TEST_F(HostPlatformTest, DeviceFilesAreReadBoundedAndReplacedWhole) {
    write("/data/status/ota", "idle\n");
    char buf[8];
    // The length read, and the text it left in `buf`.
    auto ota = [&buf](int size) {
        const int length = file_read_string("/data/status/ota", buf, size);
        return std::to_string(length) + " " + buf;
    };
    EXPECT_EQ(ota(sizeof(buf)), "5 idle\n");
    EXPECT_EQ(ota(3), "2 id");
    EXPECT_EQ(ota(1), "0 ");
    EXPECT_EQ(file_read_string("/data/status/none", buf, sizeof(buf)), -1);
    EXPECT_EQ(file_read_string(nullptr, buf, sizeof(buf)), -1);
    EXPECT_EQ(file_read_string("/data/status/ota", nullptr, 8), -1);
    EXPECT_EQ(file_read_string("/data/status/ota", buf, 0), -1);
    EXPECT_EQ(file_read_string("/data/status", buf, sizeof(buf)), -1);
    ASSERT_EQ(mkfifo(path("/data/status/fifo").c_str(), 0600), 0);
    EXPECT_EQ(file_read_string("/data/status/fifo", buf, sizeof(buf)), -1) << "and no hang";

    EXPECT_EQ(FileUtils::devicePath("/data/x"), root_.string() + "/data/x");
    EXPECT_EQ(FileUtils::devicePath("relative/x"), "relative/x");
    setenv("VELMAR_ROOT", (root_.string() + "/").c_str(), 1);
    EXPECT_EQ(FileUtils::devicePath("/data/x"), root_.string() + "/data/x");
    unsetenv("VELMAR_ROOT");
    EXPECT_EQ(FileUtils::devicePath("/data/x"), "/data/x");
    setenv("VELMAR_ROOT", root_.c_str(), 1);

    write("/data/status/carrier", "old");
    chmod(path("/data/status/carrier").c_str(), 0600);
    EXPECT_TRUE(FileUtils::writeAtomically("/data/status/carrier", "{\"a\":1}"));
    EXPECT_EQ(read("/data/status/carrier"), "{\"a\":1}");
    struct stat info;
    ASSERT_EQ(stat(path("/data/status/carrier").c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0600u) << "the replacement keeps the old permissions";
    EXPECT_TRUE(FileUtils::writeAtomically("/data/status/new", ""));
    EXPECT_EQ(read("/data/status/new"), "");
    EXPECT_FALSE(FileUtils::writeAtomically("/no/such/dir/file", "x"));
    EXPECT_FALSE(FileUtils::writeAtomically("/data/status/", "x"));
    EXPECT_EQ(entries("/data/status"), (std::set<std::string>{"ota", "fifo", "carrier", "new"}));
}

TEST_F(HostPlatformTest, ConfigurationReadsKeyValueLines) {
    fs::create_directories(path("/usr/share/quil/messaging"));
    write("/usr/share/quil/messaging/messaging.conf",
          "# comment=ignored\n\n  sQuilAPIURL =  https://cloud.test/a?x=1#frag  \r\n"
          "sTimeSyncURL=\nbroken line\n=novalue\n\t# indented comment\n"
          "sVeWiFiAPIURL=first\nsVeWiFiAPIURL=second\nsVeWiFiLOGURL=a=b");
    ConfigFile config("/usr/share/quil/messaging/messaging.conf");
    EXPECT_EQ(config.get(ConfigFile::sQuilAPIURL), "https://cloud.test/a?x=1#frag");
    EXPECT_EQ(config.get(ConfigFile::sTimeSyncURL), "");
    EXPECT_EQ(config.get(ConfigFile::sVeWiFiAPIURL), "second");
    EXPECT_EQ(config.get(ConfigFile::sVeWiFiLOGURL), "a=b");
    EXPECT_EQ(config.get(ConfigFile::sQuilUserprofileURL), "");
    EXPECT_EQ(config.get("# comment"), "");
    EXPECT_EQ(config.get(""), "");
    EXPECT_EQ(ConfigFile("/usr/share/quil/missing.conf").get(ConfigFile::sQuilAPIURL), "");
}

TEST_F(HostPlatformTest, CommandsRunDeviceToolsFromTheRootAndReportTheirStatus) {
    tool("/usr/bin/vebrain_level", "echo \"{\\\"level\\\":\\\"$1\\\",\\\"n\\\":$#}\"\nexit 3\n");
    std::string output = "stale";
    EXPECT_EQ(ExecUtils::exec(output, "/usr/bin/vebrain_level get"), 3);
    EXPECT_EQ(output, "{\"level\":\"get\",\"n\":1}\n");
    // Only the first word is the tool; arguments are left alone.
    EXPECT_EQ(ExecUtils::exec(output, "  /usr/bin/vebrain_level /usr/bin/x 2"), 3);
    EXPECT_EQ(output, "{\"level\":\"/usr/bin/x\",\"n\":2}\n");
    EXPECT_EQ(ExecUtils::exec(output, "echo hi; exit 0"), 0);
    EXPECT_EQ(output, "hi\n");
    EXPECT_EQ(ExecUtils::exec(output, "/usr/bin/not-there 2>/dev/null"), 127);
    EXPECT_EQ(output, "");
    EXPECT_EQ(ExecUtils::exec(output, "kill -9 $$"), 128 + 9);

    // More output than a pipe holds, and a tool that reads its input.
    EXPECT_EQ(ExecUtils::exec(output, "head -c 300000 /dev/zero | tr '\\0' a; cat"), 0);
    EXPECT_EQ(output, std::string(300000, 'a'));

    // Nothing of the caller leaks into the tool: descriptors, ignored signals.
    int open = ::open("/dev/null", O_RDONLY);  // deliberately inheritable
    ASSERT_GE(open, 0);
    EXPECT_EQ(ExecUtils::exec(output, "test -e /proc/self/fd/" + std::to_string(open)), 1);
    ::close(open);
    auto previous = signal(SIGPIPE, SIG_IGN);
    EXPECT_EQ(ExecUtils::exec(output, "grep SigIgn /proc/self/status"), 0);
    signal(SIGPIPE, previous);
    ASSERT_EQ(output.rfind("SigIgn:\t", 0), 0u) << output;
    EXPECT_EQ(std::stoull(output.substr(8), nullptr, 16) & (1ull << (SIGPIPE - 1)), 0u) << output;

    tool("/usr/bin/bind_device.sh", "echo \"$1\" >> \"$0.log\"\nexit 5\n");
    EXPECT_EQ(bind_uid(), 5);
    EXPECT_EQ(dev_restore(), 5);
    EXPECT_EQ(read("/usr/bin/bind_device.sh.log"), "bind\nunbind\n");
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "every child was reaped";
}

TEST_F(HostPlatformTest, ToolsEndWhenTheyExitOrAtTheirDeadlineWithTheirProcessGroup) {
    // Whether `pid` still runs: gone, or a zombie waiting for its new parent.
    auto running = [](const std::string& pid) {
        const std::string stat = velmar::testing::readFile("/proc/" + pid + "/stat");
        const size_t close = stat.rfind(')');
        return close != std::string::npos && stat.compare(close, 4, ") Z ") != 0;
    };
    velmar::host::detail::setToolTimeoutMsForTest(400);
    const struct {
        const char* script;
        int status;
        const char* output;
    } rows[] = {
        {"echo at once", 0, "at once\n"},
        // A background child keeps the pipe open long after the tool is gone.
        {"sleep 30 & echo $! > \"$VELMAR_ROOT/data/status/pid\"; echo left a child", 0,
         "left a child\n"},
        {"sleep 30 & echo $! > \"$VELMAR_ROOT/data/status/pid\"; echo hangs; sleep 30", -1,
         "hangs\n"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.script);
        fs::remove(path("/data/status/pid"));
        std::string output;
        const auto start = std::chrono::steady_clock::now();
        setenv("VELMAR_LOG_STDERR", "1", 1);
        ::testing::internal::CaptureStderr();
        EXPECT_EQ(ExecUtils::exec(output, std::string("sh -c '") + row.script + "'"), row.status);
        const std::string logs = ::testing::internal::GetCapturedStderr();
        unsetenv("VELMAR_LOG_STDERR");
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(1400));
        EXPECT_EQ(output, row.output);
        EXPECT_EQ(logs.find("no exit within 400 ms") != std::string::npos, row.status == -1)
            << logs;
        const std::string child = read("/data/status/pid");
        if (child.empty()) continue;
        const std::string pid = child.substr(0, child.size() - 1);
        // Only the tool that overran has its whole group killed.
        for (int i = 0; i < 100 && running(pid) && row.status == -1; ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        EXPECT_EQ(running(pid), row.status == 0);
        ::kill(std::stoi(pid), SIGKILL);
    }
    velmar::host::detail::setToolTimeoutMsForTest(0);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "every child was reaped";
}

TEST(HostLoggingTest, LinesCarryTheirSourceAndReachStandardErrorWhole) {
    ::testing::internal::CaptureStderr();
    VLOG(2) << "not mirrored";
    setenv("VELMAR_LOG_STDERR", "1", 1);
    const int line = __LINE__ + 1;
    VLOG(4) << "failed with " << 42;
    const std::string long_text(3000, 'x');
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([t, &long_text] {
            for (int i = 0; i < 50; ++i)
                VLOG(3) << "t" << t << " " << long_text;
        });
    }
    for (auto& thread : threads)
        thread.join();
    unsetenv("VELMAR_LOG_STDERR");
    const std::string logged = ::testing::internal::GetCapturedStderr();

    EXPECT_EQ(logged.find("not mirrored"), std::string::npos);
    EXPECT_EQ(
        logged.rfind("HostPlatformTest.cpp:" + std::to_string(line) + ": failed with 42\n", 0), 0u)
        << logged.substr(0, 200);
    std::istringstream lines(logged);
    std::string entry;
    std::getline(lines, entry);  // the line checked above
    int whole = 0;
    for (; std::getline(lines, entry); ++whole) {
        EXPECT_EQ(entry.rfind("HostPlatformTest.cpp:", 0), 0u) << entry.substr(0, 100);
        const size_t text = entry.find(": t");
        EXPECT_TRUE(text != std::string::npos && entry.substr(text + 5) == long_text)
            << "a line mixed with another: " << entry.substr(0, 100);
    }
    EXPECT_EQ(whole, 200);
}

TEST(HostLoggingTest, CredentialsAreMaskedAndControlCharactersEscaped) {
    const struct {
        const char* statement;
        const char* line;
    } rows[] = {
        // The signed request's parameters and cookies.
        {"!!!!!!params is :requestId=42&token=abcdefghijklmnop&x=1",
         "!!!!!!params is :requestId=42&token=abcd***&x=1"},
        {"Cookie: deviceId=7300; deviceToken=Zm9vYmFyYmF6cXV4+/==; deviceTokenV2=t0k3n-1234567; "
         "nonce=n; signatureV2=SIGNATURE_VALUE_1",
         "Cookie: deviceId=7300; deviceToken=Zm9v***; deviceTokenV2=t0k***; nonce=n; "
         "signatureV2=SIGN***"},
        // Signatures of the directly addressed services, names in any case.
        {"Params: _s=abcdefgh&s=0123456789abcdef&sn=SN1&B64SIGN=qwertyuiop",
         "Params: _s=ab***&s=0123***&sn=SN1&B64SIGN=qw***"},
        // JSON answers: strings masked, numbers and objects under "data" left alone.
        {"veot token download response: {\"code\":0,\"data\":{\"sessionID\" : \"sess-1234567890x\","
         "\"token\":\"tok\\\"en-abcdefghij\",\"expire\":3600}}",
         "veot token download response: {\"code\":0,\"data\":{\"sessionID\" : \"sess***\","
         "\"token\":\"tok***\",\"expire\":3600}}"},
        {"Invalid response: {\"code\":0,\"data\":\"keep-alive-key-0001\"}",
         "Invalid response: {\"code\":0,\"data\":\"keep***\"}"},
        {"{\"data\":-1,\"txAccessToken\":\"\",\"txRefreshToken\":\"ab\"}",
         "{\"data\":-1,\"txAccessToken\":\"\",\"txRefreshToken\":\"***\"}"},
        // A query inside a parameter, JSON inside a JSON string, quotes and blanks.
        {"params is :url=https%3A%2F%2Fx%2F%3Ftoken%3Dabcdefghijkl%26a%3D1",
         "params is :url=https%3A%2F%2Fx%2F%3Ftoken%3Dabcd***"},
        {"{\"config\":\"{\\\"accessToken\\\":\\\"abcdef123456\\\"}\"}",
         "{\"config\":\"{\\\"accessToken\\\":\\\"abc***\\\"}\"}"},
        {"token=\"quoted-secret-1\" key='single-quoted' sign = spaced-value-1 token:\tab-1234",
         "token=\"quo***\" key='single-quoted' sign = spa*** token:\\ta***"},
        // Names that merely contain a credential's name, or carry no value.
        {"tokens=1&mytoken=2&token&sign-in=3 status: 200",
         "tokens=1&mytoken=2&token&sign-in=3 status: 200"},
        // An answer cannot end the line or forge another.
        {"Invalid result: a\r\nbook.cpp:1: forged\tline\x01\x7f",
         "Invalid result: a\\r\\nbook.cpp:1: forged\\tline\\x01\\x7f"},
    };
    setenv("VELMAR_LOG_STDERR", "1", 1);
    for (const auto& row : rows) {
        ::testing::internal::CaptureStderr();
        VLOG(2) << row.statement;
        const std::string logged = ::testing::internal::GetCapturedStderr();
        const size_t text = logged.find(": ", logged.find(".cpp:"));
        EXPECT_EQ(logged.substr(text + 2), std::string(row.line) + "\n") << row.statement;
    }
    unsetenv("VELMAR_LOG_STDERR");
}

TEST(HostRandomTest, UuidsAndRandomBytesComeFromTheSystemSource) {
    const std::regex version4(
        "[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[89ab][0-9a-f]{3}-[0-9a-f]{12}");
    std::set<std::string> seen;
    for (int i = 0; i < 1000; ++i) {
        const std::string u = UUIDUtils::generate();
        EXPECT_TRUE(std::regex_match(u, version4)) << u;
        seen.insert(u);
    }
    EXPECT_EQ(seen.size(), 1000u);

    EXPECT_TRUE(velmar::crypto::RandomUtils::nextBytes(0).empty());
    auto a = velmar::crypto::RandomUtils::nextBytes(64);
    auto b = velmar::crypto::RandomUtils::nextBytes(64);
    ASSERT_EQ(a.size(), 64u);
    EXPECT_NE(a, b);
    EXPECT_EQ(velmar::crypto::RandomUtils::nextBytes(1 << 20).size(), 1u << 20);

    const long long now = TimeUtils::currentTimeMillis();
    EXPECT_NEAR(static_cast<double>(now), static_cast<double>(time(nullptr)) * 1000.0, 2000.0);
}

}  // namespace
