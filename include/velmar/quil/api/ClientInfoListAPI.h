#pragma once

#include <string>

#include "velmar/quil/Export.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

class VELMAR_QUIL_EXPORT ClientInfoListAPI {
  public:
    ClientInfoListAPI() = delete;

    // The administrator's client devices. 101 without an administrator (nothing
    // sent); otherwise the request's status, with the raw answer in `response`
    // only on success.
    static utils::ErrorType getClientList(std::string& response, const std::string& baseUrl);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
