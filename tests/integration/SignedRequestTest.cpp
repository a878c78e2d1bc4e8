// The signed request end to end: the host port, the device store and the
// local cloud's own signature check.
#include "CloudFixture.h"
#include "velmar/quil/api/PingAPI.h"
#include "velmar/quil/api/PresenceAPI.h"

using velmar::quil::api::PingAPI;
using velmar::quil::api::PresenceAPI;

namespace {

template <typename Base>
class SignedRequestTest : public Base {};

using Transports =
    ::testing::Types<velmar::testing::CloudFixture, velmar::testing::TlsCloudFixture>;
TYPED_TEST_SUITE(SignedRequestTest, Transports);

TYPED_TEST(SignedRequestTest, CloudAcceptsTheDeviceSignature) {
    std::string response;
    ASSERT_EQ(PresenceAPI::getPresence(response, this->baseUrl()), 0);
    EXPECT_NE(response.find("\"online\":true"), std::string::npos) << response;

    ASSERT_EQ(PingAPI::pingDevice(response, this->baseUrl(), "2"), 0);
    EXPECT_NE(response.find("\"pingLevel\":\"2\""), std::string::npos) << response;

    auto received = this->cloud().received("/device/ping/");
    ASSERT_EQ(received.size(), 1u);
    EXPECT_EQ(received[0].method, "POST");
    EXPECT_EQ(received[0].param("pingLevel"), "2");
    EXPECT_EQ(received[0].cookies.at("sn"), velmar::testing::SampleDevice::sn);
    EXPECT_EQ(received[0].cookies.at("userId"), "0");
}

}  // namespace
