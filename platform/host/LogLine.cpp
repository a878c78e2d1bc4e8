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
    // Not half an escape sequence, nor half a UTF-8 character.
    while (kept > 0 &&
           (value[kept - 1] == '\\' || (static_cast<unsigned char>(value[kept]) & 0xC0) == 0x80))
        --kept;
    out.append(value, kept);
    if (length > 0) out += kMask;
}

bool startsWith(const std::string& text, size_t at, const char* prefix) {
    return text.compare(at, std::strlen(prefix), prefix) == 0;
}

size_t skipBlanks(const std::string& text, size_t at) {
    while (at < text.size() && (text[at] == ' ' || text[at] == '\t'))
        ++at;
    return at;
}

// A separator between a name and its value at `at` ('=', ':', or '=' as a
// percent-encoded "%3D" in a parameter that holds a query of its own): its
// length, 0 when there is none.
size_t separatorAt(const std::string& text, size_t at) {
    if (at >= text.size()) return 0;
    if (text[at] == '=' || text[at] == ':') return 1;
    return strncasecmp(text.c_str() + at, "%3D", 3) == 0 ? 3 : 0;
}

// Where the value starting at `at` ends, and whether it was a quoted string:
// a JSON string (escapes honoured), a JSON string inside a JSON string
// (\"...\"), a single-quoted text, or a bare value up to the next separator
// of a query, cookie or sentence.
size_t valueEnd(const std::string& text, size_t at, size_t& begin, bool& quoted) {
    quoted = true;
    if (startsWith(text, at, "\\\"")) {
        begin = at + 2;
        const size_t close = text.find("\\\"", begin);
        return close == std::string::npos ? text.size() : close;
    }
    if (at < text.size() && (text[at] == '"' || text[at] == '\'')) {
        const char quote = text[at];
        begin = at + 1;
        size_t end = begin;
        while (end < text.size() && text[end] != quote)
            end += text[end] == '\\' && quote == '"' ? 2 : 1;
        return std::min(end, text.size());
    }
    quoted = false;
    begin = at;
    size_t end = at;
    while (end < text.size() && !endsPlainValue(text[end]))
        ++end;
    return end;
}

}  // namespace

std::string maskCredentials(const std::string& text) {
    std::string out;
    out.reserve(text.size());
    size_t i = 0;
    while (i < text.size()) {
        // A name: a run of name characters that starts the text or follows
        // one that cannot be part of it.
        if (!isNameChar(text[i]) || (i > 0 && isNameChar(text[i - 1]))) {
            out += text[i++];
            continue;
        }
        size_t nameEnd = i;
        while (nameEnd < text.size() && isNameChar(text[nameEnd]))
            ++nameEnd;
        // After a percent-encoded character ("%3Ftoken") the name starts
        // past its two hex digits.
        size_t nameBegin = i;
        if (i > 0 && text[i - 1] == '%' && nameEnd - i > 2 &&
            std::isxdigit(static_cast<unsigned char>(text[i])) &&
            std::isxdigit(static_cast<unsigned char>(text[i + 1]))) {
            nameBegin = i + 2;
        }
        const size_t nameLength = nameEnd - nameBegin;
        const bool nameQuoted = nameBegin > 0 && text[nameBegin - 1] == '"';
        const bool stringData =
            nameQuoted && nameLength == std::strlen(kStringDataName) &&
            strncasecmp(text.data() + nameBegin, kStringDataName, nameLength) == 0;
        if (!isCredentialName(text.data() + nameBegin, nameLength) && !stringData) {
            out.append(text, i, nameEnd - i);
            i = nameEnd;
            continue;
        }
        // The name's closing quote, plain or escaped, then the separator.
        size_t at = nameEnd;
        if (nameQuoted && at < text.size() && text[at] == '"') {
            ++at;
        } else if (nameQuoted && startsWith(text, at, "\\\"")) {
            at += 2;
        }
        at = skipBlanks(text, at);
        const size_t separator = separatorAt(text, at);
        if (separator == 0) {
            out.append(text, i, nameEnd - i);
            i = nameEnd;
            continue;
        }
        at = skipBlanks(text, at + separator);
        size_t begin = at;
        bool quoted = false;
        const size_t end = valueEnd(text, at, begin, quoted);
        // Under "data" only a string is the secret; numbers and objects are not.
        if (stringData && !quoted) {
            out.append(text, i, nameEnd - i);
            i = nameEnd;
            continue;
        }
        out.append(text, i, begin - i);
        appendMasked(out, text.data() + begin, end - begin);
        i = end;
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
