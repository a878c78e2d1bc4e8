// Internal to the Linux port: bounded reads and whole replacements of device
// files.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <string>

namespace velmar {
namespace host {

// At most `limit` bytes of the regular file at `path` (a real path, already
// mapped under the root). False when it is missing, not a regular file or
// unreadable; a FIFO or device never blocks the caller.
bool readFile(const std::string& path, size_t limit, std::string& out);

// Replaces the file at `target` (a real path) with `content`: a temporary
// file flushed and renamed over it. A new file gets `newFileMode` whatever
// the umask; a replaced one keeps those of its permission bits that are in
// `keptBits`.
bool writeAtomically(const std::string& target, const std::string& content, mode_t newFileMode,
                     mode_t keptBits);

}  // namespace host
}  // namespace velmar
