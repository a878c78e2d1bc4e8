#pragma once

#include <string>

#include "velmar/Export.h"

namespace velmar {
namespace utils {

class VELMAR_PORT_EXPORT ExecUtils {
  public:
    // Runs `command` through the shell, captures its standard output into
    // `output` and returns the command's exit status (0 on success, non-zero
    // when it failed or could not be started). Bounded: the call returns once
    // the command itself has exited (a background child it left does not
    // hold it), and a command that overruns the port's deadline (30 s on the
    // host) has its process group killed and yields -1. The command gets
    // only descriptors 0, 1 and 2 of the caller.
    static int exec(std::string& output, const std::string& command);
};

}  // namespace utils
}  // namespace velmar
