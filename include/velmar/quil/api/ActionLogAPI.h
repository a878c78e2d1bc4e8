#pragma once

#include <string>

#include "velmar/quil/Export.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

class VELMAR_QUIL_EXPORT ActionLogAPI {
  public:
    ActionLogAPI() = delete;

    // Posts one action-log record of device `did` to the collector at `host`.
    // The progress and the outcome go to standard output; the result is
    // always 0 and the caller judges `response`, the body received (if any).
    static utils::ErrorType upload(std::string& response, const std::string& did,
                                   const std::string& payload, const std::string& host);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
