#pragma once

/// Prints each benchmark beside its floor: what the same work costs without the applet, measured in the same
/// run. Times are of the processor, which others on a busy machine disturb less; the ratio is what can be
/// compared.

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace marovine::bench {

/// A benchmark, the floors whose times are added up, and the ratio aimed at (0: none).
struct Ratio {
    const char* row;
    std::vector<const char*> floors;
    double aim;
};

/// Reports as usual and ends with the table of ratios. With repetitions the medians count.
class RatioReporter : public benchmark::ConsoleReporter {
 public:
    explicit RatioReporter(std::vector<Ratio> ratios) : ratios_(std::move(ratios)) {}

    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const auto& run : runs) {
            const bool median = run.run_type == Run::RT_Aggregate && run.aggregate_name == "median";
            if (median || run.repetitions <= 1)
                times_[run.run_name.function_name] =
                    run.GetAdjustedCPUTime() * 1e9 / benchmark::GetTimeUnitMultiplier(run.time_unit);
        }
    }

    void Finalize() override {
        ConsoleReporter::Finalize();
        std::printf("\n%-24s %12s %12s %8s %6s\n", "benchmark", "time/ns", "floor/ns", "ratio", "aim");
        for (const auto& [row, floors, aim] : ratios_) {
            if (!times_.contains(row)) continue;
            double floor = 0;
            for (const char* name : floors) floor += times_[name];
            std::printf("%-24s %12.1f %12.1f %8.2f", row, times_[row], floor,
                        floor > 0 ? times_[row] / floor : 0.0);
            if (aim > 0)
                std::printf(" %6g\n", aim);
            else
                std::printf(" %6s\n", "-");
        }
    }

 private:
    std::vector<Ratio> ratios_;
    std::map<std::string, double> times_;
};

}  // namespace marovine::bench
