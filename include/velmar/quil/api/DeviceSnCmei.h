#pragma once

#include <string>

#include "velmar/quil/Export.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

class VELMAR_QUIL_EXPORT DeviceSnCmei {
  public:
    DeviceSnCmei() = delete;

    // The China Mobile equipment identifier of this serial number, from the
    // user-profile service in the messaging configuration (its preview
    // instance when `preview`). The raw answer in `result` (empty on failure);
    // 101 with `result` untouched when the serial number is unreadable.
    static utils::ErrorType getDeviceCmeiBySn(std::string& result, bool preview);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
