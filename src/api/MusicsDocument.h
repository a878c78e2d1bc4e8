// The "musics" document: the one shape in which the library hands out every
// song list of the cloud (song information, playlist pages, channel pages),
// and the json-c pieces the music endpoints share.
#pragma once

#include <json-c/json.h>

#include <string>

#include "velmar/json/JSONUtils.h"
#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace quil {
namespace api {
namespace detail {

// How the song list of an answer is read into the document.
struct SongListRules {
    // An element that is no JSON object fails the list; otherwise its members
    // read as absent.
    bool objectsOnly = false;
    // Songs without "origin" or "originSongID" are left out.
    bool sourcedOnly = false;
};

// Reshapes `songs`, a JSON array of the cloud's song objects, into
//   {"musics":[{"artist_name":s,"song":s,"origin":s,"id":s,"global_id":n},...]}
// and sets `result` to its text. The document is registered with `cleaner`.
// 101 with the matching line when an element can't be read or an object
// can't be created; `result` is then untouched.
utils::ErrorType writeMusics(std::string& result, json::JSONObjectCleaner& cleaner,
                             json_object* songs, const SongListRules& rules);

// Member `key` of `object` when it is an array, else null (borrowed). A member
// of another type where the services send an array is undefined; it is refused
// as if missing rather than walked.
json_object* arrayMember(json_object* object, const char* key);

// Appends `element` of another tree to `array`, taking one more reference so
// that each tree releases its own. False, nothing changed, when `element` is
// null or json-c can't.
bool appendShared(json_object* array, json_object* element);

}  // namespace detail
}  // namespace api
}  // namespace quil
}  // namespace velmar
