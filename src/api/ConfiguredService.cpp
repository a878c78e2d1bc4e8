#include "api/ConfiguredService.h"

#include "api/Endpoint.h"
#include "velmar/quil/QuilConfigUtils.h"
#include "velmar/utils/ConfigFile.h"

namespace velmar {
namespace quil {
namespace api {
namespace detail {

using utils::ConfigFile;

std::string configuredUrl(const char* key) {
    return ConfigFile(kMessagingConfig).get(key);
}

utils::ErrorType lookUpOnUserProfile(std::string& result, bool preview, const std::string& path,
                                     const char* snKey) {
    Params params;
    if (snKey != nullptr) {
        std::string sn;
        if (!QuilConfigUtils::getSN(sn)) return utils::ERROR_GENERAL;
        params[snKey] = sn;
    }
    const std::string baseUrl = configuredUrl(preview ? ConfigFile::sQuilUserprofilePreviewURL
                                                      : ConfigFile::sQuilUserprofileURL);
    const std::string method("GET");
    return sendSigned(result, baseUrl, path, method, params);
}

}  // namespace detail
}  // namespace api
}  // namespace quil
}  // namespace velmar
