#include "velmar/quil/api/MusicPlayListAPI.h"

#include "api/CatalogueService.h"
#include "velmar/utils/Logging.h"

namespace velmar {
namespace quil {
namespace api {

utils::ErrorType MusicPlayListAPI::getMusicPlayList(std::string& result, const std::string& baseUrl,
                                                    const std::string& listId) {
    static const std::string path("/music/playlist/");
    json::JSONObjectCleaner cleaner;
    json_object* data = nullptr;
    std::string response;
    utils::ErrorType status =
        detail::fetchCatalogueData(data, response, cleaner, baseUrl, path, "listId", listId, {});
    if (status != utils::ERROR_NONE) return status;
    // Handed over whatever its type; the caller knows the catalogue's lists.
    json_object* songs = json_object_object_get(data, "songList");
    if (songs == nullptr) {
        VLOG(4) << "Invalid response: " << response;
        return utils::ERROR_HTTP_FAILED;
    }
    result = json_object_get_string(songs);
    return utils::ERROR_NONE;
}

}  // namespace api
}  // namespace quil
}  // namespace velmar
