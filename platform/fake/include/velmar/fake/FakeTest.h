#pragma once

#include <gtest/gtest.h>

#include <map>
#include <string>

#include "velmar/fake/Fake.h"

namespace velmar {
namespace fake {

// Base fixture for unit tests on the fake port: a blank platform per test.
class FakeTest : public ::testing::Test {
  protected:
    void SetUp() override { reset(); }
    void TearDown() override { reset(); }
};

// A device that can sign ("dev-42" and a 16-byte channel secret) and knows
// the cloud's address.
inline void giveIdentity() {
    setDeviceValue("deviceid", "dev-42");
    setDeviceValue("channel_secret", "0123456789abcdef");
    setConfig("sQuilAPIURL", "https://cloud.test");
}

// A blank platform given that identity.
class FakeDeviceTest : public FakeTest {
  protected:
    void SetUp() override {
        FakeTest::SetUp();
        giveIdentity();
    }
};

// What `call` sent, without the fresh "requestId" every signed request carries.
inline std::map<std::string, std::string> paramsOf(const Call& call) {
    auto params = call.decodedParams();
    params.erase("requestId");
    return params;
}

}  // namespace fake
}  // namespace velmar
