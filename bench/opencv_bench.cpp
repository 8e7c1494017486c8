// The image path beside OpenCV on one thread: the same interpolation and three tables, from raw Bayer rows to
// packed colour. OpenCV reads a whole raw picture; ours reads the camera's rows as it goes.

#include <benchmark/benchmark.h>

#include <algorithm>

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include "board/imaging/LineScanCamera.h"
#include "board/imaging/Scene.h"

namespace virtualboard::imaging {
namespace {

constexpr int kWidth = 2048, kHeight = 1024;

void openCv(benchmark::State& state, int interpolation, bool lookUp) {
    cv::setNumThreads(1);
    cv::Mat raw(kHeight, kWidth, CV_8UC1), colours, result;
    const LineScanCamera camera(std::make_shared<SensorScene>(testChart(), CameraTraits{}), Motion{});
    for (int y = 0; y < kHeight; ++y)
        camera.readRow(static_cast<std::uint64_t>(y), 0, {raw.ptr(y), std::size_t{kWidth}});
    cv::Mat tables(1, 256, CV_8UC3);
    for (int i = 0; i < 256; ++i)
        tables.at<cv::Vec3b>(i) = cv::Vec3b::all(static_cast<std::uint8_t>(255 - i));
    for ([[maybe_unused]] auto turn : state) {
        cv::demosaicing(raw, colours, interpolation);
        if (lookUp) cv::LUT(colours, tables, result);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * kWidth * kHeight);
}
BENCHMARK_CAPTURE(openCv, enhanced, cv::COLOR_BayerBG2BGR_EA, false)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(openCv, plain, cv::COLOR_BayerBG2BGR, false)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(openCv, enhancedWithTables, cv::COLOR_BayerBG2BGR_EA, true)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(openCv, plainWithTables, cv::COLOR_BayerBG2BGR, true)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace virtualboard::imaging
