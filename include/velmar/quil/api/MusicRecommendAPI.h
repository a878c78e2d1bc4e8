#pragma once

#include <string>

#include "velmar/quil/Export.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

/// Music recommendations for a user.
///
/// Blocks for one signed request of at most 15 s; safe from several threads
/// at once; keeps no state.
class VELMAR_QUIL_EXPORT MusicRecommendAPI {
  public:
    MusicRecommendAPI() = delete;

    /// "GET" "/device/music_recommendation" with "userId" and "count" as given, signed.
    /// @param[out] result the raw answer, not parsed; empty on failure
    /// @param baseUrl the device cloud service (`sQuilAPIURL`)
    /// @param userId the user
    /// @param count how many, as text
    /// @return ERROR_NONE (0) when an answer came, whatever its "code";
    ///     ERROR_HTTP_FAILED (604) when none did
    static utils::ErrorType getMusicRecommendation(std::string& result, const std::string& baseUrl,
                                                   const std::string& userId,
                                                   const std::string& count);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
