#pragma once

#include <map>
#include <string>

#include "velmar/quil/Export.h"

namespace velmar {
namespace quil {
namespace api {

/// The firmware-upgrade service: is a newer image offered for this device?
///
/// checkUpgrade() blocks for at most two unsigned requests of 15 s each;
/// safe from several threads at once; keeps no state.
class VELMAR_QUIL_EXPORT UpgradeAPI {
  public:
    UpgradeAPI() = delete;

    /// The upgrade service's signature of `params` under `key`: the
    /// "key=value" texts sorted byte-wise, each followed by "&", the key
    /// appended, Base64, MD5, 32 upper-case hexadecimal digits.
    /// @param[out] s the signature
    /// @param params the query fields to sign (a copy; "s" itself is never among them)
    /// @param key the service's secret (not changed)
    static void computeS(std::string& s, std::map<std::string, std::string> params,
                         std::string& key);

    /// "GET" `sVeWiFiAPIURL` + "/rs/grayupgrade/v2/" + `platform` with
    /// "version", "filterID", "channel", "locale", "countryCode", "platform"
    /// and their signature "s" (computeS()). When the first attempt brings no
    /// 200 answer without a transport error, a second one resolves the host
    /// through a fixed list of resolvers (replaced by `VELMAR_DNS_SERVERS` on
    /// the host port).
    /// @param[out] link "data"."upgradeInfo"."link" when an image is offered;
    ///     untouched otherwise (clear it first to tell the two apart); may be
    ///     written when the size then proves unreadable
    /// @param[out] size "data"."upgradeInfo"."size" when an image is offered;
    ///     untouched otherwise
    /// @param platform the device's platform; also the URL's last path segment,
    ///     its characters that would end a segment percent-encoded
    /// @param filterID sent as "filterID" as given
    /// @param version the running firmware version
    /// @param channel the firmware's release channel
    /// @param locale e.g. QuilConfigUtils::getLocale()
    /// @param countryCode e.g. QuilConfigUtils::getCountryCode()
    /// @return true when the service answered with "code" "0", with or
    ///     without an offer; false when both attempts failed, the answer is
    ///     not JSON, its "code" is not the string "0", it lacks "data", an
    ///     offer lacks a string "link" or an integer "size", or `platform` is
    ///     "." or ".." (nothing sent); each logged
    static bool checkUpgrade(std::string& link, long long& size, const std::string& platform,
                             const std::string& filterID, const std::string& version,
                             const std::string& channel, const std::string& locale,
                             const std::string& countryCode);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
