#pragma once

#include <string>

#include "velmar/quil/Export.h"
#include "velmar/quil/VePushType.h"

namespace velmar {
namespace quil {

class VELMAR_QUIL_EXPORT VePushUtils {
  public:
    VePushUtils() = delete;

    // Lands a notification through the device cloud named in the messaging
    // configuration. Title and abstract go out empty; the text travels in
    // "extraAttributes", which is where the phone app reads it. True when the
    // cloud was reached; the raw answer in `response` (empty on failure).
    static bool notify(std::string& response, const VePushType& type,
                       const std::string& extraAttributes);
};

}  // namespace quil
}  // namespace velmar
