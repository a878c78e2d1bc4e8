#pragma once

#include <map>
#include <string>

#include "velmar/quil/Export.h"

namespace velmar {
namespace quil {
namespace api {

class VELMAR_QUIL_EXPORT UpgradeAPI {
  public:
    UpgradeAPI() = delete;

    // The upgrade service's signature of `params` under `key`: the
    // "key=value" texts sorted byte-wise, each followed by "&", the key
    // appended, Base64, MD5, 32 upper-case hexadecimal digits.
    static void computeS(std::string& s, std::map<std::string, std::string> params,
                         std::string& key);

    // Asks the upgrade service whether a newer image is offered for
    // `platform` at `version`. True when the service answered, with or without
    // an offer; `link` and `size` are written only when there is one, so the
    // caller clears them first to tell the two apart. A failed request is
    // tried once more with the host resolved through a fixed resolver list.
    static bool checkUpgrade(std::string& link, long long& size, const std::string& platform,
                             const std::string& filterID, const std::string& version,
                             const std::string& channel, const std::string& locale,
                             const std::string& countryCode);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
