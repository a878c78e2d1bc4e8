#include "FakeHelpers.h"

using namespace velmar::quil::api;

namespace {

using StatusTest = fake::FakeDeviceTest;

TEST_F(StatusTest, DeviceStatusUsesTheCatagorySpellingAndChecksOnlyData) {
    fake::pushBody("{\"code\":0}");
    EXPECT_EQ(DeviceStatusAPI::setDeviceStatus(kBase, "volume", "40"), 0);
    EXPECT_TRUE(fake::logged(
        "Set device status result [catagory: volume; status: 40; response: {\"code\":0}; "
        "error code: Error (code: 0, ",
        2));

    std::string status = "kept";
    fake::pushBody("{\"code\":0,\"data\":5}");
    EXPECT_EQ(DeviceStatusAPI::getDeviceStatus(status, kBase, "volume"), 604);
    EXPECT_TRUE(fake::logged("Invalid response: {\"code\":0,\"data\":5}", 4));
    EXPECT_EQ(status, "kept");
    // "code" is not read: a text "data" is the answer.
    fake::pushBody("{\"code\":1,\"data\":\"40\"}");
    EXPECT_EQ(DeviceStatusAPI::getDeviceStatus(status, kBase, "volume"), 0);
    EXPECT_EQ(status, "40");
}

TEST_F(StatusTest, WorkDayConfigNotModifiedWinsOverTheRequestStatus) {
    fake::pushAnswer({false, 304, "", velmar::utils::ERROR_HTTP_FAILED, ""});
    std::string config = "stale";
    EXPECT_EQ(WorkDayConfigAPI::getWorkDayConfig(config, kBase, "2026.1"), 0);
    EXPECT_EQ(config, "");
}

}  // namespace
