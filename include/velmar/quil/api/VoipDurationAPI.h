#pragma once

#include <string>

#include "velmar/quil/Export.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

class VELMAR_QUIL_EXPORT VoipDurationAPI {
  public:
    VoipDurationAPI() = delete;

    // The administrator's voice-call time this month, and adding to it. 101
    // without an administrator (nothing sent); otherwise the request's status,
    // with the raw answer in `response` only on success.
    static utils::ErrorType getStatus(std::string& response, const std::string& baseUrl);
    static utils::ErrorType add(std::string& response, const std::string& baseUrl,
                                std::string& durationInSec);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
