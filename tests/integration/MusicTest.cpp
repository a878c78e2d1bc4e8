// The song endpoints through the host port against the local cloud's
// catalogue (the content listings hand the answer over as it came: the routes
// test pins that).
#include <rapidjson/document.h>

#include "CloudFixture.h"
#include "Endpoints.h"

using namespace velmar::quil::api;

namespace {

class MusicTest : public velmar::testing::CloudFixture {
  protected:
    // "global_id" of every entry of a "musics" document.
    static std::vector<long long> globalIds(const std::string& musics) {
        rapidjson::Document document;
        document.Parse(musics.c_str());
        std::vector<long long> ids;
        if (document.HasParseError() || !document.IsObject()) return ids;
        for (const auto& entry : document["musics"].GetArray())
            ids.push_back(entry["global_id"].GetInt64());
        return ids;
    }
};

TEST_F(MusicTest, SongInfoDescribesOnlyTheSongsThePlayerCanFetch) {
    std::string musics;
    // 1006 has no source, 1007 no source song ID, 1009 no origin; 424242 is unknown.
    const std::string list = "[1001,\"1004\",1006,1007,1009,9007199254740993,424242,1012]";
    ASSERT_EQ(MusicSongInfoAPI::getSongListInfo(musics, baseUrl(), list, 0, 7), 0);
    EXPECT_EQ(globalIds(musics), (std::vector<long long>{1001, 1004, 9007199254740993LL}));

    // A refused signature is an answer without "data".
    store("channel_secret", "00000000000000000000000000000000");
    musics = "kept";
    EXPECT_EQ(MusicSongInfoAPI::getSongListInfo(musics, baseUrl(), list, 0, -1), 604);
    EXPECT_EQ(musics, "kept");
}

TEST_F(MusicTest, AccountPlaylistsAndChannelsArePagedIntoTheSameDocument) {
    std::vector<long long> listIds;
    ASSERT_EQ(PlayListV2API::getLists(listIds, baseUrl()), 0);
    ASSERT_EQ(listIds, (std::vector<long long>{4294967296LL, 4294967311LL, 31}));

    // Every song is kept in the listings, also those without a source.
    std::string page;
    ASSERT_EQ(PlayListV2API::getSongsInList(page, listIds[0], 0, 5, baseUrl()), 0);
    EXPECT_EQ(globalIds(page), (std::vector<long long>{1001, 1004, 1006, 1007, 1008}));
    ASSERT_EQ(PlayListV2API::getSongsInChannel(page, 502, 1, 10, baseUrl()), 0);
    EXPECT_EQ(globalIds(page), (std::vector<long long>{1008, 1009}));
}

TEST_F(MusicTest, CatalogueAnswersUnsignedRequests) {
    store("channel_secret", "00000000000000000000000000000000");  // not needed here
    std::string songIds;
    ASSERT_EQ(MusicAlbumAPI::getMusicAlbum(songIds, baseUrl(), "al-1001"), 0);
    EXPECT_EQ(songIds, "[ 1001, 1002, 1003 ]");
    EXPECT_EQ(MusicAlbumAPI::getMusicAlbum(songIds, baseUrl(), "al-9999"), 604);
    EXPECT_TRUE(cloud().received("/music/album_info").at(0).cookies.empty());

    std::string songList;
    ASSERT_EQ(MusicPlayListAPI::getMusicPlayList(songList, baseUrl(), "pl-morning"), 0);
    EXPECT_NE(songList.find("\"songID\": 9007199254740993"), std::string::npos) << songList;
    EXPECT_EQ(MusicPlayListAPI::getMusicPlayList(songList, baseUrl(), "pl-none"), 604);
}

}  // namespace
