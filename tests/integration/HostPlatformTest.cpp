// The Linux port's device store, configuration, commands and files under a
// sandbox root.
#include <stdlib.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>

#include "CloudFixture.h"
#include "velmar/device/DeviceInfo.h"
#include "velmar/utils/ConfigFile.h"
#include "velmar/utils/ExecUtils.h"
#include "velmar/utils/FileUtils.h"
#include "velmar/utils/UUIDUtils.h"

namespace fs = std::filesystem;
using namespace velmar::utils;

namespace {

class HostPlatformTest : public velmar::testing::CloudFixture {};

TEST_F(HostPlatformTest, DeviceStoreKeepsEachFunctionsStatusConvention) {
    char buf[64];
    ASSERT_EQ(deviceid_get(buf, sizeof(buf)), 0);
    EXPECT_STREQ(buf, "7300123456");            // the trailing newline is not part of the value
    EXPECT_EQ(imei_get(buf, sizeof(buf)), -1);  // missing file
    store("imei", std::string(64, '9'));
    EXPECT_EQ(imei_get(buf, sizeof(buf)), -1);  // does not fit
    EXPECT_EQ(imei_get(nullptr, 10), -1);

    EXPECT_LT(device_token_get(buf, sizeof(buf)), 0);
    EXPECT_GE(device_token_set("tok"), 0);
    EXPECT_EQ(device_token_get(buf, sizeof(buf)), 3);
    EXPECT_GT(uid_set("-1"), 0);
    EXPECT_EQ(uid_get(buf, sizeof(buf)), 0);
    EXPECT_STREQ(buf, "-1");
    EXPECT_EQ(uid_clean(), 0);
    EXPECT_EQ(uid_clean(), 0);  // nothing to clean is fine
    EXPECT_NE(uid_get(buf, sizeof(buf)), 0);

    EXPECT_EQ(uid_isvalid_str("12345"), 0);
    EXPECT_EQ(uid_isvalid_str("-1"), 0);
    EXPECT_NE(uid_isvalid_str(""), 0);
    EXPECT_NE(uid_isvalid_str("12a"), 0);
    EXPECT_NE(uid_isvalid_str("-"), 0);

    store("rssi", "-61");
    EXPECT_EQ(rssi_get(), -61);
    // Writes leave no temporary file behind.
    EXPECT_EQ(broker_port_set("8883"), 0);
    int files = 0;
    for (auto& entry : fs::directory_iterator(root() / "data/device")) {
        (void)entry;
        ++files;
    }
    EXPECT_EQ(files, 10);  // the fixture's six, device_token, rssi, imei, broker_port
}

TEST_F(HostPlatformTest, FilesAndConfigurationLiveUnderTheRoot) {
    std::ofstream(devicePath("/data/status/ota")) << "idle\n";
    char buf[8];
    EXPECT_EQ(file_read_string("/data/status/ota", buf, sizeof(buf)), 5);
    EXPECT_EQ(file_read_string("/data/status/ota", buf, 3), 2);  // bounded by the buffer
    EXPECT_STREQ(buf, "id");
    EXPECT_EQ(file_read_string("/data/status/none", buf, sizeof(buf)), -1);

    EXPECT_TRUE(FileUtils::writeAtomically("/data/messagingagent/carrier", "{\"a\":1}"));
    std::ifstream in(devicePath("/data/messagingagent/carrier"));
    std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    EXPECT_EQ(text, "{\"a\":1}");
    EXPECT_FALSE(FileUtils::writeAtomically("/no/such/dir/file", "x"));

    {
        std::ofstream conf(devicePath("/usr/share/quil/messaging/messaging.conf"));
        conf << "# comment\n\n  sQuilAPIURL =  https://cloud.test  \nsTimeSyncURL=\nbroken line\n";
    }
    ConfigFile config("/usr/share/quil/messaging/messaging.conf");
    EXPECT_EQ(config.get(ConfigFile::sQuilAPIURL), "https://cloud.test");
    EXPECT_EQ(config.get(ConfigFile::sTimeSyncURL), "");
    EXPECT_EQ(config.get(ConfigFile::sVeWiFiLOGURL), "");
    EXPECT_EQ(ConfigFile("/missing.conf").get(ConfigFile::sQuilAPIURL), "");
}

TEST_F(HostPlatformTest, ExecRunsDeviceToolsFromTheRootAndReportsTheirStatus) {
    const fs::path tool = devicePath("/usr/bin/vebrain_level");
    std::ofstream(tool) << "#!/bin/sh\necho \"{\\\"level\\\":\\\"$1\\\"}\"\nexit 3\n";
    fs::permissions(tool, fs::perms::owner_all);
    std::string output;
    EXPECT_EQ(ExecUtils::exec(output, "/usr/bin/vebrain_level get"), 3);
    EXPECT_EQ(output, "{\"level\":\"get\"}\n");
    EXPECT_NE(ExecUtils::exec(output, "/usr/bin/not-there"), 0);

    std::ofstream(devicePath("/usr/bin/bind_device.sh")) << "#!/bin/sh\necho $1 > \"$0.last\"\n";
    fs::permissions(devicePath("/usr/bin/bind_device.sh"), fs::perms::owner_all);
    EXPECT_EQ(bind_uid(), 0);
    std::ifstream last(devicePath("/usr/bin/bind_device.sh.last"));
    std::string word;
    last >> word;
    EXPECT_EQ(word, "bind");
}

TEST(HostUuidTest, UuidsAreVersionFourLowerCaseAndDistinct) {
    std::string a = UUIDUtils::generate();
    std::string b = UUIDUtils::generate();
    ASSERT_EQ(a.size(), 36u);
    EXPECT_NE(a, b);
    EXPECT_EQ(a[14], '4');
    EXPECT_NE(std::string("89ab").find(a[19]), std::string::npos);
    for (char c : a)
        EXPECT_TRUE(c == '-' || (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f'));
}

}  // namespace
