#pragma once

#include <string>

#include "velmar/quil/Export.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

class VELMAR_QUIL_EXPORT LoadMoreAPI {
  public:
    LoadMoreAPI() = delete;

    // The next page of a content list; the raw answer in `result` (empty on
    // failure), the request's status.
    static utils::ErrorType getLoadMoreList(std::string& result, const std::string& baseUrl,
                                            const long long& userId, std::string listId,
                                            const std::string& origin, const std::string& type,
                                            const int& offset, const int& count);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
