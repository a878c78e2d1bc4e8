// The platform byte-string functions: HMAC-SHA256, its debug dump and release.
#include <openssl/crypto.h>
#include <openssl/evp.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

#include "ByteStrings.h"

namespace velmar {
namespace detail {

namespace {

constexpr size_t kBlock = 64;  // SHA-256 block size
constexpr size_t kDigest = 32;

// SHA-256, fetched from the provider once: a fetch per call costs more than
// the hash of a short text.
const EVP_MD* sha256() {
#if OPENSSL_VERSION_NUMBER >= 0x30000000L
    static const EVP_MD* md = EVP_MD_fetch(nullptr, "SHA256", nullptr);
    return md;
#else
    return EVP_sha256();
#endif
}

bool digestParts(EVP_MD_CTX* ctx, const unsigned char* pad, const unsigned char* data, size_t size,
                 unsigned char* out) {
    unsigned int length = 0;
    // GCOVR_EXCL_BR_START: OpenSSL fails a digest of memory only without memory
    return EVP_DigestInit_ex(ctx, sha256(), nullptr) == 1 &&
           EVP_DigestUpdate(ctx, pad, kBlock) == 1 && EVP_DigestUpdate(ctx, data, size) == 1 &&
           EVP_DigestFinal_ex(ctx, out, &length) == 1 && length == kDigest;
    // GCOVR_EXCL_BR_STOP
}

// HMAC (RFC 2104) over SHA-256.
bool hmac(const unsigned char* key, size_t keySize, const unsigned char* data, size_t size,
          unsigned char* out) {
    // OpenSSL fails these only without its default provider or without
    // memory; neither can be brought about from a test.
    if (sha256() == nullptr) return false;  // GCOVR_EXCL_BR_LINE: no SHA-256 provider
    EVP_MD_CTX* ctx = EVP_MD_CTX_new();
    if (ctx == nullptr) return false;  // GCOVR_EXCL_BR_LINE: allocation failure
    unsigned char block[kBlock] = {};
    bool ok = true;
    if (keySize > kBlock) {
        unsigned int length = 0;
        // GCOVR_EXCL_BR_START: OpenSSL fails a digest of memory only without memory
        ok = EVP_Digest(key, keySize, block, &length, sha256(), nullptr) == 1;
        // GCOVR_EXCL_BR_STOP
    } else if (keySize > 0) {
        std::memcpy(block, key, keySize);
    }
    unsigned char inner[kBlock];
    unsigned char outer[kBlock];
    for (size_t i = 0; i < kBlock; ++i) {
        inner[i] = static_cast<unsigned char>(block[i] ^ 0x36);
        outer[i] = static_cast<unsigned char>(block[i] ^ 0x5c);
    }
    unsigned char innerDigest[kDigest];
    // GCOVR_EXCL_BR_START: as above
    ok = ok && digestParts(ctx, inner, data, size, innerDigest) &&
         digestParts(ctx, outer, innerDigest, kDigest, out);
    // GCOVR_EXCL_BR_STOP
    OPENSSL_cleanse(block, sizeof(block));
    OPENSSL_cleanse(inner, sizeof(inner));
    OPENSSL_cleanse(outer, sizeof(outer));
    EVP_MD_CTX_free(ctx);
    return ok;
}

}  // namespace

str_t* hmacSha256(const str_t* data, const str_t* key) {
    if (data == nullptr || key == nullptr) return nullptr;
    if ((data->data == nullptr && data->len > 0) || (key->data == nullptr && key->len > 0)) {
        return nullptr;
    }
    unsigned char digest[kDigest];
    // GCOVR_EXCL_START: OpenSSL or allocation failure only
    if (!hmac(key->data, key->len, data->data, data->len, digest)) return nullptr;
    str_t* out = static_cast<str_t*>(std::malloc(sizeof(str_t)));
    if (out == nullptr) return nullptr;
    out->data = static_cast<unsigned char*>(std::malloc(kDigest));
    if (out->data == nullptr) {
        std::free(out);
        return nullptr;
    }
    // GCOVR_EXCL_STOP
    std::memcpy(out->data, digest, kDigest);
    out->len = kDigest;
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
    // Debug aid only: silent unless asked for. What it is handed is a request
    // signature, a credential, so even then it shows the length and at most
    // the first four bytes (never more than a quarter), as the log's masking
    // does: enough to tell two signatures apart, never enough to reuse one.
    const char* on = std::getenv("VELMAR_HEXDUMP");
    if (on == nullptr || on[0] != '1') return;
    std::fprintf(stderr, "%s:", label ? label : "");
    if (s != nullptr && s->data != nullptr) {
        const uint32_t shown = std::min<uint32_t>(4, s->len / 4);
        std::fprintf(stderr, " %u bytes", static_cast<unsigned>(s->len));
        for (uint32_t i = 0; i < shown; ++i)
            std::fprintf(stderr, " %02x", s->data[i]);
        std::fputs(" ***", stderr);
    }
    std::fputc('\n', stderr);
}
}
