#pragma once

#include <string>

#include "velmar/quil/Export.h"
#include "velmar/quil/TencentAccount.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

class VELMAR_QUIL_EXPORT TencentAccountAPI {
  public:
    TencentAccountAPI() = delete;

    // The linked Tencent account; fields missing from the answer keep their
    // values. 1002 when the device has no administrator to link, 101 for other
    // refusals, 610 for an answer not understood.
    static utils::ErrorType getTencentAccount(TencentAccount& account, const std::string& baseUrl);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
