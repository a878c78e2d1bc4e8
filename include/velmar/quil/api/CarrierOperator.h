#pragma once

#include <string>

#include "velmar/quil/Export.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

/// The device's carrier-operator status: asked of the user-profile service,
/// kept in a file for the messaging agent.
///
/// The lookup blocks for one signed request of at most 15 s, the setter for
/// one local file write; safe from several threads at once (concurrent
/// setters leave the last writer's text); no state kept.
class VELMAR_QUIL_EXPORT CarrierOperator {
  public:
    CarrierOperator() = delete;

    /// "GET" "/device_carrier/get_carrier_status" with "sn" (the serial
    /// number, QuilConfigUtils::getSN()), signed, to the user-profile service.
    /// @param[out] result the raw answer, not parsed; empty when no answer
    ///     came; untouched when the serial number is unreadable
    /// @param preview ask the preview instance (`sQuilUserprofilePreviewURL`)
    ///     instead of the production one (`sQuilUserprofileURL`)
    /// @return ERROR_NONE (0) when an answer came, whatever its "code";
    ///     ERROR_GENERAL (101) when the serial number is unreadable (nothing
    ///     sent); ERROR_HTTP_FAILED (604) when no answer came
    static utils::ErrorType getCarrierOperatorStatus(std::string& result, bool preview);
    /// Keeps `status` in "/data/messagingagent/carrier" for the messaging
    /// agent, in JSON's plain form, replaced whole so that a power cut leaves
    /// the old or the new text. Text that is not JSON, or a file that cannot
    /// be written, is logged and leaves the file as it was.
    /// @param status a JSON text
    static void setCarrierOperatorStatus(const std::string& status);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
