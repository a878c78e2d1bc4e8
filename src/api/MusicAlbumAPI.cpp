#include "velmar/quil/api/MusicAlbumAPI.h"

#include "api/CatalogueService.h"
#include "api/MusicsDocument.h"
#include "velmar/utils/Logging.h"

namespace velmar {
namespace quil {
namespace api {

utils::ErrorType MusicAlbumAPI::getMusicAlbum(std::string& result, const std::string& baseUrl,
                                              const std::string& albumId) {
    static const std::string path("/music/album_info");  // GCOVR_EXCL_BR_LINE: init guard
    // The album service is asked with one (empty) extra header line.
    const std::vector<std::string> headers(1);
    json::JSONObjectCleaner cleaner;
    json_object* songs = nullptr;
    // A "songList" that is no array is refused as if missing: nothing defines
    // walking it.
    utils::ErrorType status = detail::fetchCatalogueSongList(songs, cleaner, baseUrl, path,
                                                             "albumId", albumId, headers, true);
    if (status != utils::ERROR_NONE) return status;

    json_object* songIds = cleaner.add(json_object_new_array());
    // GCOVR_EXCL_START: json-c makes an empty array unless memory runs out
    if (songIds == nullptr) {
        VLOG(4) << "Create songIdListObject Error";
        return utils::ERROR_GENERAL;
    }
    // GCOVR_EXCL_STOP
    // Each "songID" goes over in the type the catalogue gave it.
    const size_t length = json_object_array_length(songs);
    for (size_t i = 0; i < length; ++i) {
        json_object* song = json_object_array_get_idx(songs, i);
        if (song == nullptr) {
            VLOG(4) << "Cannot get songObject at songListObject idx:" << i;
            return utils::ERROR_GENERAL;
        }
        // A missing or null "songID" is nothing to share.
        if (!detail::appendShared(songIds, json_object_object_get(song, "songID"))) {
            VLOG(4) << "Cannot get songIdObject at songListObject idx:" << i;
            return utils::ERROR_GENERAL;
        }
    }
    result = json_object_get_string(songIds);
    return utils::ERROR_NONE;
}

}  // namespace api
}  // namespace quil
}  // namespace velmar
