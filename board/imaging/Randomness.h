#pragma once

#include <cstdint>

namespace virtualboard::imaging {

/// Random numbers by place instead of by order: the n-th number of a stream follows from the seed, the stream
/// and n alone, so that a row looks the same whichever thread draws it and whenever. Only whole numbers are
/// mixed; every machine draws the same ones.
class Randomness {
 public:
    constexpr explicit Randomness(std::uint64_t seed) : key_(mixed(seed + kStep)) {}

    /// An independent stream below this one.
    constexpr Randomness stream(std::uint64_t number) const { return Randomness(at(number) ^ key_); }
    /// The number at a place: 64 random bits.
    constexpr std::uint64_t at(std::uint64_t place) const { return mixed(key_ + (place + 1) * kStep); }

    /// The number at a place as a share of 1: at least 0, below 1.
    constexpr double share(std::uint64_t place) const {
        return static_cast<double>(at(place) >> 11) * 0x1p-53;
    }
    /// The number at a place, evenly between two limits.
    constexpr double between(double least, double most, std::uint64_t place) const {
        return least + (most - least) * share(place);
    }

    /// 64 random bits as a bell-shaped number around 0 with a standard deviation of `kBell`: the sum of their
    /// four quarters.
    static constexpr std::int32_t bell(std::uint64_t bits) {
        const auto quarter = [bits](unsigned n) {
            return static_cast<std::int32_t>(bits >> 16 * n & 0xFFFF);
        };
        return quarter(0) + quarter(1) + quarter(2) + quarter(3) - 2 * 0xFFFF;
    }
    static constexpr std::int32_t kBell = 37837;  ///< 65536 / sqrt(3)

 private:
    static constexpr std::uint64_t kStep = 0x9E3779B97F4A7C15;  // 2^64 / golden ratio: odd, without pattern

    /// Every bit of the result depends on every bit of the argument.
    static constexpr std::uint64_t mixed(std::uint64_t bits) {
        bits = (bits ^ bits >> 30) * 0xBF58476D1CE4E5B9;
        bits = (bits ^ bits >> 27) * 0x94D049BB133111EB;
        return bits ^ bits >> 31;
    }

    std::uint64_t key_;
};

}  // namespace virtualboard::imaging
