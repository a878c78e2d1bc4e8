// The song-list answers: the first byte picks the call, the rest is the
// cloud's body. A "musics" document handed out must have its fixed shape, and
// a playlist or channel page one entry per element of the answer's list.
#include <json-c/json.h>

#include <vector>

#include "Harness.h"
#include "velmar/quil/api/MusicSongInfoAPI.h"
#include "velmar/quil/api/PlayListV2API.h"

using namespace velmar::quil::api;

namespace {

const std::string kBase("https://cloud.test");

bool isSong(const rapidjson::Value& song, bool sourced) {
    if (!song.IsObject() || song.MemberCount() != 5) return false;
    for (const char* key : {"artist_name", "song", "origin", "id"})
        if (!song.HasMember(key) || !song[key].IsString()) return false;
    const bool hasSource = song["origin"].GetStringLength() > 0 && song["id"].GetStringLength() > 0;
    return song.HasMember("global_id") && song["global_id"].IsInt64() && (hasSource || !sourced);
}

// Elements of "data"."songList" as json-c, the library's parser, reads them.
size_t listed(const std::string& body) {
    json_object* root = json_tokener_parse(body.c_str());
    json_object *data = nullptr, *songs = nullptr;
    json_object_object_get_ex(root, "data", &data);
    json_object_object_get_ex(data, "songList", &songs);
    const size_t count =
        json_object_is_type(songs, json_type_array) ? json_object_array_length(songs) : 0;
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

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    fuzz::freshDevice();
    const std::string body(reinterpret_cast<const char*>(data) + 1, size - 1);
    velmar::fake::pushBody(body);
    std::string result;
    switch (data[0] % 4) {
        case 0:
            if (MusicSongInfoAPI::getSongListInfo(result, kBase, "[1,\"2\",{}]", 0, -1) == 0)
                checkMusics(result, true, -1);
            break;
        case 1: {
            std::vector<long long> ids;
            PlayListV2API::getLists(ids, kBase);
            break;
        }
        case 2:
            if (PlayListV2API::getSongsInList(result, 7, 0, 20, kBase) == 0)
                checkMusics(result, false, static_cast<long>(listed(body)));
            break;
        default:
            if (PlayListV2API::getSongsInChannel(result, 7, 0, 20, kBase) == 0)
                checkMusics(result, false, static_cast<long>(listed(body)));
    }
    return 0;
}
