#pragma once

#include <string>

#include "velmar/quil/Export.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

class VELMAR_QUIL_EXPORT WorkDayConfigAPI {
  public:
    WorkDayConfigAPI() = delete;

    // The work-day calendar newer than `version`. The raw answer in `config`,
    // even when the request failed; an empty `config` and 0 when the cloud
    // answers 304 (the caller's copy is current).
    static utils::ErrorType getWorkDayConfig(std::string& config, const std::string& baseUrl,
                                             const std::string& version);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
