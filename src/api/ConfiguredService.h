// Endpoints that find their service's address in the messaging configuration
// themselves instead of taking it from their caller.
#pragma once

#include <string>

#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {
namespace detail {

constexpr const char kMessagingConfig[] = "/usr/share/quil/messaging/messaging.conf";

// The value of `key` in the messaging configuration ("" when missing).
std::string configuredUrl(const char* key);

// The lookups on the user-profile service (the preview instance when
// `preview`): the serial number goes along under `snKey` unless it is null.
// 101 with `result` untouched when the serial number is unreadable;
// otherwise `result` receives the answer (empty on failure) and the status is
// the signed request's.
utils::ErrorType lookUpOnUserProfile(std::string& result, bool preview, const std::string& path,
                                     const char* snKey);

}  // namespace detail
}  // namespace api
}  // namespace quil
}  // namespace velmar
