#pragma once

#include <string>

#include "velmar/quil/Export.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

class VELMAR_QUIL_EXPORT MusicAlbumAPI {
  public:
    MusicAlbumAPI() = delete;

    // The "songID" values of an album's songs, as a JSON array in the types
    // the catalogue sent, by an unsigned GET. 0; 604 when the transport failed
    // or the answer holds no "data"."songList" array; 101 when a song or its
    // "songID" is missing. `result` is set only on success.
    static utils::ErrorType getMusicAlbum(std::string& result, const std::string& baseUrl,
                                          const std::string& albumId);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
