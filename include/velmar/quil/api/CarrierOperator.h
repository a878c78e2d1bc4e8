#pragma once

#include <string>

#include "velmar/quil/Export.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

class VELMAR_QUIL_EXPORT CarrierOperator {
  public:
    CarrierOperator() = delete;

    // The carrier-operator status of this serial number from the user-profile
    // service (the preview instance when `preview`); as
    // DeviceSnCmei::getDeviceCmeiBySn.
    static utils::ErrorType getCarrierOperatorStatus(std::string& result, bool preview);
    // Keeps `status` (JSON) in "/data/messagingagent/carrier" for the messaging
    // agent, replaced whole so that a power cut leaves the old or the new text.
    // Text that is not JSON is logged and leaves the file as it was.
    static void setCarrierOperatorStatus(const std::string& status);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
