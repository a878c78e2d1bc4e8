// Digests and encodings the directly addressed services check their
// requests with: the upgrade query signature and the log form signature.
#pragma once

#include <map>
#include <optional>
#include <string>

namespace quilcloud {

// The secrets the device library signs with, one per service.
extern const char kUpgradeSecret[];
extern const char kLogSecret[];

// The upgrade service's "s": the "key=value" texts of `params` sorted
// byte-wise, each followed by "&", the secret appended, standard Base64, MD5,
// upper-case hexadecimal.
std::string upgradeSignature(const std::map<std::string, std::string>& params);

// The log service's "_s": "key=value" pairs of `params` in key order joined
// with "&", the secret appended, MD5, URL-safe Base64 without padding.
std::string logSignature(const std::map<std::string, std::string>& params);

// Standard or URL-safe Base64 (padding optional) decoded; nothing for any
// other text.
std::optional<std::string> base64Decode(const std::string& text);

// `bytes` random bytes from OpenSSL as lower-case hexadecimal.
std::string randomHex(int bytes);

}  // namespace quilcloud
