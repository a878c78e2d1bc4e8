#pragma once

#include <string>

#include "velmar/quil/Export.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

class VELMAR_QUIL_EXPORT DeviceSnCtei {
  public:
    DeviceSnCtei() = delete;

    // The China Telecom equipment identifier of this serial number; as
    // DeviceSnCmei::getDeviceCmeiBySn.
    static utils::ErrorType getDeviceCteiBySn(std::string& result, bool preview);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
