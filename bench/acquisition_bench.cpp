// Whole pictures from the board to the host through the applet: what a host sees, with locks, queue and the
// hand-over between the threads. Compare with the pictures of imaging_bench, which only renders.

#include <benchmark/benchmark.h>

#include <cstdint>

#include "marovine/Control.h"
#include "marovine/FrameMemory.h"
#include "marovine/marovine.h"

namespace {

constexpr int kWidthId = 100, kHeightId = 200;
constexpr std::int64_t kBuffers = 4;

/// Takes pictures of a size as fast as they come, rendered by so many threads (0: as many as there are
/// cores). Pictures per second are those of the clock on the wall; the CPU column is all threads together.
void takePicture(benchmark::State& state) {
    const auto width = static_cast<std::uint32_t>(state.range(0));
    const auto height = static_cast<std::uint32_t>(state.range(1));
    GXdevice* board = virtualboard::insertBoard();
    virtualboard::Control(board).setClockMode(virtualboard::ClockMode::AsFastAsPossible);
    virtualboard::Control(board).setRenderThreads(static_cast<unsigned>(state.range(2)));
    int error = 0;
    Fg_Struct record{Std_entry(board, &error, 0)};
    Fg_setParameterWithType(&record, kWidthId, &width, 0, FG_TYPE_UINT32);
    Fg_setParameterWithType(&record, kHeightId, &height, 0, FG_TYPE_UINT32);
    const virtualboard::FrameMemory memory(kBuffers, std::size_t{width} * height * 3);
    if (Fg_AcquireEx(&record, 0, -1, 0, memory.get()) != 0) state.SkipWithError("no acquisition");
    // The first round through the ring also fetches the memory's pages.
    std::int64_t number = kBuffers;
    for (std::int64_t i = 1; i <= kBuffers; ++i)
        Fg_getLastPicNumberBlockingEx(&record, i, 0, 60, memory.get());
    for ([[maybe_unused]] auto turn : state) {
        ++number;
        if (Fg_getLastPicNumberBlockingEx(&record, number, 0, 60, memory.get()) != number)
            state.SkipWithError("a picture is missing");
    }
    state.SetItemsProcessed((number - kBuffers) * width * height);
    Fg_FreeGrabber(&record);
    virtualboard::removeBoard(board);
}
BENCHMARK(takePicture)
    ->ArgNames({"width", "height", "threads"})
    ->Args({2048, 1024, 1})
    ->Args({2048, 1024, 0})
    ->Args({16384, 1024, 1})
    ->Args({16384, 1024, 0})
    ->Args({64, 4, 0})
    ->Unit(benchmark::kMicrosecond)
    ->UseRealTime()
    ->MeasureProcessCPUTime();

}  // namespace
