#include "velmar/quil/api/LoadMoreAPI.h"

#include "api/LoadMore.h"

namespace velmar {
namespace quil {
namespace api {

utils::ErrorType LoadMoreAPI::getLoadMoreList(std::string& result, const std::string& baseUrl,
                                              const long long& userId, std::string listId,
                                              const std::string& origin, const std::string& type,
                                              const int& offset, const int& count) {
    static const std::string path("/device/audio/loadmore");  // GCOVR_EXCL_BR_LINE: init guard
    return detail::loadMore(result, baseUrl, path, userId, listId, origin, type, offset, count);
}

}  // namespace api
}  // namespace quil
}  // namespace velmar
