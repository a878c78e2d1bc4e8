// Service tokens through the host port against the local cloud; what the
// calls make of the answers is the unit tests' and the fault matrix's.
#include "CloudFixture.h"
#include "Endpoints.h"

using namespace velmar::quil::api;

namespace {

using TokenTest = velmar::testing::CloudFixture;

TEST_F(TokenTest, SessionTokenRefusalWithoutAnAdministratorIsLoggedUnmasked) {
    const std::string logged = logsOf([this] {
        EXPECT_EQ(VEOTTokenAPI::upload("veot-tok", "sess-1", "52001", baseUrl()), 1003);
    });
    // A credential's name that opens the cloud's prose is no name=value pair.
    EXPECT_NE(logged.find("\"token refused: user is not the administrator\""), std::string::npos)
        << logged;
}

}  // namespace
