#pragma once

#include <vector>

#include "velmar/Export.h"

namespace velmar {
namespace crypto {

class VELMAR_PORT_EXPORT DigestUtils {
  public:
    // MD5 of `length` bytes at `data` into `out` (16 bytes); false on failure.
    static bool md5(std::vector<unsigned char>& out, const void* data, unsigned length);
};

}  // namespace crypto
}  // namespace velmar
