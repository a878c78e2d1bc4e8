#include "FakeHelpers.h"

using namespace velmar::quil::api;

namespace {

const char kCarrierFile[] = "/data/messagingagent/carrier";

class SerialTest : public fake::FakeDeviceTest {
  protected:
    void SetUp() override {
        FakeDeviceTest::SetUp();
        fake::setDeviceValue("sn", "SN0001");
        fake::setDeviceValue("iot_did", "iot-42");
        fake::setDeviceValue("model", "speaker.v2");
    }
};

TEST_F(SerialTest, LookupsBySerialNumberNeedOne) {
    fake::clearDeviceValue("sn");  // and no MAC to fall back on
    std::string result = "kept";
    EXPECT_EQ(DeviceSnCmei::getDeviceCmeiBySn(result, false), 101);
    EXPECT_EQ(DeviceSnCtei::getDeviceCteiBySn(result, false), 101);
    EXPECT_EQ(CarrierOperator::getCarrierOperatorStatus(result, false), 101);
    EXPECT_EQ(result, "kept");
    EXPECT_TRUE(fake::calls().empty());
}

TEST_F(SerialTest, CarrierStatusIsStoredCompactAndOnlyWhenItIsJson) {
    CarrierOperator::setCarrierOperatorStatus("{ \"carrier\" : \"CMCC\",\n \"bands\" : [ 1, 3 ] }");
    EXPECT_EQ(fake::writtenFile(kCarrierFile), "{\"carrier\":\"CMCC\",\"bands\":[1,3]}");

    CarrierOperator::setCarrierOperatorStatus("carrier=CMCC");
    EXPECT_EQ(fake::writtenFile(kCarrierFile), "{\"carrier\":\"CMCC\",\"bands\":[1,3]}");
    EXPECT_TRUE(fake::logged("Invalid carrier operator status: carrier=CMCC", 4));

    fake::failFileWrites(true);
    CarrierOperator::setCarrierOperatorStatus("{\"carrier\":\"CT\"}");
    EXPECT_TRUE(fake::logged("Write carrier operator to file error: unable to open file", 4));
}

TEST_F(SerialTest, AndlinkKeepsItsKeySpellingsAndIgnoresRefusals) {
    std::string id = "kept";
    fake::pushBody("{\"code\":0,\"data\":123}");
    EXPECT_EQ(CmccAndlinkAPI::getDeviceID(id, kBase), 0);
    fake::pushBody("{\"code\":1,\"data\":\"refused\"}");
    EXPECT_EQ(CmccAndlinkAPI::getDeviceID(id, kBase), 0);
    EXPECT_EQ(id, "kept");
    EXPECT_TRUE(fake::logged("Invalid response: {\"code\":0,\"data\":123}", 4));
    EXPECT_TRUE(fake::logged("Get andlink did response: {\"code\":0,\"data\":123}", 2));
    fake::pushBody("{\"code\":0,\"data\":\"CMCC-9\"}");
    EXPECT_EQ(CmccAndlinkAPI::getDeviceID(id, kBase), 0);
    EXPECT_EQ(id, "CMCC-9");

    fake::pushBody("{\"code\":7}");
    EXPECT_EQ(CmccAndlinkAPI::setDeviceID("CMCC-9", kBase), 0);
    EXPECT_TRUE(fake::logged("Invalid response: {\"code\":7}", 4));

    fake::pushFailure();
    EXPECT_EQ(CmccAndlinkAPI::setDeviceID("CMCC-9", kBase), 604);
    EXPECT_TRUE(fake::logged("HTTP request failed: Error (code: 604", 4));

    size_t sent = fake::calls().size();
    fake::clearDeviceValue("model");
    EXPECT_EQ(CmccAndlinkAPI::setDeviceID("CMCC-9", kBase), 101);
    EXPECT_TRUE(fake::logged("Failed to get hardware", 4));
    fake::clearDeviceValue("iot_did");
    EXPECT_EQ(CmccAndlinkAPI::getDeviceID(id, kBase), 101);
    EXPECT_TRUE(fake::logged("Failed to get veot did", 4));
    EXPECT_EQ(fake::calls().size(), sent);
}

}  // namespace
