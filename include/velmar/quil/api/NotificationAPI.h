#pragma once

#include <string>

#include "velmar/quil/Export.h"
#include "velmar/quil/VePushType.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

class VELMAR_QUIL_EXPORT NotificationAPI {
  public:
    NotificationAPI() = delete;

    // POST /device/land_notification/ with "type" (decimal), "title", "abstract"
    // and "extraAttributes" as given. The raw answer in `response` (empty on
    // failure); 0 or the transport failure 604.
    static utils::ErrorType send(std::string& response, const std::string& baseUrl,
                                 const VePushType& type, const std::string& title,
                                 const std::string& abstract, const std::string& extraAttributes);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
