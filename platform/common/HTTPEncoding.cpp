// The transport's text forms, shared by every port so that the wire form is
// the same on the device and in the tests.
#include "velmar/http/HTTPRequest.h"

#include <cctype>
#include <cstring>

#include "FormEncoding.h"

namespace velmar {
namespace http {

namespace {

bool unreserved(unsigned char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' ||
           c == '.' || c == '_' || c == '~';
}

void appendEncoded(std::string& out, const std::string& text) {
    static const char hex[] = "0123456789ABCDEF";
    for (unsigned char c : text) {
        if (unreserved(c)) {
            out += static_cast<char>(c);
        } else {
            out += '%';
            out += hex[c >> 4];
            out += hex[c & 15];
        }
    }
}

}  // namespace

std::string HTTPRequest::encodeHTTPParams(const std::map<std::string, std::string>& params) {
    std::string out;
    for (const auto& [key, value] : params) {
        if (!out.empty()) out += '&';
        appendEncoded(out, key);
        out += '=';
        appendEncoded(out, value);
    }
    return out;
}

std::string HTTPRequest::buildCookieHeader(const std::map<std::string, std::string>& cookies) {
    std::string out = "Cookie: ";
    bool first = true;
    for (const auto& [key, value] : cookies) {
        if (!first) out += "; ";
        first = false;
        out += key;
        out += '=';
        out += value;
    }
    return out;
}

namespace detail {

std::string encodeFormFields(const std::map<std::string, std::vector<std::string>>& fields) {
    std::string out;
    for (const auto& [key, values] : fields) {
        for (const auto& value : values) {
            if (!out.empty()) out += '&';
            appendEncoded(out, key);
            out += '=';
            appendEncoded(out, value);
        }
    }
    return out;
}

std::string refusal(const std::string& method, const std::string& url, const std::string& cookie,
                    const std::vector<std::string>& headers) {
    const auto lineBreak = [](const std::string& text) {
        return text.find_first_of("\r\n") != std::string::npos;
    };
    bool token = !method.empty();
    for (unsigned char c : method)
        token = token &&
                (std::isalnum(c) || (c != '\0' && std::strchr("!#$%&'*+-.^_`|~", c) != nullptr));
    if (!token) return "bad method \"" + method + "\"";
    if (lineBreak(url) || lineBreak(cookie)) return "line break in URL or cookie";
    for (const auto& line : headers) {
        if (lineBreak(line)) return "line break in a header line";
    }
    return "";
}

std::string joinUrl(const std::string& baseUrl, const std::string& path) {
    size_t end = baseUrl.size();
    while (end > 0 && baseUrl[end - 1] == '/')
        --end;
    size_t begin = 0;
    while (begin < path.size() && path[begin] == '/')
        ++begin;
    return baseUrl.substr(0, end) + "/" + path.substr(begin);
}

}  // namespace detail

}  // namespace http
}  // namespace velmar
