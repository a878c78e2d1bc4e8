// A sandboxed device and the local cloud, for integration tests through the
// host port: a temporary VELMAR_ROOT holding a device store and a
// messaging.conf that points every service at an in-process quil-cloud.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <string>

#include "quilcloud/Cloud.h"
#include "velmar/http/HTTPRequest.h"

namespace velmar {
namespace testing {

namespace fs = std::filesystem;

// The whole content of a file, "" when there is none.
inline std::string readFile(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// The device the fixture registers, in the store and in the cloud alike.
struct SampleDevice {
    static constexpr const char* sn = "4417/20260001";
    static constexpr const char* mac = "a4:cf:12:3e:77:01";
    static constexpr const char* deviceId = "7300123456";
    static constexpr const char* channelSecret = "3c9a1f0e5b7d4c28a6e0f19d2b3c4d5e";
    static constexpr const char* model = "quil.speaker.v2";
    static constexpr const char* version = "2.14.3";
};

class CloudFixture : public ::testing::Test {
  protected:
    // Override to run the cloud over HTTPS.
    virtual bool useTls() const { return false; }
    virtual int dnsPort() const { return -1; }

    void SetUp() override {
        char pattern[] = "/tmp/velmar-test-XXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        root_ = pattern;
        for (const char* dir : {"data/device", "data/status", "data/messagingagent",
                                "usr/share/quil/messaging", "usr/bin"})
            fs::create_directories(root_ / dir);
        store("sn", SampleDevice::sn);
        store("mac", SampleDevice::mac);
        store("deviceid", SampleDevice::deviceId);
        store("channel_secret", SampleDevice::channelSecret);
        store("model", SampleDevice::model);
        store("version", SampleDevice::version);

        quilcloud::Cloud::Options options;
        options.tls = useTls();
        options.dnsPort = dnsPort();
        options.deviceStore = (root_ / "data/device").string();
        options.workDir = (root_ / "cloud").string();
        fs::create_directories(options.workDir);
        cloud_ = std::make_unique<quilcloud::Cloud>(options);
        ASSERT_TRUE(cloud_->start()) << cloud_->error();

        servicesAtCloud();
        setenv("VELMAR_ROOT", root_.c_str(), 1);
        if (useTls()) setenv("VELMAR_CA_FILE", cloud_->caFile().c_str(), 1);
    }

    void TearDown() override {
        account_.reset();
        unsetenv("VELMAR_RESOLVE");
        cloud_.reset();
        unsetenv("VELMAR_ROOT");
        unsetenv("VELMAR_CA_FILE");
        std::error_code ignored;
        fs::remove_all(root_, ignored);
    }

    // Writes a device-store value (one trailing newline, as the device does).
    void store(const std::string& name, const std::string& value) {
        std::ofstream(root_ / "data/device" / name) << value << "\n";
    }

    // Makes `id` the device's super administrator, in the store and in the cloud.
    void bindAdministrator(long long id) {
        store("uid", std::to_string(id));
        cloud_->registry().update(SampleDevice::deviceId,
                                  [id](quilcloud::Device& d) { d.superAdmin = id; });
    }

    // Points every service at the cloud, the log service at `logUrl` when given.
    void servicesAtCloud(const std::string& logUrl = "") {
        writeConfig({{"sQuilAPIURL", baseUrl()},
                     {"sQuilUserprofileURL", baseUrl()},
                     {"sQuilUserprofilePreviewURL", baseUrl()},
                     {"sVeWiFiAPIURL", baseUrl()},
                     {"sVeWiFiLOGURL", logUrl.empty() ? baseUrl() : logUrl},
                     {"sTimeSyncURL", baseUrl() + "/time/sync"}});
    }

    // Replaces messaging.conf with these keys.
    void writeConfig(std::initializer_list<std::pair<std::string, std::string>> entries) {
        std::ofstream out(root_ / "usr/share/quil/messaging/messaging.conf");
        out << "# written by the test\n";
        for (const auto& [key, value] : entries)
            out << key << "=" << value << "\n";
    }

    // The library's log lines while `call` runs, mirrored to standard error.
    template <typename F>
    static std::string logsOf(F call) {
        setenv("VELMAR_LOG_STDERR", "1", 1);
        ::testing::internal::CaptureStderr();
        call();
        unsetenv("VELMAR_LOG_STDERR");
        return ::testing::internal::GetCapturedStderr();
    }

    // A file under the sandbox root, by its device path ("/data/status/ota").
    fs::path devicePath(const std::string& path) const { return root_ / path.substr(1); }

    quilcloud::Cloud& cloud() { return *cloud_; }
    std::string baseUrl() const { return cloud_->baseUrl(); }
    const fs::path& root() const { return root_; }

    // The account service at its fixed address (https, port 443) on a
    // loopback address of its own, so that test processes running side by
    // side do not meet; its name is pinned there with VELMAR_RESOLVE. False
    // when no loopback port 443 can be had (not root).
    static constexpr const char* kAccountHost = "account.velmar-cloud.test";
    bool startAccountCloud() {
        std::random_device random;
        for (int attempt = 0; attempt < 8; ++attempt) {
            const std::string address = "127." + std::to_string(1 + random() % 250) + "." +
                                        std::to_string(random() % 256) + ".7";
            quilcloud::Cloud::Options options;
            options.tls = true;
            options.bindAddress = address;
            options.port = 443;
            options.extraNames = {kAccountHost};
            options.workDir = (root_ / "account").string();
            account_ = std::make_unique<quilcloud::Cloud>(options);
            if (account_->start()) {
                setenv("VELMAR_CA_FILE", account_->caFile().c_str(), 1);
                setenv("VELMAR_RESOLVE", (std::string(kAccountHost) + ":443:" + address).c_str(),
                       1);
                return true;
            }
        }
        account_.reset();
        return false;
    }
    // A token the account service issues for the form "userId=...&clientId=...".
    static std::string accountToken(const std::string& form) {
        int status = 0;
        std::string answer, message;
        velmar::utils::ErrorType error = velmar::utils::ERROR_NONE;
        velmar::http::HTTPRequest::httpRequest(status, answer, error, message,
                                               std::string("https://") + kAccountHost, "user/token",
                                               form, "POST", {}, 15000);
        const size_t at = answer.find("\"token\":\"");
        EXPECT_NE(at, std::string::npos) << answer << message;
        return at == std::string::npos ? ""
                                       : answer.substr(at + 9, answer.find('"', at + 9) - at - 9);
    }
    std::unique_ptr<quilcloud::Cloud> account_;

  private:
    fs::path root_;
    std::unique_ptr<quilcloud::Cloud> cloud_;
};

class TlsCloudFixture : public CloudFixture {
  protected:
    bool useTls() const override { return true; }
};

// The cloud's DNS responder replaces every resolver list a call hands over,
// so that the upgrade check's fallback resolvers stay on loopback.
class LoopbackResolverFixture : public CloudFixture {
  protected:
    int dnsPort() const override { return 0; }
    void SetUp() override {
        CloudFixture::SetUp();
        setenv("VELMAR_DNS_SERVERS", cloud().dnsServers().c_str(), 1);
    }
    void TearDown() override {
        unsetenv("VELMAR_DNS_SERVERS");
        CloudFixture::TearDown();
    }
};

}  // namespace testing
}  // namespace velmar
