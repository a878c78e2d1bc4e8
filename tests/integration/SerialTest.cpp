// The carrier file and Andlink IDs through the host port against the local
// cloud.
#include <iterator>

#include "CloudFixture.h"
#include "Endpoints.h"

using namespace velmar::quil::api;
namespace fs = std::filesystem;

namespace {

using SerialTest = velmar::testing::CloudFixture;

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
