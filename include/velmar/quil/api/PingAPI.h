#pragma once

#include <string>

#include "velmar/quil/Export.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

/// The device's ping to the device cloud service.
///
/// Blocks for one signed request of at most 15 s; safe from several threads
/// at once; keeps no state.
class VELMAR_QUIL_EXPORT PingAPI {
  public:
    PingAPI() = delete;

    /// "POST" "/device/ping/" with "pingLevel", signed.
    /// @param[out] response the raw answer, not parsed; empty on failure
    /// @param baseUrl the device cloud service (`sQuilAPIURL`)
    /// @param pingLevel sent as given (its meaning is the service's)
    /// @return ERROR_NONE (0) when an answer came, whatever its "code";
    ///     ERROR_HTTP_FAILED (604) when none did
    static utils::ErrorType pingDevice(std::string& response, const std::string& baseUrl,
                                       const std::string& pingLevel);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
