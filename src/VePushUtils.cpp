#include "velmar/quil/VePushUtils.h"

#include "api/ConfiguredService.h"
#include "velmar/quil/api/NotificationAPI.h"
#include "velmar/utils/ConfigFile.h"

namespace velmar {
namespace quil {

bool VePushUtils::notify(std::string& response, const VePushType& type,
                         const std::string& extraAttributes) {
    const std::string baseUrl = api::detail::configuredUrl(utils::ConfigFile::sQuilAPIURL);
    // The phone app shows the text it finds in "extraAttributes"; title and
    // abstract stay empty on purpose.
    return api::NotificationAPI::send(response, baseUrl, type, "", "", extraAttributes) ==
           utils::ERROR_NONE;
}

}  // namespace quil
}  // namespace velmar
