#include "marovine/PicturePlan.h"

#include <algorithm>
#include <span>
#include <string_view>
#include <variant>
#include <vector>

#include "board/imaging/Scene.h"
#include "board/imaging/Settings.h"
#include "board/lines/LineStream.h"

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

/// Nobody: the plan only wants to know when lines come.
class NoListener : public SignalListener {
    void edges(Number, bool, const Pulses&) override {}
};
class OpenGate : public FrameCutter {
    std::uint64_t linesLeft(std::uint64_t) const override { return Pulses::kEndless; }
    bool listens() const override { return false; }
    void imageTrigger(bool, BoardTime, std::uint64_t) override {}
    void imageTriggerStands(BoardTime, std::uint64_t) override {}
};

/// Seconds until so many lines are complete; 0 when none comes.
double secondsFor(std::uint64_t lines, const DesignSettings& settings, const imaging::Belt& belt) {
    NoListener listener;
    OpenGate gate;
    LineStream stream(listener, gate);
    stream.setBelt(belt, false, 0);
    stream.configure(settings, 0);
    // A steady source tells at once, an irregular one a little at a time.
    BoardTime due = 0;
    for (int left = 1000; left > 0 && stream.completed() < lines; --left) {
        const auto next = stream.completeNotBefore(std::max<std::uint64_t>(lines, 1) - 1);
        if (!next || *next > BoardClock::kLatest) break;
        due = *next;
        stream.advance(due);
        stream.log().forget(stream.started());
    }
    return stream.completed() > 0 ? static_cast<double>(due) * 1e-9 : 0;
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
    const std::uint64_t all = (settings.triggerYOffset + lines) * settings.selectPeriod;
    plan.seconds = secondsFor(all, settings, belt);
    plan.linesCome = plan.seconds > 0;
    // The first line comes at once: in free run each further picture takes a little longer than the first.
    if (plan.start == Start::FreeRun && plan.linesCome)
        plan.seconds = secondsFor(2 * all, settings, belt) - plan.seconds;
    return plan;
}

}  // namespace virtualboard
