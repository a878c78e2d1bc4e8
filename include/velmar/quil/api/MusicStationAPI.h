#pragma once

#include <string>

#include "velmar/quil/Export.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

class VELMAR_QUIL_EXPORT MusicStationAPI {
  public:
    MusicStationAPI() = delete;

    // One page of a radio station's sounds; the raw answer in `result` (empty
    // on failure), the request's status.
    static utils::ErrorType getStationSoundList(std::string& result, const std::string& baseUrl,
                                                const std::string& stationId,
                                                const std::string& origin,
                                                const std::string& category, const int& offset,
                                                const int& count);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
