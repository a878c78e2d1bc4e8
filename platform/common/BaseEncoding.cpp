#include "velmar/crypto/BaseEncoding.h"

namespace velmar {
namespace crypto {

namespace {

const char kStandard[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
const char kUrlSafe[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";

std::string encode(const unsigned char* in, size_t length, const char* alphabet, bool pad) {
    std::string out;
    out.reserve((length + 2) / 3 * 4);
    size_t i = 0;
    for (; i + 3 <= length; i += 3) {
        unsigned v = (unsigned(in[i]) << 16) | (unsigned(in[i + 1]) << 8) | in[i + 2];
        out += alphabet[(v >> 18) & 63];
        out += alphabet[(v >> 12) & 63];
        out += alphabet[(v >> 6) & 63];
        out += alphabet[v & 63];
    }
    size_t rest = length - i;
    if (rest > 0) {
        unsigned v = unsigned(in[i]) << 16;
        if (rest == 2) v |= unsigned(in[i + 1]) << 8;
        out += alphabet[(v >> 18) & 63];
        out += alphabet[(v >> 12) & 63];
        if (rest == 2) out += alphabet[(v >> 6) & 63];
        if (pad) out.append(rest == 1 ? "==" : "=");
    }
    return out;
}

}  // namespace

bool BaseEncoding::encodeB64(std::string& out, const void* data, unsigned length) {
    if (data == nullptr && length > 0) return false;
    out = encode(static_cast<const unsigned char*>(data), length, kStandard, true);
    return true;
}

std::string BaseEncoding::encodeB64(const std::vector<unsigned char>& data) {
    return encode(data.data(), data.size(), kStandard, true);
}

std::string BaseEncoding::encodeB64URL(const void* data, unsigned length) {
    if (data == nullptr) return std::string();
    return encode(static_cast<const unsigned char*>(data), length, kUrlSafe, false);
}

std::string BaseEncoding::encodeB64URL(const std::vector<unsigned char>& data) {
    return encode(data.data(), data.size(), kUrlSafe, false);
}

std::string BaseEncoding::encodeHex(const std::vector<unsigned char>& data) {
    static const char digits[] = "0123456789abcdef";
    std::string out;
    out.reserve(data.size() * 2);
    for (unsigned char b : data) {
        out += digits[b >> 4];
        out += digits[b & 15];
    }
    return out;
}

}  // namespace crypto
}  // namespace velmar
