#pragma once

#include <string>

#include "velmar/quil/Export.h"
#include "velmar/quil/VePushType.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

/// Notifications the cloud lands on the user's phone (VePushUtils::notify()
/// is the short way).
///
/// Blocks for one signed request of at most 15 s; safe from several threads
/// at once; keeps no state.
class VELMAR_QUIL_EXPORT NotificationAPI {
  public:
    NotificationAPI() = delete;

    /// "POST" "/device/land_notification/" with "type" (decimal), "title",
    /// "abstract" and "extraAttributes" as given, signed.
    /// @param[out] response the raw answer, not parsed; empty on failure
    /// @param baseUrl the device cloud service (`sQuilAPIURL`)
    /// @param type the kind of notification
    /// @param title its title
    /// @param abstract its summary
    /// @param extraAttributes the text the phone app shows
    /// @return ERROR_NONE (0) when an answer came, whatever its "code";
    ///     ERROR_HTTP_FAILED (604) when none did
    static utils::ErrorType send(std::string& response, const std::string& baseUrl,
                                 const VePushType& type, const std::string& title,
                                 const std::string& abstract, const std::string& extraAttributes);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
