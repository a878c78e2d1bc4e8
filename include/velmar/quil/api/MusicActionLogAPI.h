#pragma once

#include <string>

#include "velmar/quil/Export.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

/// The music action log: what the user did with a music item.
///
/// Blocks for one signed request of at most 15 s; safe from several threads
/// at once; keeps no state.
class VELMAR_QUIL_EXPORT MusicActionLogAPI {
  public:
    MusicActionLogAPI() = delete;

    /// "POST" "/device/music_action_log" with "userId", "appId", "eventType",
    /// "itemId", "itemType" and "extraInfo" as given, and the device's
    /// "hardware", "romVersion" and "romChannel" (empty when unreadable), signed.
    /// @param[out] result the raw answer, not parsed; empty on failure
    /// @param baseUrl the device cloud service (`sQuilAPIURL`)
    /// @param userId the user
    /// @param appId sent as "appId" as given
    /// @param eventType the action (the caller's vocabulary)
    /// @param itemId the music item
    /// @param itemType its type
    /// @param extraInfo anything more, sent as it is
    /// @return ERROR_NONE (0) when an answer came, whatever its "code";
    ///     ERROR_HTTP_FAILED (604) when none did
    static utils::ErrorType log(std::string& result, const std::string& baseUrl,
                                const std::string& userId, const std::string& appId,
                                const std::string& eventType, const std::string& itemId,
                                const std::string& itemType, const std::string& extraInfo);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
