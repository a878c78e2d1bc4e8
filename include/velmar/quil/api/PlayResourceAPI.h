#pragma once

#include <string>

#include "velmar/quil/Export.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

/// The children's-course service, whose playback is keyed by an alarm.
///
/// Blocks for one signed request of at most 15 s; safe from several threads
/// at once; keeps no state.
class VELMAR_QUIL_EXPORT PlayResourceAPI {
  public:
    PlayResourceAPI() = delete;

    /// "GET" "/babycourse/device/next/play" with "deviceId", "alarmId",
    /// "cpId" and "cp" as given, signed: the resource a course alarm plays next.
    /// @param[out] result the raw answer, not parsed; empty on failure
    /// @param baseUrl the device cloud service (`sQuilAPIURL`)
    /// @param deviceId the caller's device ID (not the stored identity)
    /// @param alarmId the course alarm
    /// @param cpId the content provider's ID
    /// @param cp the content provider
    /// @return ERROR_NONE (0) when an answer came, whatever its "code";
    ///     ERROR_HTTP_FAILED (604) when none did
    static utils::ErrorType getPlayResource(std::string& result, const std::string& baseUrl,
                                            std::string deviceId, const std::string& alarmId,
                                            const std::string& cpId, const std::string& cp);
    /// "POST" "/babycourse/device/play/update" with "deviceId", "alarmId",
    /// "playCPId", "playCP", "playIndex" and "playPosition" (decimal), signed:
    /// how far a course alarm's playback got. The answer is only logged.
    /// @param baseUrl the device cloud service (`sQuilAPIURL`)
    /// @param deviceId the caller's device ID
    /// @param alarmId the course alarm
    /// @param playCPId the content provider's ID
    /// @param playCP the content provider
    /// @param playIndex the item reached
    /// @param playPosition the position reached in it
    /// @return ERROR_NONE (0) when an answer came, whatever its "code";
    ///     ERROR_HTTP_FAILED (604) when none did
    static utils::ErrorType setPlayResourceStatus(const std::string& baseUrl,
                                                  const std::string& deviceId,
                                                  const std::string& alarmId,
                                                  const std::string& playCPId,
                                                  const std::string& playCP, const int& playIndex,
                                                  const int& playPosition);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
