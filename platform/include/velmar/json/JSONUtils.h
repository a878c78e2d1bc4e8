#pragma once

#include <json-c/json.h>

#include <string>
#include <vector>

#include "velmar/Export.h"

namespace velmar {
namespace json {

// Readers over a json-c object. Each returns false, leaving `out` untouched,
// when `object` is null or not an object, the member is missing or JSON null,
// or the member has the wrong type. The returned pointers borrow from
// `object`: they stay valid as long as it does and must not be released.
class VELMAR_PORT_EXPORT JSONUtils {
  public:
    // Any non-null member (object, array or scalar).
    static bool getJSONObject(json_object* object, const std::string& key, json_object*& out);
    // An array member, as json-c's array list.
    static bool getJSONArray(json_object* object, const std::string& key, array_list*& out);
    // A string member.
    static bool getString(json_object* object, const std::string& key, std::string& out);
    // An integer member (a JSON integer; strings and doubles are refused).
    static bool getInt(json_object* object, const std::string& key, long long& out);
    // As above, refused when the value does not fit an int.
    static bool getInt(json_object* object, const std::string& key, int& out);
};

// Owns json-c objects for one call: every object added is released exactly
// once (json_object_put) when the cleaner goes out of scope. Adding an object
// hands over one reference; a caller that keeps sharing it elsewhere must
// take its own reference with json_object_get first.
class VELMAR_PORT_EXPORT JSONObjectCleaner {
  public:
    JSONObjectCleaner() = default;
    ~JSONObjectCleaner();

    JSONObjectCleaner(const JSONObjectCleaner&) = delete;
    JSONObjectCleaner& operator=(const JSONObjectCleaner&) = delete;

    // Takes ownership of one reference to `object` (null is ignored) and
    // returns it, so that a parse can be wrapped: cleaner.add(json_tokener_parse(s)).
    json_object* add(json_object* object);

  private:
    std::vector<json_object*> mObjects;
};

}  // namespace json
}  // namespace velmar
