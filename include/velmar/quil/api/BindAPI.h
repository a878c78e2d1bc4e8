#pragma once

#include <string>

#include "velmar/quil/Export.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

/// Binding of the device to a user account.
///
/// Blocks for one unsigned request of at most 15 s; safe from several threads
/// at once; keeps no state.
class VELMAR_QUIL_EXPORT BindAPI {
  public:
    BindAPI() = delete;

    /// "POST" `sQuilAPIURL` + "/bind/" with the form fields "payload",
    /// "userId" and a fresh "requestId" (also in the failure's log line, so
    /// that the service side can find the attempt); no cookies.
    /// @param[out] response the service's answer, whatever its HTTP status
    /// @param userId the account to bind to
    /// @param payload the binding payload the caller prepared
    /// @return ERROR_NONE (0) when the transport delivered an answer without
    ///     error; ERROR_HTTP_FAILED (604) otherwise
    static utils::ErrorType bind(std::string& response, long long userId,
                                 const std::string& payload);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
