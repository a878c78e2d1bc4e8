#pragma once

#include "velmar/quil/Export.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

/// The time service's clock.
///
/// Blocks for one unsigned request of at most 15 s; safe from several threads
/// at once; keeps no state.
class VELMAR_QUIL_EXPORT TimeSyncAPI {
  public:
    TimeSyncAPI() = delete;

    /// "GET" the whole URL `sTimeSyncURL` of the messaging configuration, no
    /// parameters, no cookies.
    /// @param[out] serverTime the answer's integer "data"."t", in the
    ///     service's own unit; untouched on failure
    /// @return ERROR_NONE (0); ERROR_HTTP_FAILED (604) when no answer came or
    ///     its HTTP status is not 200; ERROR_INVALID_RESPONSE (610) when it is
    ///     not JSON, its "code" is not the integer 0, or "data"."t" is no
    ///     64-bit integer
    static utils::ErrorType request(long long& serverTime);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
