#pragma once

#include <string>

namespace velmar {
namespace quil {
namespace api {

// The Tencent account linked to the device's administrator, exactly as the
// cloud hands it over (nothing converted or checked).
struct TencentAccount {
    std::string txAppID;
    std::string txID;
    std::string txIDType;
    std::string txVendorUID;
    std::string txAccessToken;
    std::string txRefreshToken;
    long long txExpiresIn = 0;
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
