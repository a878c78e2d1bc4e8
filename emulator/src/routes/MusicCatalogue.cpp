#include "routes/MusicCatalogue.h"

#include <algorithm>

namespace quilcloud {
namespace music {

namespace {

template <typename T>
const T* byId(const std::vector<T>& lists, const std::string& id) {
    auto it = std::find_if(lists.begin(), lists.end(), [&id](const T& l) { return l.id == id; });
    return it == lists.end() ? nullptr : &*it;
}

const std::vector<SongList>& albums() {
    static const std::vector<SongList> lists = {
        {"al-1001", "Harbour Lights", {1001, 1002, 1003}},
        {"al-1002", "Paper Kites", {1004, 1005, 1010}},
        {"al-0042", "Early Tapes", {1006, 1009}, true},
        {"al-0000", "Unreleased", {}},
    };
    return lists;
}

const std::vector<SongList>& cataloguePlaylists() {
    static const std::vector<SongList> lists = {
        {"pl-morning", "Morning Calm", {1001, 1004, 1008, 9007199254740993LL}},
        {"pl-focus", "Focus", {1002, 1003, 1011}},
    };
    return lists;
}

const std::vector<SongList>& channels() {
    static const std::vector<SongList> lists = {
        {"501", "Commute", {1002, 1005, 1006, 1010, 1011, 1012}},
        {"502", "Sleep Sounds", {1007, 1008, 1009}},
    };
    return lists;
}

// Stations are "<origin>/<category>/<id>".
const std::vector<SongList>& stations() {
    static const std::vector<SongList> lists = {
        {"wavely/news/st-7", "Wavely News", {2001, 2002, 2003, 2004, 2005}},
        {"northbeat/music/st-9", "Northbeat Hits", {1001, 1002, 1003, 1012}},
    };
    return lists;
}

const std::vector<SongList>& stories() {
    static const std::vector<SongList> lists = {
        {"story-31", "The Lantern Fox", {3001, 3002, 3003, 3004, 3005, 3006, 3007}},
    };
    return lists;
}

}  // namespace

const std::vector<Song>& songs() {
    static const std::vector<Song> all = {
        {1001, "Morning Tide", "Ama Lenn", "wavely", "wv-88120", 214},
        {1002, "Glass Orchard", "Ama Lenn", "wavely", "wv-88121", 187},
        {1003, "Salt and Cedar", "The Lowmarsh Trio", "northbeat", "nb-5501", 242},
        {1004, "Rain on Slate", nullptr, "wavely", "wv-90017", 305},  // no artist
        {1005, "Kite String", "Juno Park", "northbeat", "nb-5502", 199},
        {1006, "Workshop Demo", "Juno Park", "", "", 120},         // no source
        {1007, "Brown Noise (1 h)", nullptr, "wavely", "", 3600},  // no source song ID
        {1008, "Slow Harbour", "Mira Vale", "northbeat", "nb-5600", 276},
        {1009, "Tape Hiss Lullaby", "Mira Vale", "", "nb-5601", 233},  // no origin
        {1010, "Paper Kites", "Juno Park", "northbeat", "nb-5503", 221},
        {1011, "Long Division", "The Lowmarsh Trio", "northbeat", "nb-5504", 264},
        {1012, "Night Ferry", "Ama Lenn", "wavely", "wv-88122", 251},
        {9007199254740993LL, "Past Two to the Fifty-Third", "Ama Lenn", "wavely", "wv-99999", 253},
        {2001, "Morning Headlines", nullptr, "wavely", "wv-n-2001", 300},
        {2002, "Weather", nullptr, "wavely", "wv-n-2002", 90},
        {2003, "Traffic", nullptr, "wavely", "wv-n-2003", 60},
        {2004, "Sports Round-up", nullptr, "wavely", "wv-n-2004", 240},
        {2005, "Evening Headlines", nullptr, "wavely", "wv-n-2005", 300},
        {3001, "The Lantern Fox, chapter 1", "Odile Brand", "storyhall", "sh-31-1", 610},
        {3002, "The Lantern Fox, chapter 2", "Odile Brand", "storyhall", "sh-31-2", 590},
        {3003, "The Lantern Fox, chapter 3", "Odile Brand", "storyhall", "sh-31-3", 605},
        {3004, "The Lantern Fox, chapter 4", "Odile Brand", "storyhall", "sh-31-4", 640},
        {3005, "The Lantern Fox, chapter 5", "Odile Brand", "storyhall", "sh-31-5", 598},
        {3006, "The Lantern Fox, chapter 6", "Odile Brand", "storyhall", "sh-31-6", 612},
        {3007, "The Lantern Fox, chapter 7", "Odile Brand", "storyhall", "sh-31-7", 701},
    };
    return all;
}

const Song* findSong(long long songId) {
    const auto& all = songs();
    auto it = std::find_if(all.begin(), all.end(),
                           [songId](const Song& s) { return s.songId == songId; });
    return it == all.end() ? nullptr : &*it;
}

const SongList* findAlbum(const std::string& albumId) {
    return byId(albums(), albumId);
}

const SongList* findCataloguePlaylist(const std::string& listId) {
    return byId(cataloguePlaylists(), listId);
}

// Identifiers above 2^32, as the playlist service hands them out.
const std::vector<SongList>& accountPlaylists() {
    static const std::vector<SongList> lists = {
        {"4294967296", "Favourites", {1001, 1004, 1006, 1007, 1008, 1010, 1012}},
        {"4294967311", "Kitchen", {1002, 1003, 1005}},
        {"31", "Bedtime", {1009, 1008, 3001}},
    };
    return lists;
}

const SongList* findAccountPlaylist(const std::string& listId) {
    return byId(accountPlaylists(), listId);
}

const SongList* findChannel(const std::string& listId) {
    return byId(channels(), listId);
}

const SongList* findStation(const std::string& stationId, const std::string& origin,
                            const std::string& category) {
    return byId(stations(), origin + "/" + category + "/" + stationId);
}

const SongList* findLoadMoreList(const std::string& listId) {
    if (const SongList* story = byId(stories(), listId)) return story;
    if (const SongList* album = byId(albums(), listId)) return album;
    return byId(channels(), listId);
}

const Course* findCourse(const std::string& cp, const std::string& cpId) {
    static const std::vector<Course> courses = {
        {"kidsacademy",
         "course-7",
         "Colours and Shapes",
         {{"Lesson 1: Red and Blue", 420},
          {"Lesson 2: Circles", 390},
          {"Lesson 3: Squares and Corners", 450},
          {"Lesson 4: Mixing Colours", 480}}},
        {"kidsacademy",
         "course-8",
         "Counting Songs",
         {{"Song 1: One to Five", 180}, {"Song 2: Six to Ten", 200}}},
    };
    auto it = std::find_if(courses.begin(), courses.end(),
                           [&](const Course& c) { return cp == c.cp && cpId == c.cpId; });
    return it == courses.end() ? nullptr : &*it;
}

}  // namespace music
}  // namespace quilcloud
