#pragma once

#include <gtest/gtest.h>

#include "velmar/fake/Fake.h"

namespace velmar {
namespace fake {

// Base fixture for unit tests on the fake port: a blank platform per test.
class FakeTest : public ::testing::Test {
  protected:
    void SetUp() override { reset(); }
    void TearDown() override { reset(); }
};

}  // namespace fake
}  // namespace velmar
