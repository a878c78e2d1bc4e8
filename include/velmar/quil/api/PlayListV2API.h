#pragma once

#include <string>
#include <vector>

#include "velmar/quil/Export.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

class VELMAR_QUIL_EXPORT PlayListV2API {
  public:
    PlayListV2API() = delete;

    // Appends the identifiers of the account's playlists to `listIds` (never
    // cleared; on a failure part-way the ones read so far stay). 0; 604 when
    // the request failed or an answer or "id" is unusable; 101 for an
    // unreadable element.
    static utils::ErrorType getLists(std::vector<long long>& listIds, const std::string& baseUrl);
    // One page of a playlist's songs as the "musics" document, every song kept.
    // 0; 604 when the request failed or the answer holds no "songList" array;
    // 101 for an element that is missing or no object. `result` is set only
    // on success.
    static utils::ErrorType getSongsInList(std::string& result, long long listId, int offset,
                                           int count, const std::string& baseUrl);
    // As getSongsInList, for a channel; elements are not checked for type.
    static utils::ErrorType getSongsInChannel(std::string& result, long long listId, int offset,
                                              int count, const std::string& baseUrl);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
