// The load-more service, in both its versions: the next page of a content
// list, asked with the same six parameters.
#pragma once

#include <string>

#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {
namespace detail {

// GETs `path` signed; `result` receives the raw answer (empty on failure).
utils::ErrorType loadMore(std::string& result, const std::string& baseUrl, const std::string& path,
                          long long userId, const std::string& listId, const std::string& origin,
                          const std::string& type, int offset, int count);

}  // namespace detail
}  // namespace api
}  // namespace quil
}  // namespace velmar
