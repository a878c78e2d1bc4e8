#include "WireText.h"

#include <algorithm>
#include <cctype>

namespace quilcloud {

namespace {

int hexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// "+" is a space, "%XX" a byte; a "%" not followed by two hex digits stays.
std::string formDecode(const std::string& text) {
    std::string out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size(); ++i) {
        int high = 0, low = 0;
        if (text[i] == '+') {
            out += ' ';
        } else if (text[i] == '%' && i + 2 < text.size() && (high = hexDigit(text[i + 1])) >= 0 &&
                   (low = hexDigit(text[i + 2])) >= 0) {
            out += static_cast<char>(high * 16 + low);
            i += 2;
        } else {
            out += text[i];
        }
    }
    return out;
}

}  // namespace

std::string lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

std::string upper(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return text;
}

std::string trim(const std::string& text) {
    size_t begin = text.find_first_not_of(" \t");
    if (begin == std::string::npos) return "";
    size_t end = text.find_last_not_of(" \t");
    return text.substr(begin, end - begin + 1);
}

void parseCookies(const std::string& header, std::map<std::string, std::string>& cookies) {
    size_t start = 0;
    while (start <= header.size()) {
        size_t end = header.find(';', start);
        if (end == std::string::npos) end = header.size();
        std::string pair = trim(header.substr(start, end - start));
        size_t equals = pair.find('=');
        if (!pair.empty() && equals != 0) {
            if (equals == std::string::npos) {
                cookies[pair] = "";
            } else {
                cookies[trim(pair.substr(0, equals))] = trim(pair.substr(equals + 1));
            }
        }
        start = end + 1;
    }
}

std::vector<std::pair<std::string, std::string>> decodeForm(const std::string& body) {
    std::vector<std::pair<std::string, std::string>> pairs;
    size_t start = 0;
    while (start < body.size()) {
        size_t end = body.find('&', start);
        if (end == std::string::npos) end = body.size();
        const std::string pair = body.substr(start, end - start);
        if (!pair.empty()) {
            size_t equals = pair.find('=');
            if (equals == std::string::npos) {
                pairs.emplace_back(formDecode(pair), "");
            } else {
                pairs.emplace_back(formDecode(pair.substr(0, equals)),
                                   formDecode(pair.substr(equals + 1)));
            }
        }
        start = end + 1;
    }
    return pairs;
}

bool pathMatches(const std::string& pattern, const std::string& path) {
    if (pattern == "*") return true;
    if (!pattern.empty() && pattern.back() == '*') {
        return path.compare(0, pattern.size() - 1, pattern, 0, pattern.size() - 1) == 0;
    }
    return pattern == path;
}

std::string hostPart(const std::string& address) {
    return address.find(':') == std::string::npos ? address : "[" + address + "]";
}

}  // namespace quilcloud
