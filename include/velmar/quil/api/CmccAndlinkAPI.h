#pragma once

#include <string>

#include "velmar/quil/Export.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

class VELMAR_QUIL_EXPORT CmccAndlinkAPI {
  public:
    CmccAndlinkAPI() = delete;

    // The China Mobile Andlink device ID the cloud keeps for this device. 101
    // when the IoT device ID or hardware name is unreadable. An answer refused
    // or not understood is logged and gives 0 with `cmccDeviceId` untouched.
    static utils::ErrorType getDeviceID(std::string& cmccDeviceId, const std::string& baseUrl);
    // Stores it; the same statuses (a refusal is only logged).
    static utils::ErrorType setDeviceID(const std::string& cmccDeviceId,
                                        const std::string& baseUrl);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
