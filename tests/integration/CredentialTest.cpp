// Registration, the device token pair and the administrator through the host
// port against the local cloud.
#include <json-c/json.h>
#include <chrono>

#include "CloudFixture.h"
#include "Endpoints.h"
#include "host/TestHooks.h"

using velmar::quil::QuilConfigUtils;
using velmar::quil::api::DeviceAPI;
using velmar::quil::api::PresenceAPI;
using velmar::testing::SampleDevice;
namespace fs = std::filesystem;

namespace {

class CredentialTest : public velmar::testing::CloudFixture {
  protected:
    // The pair of a renewal or transfer answer, as the messaging agent reads it.
    static std::pair<std::string, std::string> pairOf(const std::string& answer) {
        json_object* root = json_tokener_parse(answer.c_str());
        json_object* data = nullptr;
        json_object* token = nullptr;
        json_object* signature = nullptr;
        std::pair<std::string, std::string> pair;
        if (json_object_object_get_ex(root, "data", &data) &&
            json_object_object_get_ex(data, "deviceTokenV2", &token) &&
            json_object_object_get_ex(data, "signatureV2", &signature)) {
            pair = {json_object_get_string(token), json_object_get_string(signature)};
        }
        json_object_put(root);
        return pair;
    }
    int presenceStatus() {
        std::string response;
        int status = 0;
        DeviceAPI::request(response, status, baseUrl(), "/device/presence/", "GET", {});
        return status;
    }
    // A user binds or unbinds the device in the cloud only.
    void cloudAdmin(long long id) {
        cloud().registry().update(SampleDevice::deviceId,
                                  [id](quilcloud::Device& d) { d.superAdmin = id; });
    }
};

TEST_F(CredentialTest, RegistrationIsValidOnlyForAKnownDeviceThatSignsRight) {
    std::string status;
    ASSERT_EQ(DeviceAPI::checkRegistrationStatus(status, baseUrl()), 0);
    EXPECT_EQ(status, "valid");

    store("channel_secret", "ffffffffffffffff-not-the-secret");
    ASSERT_EQ(DeviceAPI::checkRegistrationStatus(status, baseUrl()), 0);
    EXPECT_EQ(status, "invalid");
    store("channel_secret", SampleDevice::channelSecret);
    store("deviceid", "7300000000");
    status.clear();
    ASSERT_EQ(DeviceAPI::checkRegistrationStatus(status, baseUrl()), 0);
    EXPECT_EQ(status, "invalid");
}

TEST_F(CredentialTest, RenewedPairIsTheOnlyOneTheCloudAcceptsAfterwards) {
    std::string answer;
    ASSERT_EQ(DeviceAPI::requestDeviceTokenV2(answer, baseUrl()), 0);
    auto [token, signature] = pairOf(answer);
    ASSERT_FALSE(token.empty()) << answer;
    EXPECT_EQ(cloud().registry().find(SampleDevice::deviceId)->deviceToken, token);

    // Not stored yet: the device still sends no pair and is refused.
    EXPECT_EQ(presenceStatus(), 401);
    ASSERT_TRUE(QuilConfigUtils::setDeviceTokenAndSignature(token, signature));
    EXPECT_EQ(presenceStatus(), 200);
    auto received = cloud().received("/device/presence/");
    EXPECT_EQ(received.back().cookies.at("deviceTokenV2"), token);
    EXPECT_EQ(received.back().cookies.at("signatureV2"), signature);

    // A transfer hands the same pair back; the next renewal retires it.
    ASSERT_EQ(DeviceAPI::requestDeviceTransfer(answer, baseUrl()), 0);
    EXPECT_EQ(pairOf(answer).first, token);
    ASSERT_EQ(DeviceAPI::requestDeviceTokenV2(answer, baseUrl()), 0);
    EXPECT_NE(pairOf(answer).first, token);
    EXPECT_EQ(presenceStatus(), 401);
}

TEST_F(CredentialTest, AdminSyncBindsChangesAndUnbindsThroughTheBindScript) {
    const auto script = devicePath("/usr/bin/bind_device.sh");
    std::ofstream(script) << "#!/bin/sh\necho \"$1\" >> \"$VELMAR_ROOT/bind.log\"\n";
    fs::permissions(script, fs::perms::owner_all);

    // Synchronises, then reads back the administrator the device stored.
    auto synced = [](bool master) {
        long long stored = 0;
        EXPECT_TRUE(QuilConfigUtils::syncAdminStatus(master));
        EXPECT_TRUE(QuilConfigUtils::getSuperAdmin(stored));
        return stored;
    };
    cloudAdmin(52001);
    EXPECT_EQ(synced(true), 52001);
    EXPECT_EQ(cloud().received("/device/super_admin").at(0).param("master"), "true");
    EXPECT_EQ(synced(false), 52001) << "unchanged: no script";
    cloudAdmin(60002);
    EXPECT_EQ(synced(false), 60002);
    cloudAdmin(-1);
    EXPECT_EQ(synced(false), -1);
    EXPECT_EQ(velmar::testing::readFile(root() / "bind.log"), "bind\nbind\nunbind\n");

    // A bind script that never returns is killed at its deadline, and the
    // administrator lock is free again.
    std::ofstream(script) << "#!/bin/sh\nsleep 30\n";
    velmar::host::detail::setToolTimeoutMsForTest(300);
    cloudAdmin(70003);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(synced(false), 70003);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
    velmar::host::detail::setToolTimeoutMsForTest(0);

    EXPECT_TRUE(QuilConfigUtils::clearAdminStatus());
    EXPECT_FALSE(fs::exists(devicePath("/data/device/uid")));
}

}  // namespace
