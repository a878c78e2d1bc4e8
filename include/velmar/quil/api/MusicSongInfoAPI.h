#pragma once

#include <string>

#include "velmar/quil/Export.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

class VELMAR_QUIL_EXPORT MusicSongInfoAPI {
  public:
    MusicSongInfoAPI() = delete;

    // Describes the slice [start, start + count) of `songIdList` (a JSON array
    // of song identifiers; count -1 for all to the end) in the "musics"
    // document; songs without a source and source song ID are left out.
    // 0; 606 for a list that is not a JSON array or a negative slice; the
    // request's failure as it is; 604 for an answer without a "data" array;
    // 101 when an element is unreadable. `result` is set only on success.
    static utils::ErrorType getSongListInfo(std::string& result, const std::string& baseUrl,
                                            const std::string& songIdList, const int& start,
                                            const int& count);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
