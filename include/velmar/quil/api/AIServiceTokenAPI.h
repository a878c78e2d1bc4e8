#pragma once

#include <string>

#include "velmar/quil/Export.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

/// The voice-assistant service token.
///
/// Blocks for one signed request of at most 15 s; safe from several threads
/// at once; keeps no state.
class VELMAR_QUIL_EXPORT AIServiceTokenAPI {
  public:
    AIServiceTokenAPI() = delete;

    /// "GET" "/device/aiservice/token/", no parameters of its own, signed.
    /// A refusal by the cloud (a "code" other than 0) is no failure of the
    /// call: it gives ERROR_NONE with an empty `token` and 0 in `expiresIn`.
    /// @param[out] token "data"."token" of the answer; emptied on a refusal
    /// @param[out] expiresIn "data"."expiresIn" (the service's unit); 0 on a refusal
    /// @param baseUrl the device cloud service (`sQuilAPIURL`)
    /// @return ERROR_NONE (0); ERROR_HTTP_FAILED (604) when no answer came;
    ///     ERROR_TOKEN_INVALID (1001) when it is not JSON, has no integer
    ///     "code", or lacks "data", "token" or "expiresIn" (what was read before stays written)
    static utils::ErrorType getServiceToken(std::string& token, long long& expiresIn,
                                            const std::string& baseUrl);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
