#pragma once

#include <string>

#include "velmar/quil/Export.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

class VELMAR_QUIL_EXPORT StereoAPI {
  public:
    StereoAPI() = delete;

    // Asks the IoT service for a stereo-pairing server for this hardware model.
    // The raw answer in `response`, even when the request failed.
    static utils::ErrorType SetServer(std::string& response, const std::string& baseUrl);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
