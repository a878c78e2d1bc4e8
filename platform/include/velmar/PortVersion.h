// The version of the port a process runs against. Optional for a port: the
// declaration is weak, so a caller tests the function's address before the
// call (the host port defines it; an integrator's port may not).
#pragma once

#include "velmar/Export.h"

extern "C" {
// "MAJOR.MINOR.PATCH" of the port, a constant string.
VELMAR_PORT_EXPORT const char* velmar_port_version(void) __attribute__((weak));
}
