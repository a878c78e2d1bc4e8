#pragma once

#include <string>

#include "velmar/quil/Export.h"

namespace velmar {
namespace quil {
namespace api {

/// The log service (`sVeWiFiLOGURL` of the messaging configuration): device
/// logs as a signed form or as a file in a multipart form.
///
/// upload() blocks for one request of at most 15 s, uploadLite() for one
/// transfer of at most 100 s; safe from several threads at once; no state kept.
class VELMAR_QUIL_EXPORT LogUploadAPI {
  public:
    LogUploadAPI() = delete;

    /// The identifier of one upload, the parts joined as they are.
    /// @param part1 first part
    /// @param part2 second part
    /// @param part3 third part
    /// @return "common-<part1>-<part2>-<part3>"
    static std::string generateUploadID(const std::string& part1, const std::string& part2,
                                        const std::string& part3);

    /// "POST" `sVeWiFiLOGURL` + "/log/common/" + `uploadID` with the form
    /// fields "extra_data", "id", "payload", "_t", "_n" and their signature "_s".
    /// @param[out] response the service's answer, whatever its HTTP status
    /// @param uploadID from generateUploadID(); its characters that would end
    ///     a path segment are percent-encoded
    /// @param version the version to report, put into "extra_data" unescaped
    /// @param id sent as "id" as given
    /// @param payload the log, sent as given
    /// @return true when the transport delivered an answer without error,
    ///     whatever its HTTP status; false otherwise, or when `uploadID` is
    ///     "." or ".." (nothing sent); logged
    static bool upload(std::string& response, const std::string& uploadID,
                       const std::string& version, const std::string& id,
                       const std::string& payload);

    /// "POST" `sVeWiFiLOGURL` + "/log/lite/common/" + `uploadID` as a
    /// multipart form: the file as "payload", then "extra_data", "id", "mode"
    /// ("useRomTime"), "_t" and "_n"; unsigned, over IPv4, with the host port's
    /// rules for trust, proxy and `VELMAR_RESOLVE` (the library drives libcurl
    /// itself here).
    /// @param[in,out] response the service's answer, appended to what it holds
    ///     (at most 8 MiB: a larger one aborts the transfer)
    /// @param uploadID from generateUploadID(); percent-encoded as for upload()
    /// @param version the version to report, put into "extra_data" unescaped
    /// @param id sent as "id" as given
    /// @param timestamp sent as "_t" as given
    /// @param payloadPath the file to send
    /// @return true when the transfer completed, whatever the HTTP status;
    ///     false when it did not (the file unreadable included), or when
    ///     `uploadID` is "." or ".."; logged
    static bool uploadLite(std::string& response, const std::string& uploadID,
                           const std::string& version, const std::string& id,
                           const std::string& timestamp, const std::string& payloadPath);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
