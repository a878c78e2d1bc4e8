// The device cloud's check of a signed device request.
#pragma once

#include <optional>
#include <string>

#include "quilcloud/Cloud.h"

namespace quilcloud {

// The per-request device token: Base64 of HMAC-SHA256 over "<deviceId>/<nonce>"
// keyed with the first 16 bytes of the channel secret (zero-padded).
std::string deviceTokenFor(const std::string& channelSecret, const std::string& deviceId,
                           const std::string& nonce);

// A credential the cloud issues: `prefix` and 32 random hex digits.
std::string freshToken(const std::string& prefix);

// The device that signed `request`, or nothing, with `reply` already set to
// the refusal (401 for a bad signature or unknown device, 400 for a missing
// request ID) the way the real service refuses.
std::optional<Device> authenticate(Cloud& cloud, const Received& request, Reply& reply);

// {"code":CODE,"message":MESSAGE} with the message escaped.
std::string errorBody(int code, const std::string& message);

// Escapes `text` for use inside a JSON string literal.
std::string jsonEscape(const std::string& text);

}  // namespace quilcloud
