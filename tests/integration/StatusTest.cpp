// Device status, the work-day calendar and the stereo server through the
// host port against the local cloud.
#include "CloudFixture.h"
#include "velmar/quil/api/DeviceStatusAPI.h"
#include "velmar/quil/api/StereoAPI.h"
#include "velmar/quil/api/WorkDayConfigAPI.h"

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

TEST_F(StatusTest, WorkDayConfigIsNotSentAgainWhenCurrent) {
    std::string config;
    ASSERT_EQ(WorkDayConfigAPI::getWorkDayConfig(config, baseUrl(), ""), 0);
    EXPECT_NE(config.find("\"version\":\"2026.1\""), std::string::npos) << config;
    config = "stale";
    ASSERT_EQ(WorkDayConfigAPI::getWorkDayConfig(config, baseUrl(), "2026.1"), 0);
    EXPECT_EQ(config, "");
}

TEST_F(StatusTest, StereoServerIsSetUpForTheHardware) {
    std::string response;
    ASSERT_EQ(StereoAPI::SetServer(response, baseUrl()), 0);
    EXPECT_NE(response.find("\"server\":\"stereo-"), std::string::npos) << response;
    EXPECT_EQ(cloud().received("/iot/dcm/set_stereo_server").at(0).param("hardware"),
              velmar::testing::SampleDevice::model);
}

}  // namespace
