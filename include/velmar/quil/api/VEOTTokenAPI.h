#pragma once

#include <string>

#include "velmar/quil/Export.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

/// The IoT platform's session token, kept by the cloud for the device.
///
/// Blocks for one signed request of at most 15 s; safe from several threads
/// at once; keeps no state.
class VELMAR_QUIL_EXPORT VEOTTokenAPI {
  public:
    VEOTTokenAPI() = delete;

    /// "POST" "/device/veot/token/upload/" (with the final "/") with "token",
    /// "sessionId" and "userId" as given, signed.
    /// @param token the IoT platform's session token
    /// @param sessionId its session ID
    /// @param userId the user it belongs to
    /// @param baseUrl the device cloud service (`sQuilAPIURL`)
    /// @return ERROR_NONE (0) for "code" 0; ERROR_TOKEN_REFUSED (1003) for
    ///     "code" 1; ERROR_GENERAL (101) for any other "code";
    ///     ERROR_HTTP_FAILED (604) when no answer came; ERROR_INVALID_RESPONSE
    ///     (610) when it is not JSON with an integer "code"
    static utils::ErrorType upload(const std::string& token, const std::string& sessionId,
                                   const std::string& userId, const std::string& baseUrl);
    /// "GET" "/device/veot/token/download" (no final "/"), no parameters of
    /// its own, signed. Only the members present in the answer's "data" are
    /// written, in the answer's order.
    /// @param[out] sessionId "data"."sessionID"
    /// @param[out] token "data"."token"
    /// @param[out] expire "data"."expire"
    /// @param baseUrl the device cloud service (`sQuilAPIURL`)
    /// @return ERROR_NONE (0); ERROR_GENERAL (101) when "code" is not 0;
    ///     ERROR_HTTP_FAILED (604) when no answer came; ERROR_INVALID_RESPONSE
    ///     (610) when it is not JSON, lacks an integer "code", a string
    ///     "message" or an object "data", or one of the three has another type
    ///     (those before it stay written)
    static utils::ErrorType download(std::string& sessionId, std::string& token, int& expire,
                                     const std::string& baseUrl);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
