#include "velmar/quil/Version.h"

namespace velmar {
namespace quil {

// VELMAR_QUIL_VERSION_TEXT comes from the build's one version (project()).
const char* version() {
    return VELMAR_QUIL_VERSION_TEXT;
}

}  // namespace quil
}  // namespace velmar
