#pragma once

#include <string>

#include "velmar/quil/Export.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

/// Descriptions of songs, in the "musics" document every song list of the
/// library is handed out in:
/// {"musics":[{"artist_name":s,"song":s,"origin":s,"id":s,"global_id":n},...]}.
///
/// Blocks for one signed request of at most 15 s; safe from several threads
/// at once; keeps no state.
class VELMAR_QUIL_EXPORT MusicSongInfoAPI {
  public:
    MusicSongInfoAPI() = delete;

    /// "POST" "/device/music/song_info" with "songIdList" (the JSON text of
    /// the slice [start, start + count) of `songIdList`), signed. A slice past
    /// the end is cut short, and sent all the same.
    /// @param[out] result the "musics" document of the answer's "data" array;
    ///     songs without "origin" or "originSongID" are left out; untouched on failure
    /// @param baseUrl the device cloud service (`sQuilAPIURL`)
    /// @param songIdList a JSON array of song identifiers, sent as they are
    /// @param start the slice's first index, 0 or more
    /// @param count the slice's length; -1 for all to the end
    /// @return ERROR_NONE (0); ERROR_INVALID_ARGUMENT (606) for a `songIdList`
    ///     that is not a JSON array or a negative slice (nothing sent);
    ///     ERROR_HTTP_FAILED (604) when no answer came or it holds no "data"
    ///     array; ERROR_GENERAL (101) when an element is unreadable
    static utils::ErrorType getSongListInfo(std::string& result, const std::string& baseUrl,
                                            const std::string& songIdList, const int& start,
                                            const int& count);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
