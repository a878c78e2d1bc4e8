// The song-list answers: the first byte picks the call, the rest is the
// cloud's body. Every call ends in 0, 101 or 604 and leaves its result
// untouched unless it succeeds; what a success hands out keeps every element
// of the answer's list (but for the song information, which leaves out songs
// without a source) in its documented shape.
#include <json-c/json.h>

#include <functional>
#include <vector>

#include "Endpoints.h"
#include "Harness.h"

using namespace velmar::quil::api;

namespace {

const std::string kBase("https://cloud.test");
const std::string kKept("kept");

bool isSong(const rapidjson::Value& song, bool sourced) {
    if (!song.IsObject() || song.MemberCount() != 5) return false;
    for (const char* key : {"artist_name", "song", "origin", "id"})
        if (!song.HasMember(key) || !song[key].IsString()) return false;
    const bool hasSource = song["origin"].GetStringLength() > 0 && song["id"].GetStringLength() > 0;
    return song.HasMember("global_id") && song["global_id"].IsInt64() && (hasSource || !sourced);
}

// Elements of the array at `path` as json-c, the library's parser, reads
// them; -1 when there is none.
long listed(const std::string& text, std::initializer_list<const char*> path) {
    json_object* root = json_tokener_parse(text.c_str());
    json_object* list = root;
    for (const char* key : path)
        json_object_object_get_ex(list, key, &list);
    const long count = json_object_is_type(list, json_type_array)
                           ? static_cast<long>(json_object_array_length(list))
                           : -1;
    json_object_put(root);
    return count;
}

// `entries` is the number of songs expected, or -1 when some may be left out.
void checkMusics(const std::string& text, bool sourced, long entries) {
    rapidjson::Document document;
    bool ok = fuzz::parse(document, text) && document.IsObject() && document.MemberCount() == 1 &&
              document.HasMember("musics") && document["musics"].IsArray() &&
              (entries < 0 || document["musics"].Size() == static_cast<size_t>(entries));
    for (size_t i = 0; ok && i < document["musics"].Size(); ++i)
        ok = isSong(document["musics"][static_cast<rapidjson::SizeType>(i)], sourced);
    fuzz::require(ok, "malformed musics document", text);
}

using Body = const std::string&;

// A playlist or channel page: one song per element of the answer's list.
void checkPage(Body result, Body body) {
    checkMusics(result, false, listed(body, {"data", "songList"}));
}

// An album's song IDs or a catalogue page: when the answer has a list, one
// element per element of it.
void checkSongs(Body result, Body body) {
    const long songs = listed(body, {"data", "songList"});
    fuzz::require(songs < 0 || listed(result, {}) == songs, "songs left out", result);
}

struct Row {
    std::function<int(std::string&)> call;
    std::function<void(Body result, Body body)> check;  // of a success
};

const Row kRows[] = {
    {[](std::string& r) {
         return MusicSongInfoAPI::getSongListInfo(r, kBase, "[1,\"2\",{}]", 0, -1);
     },
     [](Body r, Body) { checkMusics(r, true, -1); }},
    {[](std::string& r) {
         std::vector<long long> ids;
         const int status = PlayListV2API::getLists(ids, kBase);
         if (status == 0) r = std::to_string(ids.size());
         return status;
     },
     [](Body r, Body body) {
         fuzz::require(r == std::to_string(listed(body, {"data"})), "playlists left out", body);
     }},
    {[](std::string& r) { return PlayListV2API::getSongsInList(r, 7, 0, 20, kBase); }, checkPage},
    {[](std::string& r) { return PlayListV2API::getSongsInChannel(r, 7, 0, 20, kBase); },
     checkPage},
    {[](std::string& r) { return MusicAlbumAPI::getMusicAlbum(r, kBase, "a"); }, checkSongs},
    {[](std::string& r) { return MusicPlayListAPI::getMusicPlayList(r, kBase, "p"); }, checkSongs},
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string body;
    const Row* row = fuzz::answerRow(kRows, data, size, body);
    if (row == nullptr) return 0;
    std::string result = kKept;
    const int status = row->call(result);
    fuzz::require(status == 0 || status == 101 || status == 604, "undocumented status",
                  std::to_string(status));
    if (status == 0) row->check(result, body);
    if (status != 0) fuzz::require(result == kKept, "result changed by a failure", result);
    return 0;
}
