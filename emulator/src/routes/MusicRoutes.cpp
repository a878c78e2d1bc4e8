// The music and content family: song information, the account's playlists
// and channels, the catalogue service's albums and playlists (plain GETs, not
// signed), recommendations, stations, load-more pages, children's courses
// and the music action log. The content is the catalogue of MusicCatalogue.
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <algorithm>
#include <functional>
#include <string>

#include "DeviceAuth.h"
#include "quilcloud/Cloud.h"
#include "routes/MusicCatalogue.h"

namespace quilcloud {

namespace {

using Writer = rapidjson::Writer<rapidjson::StringBuffer>;
using music::Song;
using music::SongList;

constexpr size_t kMaxPage = 50;

void put(Writer& writer, const char* key, const std::string& value) {
    writer.Key(key);
    writer.String(value.data(), static_cast<rapidjson::SizeType>(value.size()));
}

void put(Writer& writer, const char* key, long long value) {
    writer.Key(key);
    writer.Int64(value);
}

// {"code":0,"message":"ok","data":...} with `data` written by the caller.
void answerOk(Reply& reply, const std::function<void(Writer&)>& data) {
    rapidjson::StringBuffer buffer;
    Writer writer(buffer);
    writer.StartObject();
    put(writer, "code", 0);
    put(writer, "message", "ok");
    writer.Key("data");
    data(writer);
    writer.EndObject();
    reply.json(200, buffer.GetString());
}

// A song as the services describe it: no "artist" object when the artist is
// unknown, no "origin" when the song has no source, "originSongID" always.
void writeSong(Writer& writer, const Song& song) {
    writer.StartObject();
    put(writer, "songID", song.songId);
    put(writer, "name", song.name);
    if (song.artist != nullptr) {
        writer.Key("artist");
        writer.StartObject();
        put(writer, "name", song.artist);
        writer.EndObject();
    }
    if (*song.origin != '\0') {
        put(writer, "origin", song.origin);
    }
    put(writer, "originSongID", song.originSongId);
    put(writer, "duration", song.durationSec);
    writer.EndObject();
}

void writeSongs(Writer& writer, const std::vector<long long>& songIds, size_t offset,
                size_t count) {
    writer.StartArray();
    for (size_t i = offset; i < songIds.size() && i < offset + count; ++i) {
        if (const Song* song = music::findSong(songIds[i])) writeSong(writer, *song);
    }
    writer.EndArray();
}

bool parseNumber(const std::string& text, long long& value) {
    if (text.empty() || text.size() > 20) return false;
    size_t used = 0;
    try {
        value = std::stoll(text, &used);
    } catch (...) {
        return false;
    }
    return used == text.size();
}

// Integer parameter `name`, refused (with the answer set) unless it is a
// whole number from `low` up.
bool numberParam(const Received& request, Reply& reply, const char* name, long long low,
                 long long& value) {
    const std::string text = request.param(name);
    if (!parseNumber(text, value) || value < low) {
        reply.json(200, errorBody(2, std::string("invalid ") + name + ": " + text));
        return false;
    }
    return true;
}

// "offset" and "count" of a page; a count above kMaxPage is cut down.
bool pageParams(const Received& request, Reply& reply, size_t& offset, size_t& count) {
    long long o = 0;
    long long c = 0;
    if (!numberParam(request, reply, "offset", 0, o) ||
        !numberParam(request, reply, "count", 1, c)) {
        return false;
    }
    offset = static_cast<size_t>(o);
    count = std::min(static_cast<size_t>(c), kMaxPage);
    return true;
}

void notFound(Reply& reply, const std::string& what) {
    reply.json(200, errorBody(404, "no such " + what));
}

// A page of a playlist or channel: {"listId","name","total","offset","songList"}.
void answerSongPage(Reply& reply, const SongList& list, size_t offset, size_t count) {
    answerOk(reply, [&](Writer& w) {
        w.StartObject();
        put(w, "listId", std::stoll(list.id));
        put(w, "name", list.name);
        put(w, "total", list.songIds.size());
        put(w, "offset", offset);
        w.Key("songList");
        writeSongs(w, list.songIds, offset, count);
        w.EndObject();
    });
}

using Finder = const SongList* (*)(const std::string&);

void songPageRoute(Cloud& cloud, const char* path, Finder find, const char* what) {
    cloud.route("GET", path, [&cloud, find, what](const Received& request, Reply& reply) {
        auto device = authenticate(cloud, request, reply);
        size_t offset = 0;
        size_t count = 0;
        if (!device || !pageParams(request, reply, offset, count)) return;
        const SongList* list = find(request.param("listId"));
        if (list == nullptr) return notFound(reply, what);
        answerSongPage(reply, *list, offset, count);
    });
}

// The song IDs of a song-information request: numbers or numeric texts;
// anything else is not looked up.
bool requestedSongs(const std::string& text, std::vector<long long>& songIds) {
    rapidjson::Document list;
    if (list.Parse(text.c_str(), text.size()).HasParseError() || !list.IsArray()) return false;
    for (const auto& item : list.GetArray()) {
        long long id = 0;
        if (item.IsInt64()) {
            songIds.push_back(item.GetInt64());
        } else if (item.IsString() && parseNumber(item.GetString(), id)) {
            songIds.push_back(id);
        }
    }
    return true;
}

void registerSongRoutes(Cloud& cloud) {
    cloud.route("POST", "/device/music/song_info", [&cloud](const Received& request, Reply& reply) {
        auto device = authenticate(cloud, request, reply);
        if (!device) return;
        std::vector<long long> songIds;
        if (!requestedSongs(request.param("songIdList"), songIds)) {
            reply.json(200, errorBody(2, "songIdList must be a JSON array"));
            return;
        }
        answerOk(reply, [&](Writer& w) { writeSongs(w, songIds, 0, songIds.size()); });
    });

    cloud.route("GET", "/device/playlist/v2/lists",
                [&cloud](const Received& request, Reply& reply) {
                    if (!authenticate(cloud, request, reply)) return;
                    answerOk(reply, [](Writer& w) {
                        w.StartArray();
                        for (const SongList& list : music::accountPlaylists()) {
                            w.StartObject();
                            put(w, "id", std::stoll(list.id));
                            put(w, "name", list.name);
                            put(w, "songCount", list.songIds.size());
                            w.EndObject();
                        }
                        w.EndArray();
                    });
                });
    songPageRoute(cloud, "/device/playlist/v2/songs", music::findAccountPlaylist, "playlist");
    songPageRoute(cloud, "/device/playlist/v2/songs_in_channel", music::findChannel, "channel");

    cloud.route("GET", "/device/music_recommendation",
                [&cloud](const Received& request, Reply& reply) {
                    auto device = authenticate(cloud, request, reply);
                    long long count = 0;
                    if (!device || !numberParam(request, reply, "count", 1, count)) return;
                    const std::string userId = request.param("userId");
                    if (userId.empty()) {
                        reply.json(200, errorBody(2, "userId is required"));
                        return;
                    }
                    // Each user gets the playable songs from a place of their own onward.
                    std::vector<long long> playable;
                    for (const Song& song : music::songs()) {
                        if (*song.origin != '\0' && *song.originSongId != '\0')
                            playable.push_back(song.songId);
                    }
                    const size_t first = std::hash<std::string>()(userId) % playable.size();
                    std::rotate(playable.begin(), playable.begin() + static_cast<long>(first),
                                playable.end());
                    answerOk(reply, [&](Writer& w) {
                        w.StartObject();
                        put(w, "userId", userId);
                        w.Key("songs");
                        writeSongs(w, playable, 0, std::min(static_cast<size_t>(count), kMaxPage));
                        w.EndObject();
                    });
                });
}

// The catalogue service answers anyone: no signature is asked for.
void registerCatalogueRoutes(Cloud& cloud) {
    cloud.route("GET", "/music/album_info", [](const Received& request, Reply& reply) {
        const SongList* album = music::findAlbum(request.param("albumId"));
        if (album == nullptr) return notFound(reply, "album");
        answerOk(reply, [album](Writer& w) {
            w.StartObject();
            put(w, "albumId", album->id);
            put(w, "name", album->name);
            w.Key("songList");
            w.StartArray();
            for (long long songId : album->songIds) {
                w.StartObject();
                w.Key("songID");
                album->idsAsText ? w.String(std::to_string(songId).c_str()) : w.Int64(songId);
                put(w, "name", music::findSong(songId)->name);
                w.EndObject();
            }
            w.EndArray();
            w.EndObject();
        });
    });

    cloud.route("GET", "/music/playlist/", [](const Received& request, Reply& reply) {
        const SongList* list = music::findCataloguePlaylist(request.param("listId"));
        if (list == nullptr) return notFound(reply, "playlist");
        answerOk(reply, [list](Writer& w) {
            w.StartObject();
            put(w, "listId", list->id);
            put(w, "name", list->name);
            w.Key("songList");
            writeSongs(w, list->songIds, 0, list->songIds.size());
            w.EndObject();
        });
    });
}

// Stations and the two load-more versions: pages of a list.
void registerListingRoutes(Cloud& cloud) {
    cloud.route(
        "GET", "/device/station/sound_list", [&cloud](const Received& request, Reply& reply) {
            auto device = authenticate(cloud, request, reply);
            size_t offset = 0;
            size_t count = 0;
            if (!device || !pageParams(request, reply, offset, count)) return;
            const SongList* station = music::findStation(
                request.param("stationId"), request.param("origin"), request.param("category"));
            if (station == nullptr) return notFound(reply, "station");
            answerOk(reply, [&](Writer& w) {
                w.StartObject();
                put(w, "stationId", request.param("stationId"));
                put(w, "name", station->name);
                put(w, "total", station->songIds.size());
                w.Key("sounds");
                writeSongs(w, station->songIds, offset, count);
                w.EndObject();
            });
        });

    // Version 1 says whether more follows; version 2 gives the total and the
    // offset to ask for next (-1 at the end).
    for (int version : {1, 2}) {
        const char* path = version == 1 ? "/device/audio/loadmore" : "/device/audio/loadmore/v2";
        cloud.route("GET", path, [&cloud, version](const Received& request, Reply& reply) {
            auto device = authenticate(cloud, request, reply);
            size_t offset = 0;
            size_t count = 0;
            long long userId = 0;
            if (!device || !numberParam(request, reply, "userId", 0, userId) ||
                !pageParams(request, reply, offset, count)) {
                return;
            }
            const SongList* list = music::findLoadMoreList(request.param("listId"));
            if (list == nullptr) return notFound(reply, "list");
            const size_t end = std::min(offset + count, list->songIds.size());
            answerOk(reply, [&](Writer& w) {
                w.StartObject();
                put(w, "listId", list->id);
                put(w, "type", request.param("type"));
                if (version == 1) {
                    w.Key("hasMore");
                    w.Bool(end < list->songIds.size());
                    w.Key("list");
                } else {
                    put(w, "total", list->songIds.size());
                    put(w, "nextOffset",
                        end < list->songIds.size() ? static_cast<long long>(end) : -1);
                    w.Key("items");
                }
                writeSongs(w, list->songIds, offset, count);
                w.EndObject();
            });
        });
    }
}

// Children's courses: playback is kept per alarm as "<index>:<position ms>".
void registerCourseRoutes(Cloud& cloud) {
    auto ownDevice = [](const Device& device, const Received& request, Reply& reply) {
        if (request.param("deviceId") != device.deviceId) {
            reply.json(200, errorBody(3, "deviceId does not match the signing device"));
            return false;
        }
        return true;
    };

    cloud.route("GET", "/babycourse/device/next/play",
                [&cloud, ownDevice](const Received& request, Reply& reply) {
                    auto device = authenticate(cloud, request, reply);
                    if (!device || !ownDevice(*device, request, reply)) return;
                    const music::Course* course =
                        music::findCourse(request.param("cp"), request.param("cpId"));
                    if (course == nullptr) return notFound(reply, "course");
                    // Resume where the alarm stopped; a finished lesson moves on to the
                    // next, the last one back to the first.
                    long long index = 0;
                    long long position = 0;
                    auto it = device->settings.find("course." + request.param("alarmId"));
                    if (it != device->settings.end()) {
                        const size_t colon = it->second.find(':');
                        parseNumber(it->second.substr(0, colon), index);
                        parseNumber(it->second.substr(colon + 1), position);
                    }
                    if (index < 0 || static_cast<size_t>(index) >= course->lessons.size())
                        index = 0;
                    if (position >= course->lessons[index].durationSec * 1000LL) {
                        index = (index + 1) % static_cast<long long>(course->lessons.size());
                        position = 0;
                    }
                    const music::Lesson& lesson = course->lessons[index];
                    answerOk(reply, [&](Writer& w) {
                        w.StartObject();
                        put(w, "alarmId", request.param("alarmId"));
                        put(w, "cp", course->cp);
                        put(w, "cpId", course->cpId);
                        put(w, "course", course->title);
                        put(w, "playIndex", index);
                        put(w, "playPosition", position);
                        put(w, "title", lesson.title);
                        put(w, "durationMs", lesson.durationSec * 1000LL);
                        w.EndObject();
                    });
                });

    cloud.route(
        "POST", "/babycourse/device/play/update",
        [&cloud, ownDevice](const Received& request, Reply& reply) {
            auto device = authenticate(cloud, request, reply);
            long long index = 0;
            long long position = 0;
            if (!device || !ownDevice(*device, request, reply) ||
                !numberParam(request, reply, "playIndex", 0, index) ||
                !numberParam(request, reply, "playPosition", 0, position)) {
                return;
            }
            if (music::findCourse(request.param("playCP"), request.param("playCPId")) == nullptr)
                return notFound(reply, "course");
            cloud.registry().update(device->deviceId, [&](Device& d) {
                d.settings["course." + request.param("alarmId")] =
                    std::to_string(index) + ":" + std::to_string(position);
            });
            reply.json(200, "{\"code\":0,\"message\":\"ok\"}");
        });
}

}  // namespace

void registerMusicRoutes(Cloud& cloud) {
    registerSongRoutes(cloud);
    registerCatalogueRoutes(cloud);
    registerListingRoutes(cloud);
    registerCourseRoutes(cloud);

    // The action log keeps the last event and a count per device.
    cloud.route(
        "POST", "/device/music_action_log", [&cloud](const Received& request, Reply& reply) {
            auto device = authenticate(cloud, request, reply);
            if (!device) return;
            const std::string eventType = request.param("eventType");
            if (eventType.empty()) {
                reply.json(200, errorBody(2, "eventType is required"));
                return;
            }
            long long logged = 0;
            cloud.registry().update(device->deviceId, [&](Device& d) {
                long long before = 0;
                parseNumber(d.settings["musicActionLog.count"], before);
                logged = before + 1;
                d.settings["musicActionLog.count"] = std::to_string(logged);
                d.settings["musicActionLog.last"] = eventType + " " + request.param("itemType") +
                                                    " " + request.param("itemId") + " on " +
                                                    request.param("hardware");
            });
            answerOk(reply, [logged](Writer& w) {
                w.StartObject();
                put(w, "logged", logged);
                w.EndObject();
            });
        });
}

}  // namespace quilcloud
