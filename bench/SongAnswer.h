// The song-info exchange the song-list benchmarks reshape: a list of song IDs
// and the cloud's answer describing each song, as the service sends it.
#pragma once

#include <string>

namespace bench {

constexpr int kSongs = 1000;

// "[1000000001,1000000002,...]"
std::string songIdList(int count);
// {"code":0,"message":"ok","data":[{song}, ...]}, each song with its title,
// artist, album, origin, the origin's own ID, the global ID and a duration.
std::string songAnswer(int count);

}  // namespace bench
