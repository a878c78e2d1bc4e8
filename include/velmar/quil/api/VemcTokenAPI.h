#pragma once

#include <string>

#include "velmar/quil/Export.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

class VELMAR_QUIL_EXPORT VemcTokenAPI {
  public:
    VemcTokenAPI() = delete;

    // The messaging-cloud token for the administrator and this device. 101
    // without an administrator or device ID. An answer that is refused or not
    // understood is logged and gives 0 with `token` untouched.
    static utils::ErrorType getToken(std::string& token, const std::string& baseUrl);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
