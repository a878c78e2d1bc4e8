#include "api/MusicsDocument.h"

#include "velmar/utils/Logging.h"

namespace velmar {
namespace quil {
namespace api {
namespace detail {

namespace {

// A string member of a song, "" when it is absent or of another type.
std::string text(json_object* object, const char* key) {
    std::string value;
    json::JSONUtils::getString(object, key, value);
    return value;
}

// json-c makes and takes objects unless memory runs out: the branches that
// handle a refusal carry coverage markers, since no input reaches them.
// GCOVR_EXCL_BR_START: json-c refuses only when memory runs out

// Hands `value` to `object` under `key` (a literal: json-c keeps the pointer
// instead of a copy). False, `value` released, when json-c made no value or
// would not take it.
bool adopt(json_object* object, const char* key, json_object* value) {
    const unsigned options = JSON_C_OBJECT_ADD_KEY_IS_NEW | JSON_C_OBJECT_ADD_CONSTANT_KEY;
    const bool taken =
        value != nullptr && json_object_object_add_ex(object, key, value, options) == 0;
    if (!taken) json_object_put(value);
    return taken;
}

// As adopt, appending to an array.
bool adopt(json_object* array, json_object* value) {
    const bool taken = value != nullptr && json_object_array_add(array, value) == 0;
    if (!taken) json_object_put(value);
    return taken;
}
// GCOVR_EXCL_BR_STOP

// GCOVR_EXCL_START: called only when json-c refuses
utils::ErrorType refused(const char* line) {
    VLOG(4) << line;
    return utils::ERROR_GENERAL;
}
// GCOVR_EXCL_STOP

utils::ErrorType appendSong(json_object* musics, json_object* song, const SongListRules& rules) {
    const std::string title = text(song, "name");
    const std::string origin = text(song, "origin");
    const std::string originSongId = text(song, "originSongID");
    long long songId = 0;
    json::JSONUtils::getInt(song, "songID", songId);
    json_object* artist = nullptr;
    json::JSONUtils::getJSONObject(song, "artist", artist);
    const std::string artistName = text(artist, "name");
    if (rules.sourcedOnly && (origin.empty() || originSongId.empty())) return utils::ERROR_NONE;

    // The entry joins the list before it is filled, so that the list owns it
    // whatever happens next. Its members are new objects made from the
    // values read; the document shares nothing with the answer.
    json_object* entry = json_object_new_object();
    // GCOVR_EXCL_BR_START: json-c refuses only when memory runs out
    if (!adopt(musics, entry)) return refused("responseSongInfoObject Create Error");
    if (!adopt(entry, "artist_name", json_object_new_string(artistName.c_str())))
        return refused("artistNameObject Create Error");  // GCOVR_EXCL_LINE: out of memory
    if (!adopt(entry, "song", json_object_new_string(title.c_str())))
        return refused("songObject Create Error");  // GCOVR_EXCL_LINE: out of memory
    if (!adopt(entry, "origin", json_object_new_string(origin.c_str())))
        return refused("originObject Create Error");  // GCOVR_EXCL_LINE: out of memory
    if (!adopt(entry, "id", json_object_new_string(originSongId.c_str())))
        return refused("idObject Create Error");  // GCOVR_EXCL_LINE: out of memory
    if (!adopt(entry, "global_id", json_object_new_int64(songId)))
        return refused("globalIdObject Create Error");  // GCOVR_EXCL_LINE: out of memory
    // GCOVR_EXCL_BR_STOP
    return utils::ERROR_NONE;
}

}  // namespace

utils::ErrorType writeMusics(std::string& result, json::JSONObjectCleaner& cleaner,
                             json_object* songs, const SongListRules& rules) {
    // GCOVR_EXCL_BR_START: json-c refuses only when memory runs out
    json_object* document = cleaner.add(json_object_new_object());
    if (document == nullptr) return refused("responseMusicsObject Create Error");
    json_object* musics = json_object_new_array();
    if (!adopt(document, "musics", musics)) return refused("songInfoListObject Create Error");
    // GCOVR_EXCL_BR_STOP

    const size_t length = json_object_array_length(songs);
    for (size_t i = 0; i < length; ++i) {
        json_object* song = json_object_array_get_idx(songs, i);
        if (song == nullptr ||
            (rules.objectsOnly && !json_object_is_type(song, json_type_object))) {
            VLOG(4) << "Cannot get songInfoObject from array at idx:" << i;
            return utils::ERROR_GENERAL;
        }
        utils::ErrorType status = appendSong(musics, song, rules);
        if (status != utils::ERROR_NONE) return status;  // GCOVR_EXCL_BR_LINE: out of memory
    }
    result = json_object_get_string(document);
    return utils::ERROR_NONE;
}

json_object* arrayMember(json_object* object, const char* key) {
    json_object* value = nullptr;
    if (!json_object_object_get_ex(object, key, &value)) return nullptr;
    return json_object_is_type(value, json_type_array) ? value : nullptr;
}

bool appendShared(json_object* array, json_object* element) {
    return adopt(array, json_object_get(element));
}

}  // namespace detail
}  // namespace api
}  // namespace quil
}  // namespace velmar
