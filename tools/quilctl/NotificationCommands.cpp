// Push notifications landed on the user's phone.
#include <cstdlib>

#include "Command.h"
#include "Common.h"
#include "velmar/quil/VePushUtils.h"
#include "velmar/quil/api/NotificationAPI.h"

namespace quilctl {

namespace {

using namespace velmar::quil;

// The notification kind as its number; false when TYPE is not one.
bool parseType(const std::string& text, VePushType& type) {
    char* end = nullptr;
    long value = std::strtol(text.c_str(), &end, 10);
    if (text.empty() || *end != '\0' || value < 0 || value > 0x7fffffff) return false;
    type = static_cast<VePushType>(value);
    return true;
}

int runNotify(const Args& args, Output& out) {
    VePushType type = VE_PUSH_GENERAL;
    if (!parseType(args.positional[0], type))
        return reportStatus(out, velmar::utils::ERROR_INVALID_ARGUMENT);
    std::string response;
    bool ok = VePushUtils::notify(response, type, args.positional[1]);
    out.addDocument("response", response);
    return reportOk(out, ok);
}

int runSend(const Args& args, Output& out) {
    VePushType type = VE_PUSH_GENERAL;
    if (!parseType(args.positional[0], type))
        return reportStatus(out, velmar::utils::ERROR_INVALID_ARGUMENT);
    std::string response;
    auto status = api::NotificationAPI::send(response, cloudBaseUrl(), type, args.positional[1],
                                             args.positional[2], args.positional[3]);
    out.addDocument("response", response);
    return reportStatus(out, status);
}

}  // namespace

std::vector<Command> notificationCommands() {
    return {
        {"notify", "TYPE TEXT", "land a notification on the user's phone (the daemon's wrapper)", 2,
         2, runNotify},
        {"notification-send", "TYPE TITLE ABSTRACT EXTRA",
         "land a notification with every field given", 4, 4, runSend},
    };
}

}  // namespace quilctl
