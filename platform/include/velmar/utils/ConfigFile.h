#pragma once

#include <map>
#include <string>

#include "velmar/Export.h"

namespace velmar {
namespace utils {

// The messaging configuration file: "key=value" lines, "#" comments, blanks
// trimmed around keys and values. A missing file or key reads as "".
class VELMAR_PORT_EXPORT ConfigFile {
  public:
    explicit ConfigFile(const std::string& path);

    std::string get(const std::string& key) const;

    // Key names, spelled in the file exactly as the member names.
    static constexpr const char* sQuilAPIURL = "sQuilAPIURL";
    static constexpr const char* sQuilUserprofileURL = "sQuilUserprofileURL";
    static constexpr const char* sQuilUserprofilePreviewURL = "sQuilUserprofilePreviewURL";
    static constexpr const char* sVeWiFiAPIURL = "sVeWiFiAPIURL";
    static constexpr const char* sVeWiFiLOGURL = "sVeWiFiLOGURL";
    static constexpr const char* sTimeSyncURL = "sTimeSyncURL";

  private:
    std::map<std::string, std::string> mValues;
};

}  // namespace utils
}  // namespace velmar
