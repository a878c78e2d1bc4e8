#pragma once

#include <string>

#include "Output.h"
#include "velmar/utils/ErrorType.h"

namespace quilctl {

// The messaging configuration the daemons read their service addresses from.
constexpr const char* kConfigPath = "/usr/share/quil/messaging/messaging.conf";

// The device cloud service's base URL from the configuration file.
std::string cloudBaseUrl();

// "status" (the number) and "message" (its text); exit code 0 only for success.
int reportStatus(Output& out, velmar::utils::ErrorType status);
// "ok" for the calls that report a bool; exit code 0 only for true.
int reportOk(Output& out, bool ok);

// A credential shown by its first characters only, so that a shared terminal
// log does not leak it.
std::string masked(const std::string& secret);

}  // namespace quilctl
