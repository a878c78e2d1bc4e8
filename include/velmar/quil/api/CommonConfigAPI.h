#pragma once

#include <string>

#include "velmar/quil/Export.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

class VELMAR_QUIL_EXPORT CommonConfigAPI {
  public:
    CommonConfigAPI() = delete;

    // A named configuration of the administrator's account. 101 without an
    // administrator (nothing sent); otherwise the request's status, with the
    // raw answer in `response` only on success.
    static utils::ErrorType getConfig(std::string& response, const std::string& baseUrl,
                                      std::string& configName);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
