#pragma once

#include <string>

#include "velmar/Export.h"

namespace velmar {
namespace utils {

class VELMAR_PORT_EXPORT FileUtils {
  public:
    // Where an absolute device path really lies: under $VELMAR_ROOT when it is
    // set, the path itself otherwise.
    static std::string devicePath(const std::string& path);

    // Replaces the file at the device path `path` with `content` so that a
    // power cut leaves either the old or the new text, never a mix (temporary
    // file in the same directory, flushed, then renamed over the old one).
    static bool writeAtomically(const std::string& path, const std::string& content);
};

}  // namespace utils
}  // namespace velmar
