#pragma once

#include <string>

#include "velmar/quil/Export.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

/// The action-log collector.
///
/// Blocks for one unsigned request of at most 15 s; safe from several threads
/// at once; keeps no state.
class VELMAR_QUIL_EXPORT ActionLogAPI {
  public:
    ActionLogAPI() = delete;

    /// "POST" `host` + "/action/v2/c/" + `did` with the form fields "payload"
    /// and "_nonce". Progress and outcome are printed on standard output
    /// (not logged); the result never tells a failure: the caller judges
    /// `response`.
    /// @param[out] response the body received, if any
    /// @param did the device's identifier; its characters that would end a
    ///     path segment are percent-encoded; "." or ".." is not sent
    /// @param payload the record, as the caller encoded it
    /// @param host the collector's address (scheme, host, port)
    /// @return ERROR_NONE (0), always
    static utils::ErrorType upload(std::string& response, const std::string& did,
                                   const std::string& payload, const std::string& host);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
