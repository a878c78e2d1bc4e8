#pragma once

#include <string>

#include "velmar/quil/Export.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

class VELMAR_QUIL_EXPORT MusicActionLogAPI {
  public:
    MusicActionLogAPI() = delete;

    // Reports one user action on a music item, with the device's hardware
    // model and firmware; the raw answer in `result` (empty on failure), the
    // request's status.
    static utils::ErrorType log(std::string& result, const std::string& baseUrl,
                                const std::string& userId, const std::string& appId,
                                const std::string& eventType, const std::string& itemId,
                                const std::string& itemType, const std::string& extraInfo);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
