// The one JSON object a quilctl command prints on standard output.
#pragma once

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <string>
#include <vector>

namespace quilctl {

class Output {
  public:
    Output();

    void add(const char* key, const std::string& value);
    void add(const char* key, const char* value) { add(key, std::string(value)); }
    void add(const char* key, long long value);
    void add(const char* key, int value) { add(key, static_cast<long long>(value)); }
    void add(const char* key, unsigned long long value);
    void add(const char* key, bool value);
    void addStrings(const char* key, const std::vector<std::string>& values);
    void addInts(const char* key, const std::vector<long long>& values);
    // `text` is embedded as JSON when it parses as JSON, else as a string.
    void addDocument(const char* key, const std::string& text);
    // `json` (valid JSON text) embedded exactly as it stands, layout included.
    void addRawJson(const char* key, const std::string& json);

    std::string finish();

    // For a command that printed its own text: nothing more is printed.
    void omit() { mOmitted = true; }
    bool omitted() const { return mOmitted; }

  private:
    rapidjson::StringBuffer mBuffer;
    rapidjson::Writer<rapidjson::StringBuffer> mWriter;
    bool mOmitted = false;
};

}  // namespace quilctl
