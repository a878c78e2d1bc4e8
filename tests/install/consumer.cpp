// An outside program: built against the installed library only.
#include <iostream>
#include <string>

#include "velmar/quil/QuilConfigUtils.h"
#include "velmar/quil/api/PresenceAPI.h"

int main() {
    std::string locale;
    velmar::quil::QuilConfigUtils::getLocale(locale);
    std::string response;
    // Nothing listens on port 9 of loopback: the call must fail cleanly.
    auto status = velmar::quil::api::PresenceAPI::getPresence(response, "http://127.0.0.1:9");
    std::cout << locale << " " << static_cast<int>(status) << std::endl;
    return status == 604 ? 0 : 1;
}
