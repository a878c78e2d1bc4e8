#pragma once

#include <string>

#include "velmar/quil/Export.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

class VELMAR_QUIL_EXPORT LoadMoreV2API {
  public:
    LoadMoreV2API() = delete;

    // As LoadMoreAPI::getLoadMoreList, on the second version of the service.
    static utils::ErrorType getLoadMoreV2List(std::string& result, const std::string& baseUrl,
                                              const long long& userId, std::string listId,
                                              const std::string& origin, const std::string& type,
                                              const int& offset, const int& count);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
