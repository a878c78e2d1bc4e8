#pragma once

#include <string>

#include "velmar/Export.h"

namespace velmar {
namespace utils {

class VELMAR_PORT_EXPORT ExecUtils {
  public:
    // Runs `command` through the shell, captures its standard output into
    // `output` and returns the command's exit status (0 on success, non-zero
    // when it failed or could not be started).
    static int exec(std::string& output, const std::string& command);
};

}  // namespace utils
}  // namespace velmar
