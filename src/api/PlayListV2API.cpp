#include "velmar/quil/api/PlayListV2API.h"

#include "api/Endpoint.h"
#include "api/MusicsDocument.h"
#include "velmar/utils/Logging.h"

namespace velmar {
namespace quil {
namespace api {

namespace {

// The playlist service turns a failed request into 604 (after a line of its
// own) instead of passing its status on.
bool fetched(std::string& response, const std::string& baseUrl, const std::string& path,
             const detail::Params& params) {
    const std::string method("GET");
    utils::ErrorType status = detail::sendSigned(response, baseUrl, path, method, params);
    if (status == utils::ERROR_NONE) return true;
    VLOG(4) << "httpRequest() failed with ("
            << "error code: " << status << ")";
    return false;
}

// One page of songs from { "data": { "songList": [ ... ] } } as the "musics"
// document.
utils::ErrorType listSongs(std::string& result, const std::string& baseUrl, const std::string& path,
                           long long listId, int offset, int count,
                           const detail::SongListRules& rules) {
    detail::Params params;
    params["listId"] = detail::decimal(listId);
    params["offset"] = detail::decimal(offset);
    params["count"] = detail::decimal(count);
    std::string response;
    if (!fetched(response, baseUrl, path, params)) return utils::ERROR_HTTP_FAILED;

    json::JSONObjectCleaner cleaner;
    json_object* root = detail::parseAnswer(cleaner, response);
    json_object* data = nullptr;
    json_object* songs = nullptr;
    if (json::JSONUtils::getJSONObject(root, "data", data))
        songs = detail::arrayMember(data, "songList");
    if (songs == nullptr) {
        VLOG(4) << "Invalid response: " << response;
        return utils::ERROR_HTTP_FAILED;
    }
    return detail::writeMusics(result, cleaner, songs, rules);
}

}  // namespace

utils::ErrorType PlayListV2API::getLists(std::vector<long long>& listIds,
                                         const std::string& baseUrl) {
    static const std::string path("/device/playlist/v2/lists");  // GCOVR_EXCL_BR_LINE: init guard
    std::string response;
    if (!fetched(response, baseUrl, path, {})) return utils::ERROR_HTTP_FAILED;

    json::JSONObjectCleaner cleaner;
    json_object* root = detail::parseAnswer(cleaner, response);
    json_object* playlists = detail::arrayMember(root, "data");
    if (playlists == nullptr) {
        VLOG(4) << "Error when Json parse response: " << response;
        return utils::ERROR_HTTP_FAILED;
    }
    // Identifiers are appended as they are read: a failure part-way leaves
    // the earlier ones with the caller.
    const size_t length = json_object_array_length(playlists);
    for (size_t i = 0; i < length; ++i) {
        json_object* playlist = json_object_array_get_idx(playlists, i);
        if (playlist == nullptr) {
            VLOG(4) << "Cannot get playlistObject from array at idx:" << i;
            return utils::ERROR_GENERAL;
        }
        long long id = 0;
        if (!json::JSONUtils::getInt(playlist, "id", id)) {
            VLOG(4) << "Error when Json parse response: " << response;
            return utils::ERROR_HTTP_FAILED;
        }
        listIds.push_back(id);
    }
    return utils::ERROR_NONE;
}

utils::ErrorType PlayListV2API::getSongsInList(std::string& result, long long listId, int offset,
                                               int count, const std::string& baseUrl) {
    static const std::string path("/device/playlist/v2/songs");  // GCOVR_EXCL_BR_LINE: init guard
    detail::SongListRules rules;
    rules.objectsOnly = true;
    return listSongs(result, baseUrl, path, listId, offset, count, rules);
}

// The channel service is trusted with the type of its songs: an element of
// another type is read as a song without members.
utils::ErrorType PlayListV2API::getSongsInChannel(std::string& result, long long listId, int offset,
                                                  int count, const std::string& baseUrl) {
    static const std::string path(
        "/device/playlist/v2/songs_in_channel");  // GCOVR_EXCL_BR_LINE: init guard
    return listSongs(result, baseUrl, path, listId, offset, count, detail::SongListRules());
}

}  // namespace api
}  // namespace quil
}  // namespace velmar
