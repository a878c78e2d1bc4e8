#pragma once

#include <map>
#include <string>

#include "velmar/quil/Export.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

using utils::ErrorType;

// The signed request to the device cloud service.
class VELMAR_QUIL_EXPORT DeviceAPI {
  public:
    DeviceAPI() = delete;

    // Adds a fresh "requestId" to a copy of `params`, signs the call with the
    // device's identity cookies and sends it (15 s time-out). 0 with the body
    // in `response`, or 604 with `response` untouched; `httpStatus` is what
    // the transport reported.
    static ErrorType request(std::string& response, int& httpStatus, const std::string& baseUrl,
                             const std::string& path, const std::string& method,
                             const std::map<std::string, std::string>& params);
    static ErrorType request(std::string& response, const std::string& baseUrl,
                             const std::string& path, const std::string& method,
                             const std::map<std::string, std::string>& params);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
