// The host port keeps settled device-store values between calls: whatever
// changes a file (a rewrite in place, a replacement, a removal) is seen by the
// next read.
#include <stdlib.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <thread>

#include <gtest/gtest.h>

#include "velmar/device/DeviceInfo.h"

namespace fs = std::filesystem;

namespace {

std::string deviceId() {
    char buf[64];
    return deviceid_get(buf, sizeof(buf)) == 0 ? std::string(buf) : std::string("<failed>");
}

TEST(DeviceStoreCacheTest, SettledValuesFollowEveryChangeOfTheirFile) {
    char pattern[] = "/tmp/velmar-cache-XXXXXX";
    ASSERT_NE(mkdtemp(pattern), nullptr);
    const fs::path root = pattern;
    fs::create_directories(root / "data/device");
    setenv("VELMAR_ROOT", root.c_str(), 1);
    const fs::path file = root / "data/device/deviceid";

    const auto settle = [] { std::this_thread::sleep_for(std::chrono::milliseconds(1100)); };
    std::ofstream(file) << "7300123456\n";
    EXPECT_EQ(deviceId(), "7300123456");  // fresh: read, not kept
    settle();
    EXPECT_EQ(deviceId(), "7300123456");  // settled: kept from now on

    // Rewritten in place with a value of the same length: seen at once, and
    // still once the rewrite has settled in turn.
    {
        std::fstream in(file, std::ios::in | std::ios::out);
        in << "7300654321\n";
    }
    EXPECT_EQ(deviceId(), "7300654321");
    settle();
    EXPECT_EQ(deviceId(), "7300654321");
    // Replaced by the store's own setter (a new file renamed over it).
    EXPECT_EQ(deviceid_set("7300999999"), 0);
    EXPECT_EQ(deviceId(), "7300999999");
    // Removed.
    fs::remove(file);
    char buf[64];
    EXPECT_NE(deviceid_get(buf, sizeof(buf)), 0);
    EXPECT_STREQ(buf, "");

    unsetenv("VELMAR_ROOT");
    fs::remove_all(root);
}

}  // namespace
