#include "Common.h"

#include "velmar/utils/ConfigFile.h"

namespace quilctl {

std::string cloudBaseUrl() {
    return velmar::utils::ConfigFile(kConfigPath).get(velmar::utils::ConfigFile::sQuilAPIURL);
}

int reportStatus(Output& out, velmar::utils::ErrorType status) {
    out.add("status", static_cast<int>(status));
    out.add("message", velmar::utils::ErrorCode::getErrorMessage(status));
    return status == velmar::utils::ERROR_NONE ? 0 : 1;
}

int reportOk(Output& out, bool ok) {
    out.add("ok", ok);
    return ok ? 0 : 1;
}

std::string masked(const std::string& secret) {
    if (secret.size() <= 4) return std::string(secret.size(), '*');
    return secret.substr(0, 4) + std::string(secret.size() - 4, '*');
}

}  // namespace quilctl
