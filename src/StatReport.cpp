#include "StatReport.h"

#include <rapidjson/prettywriter.h>
#include <rapidjson/stringbuffer.h>

#include <algorithm>
#include <charconv>
#include <cstring>

namespace velmar {
namespace quil {
namespace detail {

namespace {

// The compact report, written straight into its text. It is the form that is
// uploaded, and on a large log RapidJSON's writer, which goes character by
// character through its stream, costs several times the reading itself. The
// bytes are those rapidjson::Writer gives (the unit tests hold the two
// together).
class CompactReport final : public StatReport {
  public:
    CompactReport(const std::string& hardware, const std::string& version,
                  const std::string& serialNumber, size_t logBytes) {
        // A record takes a few bytes more than its line; growing the text
        // instead would move it and touch fresh pages several times over.
        mText.resize(logBytes + logBytes / 4 + 1024);
        char* out =
            room(kFrame + kEscaped * (hardware.size() + version.size() + serialNumber.size()));
        out = literal(out, "{\"hardware\":");
        out = string(out, hardware);
        out = literal(out, ",\"version\":");
        out = string(out, version);
        out = literal(out, ",\"serialNumber\":");
        out = string(out, serialNumber);
        out = literal(out, ",\"list\":[{\"source\":\"rom\",\"data\":[");
        mUsed = out - &mText[0];
    }

    void add(std::string_view name, long long count, std::string_view value) override {
        char* out = room(kFrame + kEscaped * (name.size() + value.size()));
        out = literal(out, mEmpty ? "{\"t\":" : ",{\"t\":");
        mEmpty = false;
        out = string(out, name);
        out = literal(out, ",\"c\":");
        out = std::to_chars(out, out + 20, count).ptr;
        out = literal(out, ",\"v\":");
        out = string(out, value);
        *out++ = '}';
        mUsed = out - &mText[0];
    }

    std::string finish() override {
        char* out = literal(room(kFrame), "]}]}");
        mText.resize(out - &mText[0]);
        return std::move(mText);
    }

  private:
    // Enough for the fixed text around the values of one call.
    static constexpr size_t kFrame = 128;
    // The most one byte becomes ("\u001F").
    static constexpr size_t kEscaped = 6;

    // Where the next `count` bytes go; the text grows when it must.
    char* room(size_t count) {
        if (mText.size() - mUsed < count) mText.resize(std::max(2 * mText.size(), mUsed + count));
        return &mText[mUsed];
    }

    static char* literal(char* out, std::string_view text) {
        std::memcpy(out, text.data(), text.size());
        return out + text.size();
    }

    // A JSON string as RapidJSON writes it: quote, backslash and control
    // characters escaped, every other byte as it stands.
    static char* string(char* out, std::string_view text) {
        static const char kHex[] = "0123456789ABCDEF";
        *out++ = '"';
        for (const char byte : text) {
            const unsigned char c = static_cast<unsigned char>(byte);
            if (c >= 0x20 && c != '"' && c != '\\') {
                *out++ = byte;
                continue;
            }
            *out++ = '\\';
            switch (c) {
                case '"':
                case '\\':
                    *out++ = byte;
                    break;
                case '\b':
                    *out++ = 'b';
                    break;
                case '\f':
                    *out++ = 'f';
                    break;
                case '\n':
                    *out++ = 'n';
                    break;
                case '\r':
                    *out++ = 'r';
                    break;
                case '\t':
                    *out++ = 't';
                    break;
                default:
                    out = literal(out, "u00");
                    *out++ = kHex[c >> 4];
                    *out++ = kHex[c & 0xF];
            }
        }
        *out++ = '"';
        return out;
    }

    std::string mText;  // sized ahead; bytes past mUsed are not yet written
    size_t mUsed = 0;
    bool mEmpty = true;
};

// The indented report, for people to read: RapidJSON's pretty writer.
class PrettyReport final : public StatReport {
  public:
    PrettyReport(const std::string& hardware, const std::string& version,
                 const std::string& serialNumber)
        : mWriter(mBuffer) {
        mWriter.StartObject();
        member("hardware", hardware);
        member("version", version);
        member("serialNumber", serialNumber);
        mWriter.Key("list");
        mWriter.StartArray();
        mWriter.StartObject();
        member("source", "rom");
        mWriter.Key("data");
        mWriter.StartArray();
    }

    void add(std::string_view name, long long count, std::string_view value) override {
        mWriter.StartObject();
        member("t", name);
        mWriter.Key("c");
        mWriter.Int64(count);
        member("v", value);
        mWriter.EndObject();
    }

    std::string finish() override {
        mWriter.EndArray();
        mWriter.EndObject();
        mWriter.EndArray();
        mWriter.EndObject();
        return std::string(mBuffer.GetString(), mBuffer.GetSize());
    }

  private:
    void member(const char* key, std::string_view value) {
        mWriter.Key(key);
        mWriter.String(value.data(), static_cast<rapidjson::SizeType>(value.size()));
    }

    rapidjson::StringBuffer mBuffer;
    rapidjson::PrettyWriter<rapidjson::StringBuffer> mWriter;
};

}  // namespace

std::unique_ptr<StatReport> makeStatReport(bool pretty, const std::string& hardware,
                                           const std::string& version,
                                           const std::string& serialNumber, size_t logBytes) {
    if (pretty) return std::make_unique<PrettyReport>(hardware, version, serialNumber);
    return std::make_unique<CompactReport>(hardware, version, serialNumber, logBytes);
}

}  // namespace detail
}  // namespace quil
}  // namespace velmar
