// The floor for reshaping a 1000-song answer: json-c parsing the same answer
// and writing it back out, with nothing else done.
#include <benchmark/benchmark.h>
#include <json-c/json.h>

#include "SongAnswer.h"

namespace {

void SongListInfo_JsonC(benchmark::State& state) {
    const std::string answer = bench::songAnswer(bench::kSongs);
    for (auto _ : state) {
        json_object* parsed = json_tokener_parse(answer.c_str());
        std::string text = json_object_get_string(parsed);
        benchmark::DoNotOptimize(text.data());
        json_object_put(parsed);
    }
}

}  // namespace

BENCHMARK(SongListInfo_JsonC)->UseRealTime();

BENCHMARK_MAIN();
