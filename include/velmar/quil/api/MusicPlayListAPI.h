#pragma once

#include <string>

#include "velmar/quil/Export.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

/// The song list of a catalogue playlist, from the music catalogue service.
///
/// Blocks for one unsigned request of at most 15 s; safe from several threads
/// at once; keeps no state.
class VELMAR_QUIL_EXPORT MusicPlayListAPI {
  public:
    MusicPlayListAPI() = delete;

    /// "GET" "/music/playlist/" with "listId", unsigned (no cookies, no "requestId").
    /// @param[out] result the JSON text of the answer's "data"."songList",
    ///     whatever its type; untouched on failure
    /// @param baseUrl the catalogue service's address (the library holds no default)
    /// @param listId the playlist, sent as given
    /// @return ERROR_NONE (0); ERROR_HTTP_FAILED (604) when no answer came or
    ///     it holds no "data"."songList"
    static utils::ErrorType getMusicPlayList(std::string& result, const std::string& baseUrl,
                                             const std::string& listId);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
