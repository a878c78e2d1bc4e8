#include "velmar/json/JSONUtils.h"

#include <climits>

namespace velmar {
namespace json {

namespace {

// The member `key` of `object`, or null when absent, JSON null or `object` is
// not an object.
json_object* member(json_object* object, const std::string& key) {
    if (object == nullptr || !json_object_is_type(object, json_type_object)) return nullptr;
    json_object* value = nullptr;
    if (!json_object_object_get_ex(object, key.c_str(), &value)) return nullptr;
    return value;
}

}  // namespace

bool JSONUtils::getJSONObject(json_object* object, const std::string& key, json_object*& out) {
    json_object* value = member(object, key);
    if (value == nullptr) return false;
    out = value;
    return true;
}

bool JSONUtils::getJSONArray(json_object* object, const std::string& key, array_list*& out) {
    json_object* value = member(object, key);
    if (value == nullptr || !json_object_is_type(value, json_type_array)) return false;
    out = json_object_get_array(value);
    return out != nullptr;
}

bool JSONUtils::getString(json_object* object, const std::string& key, std::string& out) {
    json_object* value = member(object, key);
    if (value == nullptr || !json_object_is_type(value, json_type_string)) return false;
    out.assign(json_object_get_string(value),
               static_cast<size_t>(json_object_get_string_len(value)));
    return true;
}

bool JSONUtils::getInt(json_object* object, const std::string& key, long long& out) {
    json_object* value = member(object, key);
    if (value == nullptr || !json_object_is_type(value, json_type_int)) return false;
    out = json_object_get_int64(value);
    return true;
}

bool JSONUtils::getInt(json_object* object, const std::string& key, int& out) {
    long long wide = 0;
    if (!getInt(object, key, wide) || wide < INT_MIN || wide > INT_MAX) return false;
    out = static_cast<int>(wide);
    return true;
}

JSONObjectCleaner::~JSONObjectCleaner() {
    // Release in reverse order of registration: built documents go before the
    // parsed answers whose elements they may share.
    for (auto it = mObjects.rbegin(); it != mObjects.rend(); ++it)
        json_object_put(*it);
}

json_object* JSONObjectCleaner::add(json_object* object) {
    if (object != nullptr) mObjects.push_back(object);
    return object;
}

}  // namespace json
}  // namespace velmar
