#pragma once

#include <string>

#include "velmar/quil/Export.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

/// The stereo-pairing server of the IoT service.
///
/// Blocks for one signed request of at most 15 s; safe from several threads
/// at once; keeps no state.
class VELMAR_QUIL_EXPORT StereoAPI {
  public:
    StereoAPI() = delete;

    /// "POST" "/iot/dcm/set_stereo_server" with "hardware" (the hardware
    /// model, empty when unreadable), signed: asks for a stereo-pairing
    /// server for this model.
    /// @param[out] response the raw answer, not parsed; empty on failure
    /// @param baseUrl the device cloud service (`sQuilAPIURL`)
    /// @return ERROR_NONE (0) when an answer came, whatever its "code";
    ///     ERROR_HTTP_FAILED (604) when none did
    static utils::ErrorType SetServer(std::string& response, const std::string& baseUrl);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
