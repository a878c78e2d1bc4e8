#pragma once

#include "velmar/quil/Export.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

class VELMAR_QUIL_EXPORT TimeSyncAPI {
  public:
    TimeSyncAPI() = delete;

    // The time service's current time, in the service's own unit, into
    // `serverTime`. 604 when the service cannot be reached or does not answer
    // 200, 610 when the answer cannot be used; `serverTime` is then untouched.
    static utils::ErrorType request(long long& serverTime);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
