// The answers read member by member (RapidJSON, and the upgrade check's
// json-c): the first byte picks the call, the rest is the cloud's body.
// The privacy settings handed out must be a JSON object.
#include "Harness.h"
#include "velmar/quil/api/CmccAndlinkAPI.h"
#include "velmar/quil/api/GetUserProfileAPI.h"
#include "velmar/quil/api/PrivacySettingsAPI.h"
#include "velmar/quil/api/TimeSyncAPI.h"
#include "velmar/quil/api/UpgradeAPI.h"
#include "velmar/quil/api/VEOTTokenAPI.h"
#include "velmar/quil/api/VemcTokenAPI.h"

using namespace velmar::quil::api;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    fuzz::freshDevice();
    velmar::fake::pushBody(std::string(reinterpret_cast<const char*>(data) + 1, size - 1));
    const std::string base("https://cloud.test");
    std::string a, b;
    long long wide = 0;
    unsigned long long user = 0;
    int expire = 0;
    switch (data[0] % 10) {
        case 0:
            TimeSyncAPI::request(wide);
            break;
        case 1:
            if (PrivacySettingsAPI::getPrivacySettings(a, base, 1001) == 0) {
                rapidjson::Document document;
                fuzz::require(fuzz::parse(document, a) && document.IsObject(),
                              "privacy settings are no JSON object", a);
            }
            break;
        case 2:
            PrivacySettingsAPI::setPrivacySettings(base, 1001, "{}");
            break;
        case 3:
            VEOTTokenAPI::upload("t", "s", "1001", base);
            break;
        case 4:
            VEOTTokenAPI::download(a, b, expire, base);
            break;
        case 5:
            VemcTokenAPI::getToken(a, base);
            break;
        case 6:
            GetUserProfileAPI::request(user, "client", "token");
            break;
        case 7:
            CmccAndlinkAPI::getDeviceID(a, base);
            break;
        case 8:
            CmccAndlinkAPI::setDeviceID("cmcc", base);
            break;
        default:
            UpgradeAPI::checkUpgrade(a, wide, "p", "f", "1.0", "stable", "en", "US");
    }
    return 0;
}
