// Compiled once for each instruction set below; Highway includes this file again for each of them.
#include "board/imaging/Stages.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <optional>
#include <string_view>
#include <utility>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "board/imaging/Stages.cpp"
// Three sets are worth their code: 64 bytes with permutes over four registers, 32 bytes, and the baseline.
#define HWY_WANT_AVX3_DL
#define HWY_DISABLED_TARGETS (HWY_SSSE3 | HWY_SSE4 | HWY_AVX3)
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#if HWY_TARGET == HWY_EMU128 || HWY_TARGET == HWY_SCALAR
#include "board/imaging/PlainKernels-inl.h"
#else
#include "board/imaging/VectorKernels-inl.h"
#endif

#if HWY_ONCE
namespace virtualboard::imaging {
namespace {

HWY_EXPORT(exposeLine);
HWY_EXPORT(balanceLine);
HWY_EXPORT(rearrangeLine);
HWY_EXPORT(developLine);

const char* nameOf(std::int64_t target) {
    return target == HWY_STATIC_TARGET ? "baseline" : hwy::TargetName(target);
}

}  // namespace

float exposureGain(double factor) {
    return factor > 0 ? static_cast<float>(std::min(factor, 65536.0)) : 0;  // also when not a number
}

std::uint16_t whiteBalanceGain(double coefficient) {
    const double scaled = std::round(coefficient * 1024);
    if (!(scaled > 0)) return 0;  // also when not a number
    return static_cast<std::uint16_t>(std::min(scaled, 32767.0));
}

void expose(std::span<std::uint8_t> line, float gain) {
    HWY_DYNAMIC_DISPATCH(exposeLine)(line.data(), line.size(), gain);
}

void whiteBalance(std::span<std::uint8_t> line, std::uint16_t even, std::uint16_t odd) {
    HWY_DYNAMIC_DISPATCH(balanceLine)(line.data(), line.size(), even, odd);
}

void develop(BayerRow above, BayerRow row, BayerRow below, std::size_t width, const Development& how,
             std::uint8_t* out) {
    HWY_DYNAMIC_DISPATCH(developLine)(above.pixels, row.pixels, below.pixels, width, how, out);
}

void extendEdges(std::uint8_t* pixels, std::size_t width) {
    pixels[-1] = pixels[width > 1 ? 1 : 0];
    pixels[width] = pixels[width > 1 ? width - 2 : 0];
}

Rearrangement::Rearrangement(std::vector<std::uint16_t> from, std::size_t count) : from_(std::move(from)) {
    if (from_.size() < kBlock || count < kBlock) return;
    for (std::size_t place = 0; place < from_.size(); place += kBlock) {
        const std::size_t begin = std::min(place, from_.size() - kBlock);
        std::array<std::uint16_t, kBlock> rest;
        std::copy_n(from_.begin() + static_cast<std::ptrdiff_t>(begin), kBlock, rest.begin());
        // The lowest pixel that is still missing, and all that its run covers.
        for (std::uint16_t lowest; (lowest = *std::ranges::min_element(rest)) != kBlack;) {
            Run& run = runs_.emplace_back();
            run.from = static_cast<std::uint16_t>(std::min<std::size_t>(lowest, count - kBlock));
            for (std::size_t i = 0; i < kBlock; ++i) {
                const bool covered = rest[i] != kBlack && rest[i] - run.from < int{kBlock};
                run.places[i] = covered ? static_cast<std::uint8_t>(rest[i] - run.from) : 0x80;
                if (covered) rest[i] = kBlack;
            }
        }
        runEnds_.push_back(static_cast<std::uint32_t>(runs_.size()));
    }
}

void Rearrangement::apply(const std::uint8_t* in, std::uint8_t* out) const {
    HWY_DYNAMIC_DISPATCH(rearrangeLine)(*this, in, out);
}

std::vector<const char*> instructionSets() {
    std::vector<const char*> names;
    for (const std::int64_t target : hwy::SupportedAndGeneratedTargets()) names.push_back(nameOf(target));
    return names;
}

void useInstructionSet(const char* name) {
    for (const std::int64_t target : hwy::SupportedAndGeneratedTargets()) {
        if (std::string_view(nameOf(target)) == name) hwy::GetChosenTarget().Update(target);
    }
}

}  // namespace virtualboard::imaging
#endif
