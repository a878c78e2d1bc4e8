// The music catalogue service: plain GETs, not signed, to an address the
// caller gives; its answers carry their content under "data".
#pragma once

#include <json-c/json.h>

#include <string>
#include <vector>

#include "velmar/json/JSONUtils.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {
namespace detail {

// GETs `path` with the one query parameter `key`=`value` and the extra
// `headers`, and points `data` at the answer's "data" member (owned by
// `cleaner`); `response` keeps the answer's text. 604 with its line when the
// transport fails or the answer is not JSON or lacks "data".
utils::ErrorType fetchCatalogueData(json_object*& data, std::string& response,
                                    json::JSONObjectCleaner& cleaner, const std::string& baseUrl,
                                    const std::string& path, const char* key,
                                    const std::string& value,
                                    const std::vector<std::string>& headers);

}  // namespace detail
}  // namespace api
}  // namespace quil
}  // namespace velmar
