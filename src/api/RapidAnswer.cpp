#include "api/RapidAnswer.h"

#include <rapidjson/prettywriter.h>
#include <rapidjson/stringbuffer.h>

#include "velmar/utils/Logging.h"

namespace velmar {
namespace quil {
namespace api {
namespace detail {

namespace {

constexpr size_t kParseStack = 1024;
// Far beyond the deepest answer the services send, far below what the
// recursive writer can take.
constexpr int kMaxDepth = 256;

// Bracket depth outside strings; the text need not be valid JSON.
bool nestsDeeperThan(const std::string& text, int limit) {
    int depth = 0;
    bool inString = false;
    bool escaped = false;
    for (char c : text) {
        if (inString) {
            if (escaped) {
                escaped = false;
            } else if (c == '\\') {
                escaped = true;
            } else if (c == '"') {
                inString = false;
            }
        } else if (c == '"') {
            inString = true;
        } else if (c == '[' || c == '{') {
            if (++depth > limit) return true;
        } else if (c == ']' || c == '}') {
            --depth;
        }
    }
    return false;
}

}  // namespace

RapidAnswer::RapidAnswer(const std::string& text) : mDocument(nullptr, kParseStack) {
    if (nestsDeeperThan(text, kMaxDepth)) return;
    // The iterative parser keeps its own stack instead of recursing.
    mDocument.Parse<rapidjson::kParseIterativeFlag>(text.data(), text.size());
    mWellFormed = !mDocument.HasParseError();
    mParsed = mWellFormed && !mDocument.IsNull();
}

const rapidjson::Value* RapidAnswer::member(const char* name) const {
    return mParsed ? memberOf(mDocument, name) : nullptr;
}

bool RapidAnswer::getInt(const char* name, int& out) const {
    const rapidjson::Value* value = member(name);
    if (value == nullptr || !value->IsInt()) return false;
    out = value->GetInt();
    return true;
}

bool RapidAnswer::getString(const char* name, std::string& out) const {
    const rapidjson::Value* value = member(name);
    if (value == nullptr || !value->IsString()) return false;
    out = stringOf(*value);
    return true;
}

const rapidjson::Value* RapidAnswer::getObject(const char* name) const {
    const rapidjson::Value* value = member(name);
    return value != nullptr && value->IsObject() ? value : nullptr;
}

const rapidjson::Value* memberOf(const rapidjson::Value& object, const char* name) {
    if (!object.IsObject()) return nullptr;
    auto it = object.FindMember(name);
    return it == object.MemberEnd() ? nullptr : &it->value;
}

std::string stringOf(const rapidjson::Value& value) {
    return std::string(value.GetString(), value.GetStringLength());
}

std::string prettyText(const rapidjson::Value& value) {
    rapidjson::StringBuffer buffer;
    rapidjson::PrettyWriter<rapidjson::StringBuffer> writer(buffer);
    value.Accept(writer);
    return std::string(buffer.GetString(), buffer.GetSize());
}

utils::ErrorType readLenientAnswer(utils::ErrorType result, const std::string& response,
                                   std::string* data) {
    if (result != utils::ERROR_NONE) {
        VLOG(4) << "HTTP request failed: " << result;
        return result;
    }
    RapidAnswer answer(response);
    int code = -1;
    std::string text;
    if (!answer.getInt("code", code) || code != 0 ||
        (data != nullptr && !answer.getString("data", text))) {
        VLOG(4) << "Invalid response: " << response;
        return result;
    }
    if (data != nullptr) *data = text;
    return result;
}

}  // namespace detail
}  // namespace api
}  // namespace quil
}  // namespace velmar
