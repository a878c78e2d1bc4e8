#pragma once

#include <string>

#include "velmar/quil/Export.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

class VELMAR_QUIL_EXPORT BindAPI {
  public:
    BindAPI() = delete;

    // Binds the device to account `userId` with the binding payload the
    // caller prepared. 0 when the transport reports no error (the service's
    // answer, whatever its status, is in `response`), 604 otherwise.
    static utils::ErrorType bind(std::string& response, long long userId,
                                 const std::string& payload);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
