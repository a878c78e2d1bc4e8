#pragma once

#include <string>

#include "velmar/Export.h"

namespace velmar {
namespace utils {

class VELMAR_PORT_EXPORT StringUtils {
  public:
    // `text` with every occurrence of `c` removed.
    static std::string removeAll(const std::string& text, char c);
};

}  // namespace utils
}  // namespace velmar
