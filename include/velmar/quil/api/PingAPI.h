#pragma once

#include <string>

#include "velmar/quil/Export.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

class VELMAR_QUIL_EXPORT PingAPI {
  public:
    PingAPI() = delete;

    // POST /device/ping/ with "pingLevel" as given; the raw answer in
    // `response` (empty on failure).
    static utils::ErrorType pingDevice(std::string& response, const std::string& baseUrl,
                                       const std::string& pingLevel);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
