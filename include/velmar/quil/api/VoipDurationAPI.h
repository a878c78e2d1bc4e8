#pragma once

#include <string>

#include "velmar/quil/Export.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

/// The voice-call time of the account that administers the device, this month.
///
/// Blocks for one signed request of at most 15 s; safe from several threads
/// at once; keeps no state.
class VELMAR_QUIL_EXPORT VoipDurationAPI {
  public:
    VoipDurationAPI() = delete;

    /// "GET" "/duration/current_month/status/linux" with "userId" (the stored
    /// administrator), signed.
    /// @param[out] response the raw answer, not parsed; untouched on failure
    /// @param baseUrl the device cloud service (`sQuilAPIURL`)
    /// @return ERROR_NONE (0) when an answer came, whatever its "code";
    ///     ERROR_GENERAL (101) without a stored administrator (nothing sent);
    ///     ERROR_HTTP_FAILED (604) when no answer came
    static utils::ErrorType getStatus(std::string& response, const std::string& baseUrl);
    /// "GET" "/duration/current_month/add/linux" with "userId" (the stored
    /// administrator) and "durationInSec", signed: adding is a GET, as the
    /// service is built.
    /// @param[out] response the raw answer, not parsed; untouched on failure
    /// @param baseUrl the device cloud service (`sQuilAPIURL`)
    /// @param durationInSec the seconds to add, sent as given (not changed)
    /// @return as getStatus()
    static utils::ErrorType add(std::string& response, const std::string& baseUrl,
                                std::string& durationInSec);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
