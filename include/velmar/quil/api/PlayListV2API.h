#pragma once

#include <string>
#include <vector>

#include "velmar/quil/Export.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

/// The account's playlists on the second playlist service, and the songs of a
/// playlist or channel a page at a time, in the "musics" document of
/// MusicSongInfoAPI (every song kept).
///
/// Blocks for one signed request of at most 15 s; safe from several threads
/// at once; keeps no state.
class VELMAR_QUIL_EXPORT PlayListV2API {
  public:
    PlayListV2API() = delete;

    /// "GET" "/device/playlist/v2/lists", no parameters of its own, signed.
    /// @param[out] listIds the "id" of each element of the answer's "data"
    ///     array, appended (never cleared; on a failure part-way the ones read
    ///     so far stay)
    /// @param baseUrl the device cloud service (`sQuilAPIURL`)
    /// @return ERROR_NONE (0); ERROR_HTTP_FAILED (604) when no answer came, it
    ///     holds no "data" array, or an element has no integer "id";
    ///     ERROR_GENERAL (101) for an unreadable element
    static utils::ErrorType getLists(std::vector<long long>& listIds, const std::string& baseUrl);
    /// "GET" "/device/playlist/v2/songs" with "listId", "offset" and "count"
    /// (decimal, not checked), signed.
    /// @param[out] result the "musics" document of the answer's
    ///     "data"."songList"; untouched on failure
    /// @param listId the playlist
    /// @param offset the page's first song
    /// @param count the page's length
    /// @param baseUrl the device cloud service (`sQuilAPIURL`)
    /// @return ERROR_NONE (0); ERROR_HTTP_FAILED (604) when no answer came or
    ///     it holds no "data"."songList" array; ERROR_GENERAL (101) for an
    ///     element that is missing or no object
    static utils::ErrorType getSongsInList(std::string& result, long long listId, int offset,
                                           int count, const std::string& baseUrl);
    /// "GET" "/device/playlist/v2/songs_in_channel", as getSongsInList(), for
    /// a channel; an element of another type than object reads as a song
    /// without members.
    /// @param[out] result the "musics" document; untouched on failure
    /// @param listId the channel
    /// @param offset the page's first song
    /// @param count the page's length
    /// @param baseUrl the device cloud service (`sQuilAPIURL`)
    /// @return as getSongsInList()
    static utils::ErrorType getSongsInChannel(std::string& result, long long listId, int offset,
                                              int count, const std::string& baseUrl);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
