#pragma once

#include <string>

#include "velmar/quil/Export.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

/// The songs of an album, from the music catalogue service.
///
/// Blocks for one unsigned request of at most 15 s; safe from several threads
/// at once; keeps no state.
class VELMAR_QUIL_EXPORT MusicAlbumAPI {
  public:
    MusicAlbumAPI() = delete;

    /// "GET" "/music/album_info" with "albumId", unsigned (no cookies, no
    /// "requestId").
    /// @param[out] result a JSON array of the "songID" of each song in the
    ///     answer's "data"."songList", in the types the catalogue sent;
    ///     untouched on failure
    /// @param baseUrl the catalogue service's address (the library holds no default)
    /// @param albumId the album, sent as given
    /// @return ERROR_NONE (0); ERROR_HTTP_FAILED (604) when no answer came or
    ///     it holds no "data"."songList" array; ERROR_GENERAL (101) when a
    ///     song or its "songID" is missing
    static utils::ErrorType getMusicAlbum(std::string& result, const std::string& baseUrl,
                                          const std::string& albumId);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
