#pragma once

#include <string>

#include "velmar/quil/Export.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

class VELMAR_QUIL_EXPORT DeviceStatusAPI {
  public:
    DeviceStatusAPI() = delete;

    // Reports `status` for one category ("catagory" is the cloud's spelling).
    // The request's status; the answer is only logged.
    static utils::ErrorType setDeviceStatus(const std::string& baseUrl, const std::string& catagory,
                                            const std::string& status);
    // The status stored for one category in `status`; 604 when the answer
    // holds no text "data".
    static utils::ErrorType getDeviceStatus(std::string& status, const std::string& baseUrl,
                                            const std::string& catagory);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
