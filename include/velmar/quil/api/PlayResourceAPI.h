#pragma once

#include <string>

#include "velmar/quil/Export.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

class VELMAR_QUIL_EXPORT PlayResourceAPI {
  public:
    PlayResourceAPI() = delete;

    // The resource a course alarm plays next; the raw answer in `result`
    // (empty on failure), the request's status.
    static utils::ErrorType getPlayResource(std::string& result, const std::string& baseUrl,
                                            std::string deviceId, const std::string& alarmId,
                                            const std::string& cpId, const std::string& cp);
    // Reports how far a course alarm's playback got; the answer is only logged.
    static utils::ErrorType setPlayResourceStatus(const std::string& baseUrl,
                                                  const std::string& deviceId,
                                                  const std::string& alarmId,
                                                  const std::string& playCPId,
                                                  const std::string& playCP, const int& playIndex,
                                                  const int& playPosition);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
