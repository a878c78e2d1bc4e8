// The music and content endpoints on the fake port: the song-list slice, the
// "musics" document both song services share, the catalogue lookups and the
// thin content endpoints.
#include <functional>

#include "FakeHelpers.h"

using namespace velmar::quil::api;

namespace {

// Songs as the cloud describes them: complete, without artist, with an
// artist without name, without origin, with an empty source ID, with
// members of the wrong type.
const char kSongs[] =
    "[{\"songID\":9007199254740993,\"name\":\"Rain\",\"artist\":{\"name\":\"Ama\"},"
    "\"origin\":\"tide\",\"originSongID\":\"t-1\",\"duration\":200},"
    "{\"songID\":2,\"name\":\"Solo\",\"origin\":\"tide\",\"originSongID\":\"t-2\"},"
    "{\"name\":\"Nameless\",\"artist\":{\"id\":4},\"origin\":\"wave\",\"originSongID\":\"w-3\"},"
    "{\"songID\":4,\"name\":\"Local\",\"originSongID\":\"x-4\"},"
    "{\"songID\":5,\"name\":\"Blank\",\"origin\":\"tide\",\"originSongID\":\"\"},"
    "{\"songID\":\"6\",\"name\":7,\"artist\":\"Bo\",\"origin\":\"wave\",\"originSongID\":\"w-6\"}]";

// One "musics" entry, its members in the order the player reads them.
std::string entry(const std::string& artist, const std::string& song, const std::string& origin,
                  const std::string& id, const std::string& globalId) {
    return "{ \"artist_name\": \"" + artist + "\", \"song\": \"" + song + "\", \"origin\": \"" +
           origin + "\", \"id\": \"" + id + "\", \"global_id\": " + globalId + " }";
}

// The entries made of kSongs, in order.
const std::string kEntries[] = {entry("Ama", "Rain", "tide", "t-1", "9007199254740993"),
                                entry("", "Solo", "tide", "t-2", "2"),
                                entry("", "Nameless", "wave", "w-3", "0"),
                                entry("", "Local", "", "x-4", "4"),
                                entry("", "Blank", "tide", "", "5"),
                                entry("", "", "wave", "w-6", "0")};

// The "musics" document holding `entries`.
std::string musics(std::initializer_list<std::string> entries) {
    std::string text;
    for (const auto& e : entries)
        text += (text.empty() ? "" : ", ") + e;
    return "{ \"musics\": [ " + text + (text.empty() ? "] }" : " ] }");
}

using MusicTest = fake::FakeDeviceTest;

TEST_F(MusicTest, SongInfoSendsTheClampedSliceEvenWhenEmpty) {
    // The "songIdList" sent for one slice of `list`.
    auto sent = [](const std::string& list, int start, int count) {
        fake::pushBody("{\"data\":[]}");
        std::string result;
        EXPECT_EQ(MusicSongInfoAPI::getSongListInfo(result, kBase, list, start, count), 0);
        EXPECT_EQ(result, "{ \"musics\": [ ] }");
        return fake::calls().back().decodedParams().at("songIdList");
    };
    const std::string list = "[11,\"12\",{\"k\":1},14]";
    EXPECT_EQ(sent(list, 1, 2), "[ \"12\", { \"k\": 1 } ]");
    EXPECT_EQ(sent(list, 0, -1), "[ 11, \"12\", { \"k\": 1 }, 14 ]");
    EXPECT_EQ(sent(list, 3, 99), "[ 14 ]");
    EXPECT_EQ(sent(list, 0, 0), "[ ]");
    EXPECT_EQ(sent(list, 1000, 5), "[ ]");
    // A hole outside the slice does not matter.
    EXPECT_EQ(sent("[1,null]", 0, 1), "[ 1 ]");
}

TEST_F(MusicTest, SongInfoRefusesBadArgumentsBeforeSending) {
    std::string result = "kept";
    EXPECT_EQ(MusicSongInfoAPI::getSongListInfo(result, kBase, "[1,2", 0, -2), 606);
    EXPECT_TRUE(fake::logged("Invalid parameter: [1,2", 4));
    EXPECT_FALSE(fake::logged("Invalid parameter:start"));
    EXPECT_EQ(MusicSongInfoAPI::getSongListInfo(result, kBase, "{\"a\":1}", 0, -1), 606);
    EXPECT_EQ(MusicSongInfoAPI::getSongListInfo(result, kBase, "null", 0, -1), 606);
    EXPECT_EQ(MusicSongInfoAPI::getSongListInfo(result, kBase, "[1,2]", 0, -2), 606);
    EXPECT_TRUE(fake::logged("Invalid parameter:start0 count-2", 4));
    EXPECT_EQ(MusicSongInfoAPI::getSongListInfo(result, kBase, "[1,2]", -1, 1), 606);
    EXPECT_TRUE(fake::logged("Invalid parameter:start-1 count1", 4));
    EXPECT_EQ(MusicSongInfoAPI::getSongListInfo(result, kBase, "[1,null,3]", 1, 1), 101);
    EXPECT_TRUE(fake::logged("Cannot get requestSongIdObject from array at idx:1", 4));
    EXPECT_TRUE(fake::calls().empty());
    EXPECT_EQ(result, "kept");
}

TEST_F(MusicTest, SongInfoKeepsOnlySongsWithASourceInTheSharedShape) {
    fake::pushBody(std::string("{\"code\":0,\"data\":") + kSongs + "}");
    std::string result;
    ASSERT_EQ(MusicSongInfoAPI::getSongListInfo(result, kBase, "[1]", 0, -1), 0);
    // The songs without origin or source ID (the fourth and fifth) are left out.
    EXPECT_EQ(result, musics({kEntries[0], kEntries[1], kEntries[2], kEntries[5]}));
}

TEST_F(MusicTest, GetListsAppendsWhatItReadsBeforeAFailure) {
    std::vector<long long> ids = {7};
    fake::pushBody("{\"data\":[{\"id\":4294967296,\"name\":\"a\"},{\"id\":3},{\"name\":\"b\"}]}");
    EXPECT_EQ(PlayListV2API::getLists(ids, kBase), 604);
    EXPECT_EQ(ids, (std::vector<long long>{7, 4294967296LL, 3}));
    fake::pushBody("{\"data\":[]}");
    EXPECT_EQ(PlayListV2API::getLists(ids, kBase), 0);
    EXPECT_EQ(ids.size(), 3u);
}

TEST_F(MusicTest, ListingsKeepEverySongInTheSongInfoShape) {
    const std::string body = std::string("{\"data\":{\"total\":6,\"songList\":") + kSongs + "}}";
    const std::string expected =
        musics({kEntries[0], kEntries[1], kEntries[2], kEntries[3], kEntries[4], kEntries[5]});
    for (auto call : {PlayListV2API::getSongsInList, PlayListV2API::getSongsInChannel}) {
        fake::pushBody(body);
        std::string result;
        ASSERT_EQ(call(result, 4294967296LL, -1, 20, kBase), 0);
        EXPECT_EQ(result, expected);
    }
}

TEST_F(MusicTest, OnlyTheChannelListingTakesSongsThatAreNoObjects) {
    fake::pushBody("{\"data\":{\"songList\":[{\"name\":\"a\"},\"b\",5]}}");
    std::string result;
    ASSERT_EQ(PlayListV2API::getSongsInChannel(result, 1, 0, 10, kBase), 0);
    const std::string empty = entry("", "", "", "", "0");
    EXPECT_EQ(result, musics({entry("", "a", "", "", "0"), empty, empty}));
}

// Every reading call against the answers it cannot use: its status, the line
// it logs at level 4 and the caller's result left as it was.
TEST_F(MusicTest, UnusableAnswersAreLoggedAndLeaveTheResultAlone) {
    const std::map<std::string, std::function<int(std::string&)>> calls = {
        {"song info",
         [](std::string& r) { return MusicSongInfoAPI::getSongListInfo(r, kBase, "[1]", 0, -1); }},
        {"lists",  // appends to a vector of its own
         [](std::string&) {
             std::vector<long long> ids;
             return PlayListV2API::getLists(ids, kBase);
         }},
        {"list", [](std::string& r) { return PlayListV2API::getSongsInList(r, 1, 0, 10, kBase); }},
        {"channel",
         [](std::string& r) { return PlayListV2API::getSongsInChannel(r, 1, 0, 10, kBase); }},
        {"album", [](std::string& r) { return MusicAlbumAPI::getMusicAlbum(r, kBase, "a"); }},
        {"catalogue",
         [](std::string& r) { return MusicPlayListAPI::getMusicPlayList(r, kBase, "pl-1"); }},
    };
    // The transport fails, or delivers a body but reports an error with it.
    const std::string failed = "(no answer)", erred = "(answer and error)";
    const std::string deep = std::string(40, '[') + std::string(40, ']');
    const std::vector<std::string> noSongList = {"",
                                                 "{\"data\":[]}",
                                                 "{\"data\":{}}",
                                                 "{\"data\":{\"songList\":null}}",
                                                 "{\"data\":{\"songList\":{\"0\":{}}}}",
                                                 "{\"data\":{\"songList\":\"[]\"}}"};
    // A line ending in ": " goes on with the body.
    const std::string invalid = "Invalid response: ", parse = "Error when Json parse response: ",
                      unsent = "httpRequest() failed with (error code: Error (code: 604",
                      songAt = "Cannot get songInfoObject from array at idx:1",
                      idAt = "Cannot get songIdObject at songListObject idx:",
                      albumAt = "Cannot get songObject at songListObject idx:0",
                      refused =
                          "httpRequest() failed with (status: 0; error message: connection "
                          "refused; error code: Error (code: 602, message: ";
    const struct {
        const char* call;
        int status;
        std::string line;
        std::vector<std::string> bodies;
    } rows[] = {
        {"song info",
         604,
         invalid,
         {"<html>busy</html>", "{\"code\":0}", "{\"data\":null}", "[{\"data\":[]}]",
          "{\"data\":{\"songs\":[]}}", "{\"data\":" + deep + "}"}},
        {"song info", 604, "", {failed}},
        // A hole in the middle: nothing of the songs before it escapes.
        {"song info", 101, songAt, {"{\"data\":[{\"origin\":\"o\",\"originSongID\":\"s\"},null]}"}},
        {"lists",
         604,
         parse,
         {"{\"data\":null}", "{\"data\":{\"id\":1}}", "{}", "nope", "{\"data\":[{\"id\":\"9\"}]}"}},
        {"lists", 101, "Cannot get playlistObject from array at idx:0", {"{\"data\":[null]}"}},
        {"lists", 604, unsent, {failed}},
        {"list", 604, invalid, noSongList},
        {"channel", 604, invalid, noSongList},
        {"list", 604, unsent, {failed}},
        {"channel", 604, unsent, {failed}},
        // Only the playlist listing refuses songs that are no objects; a hole fails both.
        {"list", 101, songAt, {"{\"data\":{\"songList\":[{\"name\":\"a\"},\"b\",5]}}"}},
        {"channel", 101, "", {"{\"data\":{\"songList\":[null]}}"}},
        // The album fails whole on any unreadable song.
        {"album", 101, idAt + "1", {"{\"data\":{\"songList\":[{\"songID\":1},{\"name\":\"x\"}]}}"}},
        {"album", 101, "", {"{\"data\":{\"songList\":[{\"songID\":null}]}}"}},
        {"album", 101, idAt + "0", {"{\"data\":{\"songList\":[\"7\"]}}"}},
        {"album", 101, albumAt, {"{\"data\":{\"songList\":[null]}}"}},
        {"album",
         604,
         invalid,
         {"{\"data\":{}}", "{\"data\":{\"songList\":{}}}", "{\"data\":null}", "{\"songList\":[]}",
          "x"}},
        {"album", 604, refused, {failed}},
        {"catalogue",
         604,
         invalid,
         {"{\"data\":{}}", "{\"data\":[1]}", "{}", "[]", "{\"data\":{\"songList\":null}}"}},
        {"catalogue", 604, "httpRequest() failed with (status: 200; error message: slow", {erred}},
    };
    for (const auto& row : rows) {
        for (const std::string& body : row.bodies) {
            SCOPED_TRACE(std::string(row.call) + " <- " + body);
            SetUp();
            body == failed  ? fake::pushFailure()
            : body == erred ? fake::pushAnswer({true, 200, "{}", utils::ERROR_HTTP_TIMEOUT, "slow"})
                            : fake::pushBody(body);
            std::string result = "kept";
            EXPECT_EQ(calls.at(row.call)(result), row.status);
            EXPECT_EQ(result, "kept");
            const bool echoes = body[0] != '(' && row.line.size() > 2 &&
                                row.line.compare(row.line.size() - 2, 2, ": ") == 0;
            EXPECT_TRUE(row.line.empty() || fake::logged(echoes ? row.line + body : row.line, 4));
        }
    }
}

TEST_F(MusicTest, AlbumKeepsEachSongIdInItsTypeOverAnUnsignedGet) {
    fake::pushBody(
        "{\"data\":{\"albumId\":\"al-1\",\"songList\":[{\"songID\":1},{\"songID\":\"2\"},"
        "{\"songID\":4294967297,\"name\":\"n\"},{\"songID\":{\"v\":[1]}},{\"songID\":1.5}]}}");
    std::string result;
    ASSERT_EQ(MusicAlbumAPI::getMusicAlbum(result, kBase, "al 1"), 0);
    EXPECT_EQ(result, "[ 1, \"2\", 4294967297, { \"v\": [ 1 ] }, 1.5 ]");
    const fake::Call& call = fake::calls().at(0);
    EXPECT_EQ(call.params, "albumId=al%201");  // no requestId: not signed
    EXPECT_EQ(call.headers, std::vector<std::string>{""});

    fake::pushBody("{\"data\":{\"songList\":[]}}");
    ASSERT_EQ(MusicAlbumAPI::getMusicAlbum(result, kBase, "al-2"), 0);
    EXPECT_EQ(result, "[ ]");
}

TEST_F(MusicTest, CataloguePlaylistHandsOverTheSongListAsItIs) {
    const std::pair<const char*, const char*> lists[] = {
        {"[{\"songID\":1,\"name\":\"a/b\"}]", "[ { \"songID\": 1, \"name\": \"a\\/b\" } ]"},
        {"{\"next\":2}", "{ \"next\": 2 }"},
        {"\"a,b\"", "a,b"}};
    for (const auto& [songList, handed] : lists) {
        fake::pushBody(std::string("{\"data\":{\"songList\":") + songList + "}}");
        std::string result;
        ASSERT_EQ(MusicPlayListAPI::getMusicPlayList(result, kBase, "pl-1"), 0);
        EXPECT_EQ(result, handed);
    }
    EXPECT_EQ(fake::calls().at(0).params, "listId=pl-1");  // not signed
    EXPECT_TRUE(fake::calls().at(0).headers.empty());
}

TEST_F(MusicTest, PlayResourceStatusOnlyLogsTheAnswerEvenAfterAFailure) {
    fake::pushBody("{\"code\":0}");
    EXPECT_EQ(PlayResourceAPI::setPlayResourceStatus(kBase, "d", "a", "c", "p", -1, 65000), 0);
    EXPECT_TRUE(fake::loggedExactly("!!!!!!response is :{\"code\":0}", 4));
    fake::pushFailure();
    EXPECT_EQ(PlayResourceAPI::setPlayResourceStatus(kBase, "d", "a", "c", "p", 0, 0), 604);
    EXPECT_EQ(fake::logs().back().text, "!!!!!!response is :");
}

}  // namespace
