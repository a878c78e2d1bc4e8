// Device status through the host port against the local cloud: kept per
// catagory.
#include "CloudFixture.h"
#include "velmar/quil/api/DeviceStatusAPI.h"

using namespace velmar::quil::api;

namespace {

class StatusTest : public velmar::testing::CloudFixture {};

TEST_F(StatusTest, StatusIsKeptPerCatagory) {
    std::string status;
    EXPECT_EQ(DeviceStatusAPI::getDeviceStatus(status, baseUrl(), "volume"), 604);  // none yet
    ASSERT_EQ(DeviceStatusAPI::setDeviceStatus(baseUrl(), "volume", "40"), 0);
    ASSERT_EQ(DeviceStatusAPI::setDeviceStatus(baseUrl(), "mute", "on"), 0);
    ASSERT_EQ(DeviceStatusAPI::getDeviceStatus(status, baseUrl(), "volume"), 0);
    EXPECT_EQ(status, "40");
    ASSERT_EQ(DeviceStatusAPI::getDeviceStatus(status, baseUrl(), "mute"), 0);
    EXPECT_EQ(status, "on");
}

}  // namespace
