#include "api/LoadMore.h"

#include "api/Endpoint.h"

namespace velmar {
namespace quil {
namespace api {
namespace detail {

utils::ErrorType loadMore(std::string& result, const std::string& baseUrl, const std::string& path,
                          long long userId, const std::string& listId, const std::string& origin,
                          const std::string& type, int offset, int count) {
    const std::string method("GET");
    Params params;
    params["userId"] = decimal(userId);
    params["type"] = type;
    params["listId"] = listId;
    params["origin"] = origin;
    params["count"] = decimal(count);
    params["offset"] = decimal(offset);
    return sendSigned(result, baseUrl, path, method, params);
}

}  // namespace detail
}  // namespace api
}  // namespace quil
}  // namespace velmar
