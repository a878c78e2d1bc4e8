// Push notifications through the host port to the local cloud.
#include "CloudFixture.h"
#include "velmar/quil/VePushUtils.h"
#include "velmar/quil/api/NotificationAPI.h"

using velmar::testing::SampleDevice;
namespace quil = velmar::quil;

namespace {

class NotificationTest : public velmar::testing::CloudFixture {};

TEST_F(NotificationTest, NotificationsLandWithTheTextInExtraAttributes) {
    std::string response;
    ASSERT_TRUE(quil::VePushUtils::notify(response, quil::VE_PUSH_ALARM, "alarm at 07:00"));
    EXPECT_NE(response.find("\"notificationId\":1"), std::string::npos) << response;
    ASSERT_EQ(quil::api::NotificationAPI::send(response, baseUrl(), quil::VE_PUSH_UPGRADE, "Update",
                                               "2.15 installed", "{}"),
              0);
    EXPECT_NE(response.find("\"notificationId\":2"), std::string::npos) << response;

    auto received = cloud().received("/device/land_notification/");
    ASSERT_EQ(received.size(), 2u);
    EXPECT_EQ(received[0].param("extraAttributes"), "alarm at 07:00");
    EXPECT_EQ(received[1].param("title"), "Update");
    auto device = cloud().registry().find(SampleDevice::deviceId);
    EXPECT_EQ(device->settings["notification.last.type"], "4");
}

}  // namespace
