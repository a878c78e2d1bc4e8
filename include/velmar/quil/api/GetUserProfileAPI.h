#pragma once

#include <string>

#include "velmar/quil/Export.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

class VELMAR_QUIL_EXPORT GetUserProfileAPI {
  public:
    GetUserProfileAPI() = delete;

    // The numeric user ID of the account that access `token` (issued to
    // `clientId`) belongs to, from the account service. 101 when the service
    // gives no user ID (a refused token included), 604 when its answer is not
    // usable JSON with a string "result".
    static utils::ErrorType request(unsigned long long& userId, const std::string& clientId,
                                    const std::string& token);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
