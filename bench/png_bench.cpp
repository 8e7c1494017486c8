// Pictures as PNG files beside libpng, which wrote them before and makes smaller ones. The column `bytes` is
// the file's size.

#include <benchmark/benchmark.h>
#include <png.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <random>
#include <vector>

#include "board/imaging/FrameRenderer.h"
#include "board/imaging/Scene.h"
#include "pictures/Png.h"

namespace virtualboard::imaging {
namespace {

/// A picture of the belt, each byte up to so much more or less.
Image picture(int noise) {
    DesignSettings settings;
    settings.tapWidth = settings.xLength = 2048;
    FrameRenderer renderer(std::make_shared<SensorScene>(testChart(), CameraTraits{}));
    renderer.configure(settings);
    Image result(2048, 1024);
    renderer.render({0, 0, result.height, result.height}, Motion{}, result.bytes());
    std::mt19937 random(1);
    const auto span = static_cast<unsigned>(2 * noise + 1);
    for (auto& byte : result.bytes())
        byte =
            static_cast<std::uint8_t>(std::clamp(byte + static_cast<int>(random() % span) - noise, 0, 255));
    return result;
}

void count(benchmark::State& state, std::size_t bytes) {
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * 2048 * 1024);
    state.counters["bytes"] = static_cast<double>(bytes);
}

void pngOurs(benchmark::State& state) {
    const Image image = picture(static_cast<int>(state.range(0)));
    std::size_t bytes = 0;
    for ([[maybe_unused]] auto turn : state) bytes = encodePng(image).size();
    count(state, bytes);
}

void pngLibpng(benchmark::State& state) {
    const Image image = picture(static_cast<int>(state.range(0)));
    png_image png{};
    png.version = PNG_IMAGE_VERSION;
    png.width = image.width;
    png.height = image.height;
    png.format = PNG_FORMAT_BGR;
    std::vector<std::uint8_t> file(2 * image.bytes().size());
    png_alloc_size_t bytes = 0;
    for ([[maybe_unused]] auto turn : state) {
        bytes = file.size();
        png_image_write_to_memory(&png, file.data(), &bytes, 0, image.bytes().data(), 0, nullptr);
    }
    count(state, bytes);
}

BENCHMARK(pngOurs)->ArgName("noise")->Arg(0)->Arg(2)->Arg(8)->Unit(benchmark::kMicrosecond);
BENCHMARK(pngLibpng)->ArgName("noise")->Arg(0)->Arg(2)->Arg(8)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace virtualboard::imaging
