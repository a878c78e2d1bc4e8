// getSongListInfo reshaping a 1000-song answer that the fake transport hands
// back, so that only the library's own work is timed.
#include <benchmark/benchmark.h>

#include "SongAnswer.h"
#include "velmar/fake/Fake.h"
#include "velmar/quil/api/MusicSongInfoAPI.h"

namespace {

namespace fake = velmar::fake;

void SongListInfo_Library(benchmark::State& state) {
    const std::string ids = bench::songIdList(bench::kSongs);
    const std::string answer = bench::songAnswer(bench::kSongs);
    for (auto _ : state) {
        // A blank fake each time, so that its records do not pile up.
        state.PauseTiming();
        fake::reset();
        fake::setDeviceValue("deviceid", "7300123456");
        fake::setDeviceValue("channel_secret", "3c9a1f0e5b7d4c28a6e0f19d2b3c4d5e");
        fake::setDeviceValue("sn", "4417/20260001");
        fake::pushBody(answer);
        state.ResumeTiming();
        std::string result;
        if (velmar::quil::api::MusicSongInfoAPI::getSongListInfo(result, "https://cloud.test", ids,
                                                                 0, -1) != 0) {
            state.SkipWithError("getSongListInfo failed");
            break;
        }
        benchmark::DoNotOptimize(result.data());
    }
}

}  // namespace

BENCHMARK(SongListInfo_Library)->UseRealTime();
