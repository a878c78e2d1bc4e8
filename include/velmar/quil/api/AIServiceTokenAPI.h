#pragma once

#include <string>

#include "velmar/quil/Export.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

class VELMAR_QUIL_EXPORT AIServiceTokenAPI {
  public:
    AIServiceTokenAPI() = delete;

    // The voice-assistant service token. A refusal by the cloud is reported as
    // success with an empty token and 0 for `expiresIn`; 1001 when the answer
    // is not understood.
    static utils::ErrorType getServiceToken(std::string& token, long long& expiresIn,
                                            const std::string& baseUrl);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
