// The content the local cloud serves to the speaker: a small song catalogue
// with albums, catalogue playlists, the account's playlists and channels,
// radio stations, load-more lists and children's courses.
#pragma once

#include <string>
#include <vector>

namespace quilcloud {
namespace music {

struct Song {
    long long songId;
    const char* name;
    const char* artist;        // null: the cloud sends no "artist" object
    const char* origin;        // "" : a song the cloud has no source for
    const char* originSongId;  // "" : the source's own ID is unknown
    int durationSec;
};

// A list of songs under an identifier: albums, playlists, channels,
// stations, load-more lists.
struct SongList {
    std::string id;
    const char* name;
    std::vector<long long> songIds;
    // Albums imported from an older catalogue carry their song IDs as text.
    bool idsAsText = false;
};

struct Lesson {
    const char* title;
    int durationSec;
};

struct Course {
    const char* cp;    // content provider
    const char* cpId;  // the provider's course ID
    const char* title;
    std::vector<Lesson> lessons;
};

const Song* findSong(long long songId);
const std::vector<Song>& songs();

// Catalogue service (plain GETs): albums by "albumId", playlists by "listId".
const SongList* findAlbum(const std::string& albumId);
const SongList* findCataloguePlaylist(const std::string& listId);
// The account's playlists and the channels (signed playlist service).
const std::vector<SongList>& accountPlaylists();
const SongList* findAccountPlaylist(const std::string& listId);
const SongList* findChannel(const std::string& listId);
// Radio stations by ID; each belongs to one origin and category.
const SongList* findStation(const std::string& stationId, const std::string& origin,
                            const std::string& category);
// Load-more lists by ID (albums, stations and stories share the namespace).
const SongList* findLoadMoreList(const std::string& listId);
const Course* findCourse(const std::string& cp, const std::string& cpId);

}  // namespace music
}  // namespace quilcloud
