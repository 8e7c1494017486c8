#include "marovine/PicturePlan.h"

#include <algorithm>
#include <span>
#include <string_view>
#include <variant>
#include <vector>

#include "board/imaging/LineClock.h"
#include "board/imaging/Scene.h"
#include "board/imaging/Settings.h"

namespace virtualboard {

namespace {

using imaging::DesignSettings;
using Start = PicturePlan::Start;

/// The values as anybody sees them who holds the board's control.
class ControlReader : public imaging::ValueReader {
 public:
    explicit ControlReader(const Control& board) : board_(board) {}

    std::uint32_t u32(std::string_view name) const override {
        return std::get<std::uint32_t>(board_.value(name));
    }
    double real(std::string_view name) const override { return std::get<double>(board_.value(name)); }
    void field(std::string_view name, std::span<std::uint32_t> out) const override {
        const auto elements = std::get<std::vector<std::uint32_t>>(board_.value(name));
        std::copy_n(elements.begin(), std::min(elements.size(), out.size()), out.begin());
    }

 private:
    const Control& board_;
};

Start startOf(const DesignSettings& settings) {
    if (settings.imageTriggerEnable == 0) return Start::FreeRun;
    switch (settings.imageTriggerMode) {
        case 1:
            return Start::Pulse;
        case 2:
            return Start::Gate;
        default:
            return Start::FreeRun;
    }
}

}  // namespace

PicturePlan picturePlan(const Control& board, const imaging::Belt& belt) {
    const DesignSettings settings = readSettings(ControlReader(board));
    PicturePlan plan{.width = settings.xLength,
                     .generated = settings.generatorEnable != 0,
                     .start = startOf(settings),
                     .selectPeriod = settings.selectPeriod};
    const bool endless = plan.start == Start::Gate && settings.maxGatedHeight != 0;
    const std::uint64_t lines =
        endless ? settings.imageHeight : std::min(settings.imageHeight, settings.triggerYLength);
    plan.rows = std::min<std::uint64_t>(lines * rowsPerTrigger(settings), settings.yLength);
    plan.passesAny = lines != 0 && settings.selectPhase < settings.selectPeriod;
    const auto clock = lineClock(settings, belt, imaging::kChartSize);
    plan.linesCome = clock.running();
    if (plan.linesCome)
        plan.seconds = clock.timeFor((settings.triggerYOffset + lines) * settings.selectPeriod) * 1e-6;
    return plan;
}

}  // namespace virtualboard
