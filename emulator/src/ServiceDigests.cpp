#include "ServiceDigests.h"

#include <openssl/evp.h>
#include <openssl/rand.h>

#include <algorithm>
#include <vector>

namespace quilcloud {

const char kUpgradeSecret[] = "3f6a1c9e-2b7d-4e80-9c5a-71d0e4b2f863";
const char kLogSecret[] = "5b0c2e1a-7d44-4f9e-a3c1-0e9d8b7f6a25";

namespace {

std::string md5(const std::string& text) {
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int size = 0;
    EVP_Digest(text.data(), text.size(), digest, &size, EVP_md5(), nullptr);
    return std::string(reinterpret_cast<char*>(digest), size);
}

std::string base64(const std::string& bytes) {
    std::vector<unsigned char> out(4 * ((bytes.size() + 2) / 3) + 1);
    int length = EVP_EncodeBlock(out.data(), reinterpret_cast<const unsigned char*>(bytes.data()),
                                 static_cast<int>(bytes.size()));
    return std::string(reinterpret_cast<char*>(out.data()), static_cast<size_t>(length));
}

std::string hex(const std::string& bytes, const char* digits) {
    std::string out;
    for (unsigned char b : bytes) {
        out += digits[b >> 4];
        out += digits[b & 15];
    }
    return out;
}

}  // namespace

std::string upgradeSignature(const std::map<std::string, std::string>& params) {
    std::vector<std::string> pairs;
    for (const auto& [key, value] : params)
        pairs.push_back(key + "=" + value);
    std::sort(pairs.begin(), pairs.end());
    std::string text;
    for (const auto& pair : pairs)
        text += pair + "&";
    return hex(md5(base64(text + kUpgradeSecret)), "0123456789ABCDEF");
}

std::string logSignature(const std::map<std::string, std::string>& params) {
    std::string text;
    for (const auto& [key, value] : params)
        text += (text.empty() ? "" : "&") + key + "=" + value;
    std::string encoded = base64(md5(text + kLogSecret));
    std::replace(encoded.begin(), encoded.end(), '+', '-');
    std::replace(encoded.begin(), encoded.end(), '/', '_');
    encoded.erase(encoded.find_last_not_of('=') + 1);
    return encoded;
}

std::optional<std::string> base64Decode(const std::string& text) {
    static const std::string alphabet =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string body = text.substr(0, text.find_last_not_of('=') + 1);
    if (text.size() - body.size() > 2 || body.size() % 4 == 1) return std::nullopt;
    std::string out;
    unsigned buffer = 0;
    int bits = 0;
    for (char c : body) {
        if (c == '-') c = '+';
        if (c == '_') c = '/';
        const size_t value = alphabet.find(c);
        if (value == std::string::npos) return std::nullopt;
        buffer = (buffer << 6) | static_cast<unsigned>(value);
        bits += 6;
        if (bits >= 8) {
            bits -= 8;
            out += static_cast<char>((buffer >> bits) & 0xff);
        }
    }
    return out;
}

std::string randomHex(int bytes) {
    std::string raw(static_cast<size_t>(bytes), '\0');
    RAND_bytes(reinterpret_cast<unsigned char*>(&raw[0]), bytes);
    return hex(raw, "0123456789abcdef");
}

}  // namespace quilcloud
