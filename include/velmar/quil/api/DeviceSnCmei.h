#pragma once

#include <string>

#include "velmar/quil/Export.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

/// The China Mobile equipment identifier (CMEI) of this serial number.
///
/// Blocks for one signed request of at most 15 s; safe from several threads
/// at once; keeps no state.
class VELMAR_QUIL_EXPORT DeviceSnCmei {
  public:
    DeviceSnCmei() = delete;

    /// "GET" "/device_sn/get_device_cmei" with "deviceSn" (the serial number,
    /// QuilConfigUtils::getSN()), signed, to the user-profile service named in
    /// the messaging configuration.
    /// @param[out] result the raw answer, not parsed; empty when no answer
    ///     came; untouched when the serial number is unreadable
    /// @param preview ask the preview instance (`sQuilUserprofilePreviewURL`)
    ///     instead of the production one (`sQuilUserprofileURL`)
    /// @return ERROR_NONE (0) when an answer came, whatever its "code";
    ///     ERROR_GENERAL (101) when the serial number is unreadable (nothing
    ///     sent); ERROR_HTTP_FAILED (604) when no answer came
    static utils::ErrorType getDeviceCmeiBySn(std::string& result, bool preview);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
