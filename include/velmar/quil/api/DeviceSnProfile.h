#pragma once

#include <string>

#include "velmar/quil/Export.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

class VELMAR_QUIL_EXPORT DeviceSnProfile {
  public:
    DeviceSnProfile() = delete;

    // The device profile from the user-profile service (the preview instance
    // when `preview`); needs no serial number. The raw answer in `result`
    // (empty on failure).
    static utils::ErrorType getDeviceProfileBySn(std::string& result, bool preview);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
