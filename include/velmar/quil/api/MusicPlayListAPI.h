#pragma once

#include <string>

#include "velmar/quil/Export.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {

class VELMAR_QUIL_EXPORT MusicPlayListAPI {
  public:
    MusicPlayListAPI() = delete;

    // The "data"."songList" value of a catalogue playlist as text, whatever
    // its type, by an unsigned GET. 0; 604 when the transport failed or the
    // answer holds no "songList". `result` is set only on success.
    static utils::ErrorType getMusicPlayList(std::string& result, const std::string& baseUrl,
                                             const std::string& listId);
};

}  // namespace api
}  // namespace quil
}  // namespace velmar
