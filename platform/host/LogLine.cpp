// What a log line may carry off the device. The library logs whole parameter
// strings, cookies and answers, which hold the device's credentials; the
// system log is read by more than the daemon that wrote it (log upload, field
// tools), so the port masks credential values and escapes control characters
// before a line leaves the process.
#include "LogLine.h"

#include <strings.h>

#include <algorithm>
#include <cctype>
#include <cstring>

namespace velmar {
namespace host {

namespace {

// Fields whose value is a credential, compared without regard to case: the
// signed request's cookies and parameters, the signatures of the directly
// addressed services ("s", "_s", "b64Sign"), the tokens and session IDs that
// the token services hand out or take, and the account's access tokens.
const char* const kCredentialNames[] = {
    "token",
    "deviceToken",
    "deviceTokenV2",
    "device_token",
    "signatureV2",
    "signature",
    "sign",
    "b64Sign",
    "s",
    "_s",
    "sessionId",
    "session_id",
    "secret",
    "channelSecret",
    "channel_secret",
    "accessToken",
    "access_token",
    "refreshToken",
    "refresh_token",
    "txAccessToken",
    "txRefreshToken",
    "keepAliveKey",
    "password",
    "device_token_sign",
};

// A JSON "data" member that is a string is the whole secret in the answers of
// the keep-alive key and the messaging token; objects and numbers under that
// name (songs, administrator IDs) are left alone.
constexpr const char* kStringDataName = "data";

// At most this many characters of a masked value survive, and never more
// than a quarter of it, so that a short secret is not half given away.
constexpr size_t kKeptCharacters = 4;
constexpr const char* kMask = "***";

bool isNameChar(unsigned char c) {
    return std::isalnum(c) || c == '_';
}

bool isCredentialName(const char* begin, size_t length) {
    for (const char* name : kCredentialNames) {
        if (std::strlen(name) == length && strncasecmp(name, begin, length) == 0) return true;
    }
    return false;
}

// Where a name=value value ends: the separators of queries, forms, cookies
// and the prose around them.
bool endsPlainValue(unsigned char c) {
    return c == '&' || c == ';' || c == ',' || c == '"' || c == '\'' || c == ')' || c == ']' ||
           c == '}' || c == '<' || c == '>' || std::isspace(c) || c < 0x20;
}

void appendMasked(std::string& out, const char* value, size_t length) {
    size_t kept = std::min(kKeptCharacters, length / 4);
    // Not half an escape sequence of a JSON string.
    while (kept > 0 && value[kept - 1] == '\\')
        --kept;
    out.append(value, kept);
    if (length > 0) out += kMask;
}

// The end of a JSON string whose first character is at `at`: the index of its
// closing quote, or the text's end.
size_t jsonStringEnd(const std::string& text, size_t at) {
    while (at < text.size() && text[at] != '"') {
        at += text[at] == '\\' ? 2 : 1;
    }
    return std::min(at, text.size());
}

}  // namespace

std::string maskCredentials(const std::string& text) {
    std::string out;
    out.reserve(text.size());
    size_t i = 0;
    while (i < text.size()) {
        const unsigned char c = static_cast<unsigned char>(text[i]);
        const bool quoted = c == '"';
        const size_t nameBegin = quoted ? i + 1 : i;
        // A name starts a text or follows a character that cannot be part of it.
        if (!(quoted || (isNameChar(c) && (i == 0 || !isNameChar(text[i - 1]))))) {
            out += text[i++];
            continue;
        }
        size_t nameEnd = nameBegin;
        while (nameEnd < text.size() && isNameChar(text[nameEnd]))
            ++nameEnd;
        const size_t nameLength = nameEnd - nameBegin;
        const char* name = text.data() + nameBegin;
        if (quoted) {
            // JSON: "name" : "value"
            size_t at = nameEnd;
            const bool closed = at < text.size() && text[at] == '"';
            if (closed) ++at;
            while (at < text.size() && text[at] == ' ')
                ++at;
            const bool member = closed && at < text.size() && text[at] == ':';
            if (member) ++at;
            while (member && at < text.size() && text[at] == ' ')
                ++at;
            const bool secret =
                nameLength > 0 && (isCredentialName(name, nameLength) ||
                                   (nameLength == std::strlen(kStringDataName) &&
                                    strncasecmp(name, kStringDataName, nameLength) == 0));
            if (member && secret && at < text.size() && text[at] == '"') {
                const size_t valueEnd = jsonStringEnd(text, at + 1);
                out.append(text, i, at + 1 - i);
                appendMasked(out, text.data() + at + 1, valueEnd - at - 1);
                i = valueEnd;
                continue;
            }
            out += text[i++];
            continue;
        }
        // Plain: name=value
        if (nameEnd < text.size() && text[nameEnd] == '=' && isCredentialName(name, nameLength)) {
            size_t valueEnd = nameEnd + 1;
            while (valueEnd < text.size() && !endsPlainValue(text[valueEnd]))
                ++valueEnd;
            out.append(text, i, nameEnd + 1 - i);
            appendMasked(out, text.data() + nameEnd + 1, valueEnd - nameEnd - 1);
            i = valueEnd;
            continue;
        }
        out.append(text, i, nameEnd - i);
        i = nameEnd;
    }
    return out;
}

std::string escapeControls(const std::string& text) {
    static const char kHex[] = "0123456789abcdef";
    std::string out;
    out.reserve(text.size());
    for (unsigned char c : text) {
        if (c >= 0x20 && c != 0x7f) {
            out += static_cast<char>(c);
        } else if (c == '\n') {
            out += "\\n";
        } else if (c == '\r') {
            out += "\\r";
        } else if (c == '\t') {
            out += "\\t";
        } else {
            out += "\\x";
            out += kHex[c >> 4];
            out += kHex[c & 15];
        }
    }
    return out;
}

}  // namespace host
}  // namespace velmar
