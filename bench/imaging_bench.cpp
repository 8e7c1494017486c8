// Speed of the virtual board's image path: every stage alone on lines that stay in the cache, then whole
// pictures. Figures are pixels per second; `bytes_per_second` counts what a stage writes, to be held against
// the copies of as many bytes.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "board/imaging/FrameRenderer.h"
#include "board/imaging/PatternGenerator.h"
#include "board/imaging/Scene.h"

namespace virtualboard::imaging {
namespace {

constexpr std::size_t kWidth = 2048;
constexpr std::uint32_t kHeight = 1024;

struct Lines {
    static std::vector<std::uint8_t> noise() {
        std::vector<std::uint8_t> line(kWidth + 128);
        std::uint32_t state = 1;
        for (auto& pixel : line)
            pixel = static_cast<std::uint8_t>((state = state * 1664525 + 1013904223) >> 24);
        return line;
    }
    std::uint8_t* at(int i) { return lines[i].data() + 64; }
    BayerRow row(int i) { return {at(i)}; }
    std::span<std::uint8_t> span(int i) { return {at(i), kWidth}; }

    std::vector<std::uint8_t> lines[3]{noise(), noise(), noise()};
    std::vector<std::uint8_t> packed = std::vector<std::uint8_t>(kWidth * 3);
};

void count(benchmark::State& state, std::size_t pixels, std::size_t bytesPerPixel) {
    const auto turns = static_cast<std::int64_t>(state.iterations());
    state.SetItemsProcessed(turns * static_cast<std::int64_t>(pixels));
    state.SetBytesProcessed(turns * static_cast<std::int64_t>(pixels * bytesPerPixel));
}

template <typename Stage>
void benchLine(benchmark::State& state, std::size_t bytesPerPixel, Stage stage) {
    Lines lines;
    for ([[maybe_unused]] auto turn : state) {
        stage(lines);
        benchmark::ClobberMemory();
    }
    count(state, kWidth, bytesPerPixel);
}

void copyLine(benchmark::State& state) {
    benchLine(state, 1, [](Lines& l) { std::memcpy(l.at(1), l.at(0), kWidth); });
}
void copyPackedLine(benchmark::State& state) {
    std::vector<std::uint8_t> from(kWidth * 3, 1);
    benchLine(state, 3, [&](Lines& l) { std::memcpy(l.packed.data(), from.data(), kWidth * 3); });
}
void generatorLine(benchmark::State& state) {
    DesignSettings settings;
    settings.generatorActiveWords = kWidth / 8;
    const PatternGenerator generator(settings);
    benchLine(state, 1, [&](Lines& l) { generator.readRow(77, 0, l.span(0)); });
}
void cameraLine(benchmark::State& state) {
    const LineScanCamera camera(std::make_shared<SensorScene>(testChart(), CameraTraits{}), Motion{});
    benchLine(state, 1, [&](Lines& l) { camera.readRow(77, 0, l.span(0)); });
}
void exposeLine(benchmark::State& state) {
    benchLine(state, 1, [](Lines& l) { expose(l.span(0), 1.2F); });
}
void whiteBalanceLine(benchmark::State& state) {
    benchLine(state, 1, [](Lines& l) { whiteBalance(l.span(0), 1024, 1100); });
}
void rearrangeLine(benchmark::State& state, std::size_t step) {
    std::vector<std::uint16_t> from;
    for (std::size_t i = 0; i < kWidth; ++i) from.push_back(static_cast<std::uint16_t>(i * step % kWidth));
    const Rearrangement rearrangement(std::move(from), kWidth);
    benchLine(state, 1, [&](Lines& l) { rearrangement.apply(l.at(0), l.at(1)); });
}
void mirrorLine(benchmark::State& state) {
    rearrangeLine(state, kWidth - 1);
}
void scrambleLine(benchmark::State& state) {
    rearrangeLine(state, 1021);
}
void developLine(benchmark::State& state, bool followEdges, bool lookUp) {
    const auto tables = DesignSettings::identityTables();
    const Development how{.followEdges = followEdges, .tables = lookUp ? tables.data() : nullptr};
    benchLine(state, 3,
              [&](Lines& l) { develop(l.row(0), l.row(1), l.row(2), kWidth, how, l.packed.data()); });
}
BENCHMARK(copyLine);
BENCHMARK(copyPackedLine);
BENCHMARK(generatorLine);
BENCHMARK(cameraLine);
BENCHMARK(exposeLine);
BENCHMARK(whiteBalanceLine);
BENCHMARK(mirrorLine);
BENCHMARK(scrambleLine);
BENCHMARK_CAPTURE(developLine, plain, false, false);
BENCHMARK_CAPTURE(developLine, enhanced, true, false);
BENCHMARK_CAPTURE(developLine, enhancedWithTables, true, true);

void copyPicture(benchmark::State& state) {
    const Image from(kWidth, kHeight, {1, 2, 3});
    Image to(kWidth, kHeight);
    for ([[maybe_unused]] auto turn : state) {
        std::memcpy(to.bytes().data(), from.bytes().data(), from.bytes().size());
        benchmark::ClobberMemory();
    }
    count(state, kWidth * kHeight, 3);
}
BENCHMARK(copyPicture)->Unit(benchmark::kMicrosecond);

void balance(DesignSettings& s) {
    s.redGain = 1.2, s.blueGain = 1.4;
}
void invert(DesignSettings& s) {
    for (auto& table : s.tables) std::ranges::reverse(table);
}

void picture(benchmark::State& state, void (*change)(DesignSettings&)) {
    DesignSettings settings;
    settings.tapWidth = settings.xLength = kWidth;
    settings.generatorActiveWords = kWidth / 8;
    change(settings);
    FrameRenderer renderer(std::make_shared<SensorScene>(testChart(), CameraTraits{}));
    renderer.configure(settings);
    Motion motion;
    motion.runs.front().gain = exposureGain(settings.exsyncExposure / CameraTraits{}.neutralExposure);
    Image out(kWidth, kHeight);
    std::uint64_t line = 0;
    for ([[maybe_unused]] auto turn : state) {
        renderer.render({0, line, kHeight, kHeight}, motion, out.bytes());
        benchmark::ClobberMemory();
        line += kHeight;
    }
    count(state, kWidth * kHeight, 3);
}

using Change = void (*)(DesignSettings&);
struct Path {
    const char* name;
    Change change;
};
constexpr Path kPaths[] = {
    {"camera", [](DesignSettings&) {}},
    {"plainDeBayer", [](DesignSettings& s) { s.fastDeBayer = 1; }},
    {"generator", [](DesignSettings& s) { s.generatorEnable = 1; }},
    {"tables", [](DesignSettings& s) { invert(s); }},
    {"everyStage",
     [](DesignSettings& s) {
         balance(s), invert(s);
         s.exsyncExposure = 25;
         s.translateVantagePoint = s.tapMirror[0] = 1;
     }},
    {"wrongTapGeometry",
     [](DesignSettings& s) {
         balance(s);
         s.tapWidth = kWidth / 8, s.tapCount = 10, s.dummyTaps = 1;
         std::swap(s.tapOrder[2], s.tapOrder[5]);
     }},
};

// Every path on every instruction set.
const bool registered = [] {
    for (const char* set : instructionSets()) {
        for (const Path& path : kPaths) {
            const std::string name = std::string("picture/") + path.name + "/" + set;
            benchmark::RegisterBenchmark(name.c_str(), [set, path](benchmark::State& state) {
                useInstructionSet(set);
                picture(state, path.change);
                useInstructionSet(instructionSets().front());
            })->Unit(benchmark::kMicrosecond);
        }
    }
    return true;
}();

}  // namespace
}  // namespace virtualboard::imaging
