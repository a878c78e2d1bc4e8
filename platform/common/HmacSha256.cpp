// The platform byte-string functions: HMAC-SHA256, its debug dump and release.
#include <openssl/evp.h>
#include <openssl/hmac.h>

#include <cstdio>
#include <cstdlib>
#include <new>

#include "ByteStrings.h"

namespace velmar {
namespace detail {

str_t* hmacSha256(const str_t* data, const str_t* key) {
    if (data == nullptr || key == nullptr) return nullptr;
    if ((data->data == nullptr && data->len > 0) || (key->data == nullptr && key->len > 0)) {
        return nullptr;
    }
    static const unsigned char empty = 0;
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int size = 0;
    if (HMAC(EVP_sha256(), key->data ? key->data : &empty, static_cast<int>(key->len),
             data->data ? data->data : &empty, data->len, digest, &size) == nullptr) {
        return nullptr;
    }
    str_t* out = static_cast<str_t*>(std::malloc(sizeof(str_t)));
    if (out == nullptr) return nullptr;
    out->data = static_cast<unsigned char*>(std::malloc(size));
    if (out->data == nullptr) {
        std::free(out);
        return nullptr;
    }
    for (unsigned i = 0; i < size; ++i)
        out->data[i] = digest[i];
    out->len = size;
    return out;
}

void destroyByteString(str_t* s) {
    if (s == nullptr) return;
    std::free(s->data);
    std::free(s);
}

}  // namespace detail
}  // namespace velmar

extern "C" {

void str_hexdump(const char* label, const str_t* s) {
    // Debug aid only: silent unless asked for, so that secrets never reach a log.
    const char* on = std::getenv("VELMAR_HEXDUMP");
    if (on == nullptr || on[0] != '1') return;
    std::fprintf(stderr, "%s:", label ? label : "");
    if (s != nullptr && s->data != nullptr) {
        for (uint32_t i = 0; i < s->len; ++i)
            std::fprintf(stderr, " %02x", s->data[i]);
    }
    std::fputc('\n', stderr);
}
}
