#pragma once

#include <string>

#include "velmar/quil/Export.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

class VELMAR_QUIL_EXPORT MusicRecommendAPI {
  public:
    MusicRecommendAPI() = delete;

    // Recommendations for `userId`; the raw answer in `result` (empty on
    // failure), the request's status.
    static utils::ErrorType getMusicRecommendation(std::string& result, const std::string& baseUrl,
                                                   const std::string& userId,
                                                   const std::string& count);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
