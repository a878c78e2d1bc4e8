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
// `headers`, and points `songList` at the answer's "data"."songList" member,
// of any type unless `arrayOnly` (owned by `cleaner`). 604 with its line when
// the transport fails or the answer is not JSON or lacks that member.
utils::ErrorType fetchCatalogueSongList(json_object*& songList, json::JSONObjectCleaner& cleaner,
                                        const std::string& baseUrl, const std::string& path,
                                        const char* key, const std::string& value,
                                        const std::vector<std::string>& headers, bool arrayOnly);

}  // namespace detail
}  // namespace api
}  // namespace quil
}  // namespace velmar
