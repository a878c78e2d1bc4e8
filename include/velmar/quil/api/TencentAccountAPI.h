#pragma once

#include <string>

#include "velmar/quil/Export.h"
#include "velmar/quil/TencentAccount.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

/// The Tencent account linked to the device's administrator.
///
/// Blocks for one signed request of at most 15 s; safe from several threads
/// at once; keeps no state.
class VELMAR_QUIL_EXPORT TencentAccountAPI {
  public:
    TencentAccountAPI() = delete;

    /// "GET" "/device/tencent/account", no parameters of its own, signed.
    /// @param[out] account the members present in the answer's "data"; the
    ///     others keep their values; untouched on failure
    /// @param baseUrl the device cloud service (`sQuilAPIURL`)
    /// @return ERROR_NONE (0); ERROR_NO_SUPER_ADMIN (1002) for "code" 1 (no
    ///     administrator to link); ERROR_GENERAL (101) for any other non-zero
    ///     "code"; ERROR_HTTP_FAILED (604) when no answer came;
    ///     ERROR_INVALID_RESPONSE (610) when it is not JSON, has no integer
    ///     "code" or no object "data"
    static utils::ErrorType getTencentAccount(TencentAccount& account, const std::string& baseUrl);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
