// Internal to the ports: the byte-string HMAC that str_hmac_sha256 wraps.
#pragma once

#include "velmar/device/DeviceInfo.h"

namespace velmar {
namespace detail {

// A new 32-byte string, or null on failure; release with destroyByteString.
str_t* hmacSha256(const str_t* data, const str_t* key);
void destroyByteString(str_t* s);

}  // namespace detail
}  // namespace velmar
