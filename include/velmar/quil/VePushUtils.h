#pragma once

#include <string>

#include "velmar/quil/Export.h"
#include "velmar/quil/VePushType.h"

namespace velmar {
namespace quil {

/// Notifications to the user's phone, the short way.
///
/// Blocks for one signed request (15 s at most); safe from several threads at
/// once; keeps no state between calls.
class VELMAR_QUIL_EXPORT VePushUtils {
  public:
    VePushUtils() = delete;

    /// Lands a notification through the device cloud named by `sQuilAPIURL`
    /// in the messaging configuration: api::NotificationAPI::send() with title
    /// and abstract empty, since the phone app reads the text from
    /// "extraAttributes".
    /// @param[out] response the raw answer, not parsed; empty on failure
    /// @param type the kind of notification
    /// @param extraAttributes the text the phone shows
    /// @return true when the cloud answered, whatever its "code"
    static bool notify(std::string& response, const VePushType& type,
                       const std::string& extraAttributes);
};

}  // namespace quil
}  // namespace velmar
