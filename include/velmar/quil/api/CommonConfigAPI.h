#pragma once

#include <string>

#include "velmar/quil/Export.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

/// Named configurations of the account that administers the device.
///
/// Blocks for one signed request of at most 15 s; safe from several threads
/// at once; keeps no state.
class VELMAR_QUIL_EXPORT CommonConfigAPI {
  public:
    CommonConfigAPI() = delete;

    /// "GET" "/common_config/linux" with "userId" (the stored administrator)
    /// and "configName", signed.
    /// @param[out] response the raw answer, not parsed; untouched on failure
    /// @param baseUrl the device cloud service (`sQuilAPIURL`)
    /// @param configName the configuration's name, sent as given (not changed)
    /// @return ERROR_NONE (0) when an answer came, whatever its "code";
    ///     ERROR_GENERAL (101) without a stored administrator (nothing sent);
    ///     ERROR_HTTP_FAILED (604) when no answer came
    static utils::ErrorType getConfig(std::string& response, const std::string& baseUrl,
                                      std::string& configName);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
