// Reading a cloud answer with RapidJSON, for the endpoints whose answers are
// read that way: one parse, then type-checked member lookups that never
// assert on an answer of the wrong shape.
#pragma once

#include <rapidjson/document.h>

#include <string>

#include "velmar/utils/ErrorType.h"

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
    // True when the text is JSON, JSON null included. Nesting past the limit
    // counts as no JSON: the services never send it, so refusing it outright
    // is the safe reading.
    bool wellFormed() const { return mWellFormed; }

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
    bool mWellFormed = false;
    bool mParsed = false;
};

// Member `name` of `object`; null when `object` is no object or lacks it.
const rapidjson::Value* memberOf(const rapidjson::Value& object, const char* name);

// The text of a string value (which may hold NUL characters).
std::string stringOf(const rapidjson::Value& value);

// `value` written back as JSON, indented by four spaces per level.
std::string prettyText(const rapidjson::Value& value);

// How the services that report trouble only in the log read their answer,
// given the signed request's status and body. A failed request is logged as
// "HTTP request failed: " and its status returned. Otherwise the answer must
// have the integer "code" 0 and, when `data` is given, a string "data", which
// goes into `*data`; any other answer is logged as "Invalid response: " with
// its text and still gives the request's 0, `*data` untouched.
utils::ErrorType readLenientAnswer(utils::ErrorType result, const std::string& response,
                                   std::string* data);

}  // namespace detail
}  // namespace api
}  // namespace quil
}  // namespace velmar
