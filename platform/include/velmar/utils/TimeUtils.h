#pragma once

#include "velmar/Export.h"

namespace velmar {
namespace utils {

class VELMAR_PORT_EXPORT TimeUtils {
  public:
    // Wall-clock time in milliseconds since the Unix epoch.
    static long long currentTimeMillis();
};

}  // namespace utils
}  // namespace velmar
