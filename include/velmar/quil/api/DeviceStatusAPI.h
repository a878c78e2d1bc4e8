#pragma once

#include <string>

#include "velmar/quil/Export.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

/// The device's status per category, as the cloud keeps it.
///
/// Blocks for one signed request of at most 15 s; safe from several threads
/// at once; keeps no state.
class VELMAR_QUIL_EXPORT DeviceStatusAPI {
  public:
    DeviceStatusAPI() = delete;

    /// "POST" "/device/device_status" with "catagory" (the service's
    /// spelling) and "status", signed. The answer is only logged.
    /// @param baseUrl the device cloud service (`sQuilAPIURL`)
    /// @param catagory the category
    /// @param status its new status, sent as given
    /// @return ERROR_NONE (0) when an answer came, whatever its "code";
    ///     ERROR_HTTP_FAILED (604) when none did
    static utils::ErrorType setDeviceStatus(const std::string& baseUrl, const std::string& catagory,
                                            const std::string& status);
    /// "GET" "/device/device_status" with "catagory", signed.
    /// @param[out] status the answer's string "data", whatever its "code";
    ///     untouched on failure
    /// @param baseUrl the device cloud service (`sQuilAPIURL`)
    /// @param catagory the category
    /// @return ERROR_NONE (0); ERROR_HTTP_FAILED (604) when no answer came or
    ///     it holds no string "data"
    static utils::ErrorType getDeviceStatus(std::string& status, const std::string& baseUrl,
                                            const std::string& catagory);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
