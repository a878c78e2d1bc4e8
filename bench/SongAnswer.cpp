#include "SongAnswer.h"

namespace bench {

namespace {

long long songId(int i) {
    return 1000000001LL + i;
}

}  // namespace

std::string songIdList(int count) {
    std::string text = "[";
    for (int i = 0; i < count; ++i)
        text += (i ? "," : "") + std::to_string(songId(i));
    return text + "]";
}

std::string songAnswer(int count) {
    static const char* const kOrigins[] = {"qqmusic", "kuwo", "netease", "ximalaya"};
    std::string text = "{\"code\":0,\"message\":\"ok\",\"data\":[";
    for (int i = 0; i < count; ++i) {
        const std::string n = std::to_string(i);
        if (i) text += ",";
        text += "{\"songID\":" + std::to_string(songId(i)) + ",\"name\":\"晴天 Sunny Day " + n +
                "\",\"origin\":\"" + kOrigins[i % 4] + "\",\"originSongID\":\"003a" + n +
                "BcDeF\",\"artist\":{\"id\":" + std::to_string(5000 + i % 97) +
                ",\"name\":\"周 Artist " + std::to_string(i % 97) +
                "\"},\"album\":{\"id\":" + std::to_string(9000 + i % 211) + ",\"name\":\"Album " +
                std::to_string(i % 211) + "\"},\"duration\":" + std::to_string(180 + i % 120) + "}";
    }
    return text + "]}";
}

}  // namespace bench
