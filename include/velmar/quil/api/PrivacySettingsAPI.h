#pragma once

#include <string>

#include "velmar/quil/Export.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

class VELMAR_QUIL_EXPORT PrivacySettingsAPI {
  public:
    PrivacySettingsAPI() = delete;

    // Stores `value` as the privacy settings of `userId` on this device; 0, the
    // request's failure, or 604 when the cloud refused or was not understood.
    static utils::ErrorType setPrivacySettings(const std::string& baseUrl,
                                               unsigned long long userId, const std::string& value);
    // The settings object of `userId`, indented, in `settings`; 604 when the
    // answer is refused or not understood.
    static utils::ErrorType getPrivacySettings(std::string& settings, const std::string& baseUrl,
                                               unsigned long long userId);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
