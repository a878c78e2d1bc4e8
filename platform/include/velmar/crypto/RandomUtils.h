#pragma once

#include <vector>

#include "velmar/Export.h"

namespace velmar {
namespace crypto {

class VELMAR_PORT_EXPORT RandomUtils {
  public:
    // `count` bytes from the system's cryptographic random source.
    static std::vector<unsigned char> nextBytes(unsigned count);
};

}  // namespace crypto
}  // namespace velmar
