// Reading a cloud answer with RapidJSON, for the endpoints whose answers are
// read that way: one parse, then type-checked member lookups that never
// assert on an answer of the wrong shape.
#pragma once

#include <rapidjson/document.h>

#include <string>

namespace velmar {
namespace quil {
namespace api {
namespace detail {

class RapidAnswer {
  public:
    // Parses `text` (small answers: a 1 KiB parse stack to start with).
    explicit RapidAnswer(const std::string& text);

    RapidAnswer(const RapidAnswer&) = delete;
    RapidAnswer& operator=(const RapidAnswer&) = delete;

    // False when the text is not JSON, is JSON null, or nests deeper than any
    // answer of the cloud does (writing such a value back would exhaust the
    // stack).
    bool parsed() const { return mParsed; }

    // Member `name` of the root object; null when the root is no object or
    // lacks it.
    const rapidjson::Value* member(const char* name) const;
    // Member `name` when it is an integer that fits 32 bits.
    bool getInt(const char* name, int& out) const;
    // Member `name` when it is a string.
    bool getString(const char* name, std::string& out) const;
    // Member `name` when it is an object, else null.
    const rapidjson::Value* getObject(const char* name) const;

  private:
    rapidjson::Document mDocument;
    bool mParsed = false;
};

// Member `name` of `object`; null when `object` is no object or lacks it.
const rapidjson::Value* memberOf(const rapidjson::Value& object, const char* name);

// The text of a string value (which may hold NUL characters).
std::string stringOf(const rapidjson::Value& value);

// `value` written back as JSON, indented by four spaces per level.
std::string prettyText(const rapidjson::Value& value);

}  // namespace detail
}  // namespace api
}  // namespace quil
}  // namespace velmar
