#pragma once

#include <string>

#include "velmar/quil/Export.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

/// The device's presence on the device cloud service.
///
/// Blocks for one signed request of at most 15 s; safe from several threads
/// at once; keeps no state.
class VELMAR_QUIL_EXPORT PresenceAPI {
  public:
    PresenceAPI() = delete;

    /// "GET" "/device/presence/", signed (DeviceAPI::request()), no
    /// parameters of its own.
    /// @param[out] response the raw answer, not parsed; empty on failure
    /// @param baseUrl the device cloud service (`sQuilAPIURL`)
    /// @return ERROR_NONE (0) when an answer came, whatever its "code";
    ///     ERROR_HTTP_FAILED (604) when none did
    static utils::ErrorType getPresence(std::string& response, const std::string& baseUrl);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
