#include "velmar/quil/api/LoadMoreV2API.h"

#include "api/LoadMore.h"

namespace velmar {
namespace quil {
namespace api {

utils::ErrorType LoadMoreV2API::getLoadMoreV2List(std::string& result, const std::string& baseUrl,
                                                  const long long& userId, std::string listId,
                                                  const std::string& origin,
                                                  const std::string& type, const int& offset,
                                                  const int& count) {
    static const std::string path("/device/audio/loadmore/v2");  // GCOVR_EXCL_BR_LINE: init guard
    return detail::loadMore(result, baseUrl, path, userId, listId, origin, type, offset, count);
}

}  // namespace api
}  // namespace quil
}  // namespace velmar
