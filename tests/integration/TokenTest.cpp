// Service tokens through the host port against the local cloud.
#include "CloudFixture.h"
#include "velmar/quil/api/AIServiceTokenAPI.h"
#include "velmar/quil/api/TencentAccountAPI.h"
#include "velmar/quil/api/VEOTTokenAPI.h"
#include "velmar/quil/api/VemcTokenAPI.h"

using namespace velmar::quil::api;
using velmar::testing::SampleDevice;

namespace {

class TokenTest : public velmar::testing::CloudFixture {
  protected:
    std::string setting(const std::string& key) {
        return cloud().registry().find(SampleDevice::deviceId)->settings[key];
    }
};

TEST_F(TokenTest, CloudIssuesTokensAndHandsTheSessionTokenBack) {
    std::string token;
    long long expiresIn = 0;
    ASSERT_EQ(AIServiceTokenAPI::getServiceToken(token, expiresIn, baseUrl()), 0);
    EXPECT_EQ(token, setting("aiservice.token"));
    EXPECT_FALSE(token.empty());
    EXPECT_EQ(expiresIn, 7200);

    // Without an administrator the Tencent account cannot be linked and the
    // session token is refused.
    TencentAccount account;
    EXPECT_EQ(TencentAccountAPI::getTencentAccount(account, baseUrl()), 1002);
    EXPECT_EQ(VEOTTokenAPI::upload("veot-tok", "sess-1", "52001", baseUrl()), 1003);

    bindAdministrator(52001);
    ASSERT_EQ(TencentAccountAPI::getTencentAccount(account, baseUrl()), 0);
    EXPECT_EQ(account.txID, "tx-52001");
    EXPECT_EQ(account.txExpiresIn, 7776000);

    std::string vemc;
    ASSERT_EQ(VemcTokenAPI::getToken(vemc, baseUrl()), 0);
    EXPECT_EQ(vemc, setting("vemc.token"));

    std::string session;
    std::string veot;
    int expire = 0;
    EXPECT_EQ(VEOTTokenAPI::download(session, veot, expire, baseUrl()), 101);  // none uploaded
    ASSERT_EQ(VEOTTokenAPI::upload("veot-tok", "sess-1", "52001", baseUrl()), 0);
    ASSERT_EQ(VEOTTokenAPI::download(session, veot, expire, baseUrl()), 0);
    EXPECT_EQ(session, "sess-1");
    EXPECT_EQ(veot, "veot-tok");
    EXPECT_EQ(expire, 3600);
}

}  // namespace
