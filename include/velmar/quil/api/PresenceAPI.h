#pragma once

#include <string>

#include "velmar/quil/Export.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

class VELMAR_QUIL_EXPORT PresenceAPI {
  public:
    PresenceAPI() = delete;

    // GET /device/presence/; the raw answer in `response` (empty on failure).
    static utils::ErrorType getPresence(std::string& response, const std::string& baseUrl);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
