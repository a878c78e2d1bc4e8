#pragma once

#include <string>

#include "velmar/quil/Export.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

/// The sounds of a radio station, a page at a time.
///
/// Blocks for one signed request of at most 15 s; safe from several threads
/// at once; keeps no state.
class VELMAR_QUIL_EXPORT MusicStationAPI {
  public:
    MusicStationAPI() = delete;

    /// "GET" "/device/station/sound_list" with "stationId", "origin",
    /// "category", "offset" and "count" (decimal), signed; nothing checked.
    /// @param[out] result the raw answer, not parsed; empty on failure
    /// @param baseUrl the device cloud service (`sQuilAPIURL`)
    /// @param stationId the station
    /// @param origin its content source
    /// @param category its category
    /// @param offset the page's first sound
    /// @param count the page's length
    /// @return ERROR_NONE (0) when an answer came, whatever its "code";
    ///     ERROR_HTTP_FAILED (604) when none did
    static utils::ErrorType getStationSoundList(std::string& result, const std::string& baseUrl,
                                                const std::string& stationId,
                                                const std::string& origin,
                                                const std::string& category, const int& offset,
                                                const int& count);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
