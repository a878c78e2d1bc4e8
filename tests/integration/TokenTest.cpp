// Service tokens through the host port against the local cloud: what the
// cloud holds for the device decides what the calls get.
#include "CloudFixture.h"
#include "Endpoints.h"

using namespace velmar::quil::api;

namespace {

using TokenTest = velmar::testing::CloudFixture;

TEST_F(TokenTest, SessionTokenComesBackOnlyAfterAnUploadForAnAdministeredDevice) {
    // Without an administrator the Tencent account cannot be linked and the
    // session token is refused.
    TencentAccount account;
    EXPECT_EQ(TencentAccountAPI::getTencentAccount(account, baseUrl()), 1002);
    EXPECT_EQ(VEOTTokenAPI::upload("veot-tok", "sess-1", "52001", baseUrl()), 1003);

    bindAdministrator(52001);
    ASSERT_EQ(TencentAccountAPI::getTencentAccount(account, baseUrl()), 0);
    EXPECT_EQ(account.txID, "tx-52001");
    std::string session;
    std::string token;
    int expire = 0;
    EXPECT_EQ(VEOTTokenAPI::download(session, token, expire, baseUrl()), 101);  // none uploaded
    ASSERT_EQ(VEOTTokenAPI::upload("veot-tok", "sess-1", "52001", baseUrl()), 0);
    ASSERT_EQ(VEOTTokenAPI::download(session, token, expire, baseUrl()), 0);
    EXPECT_EQ(session + " " + token + " " + std::to_string(expire), "sess-1 veot-tok 3600");
}

}  // namespace
