#pragma once

#include <string>

#include "velmar/quil/Export.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

/// The work-day calendar.
///
/// Blocks for one signed request of at most 15 s; safe from several threads
/// at once; keeps no state.
class VELMAR_QUIL_EXPORT WorkDayConfigAPI {
  public:
    WorkDayConfigAPI() = delete;

    /// "GET" "/device/workday/config" with "version", signed.
    /// @param[out] config the raw answer, not parsed; empty on failure, and
    ///     empty on HTTP 304 (the caller's copy is current)
    /// @param baseUrl the device cloud service (`sQuilAPIURL`)
    /// @param version the version of the calendar the caller holds
    /// @return ERROR_NONE (0) when an answer came (304 included), whatever its
    ///     "code"; ERROR_HTTP_FAILED (604) when none did
    static utils::ErrorType getWorkDayConfig(std::string& config, const std::string& baseUrl,
                                             const std::string& version);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
