// The parts of a run, each measured alone: the number writer, one stream's three records, and the
// snapshot reader. The last two use the snapshot at $ORU_SNAPSHOT.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include <benchmark/benchmark.h>
#include <oru.h>

#include "report/number.h"
#include "serverreport/stream_snapshot.h"
#include "snapshot/load.h"
#include "video/native.h"
#include "video/owned.h"

namespace {

void number(benchmark::State& state, double value) {
    char text[max_number_size];
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(value);
        benchmark::DoNotOptimize(write_number(value, text));
    }
}
BENCHMARK_CAPTURE(number, whole, 4056695.0);
BENCHMARK_CAPTURE(number, fraction, 29.97);

void stream_records(benchmark::State& state) {
    const owned_object_list streams{oru_stream_get_all(nullptr)};
    if (streams == nullptr) {
        state.SkipWithError("no streams");
        return;
    }
    OruStream* stream = object_in<OruStream>(streams.get());
    const owned_object<OruMap> info{oru_stream_get_info(stream, nullptr)};
    const owned_object<OruMap> settings{oru_stream_get_settings(stream, nullptr)};
    const owned_object<OruMap> debug{oru_stream_get_debug(stream, nullptr)};
    const stream_snapshot_entry entry{oru_stream_get_id(stream), info.get(), settings.get(),
                                      debug.get()};

    // The records are printed to stdout. The benchmark prints its table elsewhere.
    std::FILE* const report = std::fopen("/dev/null", "w");
    std::FILE* const terminal = std::exchange(stdout, report);
    for ([[maybe_unused]] auto _ : state) {
        print_stream_summary(entry, 0);
        print_stream_settings(entry, 0);
        print_stream_statistics(entry, 0);
    }
    stdout = terminal;
    std::fclose(report);
}
BENCHMARK(stream_records);

void snapshot_reader(benchmark::State& state) {
    const std::string path = std::getenv("ORU_SNAPSHOT");
    std::size_t bytes = 0;
    for ([[maybe_unused]] auto _ : state) {
        const snapshot::loaded loaded = snapshot::load(path);
        if (!loaded) {
            state.SkipWithError(loaded.error().c_str());
            break;
        }
        bytes = (*loaded)->text.size();
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(bytes) * state.iterations());
}
BENCHMARK(snapshot_reader)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
