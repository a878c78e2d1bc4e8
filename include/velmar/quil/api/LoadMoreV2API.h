#pragma once

#include <string>

#include "velmar/quil/Export.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

/// The next page of a content list, on the second version of the service.
///
/// Blocks for one signed request of at most 15 s; safe from several threads
/// at once; keeps no state.
class VELMAR_QUIL_EXPORT LoadMoreV2API {
  public:
    LoadMoreV2API() = delete;

    /// "GET" "/device/audio/loadmore/v2", otherwise as
    /// LoadMoreAPI::getLoadMoreList() (the same six parameters).
    /// @param[out] result the raw answer, not parsed; empty on failure
    /// @param baseUrl the device cloud service (`sQuilAPIURL`)
    /// @param userId the user
    /// @param listId the content list
    /// @param origin its content source
    /// @param type its type
    /// @param offset the page's first item
    /// @param count the page's length
    /// @return ERROR_NONE (0) when an answer came, whatever its "code";
    ///     ERROR_HTTP_FAILED (604) when none did
    static utils::ErrorType getLoadMoreV2List(std::string& result, const std::string& baseUrl,
                                              const long long& userId, std::string listId,
                                              const std::string& origin, const std::string& type,
                                              const int& offset, const int& count);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
