// The local cloud's own reading of the device store, which every other
// suite leans on: every signed request is checked against it, so a misread
// store would look like a library that signs wrong. Its routing, scripted faults, DNS responder and
// TLS are exercised through the library by the fault matrix, the transport tests and the endpoint
// suites; the binary is run whole by the demo's test.
#include <gtest/gtest.h>

#include "CloudFixture.h"

namespace {

using quilcloud::Cloud;
using velmar::testing::SampleDevice;

using CloudSkeletonSandboxTest = velmar::testing::CloudFixture;

TEST_F(CloudSkeletonSandboxTest, DeviceStoreIsRegisteredBeforeStart) {
    store("sn", std::string(SampleDevice::sn) + "\n");  // two newlines in the file
    store("uid", "88123");
    Cloud::Options options;
    options.deviceStore = devicePath("/data/device").string();
    Cloud cloud(options);
    auto device = cloud.registry().find(SampleDevice::deviceId);
    ASSERT_TRUE(device);
    EXPECT_EQ(device->sn, std::string(SampleDevice::sn) + "\n") << "exactly one newline goes";
    EXPECT_EQ(device->channelSecret, SampleDevice::channelSecret);
    EXPECT_EQ(device->superAdmin, 88123);
}

}  // namespace
