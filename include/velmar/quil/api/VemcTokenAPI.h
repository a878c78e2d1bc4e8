#pragma once

#include <string>

#include "velmar/quil/Export.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

/// The messaging-cloud token of the administrator on this device.
///
/// Blocks for one signed request of at most 15 s; safe from several threads
/// at once; keeps no state.
class VELMAR_QUIL_EXPORT VemcTokenAPI {
  public:
    VemcTokenAPI() = delete;

    /// "GET" "/vemc/token/linux" with "userId" (the stored administrator) and
    /// "clientId" (the device ID), signed. An answer refused or not understood
    /// is logged and still gives ERROR_NONE: callers tell it by `token`.
    /// @param[out] token the answer's string "data" when its "code" is 0;
    ///     untouched otherwise
    /// @param baseUrl the device cloud service (`sQuilAPIURL`)
    /// @return ERROR_NONE (0) when an answer came; ERROR_GENERAL (101) without
    ///     a stored administrator or device ID (nothing sent);
    ///     ERROR_HTTP_FAILED (604) when no answer came
    static utils::ErrorType getToken(std::string& token, const std::string& baseUrl);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
