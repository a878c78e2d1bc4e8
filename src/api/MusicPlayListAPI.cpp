#include "velmar/quil/api/MusicPlayListAPI.h"

#include "api/CatalogueService.h"

namespace velmar {
namespace quil {
namespace api {

utils::ErrorType MusicPlayListAPI::getMusicPlayList(std::string& result, const std::string& baseUrl,
                                                    const std::string& listId) {
    static const std::string path("/music/playlist/");  // GCOVR_EXCL_BR_LINE: init guard
    json::JSONObjectCleaner cleaner;
    json_object* songs = nullptr;
    // Handed over whatever its type; the caller knows the catalogue's lists.
    utils::ErrorType status =
        detail::fetchCatalogueSongList(songs, cleaner, baseUrl, path, "listId", listId, {}, false);
    if (status != utils::ERROR_NONE) return status;
    result = json_object_get_string(songs);
    return utils::ERROR_NONE;
}

}  // namespace api
}  // namespace quil
}  // namespace velmar
