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
    static const std::string path(
        "/device_carrier/get_carrier_status");  // GCOVR_EXCL_BR_LINE: init guard
    return detail::lookUpOnUserProfile(result, preview, path, "sn");
}

void CarrierOperator::setCarrierOperatorStatus(const std::string& status) {
    static constexpr char kFile[] = "/data/messagingagent/carrier";
    json::JSONObjectCleaner cleaner;
    json_object* parsed = detail::parseAnswer(cleaner, status);
    // The plain form: what the messaging agent reads back has no added blanks.
    // (json-c writes no text only when memory runs out: nothing to store either.)
    const char* plain = parsed != nullptr
                            ? json_object_to_json_string_ext(parsed, JSON_C_TO_STRING_PLAIN)
                            : nullptr;
    if (plain == nullptr) {
        VLOG(4) << "Invalid carrier operator status: " << status;
        return;
    }
    const std::string text(plain);
    // Replaced whole (temporary file, then rename): a power cut mid-write
    // must not leave the agent a half-written status.
    if (!utils::FileUtils::writeAtomically(kFile, text)) {
        VLOG(4) << "Write carrier operator to file error: unable to open file";
    }
}

}  // namespace api
}  // namespace quil
}  // namespace velmar
