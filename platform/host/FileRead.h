// Internal to the Linux port: bounded reads of device files.
#pragma once

#include <cstddef>
#include <string>

namespace velmar {
namespace host {

// At most `limit` bytes of the regular file at `path` (a real path, already
// mapped under the root). False when it is missing, not a regular file or
// unreadable; a FIFO or device never blocks the caller.
bool readFile(const std::string& path, size_t limit, std::string& out);

}  // namespace host
}  // namespace velmar
