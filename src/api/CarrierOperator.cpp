#include "velmar/quil/api/CarrierOperator.h"

#include <json-c/json.h>

#include "api/ConfiguredService.h"
#include "api/Endpoint.h"
#include "velmar/utils/FileUtils.h"
#include "velmar/utils/Logging.h"

namespace velmar {
namespace quil {
namespace api {

utils::ErrorType CarrierOperator::getCarrierOperatorStatus(std::string& result, bool preview) {
    static const std::string path("/device_carrier/get_carrier_status");
    return detail::lookUpOnUserProfile(result, preview, path, "sn");
}

void CarrierOperator::setCarrierOperatorStatus(const std::string& status) {
    static const std::string file("/data/messagingagent/carrier");
    json::JSONObjectCleaner cleaner;
    json_object* parsed = detail::parseAnswer(cleaner, status);
    if (parsed == nullptr) {
        VLOG(4) << "Invalid carrier operator status: " << status;
        return;
    }
    // The plain form: what the messaging agent reads back has no added blanks.
    const char* plain = json_object_to_json_string_ext(parsed, JSON_C_TO_STRING_PLAIN);
    if (plain == nullptr) {
        VLOG(4) << "Invalid carrier operator status: " << status;
        return;
    }
    const std::string text(plain);
    // Replaced whole (temporary file, then rename): a power cut mid-write
    // must not leave the agent a half-written status.
    if (!utils::FileUtils::writeAtomically(file, text)) {
        VLOG(4) << "Write carrier operator to file error: unable to open file";
    }
}

}  // namespace api
}  // namespace quil
}  // namespace velmar
