#pragma once

#include <string>

#include "velmar/quil/Export.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

/// A user's privacy settings on this device.
///
/// Blocks for one signed request of at most 15 s; safe from several threads
/// at once; keeps no state.
class VELMAR_QUIL_EXPORT PrivacySettingsAPI {
  public:
    PrivacySettingsAPI() = delete;

    /// "POST" "/userprofile/user_privacy_on_device" with "userId" (unsigned
    /// decimal) and "value", signed.
    /// @param baseUrl the device cloud service (`sQuilAPIURL`)
    /// @param userId the user whose settings these are
    /// @param value the settings, sent as given (their form is the service's)
    /// @return ERROR_NONE (0) when the answer's "code" is 0; ERROR_HTTP_FAILED
    ///     (604) when no answer came, it is not JSON, or its "code" is not 0
    static utils::ErrorType setPrivacySettings(const std::string& baseUrl,
                                               unsigned long long userId, const std::string& value);
    /// "GET" "/userprofile/user_privacy_on_device" with "userId", signed.
    /// @param[out] settings the answer's "data" object alone, indented by four
    ///     spaces; untouched on failure
    /// @param baseUrl the device cloud service (`sQuilAPIURL`)
    /// @param userId the user whose settings to read
    /// @return ERROR_NONE (0); ERROR_HTTP_FAILED (604) when no answer came, it
    ///     is not JSON, its "code" is not 0 or its "data" is no object
    static utils::ErrorType getPrivacySettings(std::string& settings, const std::string& baseUrl,
                                               unsigned long long userId);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
