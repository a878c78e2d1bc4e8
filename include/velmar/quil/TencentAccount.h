#pragma once

#include <string>

namespace velmar {
namespace quil {
namespace api {

/// The Tencent account linked to the device's administrator, filled by
/// TencentAccountAPI::getTencentAccount() exactly as the cloud hands it over
/// (nothing converted or checked). Each member comes from the member of the
/// same name in the answer's "data".
struct TencentAccount {
    std::string txAppID;         ///< Tencent application ID
    std::string txID;            ///< the account's ID at Tencent
    std::string txIDType;        ///< what kind of ID txID is
    std::string txVendorUID;     ///< the vendor's user ID for the account
    std::string txAccessToken;   ///< access token (a credential: never log it whole)
    std::string txRefreshToken;  ///< refresh token (a credential: never log it whole)
    long long txExpiresIn = 0;   ///< the access token's lifetime, in the service's unit
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
