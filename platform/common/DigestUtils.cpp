#include "velmar/crypto/DigestUtils.h"

#include <openssl/evp.h>

namespace velmar {
namespace crypto {

bool DigestUtils::md5(std::vector<unsigned char>& out, const void* data, unsigned length) {
    if (data == nullptr && length > 0) return false;
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int size = 0;
    if (EVP_Digest(data, length, digest, &size, EVP_md5(), nullptr) != 1) return false;
    out.assign(digest, digest + size);
    return true;
}

}  // namespace crypto
}  // namespace velmar
