// The version of libvelmar_quil. version() tells which library the process
// runs against, whatever it was compiled with. The shared object's SONAME
// (libvelmar_quil.so.N) changes only when its binary interface breaks; the
// version changes with every release.
#pragma once

#include "velmar/quil/Export.h"

namespace velmar {
namespace quil {

/// The version of the library the process runs against.
/// @return "MAJOR.MINOR.PATCH", e.g. "0.1.0": a constant string, safe from any thread
VELMAR_QUIL_EXPORT const char* version();

}  // namespace quil
}  // namespace velmar
