// Settings of the Linux port that only tests change, so that a deadline can
// be proven without waiting for it. Not installed; not part of the port's
// interface.
#pragma once

#include "velmar/Export.h"

namespace velmar {
namespace host {
namespace detail {

// How long a device tool may run before its process group is killed.
int toolTimeoutMs();
VELMAR_PORT_EXPORT void setToolTimeoutMsForTest(int ms);  // 0 restores the default

}  // namespace detail
}  // namespace host
}  // namespace velmar
