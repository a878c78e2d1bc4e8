#pragma once

#include <string>

#include "velmar/quil/Export.h"

namespace velmar {
namespace quil {
namespace api {

class VELMAR_QUIL_EXPORT LogUploadAPI {
  public:
    LogUploadAPI() = delete;

    // "common-<part1>-<part2>-<part3>": the identifier of one upload.
    static std::string generateUploadID(const std::string& part1, const std::string& part2,
                                        const std::string& part3);

    // Posts `payload` as a signed form. True when the transport delivered it
    // without error, whatever the service's status: its answer is in `response`.
    static bool upload(std::string& response, const std::string& uploadID,
                       const std::string& version, const std::string& id,
                       const std::string& payload);

    // Posts the file at `payloadPath` as a multipart form. True when the
    // transfer completed, whatever the service's status; its answer is
    // appended to `response`.
    static bool uploadLite(std::string& response, const std::string& uploadID,
                           const std::string& version, const std::string& id,
                           const std::string& timestamp, const std::string& payloadPath);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
