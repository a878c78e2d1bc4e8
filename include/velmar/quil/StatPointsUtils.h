#pragma once

#include <string>

#include "velmar/quil/Export.h"

namespace velmar {
namespace quil {

/// The device's statistics log turned into the JSON report the caller uploads.
///
/// Blocks for one bounded read of a local file; sends nothing; safe from
/// several threads at once; keeps no state between calls.
class VELMAR_QUIL_EXPORT StatPointsUtils {
  public:
    StatPointsUtils() = delete;

    /// The statistics log at `path` as one JSON report tagged with the
    /// device's hardware, ROM version and serial number: a record
    /// {"t":NAME,"c":1,"v":VALUE} per stat line ("stat_points_none NAME=VALUE"),
    /// plus records for an oversized file ("quillog_big_log_file"), long lines
    /// ("quillog_long_line_count") and malformed lines ("quillog_bad_line_count").
    /// Reads at most 262144 bytes of line text, however large the file.
    /// @param path the statistics log; opened directly, not through the port
    /// @param pretty indent by four spaces; otherwise the text is compact
    /// @return the report; never fails: a missing or unreadable file gives an
    ///     empty "data" array, an unreadable identity value an empty string
    static std::string collectStatPoints(const std::string& path, bool pretty);
};

}  // namespace quil
}  // namespace velmar
