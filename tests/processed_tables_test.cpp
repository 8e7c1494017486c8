/// The tables of the processing parameters against what defines them: a power for each entry.

#include <gtest/gtest.h>

#include <cfenv>
#include <cmath>
#include <limits>
#include <random>

#include "parameters/ProcessedTables.h"
#include "tables/EnumerationTables.h"

namespace marovine {
namespace {

LookupTable tableByPowers(const ParameterCache& cache) {
    LookupTable table{};
    for (std::size_t i = 0; i < table.size(); ++i) {
        const double base =
            (static_cast<double>(i) / 255.0 + cache.FG_PROCESSING_OFFSET) * cache.FG_PROCESSING_GAIN;
        const double value = base < 0.0 ? 0.0 : std::pow(base, 1.0 / cache.FG_PROCESSING_GAMMA) * 255.0 + 0.5;
        if (std::isnan(value)) continue;
        const int entry = static_cast<int>(std::isinf(value) || value > 256.0 ? 256.0 : value);
        const int turned = cache.FG_PROCESSING_INVERT == constant("FG_ON") ? 255 - entry : entry;
        table[i] = static_cast<std::uint32_t>(turned < 0 ? 0 : turned > 255 ? 255 : turned);
    }
    return table;
}

class ProcessedTablesTest : public testing::Test {
 protected:
    void compare(double offset, double gain, double gamma) {
        cache_.FG_PROCESSING_OFFSET = offset;
        cache_.FG_PROCESSING_GAIN = gain;
        cache_.FG_PROCESSING_GAMMA = gamma;
        ASSERT_EQ(tableByPowers(cache_), tables_.of(cache_))
            << std::hexfloat << offset << ' ' << gain << ' ' << gamma;
    }

    ParameterCache cache_;
    ProcessedTables tables_;
    std::mt19937_64 random_{1};
};

TEST_F(ProcessedTablesTest, AreThePowersForAnyParameters) {
    std::uniform_real_distribution<double> offset(-1.0, 1.0), gain(0.0, 8.0), exponent(-5.0, 5.0);
    for (int round = 0; round < 1500 && !HasFatalFailure(); ++round) {
        cache_.FG_PROCESSING_INVERT = round % 2 == 0 ? constant("FG_ON") : constant("FG_OFF");
        const double o = round % 3 == 0 ? 0.0 : offset(random_), g = round % 3 == 0 ? 1.0 : gain(random_);
        // Gamma alone moves, and with it only the exponent.
        for (int i = 0; i < 4 && !HasFatalFailure(); ++i) compare(o, g, std::exp2(exponent(random_)));
    }
}

TEST_F(ProcessedTablesTest, AreThePowersWhereAnEntryIsAboutToChange) {
    for (int input = 1; input < 255; input += 6) {
        for (int entry = 1; entry < 256; entry += 9) {
            // The gamma with which the input is just between two entries, and its neighbours.
            double gamma = std::log(input / 255.0) / std::log((entry - 0.5) / 255.0);
            for (int i = 0; i < 3; ++i) gamma = std::nextafter(gamma, 0.0);
            for (int i = 0; i < 6 && !HasFatalFailure(); ++i, gamma = std::nextafter(gamma, 100.0))
                compare(0.0, 1.0, gamma);
        }
    }
}

TEST_F(ProcessedTablesTest, RaiseNoExceptionThatAHostMayTrap) {
    cache_.FG_PROCESSING_OFFSET = -0.5;  // bases below, at and above 0
    cache_.FG_PROCESSING_GAMMA = 2.2;
    std::feclearexcept(FE_ALL_EXCEPT);
    tables_.of(cache_);
    EXPECT_EQ(0, std::fetestexcept(FE_DIVBYZERO | FE_INVALID | FE_OVERFLOW));
}

TEST_F(ProcessedTablesTest, AreThePowersAtTheEndsOfNumbers) {
    using Limits = std::numeric_limits<double>;
    const double numbers[] = {0.0,
                              -0.0,
                              1.0,
                              -1.0,
                              0.1,
                              10.0,
                              1e-5,
                              1e5,
                              Limits::min(),
                              Limits::denorm_min(),
                              Limits::max(),
                              Limits::infinity(),
                              -Limits::infinity(),
                              Limits::quiet_NaN()};
    for (const int invert : {constant("FG_ON"), constant("FG_OFF")}) {
        cache_.FG_PROCESSING_INVERT = invert;
        for (const double offset : numbers)
            for (const double gain : numbers)
                for (const double gamma : numbers)
                    if (!HasFatalFailure()) compare(offset, gain, gamma);
    }
}

}  // namespace
}  // namespace marovine
