// The text forms of HTTP that the local cloud reads and writes: header
// names, cookies, form bodies and queries, path patterns, and the host part
// of a URL.
#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace quilcloud {

std::string lower(std::string text);
std::string upper(std::string text);
// Without the blanks and tabs around it.
std::string trim(const std::string& text);

// "k=v; k2=v2" as a client sends it; values are taken as they are.
void parseCookies(const std::string& header, std::map<std::string, std::string>& cookies);

// The pairs of a form body or query string, in order, each name and value
// decoded ("+" is a space, "%XX" a byte; a "%" not followed by two hex digits
// stays). A pair without "=" has an empty value.
std::vector<std::pair<std::string, std::string>> decodeForm(const std::string& body);

// Whether `path` matches a script's or a route's pattern: "*" matches every
// path, "/prefix*" every path that starts with "/prefix", anything else only
// itself.
bool pathMatches(const std::string& pattern, const std::string& path);

// `address` as the host part of a URL: an IPv6 address in brackets.
std::string hostPart(const std::string& address);

}  // namespace quilcloud
