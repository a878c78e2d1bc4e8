// Music and content: song information, the account's playlists and
// channels, the catalogue service, content listings, children's courses and
// the music action log.
#include <cerrno>
#include <climits>
#include <cstdlib>

#include "Command.h"
#include "Common.h"
#include "velmar/quil/QuilConfigUtils.h"
#include "velmar/quil/api/LoadMoreAPI.h"
#include "velmar/quil/api/LoadMoreV2API.h"
#include "velmar/quil/api/MusicActionLogAPI.h"
#include "velmar/quil/api/MusicAlbumAPI.h"
#include "velmar/quil/api/MusicPlayListAPI.h"
#include "velmar/quil/api/MusicRecommendAPI.h"
#include "velmar/quil/api/MusicSongInfoAPI.h"
#include "velmar/quil/api/MusicStationAPI.h"
#include "velmar/quil/api/PlayListV2API.h"
#include "velmar/quil/api/PlayResourceAPI.h"

namespace quilctl {

namespace {

using namespace velmar::quil::api;
using velmar::utils::ErrorType;

// Positional argument `i`, or `fallback` when it was not given.
std::string argOr(const Args& args, size_t i, const std::string& fallback) {
    return i < args.positional.size() ? args.positional[i] : fallback;
}

// Whole numbers in [low, high]; false for anything else.
bool parseNumber(const std::string& text, long long low, long long high, long long& value) {
    if (text.empty()) return false;
    char* end = nullptr;
    errno = 0;
    value = std::strtoll(text.c_str(), &end, 10);
    return errno == 0 && *end == '\0' && value >= low && value <= high;
}

// The integer arguments of a command, from position `first` on (defaults for
// those not given); false when one is no number of its range.
bool intArgs(const Args& args, size_t first, std::initializer_list<int*> values,
             std::initializer_list<int> defaults) {
    auto fallback = defaults.begin();
    size_t i = first;
    for (int* value : values) {
        long long parsed = *fallback++;
        if (i < args.positional.size() &&
            !parseNumber(args.positional[i], INT_MIN, INT_MAX, parsed)) {
            return false;
        }
        *value = static_cast<int>(parsed);
        ++i;
    }
    return true;
}

// A 64-bit identifier first, then OFFSET and COUNT from position `pageAt` on
// (0 and 20 when not given); false when one is no number of its range.
bool idAndPage(const Args& args, size_t pageAt, long long& id, int& offset, int& count) {
    return parseNumber(args.positional[0], LLONG_MIN, LLONG_MAX, id) &&
           intArgs(args, pageAt, {&offset, &count}, {0, 20});
}

int badArgument(Output& out) {
    return reportStatus(out, velmar::utils::ERROR_INVALID_ARGUMENT);
}

int rawAnswer(Output& out, ErrorType status, const std::string& response) {
    out.addDocument("response", response);
    return reportStatus(out, status);
}

// Out-values filled only on success go out only then.
int document(Output& out, const char* key, ErrorType status, const std::string& text) {
    if (status == velmar::utils::ERROR_NONE) out.addDocument(key, text);
    return reportStatus(out, status);
}

int runSongInfo(const Args& args, Output& out) {
    int start = 0;
    int count = -1;
    if (!intArgs(args, 1, {&start, &count}, {0, -1})) return badArgument(out);
    std::string musics;
    auto status =
        MusicSongInfoAPI::getSongListInfo(musics, cloudBaseUrl(), args.positional[0], start, count);
    return document(out, "songInfo", status, musics);
}

int runPlaylists(const Args&, Output& out) {
    std::vector<long long> listIds;
    auto status = PlayListV2API::getLists(listIds, cloudBaseUrl());
    out.addInts("listIds", listIds);  // what was read, also before a failure
    return reportStatus(out, status);
}

// playlist-songs and channel-songs: LISTID [OFFSET [COUNT]].
int runSongPage(const Args& args, Output& out,
                ErrorType (*page)(std::string&, long long, int, int, const std::string&)) {
    long long listId = 0;
    int offset = 0;
    int count = 0;
    if (!idAndPage(args, 1, listId, offset, count)) return badArgument(out);
    std::string musics;
    auto status = page(musics, listId, offset, count, cloudBaseUrl());
    return document(out, "songs", status, musics);
}

int runPlaylistSongs(const Args& args, Output& out) {
    return runSongPage(args, out, PlayListV2API::getSongsInList);
}

int runChannelSongs(const Args& args, Output& out) {
    return runSongPage(args, out, PlayListV2API::getSongsInChannel);
}

// The catalogue service is the device cloud's address unless given.
int runAlbum(const Args& args, Output& out) {
    std::string songIds;
    auto status =
        MusicAlbumAPI::getMusicAlbum(songIds, argOr(args, 1, cloudBaseUrl()), args.positional[0]);
    return document(out, "songIds", status, songIds);
}

int runCataloguePlaylist(const Args& args, Output& out) {
    std::string songList;
    auto status = MusicPlayListAPI::getMusicPlayList(songList, argOr(args, 1, cloudBaseUrl()),
                                                     args.positional[0]);
    return document(out, "songList", status, songList);
}

int runRecommend(const Args& args, Output& out) {
    std::string response;
    auto status = MusicRecommendAPI::getMusicRecommendation(response, cloudBaseUrl(),
                                                            args.positional[0], args.positional[1]);
    return rawAnswer(out, status, response);
}

int runStation(const Args& args, Output& out) {
    int offset = 0;
    int count = 20;
    if (!intArgs(args, 3, {&offset, &count}, {0, 20})) return badArgument(out);
    std::string response;
    auto status =
        MusicStationAPI::getStationSoundList(response, cloudBaseUrl(), args.positional[0],
                                             args.positional[1], args.positional[2], offset, count);
    return rawAnswer(out, status, response);
}

// loadmore and loadmore-v2: USERID LISTID ORIGIN TYPE [OFFSET [COUNT]].
int runLoadMore(const Args& args, Output& out,
                ErrorType (*load)(std::string&, const std::string&, const long long&, std::string,
                                  const std::string&, const std::string&, const int&, const int&)) {
    long long userId = 0;
    int offset = 0;
    int count = 0;
    if (!idAndPage(args, 4, userId, offset, count)) return badArgument(out);
    std::string response;
    auto status = load(response, cloudBaseUrl(), userId, args.positional[1], args.positional[2],
                       args.positional[3], offset, count);
    return rawAnswer(out, status, response);
}

int runLoadMoreV1(const Args& args, Output& out) {
    return runLoadMore(args, out, LoadMoreAPI::getLoadMoreList);
}

int runLoadMoreV2(const Args& args, Output& out) {
    return runLoadMore(args, out, LoadMoreV2API::getLoadMoreV2List);
}

// The course service is told the device ID by its caller: this device's
// unless another is given.
std::string courseDeviceId(const Args& args, size_t i) {
    std::string deviceId;
    if (i < args.positional.size()) return args.positional[i];
    velmar::quil::QuilConfigUtils::getDeviceID(deviceId);
    return deviceId;
}

int runPlayResource(const Args& args, Output& out) {
    std::string response;
    auto status = PlayResourceAPI::getPlayResource(response, cloudBaseUrl(),
                                                   courseDeviceId(args, 3), args.positional[0],
                                                   args.positional[1], args.positional[2]);
    return rawAnswer(out, status, response);
}

int runPlayResourceStatus(const Args& args, Output& out) {
    int index = 0;
    int position = 0;
    if (!intArgs(args, 3, {&index, &position}, {0, 0})) return badArgument(out);
    auto status = PlayResourceAPI::setPlayResourceStatus(cloudBaseUrl(), courseDeviceId(args, 5),
                                                         args.positional[0], args.positional[1],
                                                         args.positional[2], index, position);
    return reportStatus(out, status);
}

int runMusicActionLog(const Args& args, Output& out) {
    std::string response;
    auto status = MusicActionLogAPI::log(response, cloudBaseUrl(), args.positional[0],
                                         args.positional[1], args.positional[2], args.positional[3],
                                         args.positional[4], argOr(args, 5, ""));
    return rawAnswer(out, status, response);
}

}  // namespace

std::vector<Command> musicCommands() {
    return {
        {"song-info", "SONGIDS [START [COUNT]]",
         "describe songs (a JSON array of IDs; COUNT -1 for all)", 1, 3, runSongInfo},
        {"playlists", "", "the identifiers of the account's playlists", 0, 0, runPlaylists},
        {"playlist-songs", "LISTID [OFFSET [COUNT]]", "a page of a playlist's songs", 1, 3,
         runPlaylistSongs},
        {"channel-songs", "LISTID [OFFSET [COUNT]]", "a page of a channel's songs", 1, 3,
         runChannelSongs},
        {"album", "ALBUMID [CATALOGUE_URL]", "the song IDs of an album (unsigned)", 1, 2, runAlbum},
        {"catalogue-playlist", "LISTID [CATALOGUE_URL]",
         "the song list of a catalogue playlist (unsigned)", 1, 2, runCataloguePlaylist},
        {"recommend", "USERID COUNT", "music recommendations for a user", 2, 2, runRecommend},
        {"station", "STATIONID ORIGIN CATEGORY [OFFSET [COUNT]]", "a page of a station's sounds", 3,
         5, runStation},
        {"loadmore", "USERID LISTID ORIGIN TYPE [OFFSET [COUNT]]",
         "the next page of a content list", 4, 6, runLoadMoreV1},
        {"loadmore-v2", "USERID LISTID ORIGIN TYPE [OFFSET [COUNT]]",
         "the next page of a content list (second version)", 4, 6, runLoadMoreV2},
        {"play-resource", "ALARMID CPID CP [DEVICEID]", "what a course alarm plays next", 3, 4,
         runPlayResource},
        {"play-resource-status", "ALARMID CPID CP INDEX POSITION [DEVICEID]",
         "report how far a course alarm's playback got", 5, 6, runPlayResourceStatus},
        {"music-action-log", "USERID APPID EVENT ITEMID ITEMTYPE [EXTRA]",
         "report a user action on a music item", 5, 6, runMusicActionLog},
    };
}

}  // namespace quilctl
