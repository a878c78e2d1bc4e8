#include "Output.h"

#include <rapidjson/document.h>

namespace quilctl {

Output::Output() : mWriter(mBuffer) {
    mWriter.StartObject();
}

void Output::add(const char* key, const std::string& value) {
    mWriter.Key(key);
    mWriter.String(value.data(), static_cast<rapidjson::SizeType>(value.size()));
}

void Output::add(const char* key, long long value) {
    mWriter.Key(key);
    mWriter.Int64(value);
}

void Output::add(const char* key, unsigned long long value) {
    mWriter.Key(key);
    mWriter.Uint64(value);
}

void Output::add(const char* key, bool value) {
    mWriter.Key(key);
    mWriter.Bool(value);
}

void Output::addStrings(const char* key, const std::vector<std::string>& values) {
    mWriter.Key(key);
    mWriter.StartArray();
    for (const auto& v : values)
        mWriter.String(v.data(), static_cast<rapidjson::SizeType>(v.size()));
    mWriter.EndArray();
}

void Output::addInts(const char* key, const std::vector<long long>& values) {
    mWriter.Key(key);
    mWriter.StartArray();
    for (long long v : values)
        mWriter.Int64(v);
    mWriter.EndArray();
}

void Output::addDocument(const char* key, const std::string& text) {
    rapidjson::Document doc;
    doc.Parse(text.data(), text.size());
    if (doc.HasParseError()) {
        add(key, text);
        return;
    }
    mWriter.Key(key);
    doc.Accept(mWriter);
}

void Output::addRawJson(const char* key, const std::string& json) {
    mWriter.Key(key);
    mWriter.RawValue(json.data(), json.size(), rapidjson::kObjectType);
}

std::string Output::finish() {
    mWriter.EndObject();
    return std::string(mBuffer.GetString(), mBuffer.GetSize());
}

}  // namespace quilctl
