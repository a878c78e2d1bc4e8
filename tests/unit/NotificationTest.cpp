#include "velmar/fake/FakeTest.h"
#include "velmar/quil/VePushUtils.h"
#include "velmar/quil/api/NotificationAPI.h"

using velmar::quil::VePushUtils;
using velmar::quil::api::NotificationAPI;
namespace fake = velmar::fake;
namespace quil = velmar::quil;

namespace {

using NotificationTest = fake::FakeDeviceTest;

TEST_F(NotificationTest, NotifyPutsTheTextInExtraAttributesAndLeavesTitleAndAbstractEmpty) {
    fake::pushBody("{\"code\":0}");
    std::string response;
    EXPECT_TRUE(VePushUtils::notify(response, quil::VE_PUSH_REMINDER, "tea is ready"));
    EXPECT_EQ(response, "{\"code\":0}");

    ASSERT_EQ(fake::calls().size(), 1u);
    EXPECT_EQ(
        fake::paramsOf(fake::calls()[0]),
        (std::map<std::string, std::string>{
            {"abstract", ""}, {"extraAttributes", "tea is ready"}, {"title", ""}, {"type", "2"}}));
    ASSERT_FALSE(fake::configOpens().empty());
    EXPECT_EQ(fake::configOpens().back(), "/usr/share/quil/messaging/messaging.conf");
}

TEST_F(NotificationTest, TransportFailureEmptiesTheResponse) {
    fake::pushFailure();
    std::string response = "stale";
    EXPECT_EQ(
        NotificationAPI::send(response, "https://cloud.test", quil::VE_PUSH_ALARM, "t", "a", "x"),
        604);
    EXPECT_EQ(response, "");
    fake::pushFailure();
    response = "stale";
    EXPECT_FALSE(VePushUtils::notify(response, quil::VE_PUSH_ALARM, "x"));
    EXPECT_EQ(response, "");
}

}  // namespace
