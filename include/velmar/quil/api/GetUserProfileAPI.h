#pragma once

#include <string>

#include "velmar/quil/Export.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

/// The account service's user profile: which user an access token belongs to.
///
/// Blocks for one unsigned request of at most 15 s; safe from several threads
/// at once; keeps no state.
class VELMAR_QUIL_EXPORT GetUserProfileAPI {
  public:
    GetUserProfileAPI() = delete;

    /// "GET" "user/profile" on the account service's fixed address
    /// ("https://account.velmar-cloud.test"; `VELMAR_RESOLVE` can point it
    /// elsewhere) with "clientId" and "token", no cookies. A transport failure
    /// alone decides nothing: whatever body came is read.
    /// @param[out] userId the answer's integer "data"."userId"; untouched on failure
    /// @param clientId the client the token was issued to
    /// @param token the user's access token
    /// @return ERROR_NONE (0); ERROR_GENERAL (101) when the answer gives no
    ///     integer user ID (a "result" of "error", a refused token, included);
    ///     ERROR_HTTP_FAILED (604) when the body is not JSON or has no string "result"
    static utils::ErrorType request(unsigned long long& userId, const std::string& clientId,
                                    const std::string& token);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
