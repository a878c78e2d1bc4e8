#pragma once

#include <string>

#include "velmar/quil/Export.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

/// The China Mobile Andlink device ID the cloud keeps for this device.
///
/// Blocks for one signed request of at most 15 s; safe from several threads
/// at once; keeps no state.
class VELMAR_QUIL_EXPORT CmccAndlinkAPI {
  public:
    CmccAndlinkAPI() = delete;

    /// "GET" "/device/andlink/cmcc_device_id" with "hardware" and "veotDID"
    /// (the IoT device ID), signed. An answer refused or not understood is
    /// logged and still gives ERROR_NONE: callers tell it by `cmccDeviceId`.
    /// @param[out] cmccDeviceId the answer's string "data" when its "code" is
    ///     0; untouched otherwise
    /// @param baseUrl the device cloud service (`sQuilAPIURL`)
    /// @return ERROR_NONE (0) when an answer came; ERROR_GENERAL (101) when
    ///     the IoT device ID or the hardware model is unreadable (nothing
    ///     sent); ERROR_HTTP_FAILED (604) when no answer came
    static utils::ErrorType getDeviceID(std::string& cmccDeviceId, const std::string& baseUrl);
    /// "GET" "/app/set_cmcc_id/linux" with "veotDid" (spelled so by this side
    /// of the service) and "cmccDeviceId", signed: storing is a GET, as the
    /// service is built. A refusal is only logged.
    /// @param cmccDeviceId the ID to store
    /// @param baseUrl the device cloud service (`sQuilAPIURL`)
    /// @return as getDeviceID(); the hardware model must be readable too,
    ///     though it is not sent
    static utils::ErrorType setDeviceID(const std::string& cmccDeviceId,
                                        const std::string& baseUrl);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
