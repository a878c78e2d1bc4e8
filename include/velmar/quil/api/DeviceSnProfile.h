#pragma once

#include <string>

#include "velmar/quil/Export.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

/// The device's profile on the user-profile service.
///
/// Blocks for one signed request of at most 15 s; safe from several threads
/// at once; keeps no state.
class VELMAR_QUIL_EXPORT DeviceSnProfile {
  public:
    DeviceSnProfile() = delete;

    /// "GET" "/device_sn/get_profile", no parameters of its own, signed, to the
    /// user-profile service: the service finds the device from the cookies, so
    /// no serial number is needed.
    /// @param[out] result the raw answer, not parsed; empty on failure
    /// @param preview ask the preview instance (`sQuilUserprofilePreviewURL`)
    ///     instead of the production one (`sQuilUserprofileURL`)
    /// @return ERROR_NONE (0) when an answer came, whatever its "code";
    ///     ERROR_HTTP_FAILED (604) when none did
    static utils::ErrorType getDeviceProfileBySn(std::string& result, bool preview);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
