#include "velmar/quil/api/MusicSongInfoAPI.h"

#include <algorithm>

#include "api/Endpoint.h"
#include "api/MusicsDocument.h"
#include "velmar/utils/Logging.h"

namespace velmar {
namespace quil {
namespace api {

utils::ErrorType MusicSongInfoAPI::getSongListInfo(std::string& result, const std::string& baseUrl,
                                                   const std::string& songIdList, const int& start,
                                                   const int& count) {
    static const std::string path("/device/music/song_info");  // GCOVR_EXCL_BR_LINE: init guard
    const std::string method("POST");
    json::JSONObjectCleaner cleaner;

    json_object* songIds = detail::parseAnswer(cleaner, songIdList);
    // JSON of another type than an array has no slice to take: refused like
    // text that is no JSON, since nothing defines it.
    if (songIds == nullptr || !json_object_is_type(songIds, json_type_array)) {
        VLOG(4) << "Invalid parameter: " << songIdList;
        return utils::ERROR_INVALID_ARGUMENT;
    }
    if (start < 0 || count < -1) {
        VLOG(4) << "Invalid parameter:start" << start << " count" << count;
        return utils::ERROR_INVALID_ARGUMENT;
    }
    // A start past the end is an empty slice and a count past the end is cut
    // down; the cloud is asked all the same.
    const size_t length = json_object_array_length(songIds);
    const size_t first = std::min(static_cast<size_t>(start), length);
    const size_t available = length - first;
    const size_t taken = count != -1 && static_cast<size_t>(count) <= available
                             ? static_cast<size_t>(count)
                             : available;
    json_object* slice = cleaner.add(json_object_new_array());
    // GCOVR_EXCL_START: json-c makes an empty array unless memory runs out
    if (slice == nullptr) {
        VLOG(4) << "requestSongIdListObject Create Error";
        return utils::ERROR_GENERAL;
    }
    // GCOVR_EXCL_STOP
    for (size_t i = first; i < first + taken; ++i) {
        // A hole in the list is no element to share.
        if (!detail::appendShared(slice, json_object_array_get_idx(songIds, i))) {
            VLOG(4) << "Cannot get requestSongIdObject from array at idx:" << i;
            return utils::ERROR_GENERAL;
        }
    }

    detail::Params params;
    params["songIdList"] = json_object_get_string(slice);
    std::string response;
    utils::ErrorType status = detail::sendSigned(response, baseUrl, path, method, params);
    if (status != utils::ERROR_NONE) return status;

    json_object* root = detail::parseAnswer(cleaner, response);
    json_object* songs = detail::arrayMember(root, "data");
    if (songs == nullptr) {
        VLOG(4) << "Invalid response: " << response;
        return utils::ERROR_HTTP_FAILED;
    }
    detail::SongListRules rules;
    rules.sourcedOnly = true;  // only songs the player can fetch from their source
    return detail::writeMusics(result, cleaner, songs, rules);
}

}  // namespace api
}  // namespace quil
}  // namespace velmar
