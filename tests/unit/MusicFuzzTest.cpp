// Generated answers, most of them broken, through every music call that
// reads its answer: each must end in its documented status, never crash or
// leak (the sanitizer build runs this too), and hand out either nothing or a
// document of the right shape.
#include <json-c/json.h>

#include <functional>
#include <random>

#include "velmar/fake/FakeTest.h"
#include "velmar/quil/api/MusicAlbumAPI.h"
#include "velmar/quil/api/MusicPlayListAPI.h"
#include "velmar/quil/api/MusicSongInfoAPI.h"
#include "velmar/quil/api/PlayListV2API.h"

using namespace velmar::quil::api;
namespace fake = velmar::fake;

namespace {

const char kBase[] = "https://cloud.test";

class Generator {
  public:
    explicit Generator(unsigned seed) : mRandom(seed) {}

    int below(int n) { return std::uniform_int_distribution<int>(0, n - 1)(mRandom); }

    // A value of any type; containers nest up to `depth` more levels.
    std::string value(int depth) {
        static const char* const leaves[] = {"null", "true", "false", "18446744073709551615",
                                             "-0.5e3"};
        const int pick = below(depth > 0 ? 10 : 7);
        if (pick < 5) return leaves[pick];
        if (pick == 5) return std::to_string(static_cast<long long>(mRandom()) - 2147483648LL);
        if (pick == 6) return "\"s\\u00e9\\/" + std::to_string(below(100)) + "\"";
        if (pick == 7) return song(depth - 1);
        return pick == 8 ? array(depth - 1) : "{\"songList\":" + array(depth - 1) + "}";
    }

    std::string array(int depth) {
        std::string text = "[";
        for (int i = below(4); i > 0; --i)
            text += value(depth) + (i > 1 ? "," : "");
        return text + "]";
    }

    // A song whose members are usually, not always, of the expected type.
    std::string song(int depth) {
        static const char* const keys[] = {"songID",       "name",   "origin",
                                           "originSongID", "artist", "id"};
        std::string text = "{";
        for (const char* key : keys) {
            if (below(4) == 0) continue;
            std::string member;
            if (below(3) == 0) {
                member = value(depth);
            } else if (std::string(key) == "songID" || std::string(key) == "id") {
                member = std::to_string(below(1 << 30));
            } else if (std::string(key) == "artist") {
                member = "{\"name\":\"a" + std::to_string(below(9)) + "\"}";
            } else {
                member = below(5) ? "\"v" + std::to_string(below(9)) + "\"" : "\"\"";
            }
            text += std::string(text.size() > 1 ? "," : "") + "\"" + key + "\":" + member;
        }
        return text + "}";
    }

    // An answer of the shape one of the services sends, then damaged.
    std::string answer() {
        std::string songs = "[";
        for (int i = below(6); i > 0; --i)
            songs += (below(8) ? song(2) : value(3)) + (i > 1 ? "," : "");
        songs += "]";
        const int shape = below(3);
        std::string text = shape == 0   ? "{\"code\":0,\"data\":" + songs + "}"
                           : shape == 1 ? "{\"code\":0,\"data\":{\"songList\":" + songs + "}}"
                                        : "{\"data\":" + value(3) + "}";
        const int damage = below(5);
        if (damage == 0) return text.substr(0, below(static_cast<int>(text.size())));
        if (damage == 1) return std::string(20 + below(40), '[') + text + std::string(60, ']');
        if (damage == 2) text[below(static_cast<int>(text.size()))] = "{}[],:\"x"[below(8)];
        return text;
    }

  private:
    std::mt19937 mRandom;
};

using Call = std::function<int(std::string&)>;

bool isMusicsDocument(const std::string& text) {
    json_object* root = json_tokener_parse(text.c_str());
    json_object* musics = nullptr;
    bool ok = json_object_object_get_ex(root, "musics", &musics) &&
              json_object_is_type(musics, json_type_array);
    for (size_t i = 0; ok && i < json_object_array_length(musics); ++i) {
        json_object* entry = json_object_array_get_idx(musics, i);
        json_object* globalId = nullptr;
        ok = json_object_object_length(entry) == 5 &&
             json_object_object_get_ex(entry, "global_id", &globalId) &&
             json_object_is_type(globalId, json_type_int);
    }
    json_object_put(root);
    return ok;
}

class MusicFuzzTest : public fake::FakeTest {};

TEST_F(MusicFuzzTest, BrokenAnswersEndInADocumentedStatus) {
    const std::vector<std::pair<const char*, Call>> calls = {
        {"song info",
         [](std::string& r) {
             return MusicSongInfoAPI::getSongListInfo(r, kBase, "[1,2,3]", 0, -1);
         }},
        {"list", [](std::string& r) { return PlayListV2API::getSongsInList(r, 1, 0, 9, kBase); }},
        {"channel",
         [](std::string& r) { return PlayListV2API::getSongsInChannel(r, 1, 0, 9, kBase); }},
        {"album", [](std::string& r) { return MusicAlbumAPI::getMusicAlbum(r, kBase, "a"); }},
        {"catalogue",
         [](std::string& r) { return MusicPlayListAPI::getMusicPlayList(r, kBase, "p"); }},
        {"lists",
         [](std::string& r) {
             std::vector<long long> ids;
             int status = PlayListV2API::getLists(ids, kBase);
             r = std::to_string(ids.size());
             return status;
         }},
    };
    Generator generator(20260606);
    int succeeded = 0;
    for (int round = 0; round < 400; ++round) {
        fake::reset();
        fake::giveIdentity();
        const std::string body = generator.answer();
        for (const auto& [name, call] : calls) {
            fake::pushBody(body);
            std::string result = "kept";
            const int status = call(result);
            ASSERT_TRUE(status == 0 || status == 101 || status == 604)
                << name << " gave " << status << " for " << body;
            if (std::string(name) == "lists") continue;  // partial appends are its contract
            if (status != 0) {
                EXPECT_EQ(result, "kept") << name << ": " << body;
            } else if (std::string(name) == "song info" || std::string(name) == "list" ||
                       std::string(name) == "channel") {
                EXPECT_TRUE(isMusicsDocument(result)) << name << ": " << body << " -> " << result;
                ++succeeded;
            }
        }
    }
    // The generator must also reach the reshaping, not only the refusals.
    EXPECT_GT(succeeded, 100);
}

}  // namespace
