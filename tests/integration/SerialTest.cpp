// Serial-number lookups, the carrier file and Andlink IDs through the host
// port against the local cloud.
#include <iterator>

#include "CloudFixture.h"
#include "velmar/quil/api/CarrierOperator.h"
#include "velmar/quil/api/CmccAndlinkAPI.h"
#include "velmar/quil/api/DeviceSnCmei.h"
#include "velmar/quil/api/DeviceSnCtei.h"
#include "velmar/quil/api/DeviceSnProfile.h"

using namespace velmar::quil::api;
using velmar::testing::SampleDevice;
namespace fs = std::filesystem;

namespace {

using SerialTest = velmar::testing::CloudFixture;

TEST_F(SerialTest, LookupsGoToTheProductionOrThePreviewService) {
    quilcloud::Cloud::Options options;
    options.deviceStore = (root() / "data/device").string();
    options.workDir = (root() / "preview").string();
    fs::create_directories(options.workDir);
    quilcloud::Cloud preview(options);
    ASSERT_TRUE(preview.start()) << preview.error();
    writeConfig(
        {{"sQuilUserprofileURL", baseUrl()}, {"sQuilUserprofilePreviewURL", preview.baseUrl()}});

    std::string result;
    ASSERT_EQ(DeviceSnCmei::getDeviceCmeiBySn(result, false), 0);
    EXPECT_NE(result.find("\"cmei\":\""), std::string::npos) << result;
    ASSERT_EQ(DeviceSnCtei::getDeviceCteiBySn(result, true), 0);
    EXPECT_NE(result.find("\"ctei\":\""), std::string::npos) << result;
    ASSERT_EQ(DeviceSnProfile::getDeviceProfileBySn(result, true), 0);
    EXPECT_NE(result.find(SampleDevice::model), std::string::npos) << result;
    ASSERT_EQ(CarrierOperator::getCarrierOperatorStatus(result, false), 0);
    EXPECT_NE(result.find("\"status\":\"inactive\""), std::string::npos) << result;

    EXPECT_EQ(cloud().received("/device_sn/get_device_cmei").size(), 1u);
    EXPECT_EQ(cloud().received("/device_carrier/get_carrier_status").at(0).param("sn"),
              SampleDevice::sn);
    EXPECT_EQ(preview.received("/device_sn/get_device_ctei").size(), 1u);
    EXPECT_EQ(preview.received("/device_sn/get_profile").size(), 1u);
    EXPECT_EQ(cloud().received().size() + preview.received().size(), 4u);
}

TEST_F(SerialTest, CarrierStatusFileLiesUnderTheDeviceRoot) {
    CarrierOperator::setCarrierOperatorStatus("{ \"carrier\": \"CMCC\", \"plan\": 5 }");
    CarrierOperator::setCarrierOperatorStatus("{ broken");
    const std::string carrier = devicePath("/data/messagingagent/carrier");
    EXPECT_EQ(velmar::testing::readFile(carrier), "{\"carrier\":\"CMCC\",\"plan\":5}");
    EXPECT_EQ(std::distance(fs::directory_iterator(devicePath("/data/messagingagent")), {}), 1)
        << "nothing left behind but the file itself";

    fs::remove_all(devicePath("/data/messagingagent"));
    CarrierOperator::setCarrierOperatorStatus("{\"carrier\":\"CT\"}");  // logged, no crash
    EXPECT_FALSE(fs::exists(devicePath("/data/messagingagent/carrier")));
}

TEST_F(SerialTest, AndlinkIdIsStoredThenRead) {
    store("iot_did", "iot-7300123456");
    std::string id = "none";
    EXPECT_EQ(CmccAndlinkAPI::getDeviceID(id, baseUrl()), 0);  // refused: none stored yet
    EXPECT_EQ(id, "none");
    ASSERT_EQ(CmccAndlinkAPI::setDeviceID("CMCC-000123", baseUrl()), 0);
    ASSERT_EQ(CmccAndlinkAPI::getDeviceID(id, baseUrl()), 0);
    EXPECT_EQ(id, "CMCC-000123");
}

}  // namespace
