#pragma once

#include <string>

#include "velmar/Export.h"

namespace velmar {
namespace utils {

class VELMAR_PORT_EXPORT UUIDUtils {
  public:
    // A random (version 4) UUID in its 36-character lower-case text form.
    static std::string generate();
};

}  // namespace utils
}  // namespace velmar
