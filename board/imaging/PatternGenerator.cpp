#include "board/imaging/PatternGenerator.h"

#include <algorithm>

namespace virtualboard::imaging {

PatternGenerator::PatternGenerator(const DesignSettings& settings)
    : enableX_(settings.generatorEnableX != 0),
      yDivisor_(std::max(settings.generatorYDivisor, 1u)),
      frameDivisor_(std::max(settings.generatorFrameDivisor, 1u)),
      offset_(settings.generatorOffset),
      linesPerFrame_(std::max(settings.generatorActiveLines, 1u)),
      lineLength_(std::uint64_t{settings.generatorActiveWords} * 8) {}

void PatternGenerator::readRow(std::uint64_t row, std::uint32_t first, std::span<std::uint8_t> out) const {
    const std::uint64_t line = row % linesPerFrame_, frame = row / linesPerFrame_;
    const auto base = static_cast<std::uint8_t>(line % yDivisor_ + frame % frameDivisor_ + offset_ +
                                                (enableX_ ? first : 0));
    const std::size_t active =
        lineLength_ > first ? std::min<std::uint64_t>(out.size(), lineLength_ - first) : 0;
    if (enableX_) {
        // A counter as narrow as the pixels, so that a vector holds sixteen of them.
        std::uint8_t value = base;
        for (std::size_t i = 0; i < active; ++i) out[i] = value++;
    } else {
        std::fill_n(out.begin(), active, base);
    }
    std::fill(out.begin() + static_cast<std::ptrdiff_t>(active), out.end(), std::uint8_t{0});
}

}  // namespace virtualboard::imaging
