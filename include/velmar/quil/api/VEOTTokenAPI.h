#pragma once

#include <string>

#include "velmar/quil/Export.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

class VELMAR_QUIL_EXPORT VEOTTokenAPI {
  public:
    VEOTTokenAPI() = delete;

    // Hands the IoT-platform session token to the cloud: 0, 1003 when the
    // cloud refused it, 101 for its other codes, 610 for an answer not understood.
    static utils::ErrorType upload(const std::string& token, const std::string& sessionId,
                                   const std::string& userId, const std::string& baseUrl);
    // Fetches it back. Only the fields present in the answer are written; 101
    // when the cloud refused, 610 for an answer not understood.
    static utils::ErrorType download(std::string& sessionId, std::string& token, int& expire,
                                     const std::string& baseUrl);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
