// The services keyed by the account that administers the device: they take
// the super administrator's user ID as "userId".
#pragma once

#include <string>

#include "api/Endpoint.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {
namespace detail {

// The super administrator's user ID as decimal text ("%lld"). False, with the
// line "Failed to get user id", when the device has none; throws as
// QuilConfigUtils::getSuperAdmin does on a stored ID that does not parse.
bool superAdminUserId(std::string& userId);

// The raw-answer shape of the account services: "userId" added to `params`,
// then the signed request. 101 and nothing sent without an administrator; a
// failed request is logged and its status returned with `response` untouched;
// on success `response` is the whole body, not looked at.
utils::ErrorType sendForSuperAdmin(std::string& response, const std::string& baseUrl,
                                   const std::string& path, const std::string& method,
                                   Params params);

}  // namespace detail
}  // namespace api
}  // namespace quil
}  // namespace velmar
