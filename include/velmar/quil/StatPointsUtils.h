#pragma once

#include <string>

#include "velmar/quil/Export.h"

namespace velmar {
namespace quil {

class VELMAR_QUIL_EXPORT StatPointsUtils {
  public:
    StatPointsUtils() = delete;

    // The statistics log at `path` as one JSON report tagged with the
    // device's hardware, ROM version and serial number: a record per stat
    // line ("stat_points_none NAME=VALUE"), plus records for an oversized
    // file, long lines and malformed lines. Reads at most 262144 bytes of
    // line text, however large the file. Never fails: a missing or
    // unreadable file gives an empty "data" array. `pretty` indents by four
    // spaces; otherwise the text is compact.
    static std::string collectStatPoints(const std::string& path, bool pretty);
};

}  // namespace quil
}  // namespace velmar
