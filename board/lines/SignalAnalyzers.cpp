#include "board/lines/SignalAnalyzers.h"

#include <algorithm>
#include <cmath>
#include <string>

namespace virtualboard {

namespace {

constexpr BoardTime kClockPeriod = 8;  // ns; every time of the design is a number of these
constexpr double kClocksPerMicrosecond = 125;
constexpr BoardTime kPatternLength = 2000;  // clocks of the generator's pixel frequency pattern

// Signals of an analyzer's selector that pulse.
constexpr Number kSignalExsync = 1;
constexpr Number kSignalExsync2 = 2;
constexpr Number kSignalLineStart = 33;
constexpr Number kSignalLineEnd = 34;

Number read(const Slot* slot, Number otherwise) {
    return slot != nullptr ? slot->value : otherwise;
}

BoardTime clocksOf(const Slot* slot) {
    return slot != nullptr ? std::llround(toDouble(slot->value) * kClocksPerMicrosecond) : 0;
}

void store(Slot* slot, Number value) {
    if (slot != nullptr && !slot->pinned) slot->value = value;
}

}  // namespace

void SignalAnalyzers::attach(const FindSlot& find, BoardTime now) {
    *this = {};
    const auto acting = [&find](std::string_view name) {
        Slot* slot = find(name);
        if (slot != nullptr) slot->acts = true;
        return slot;
    };
    const auto live = [&find](std::string_view name) {
        Slot* slot = find(name);
        if (slot != nullptr) slot->live = true;
        return slot;
    };
    mode_ = acting("Device1_Process0_Trigger_Trigger_LineTriggerMode");
    enable_ = acting("Device1_Process0_Trigger_Trigger_ExsyncEnable");
    period_ = acting("Device1_Process0_Trigger_Trigger_ExsyncPeriod");
    delay_ = acting("Device1_Process0_Trigger_Trigger_Exsync2Delay");
    pixelClock_ = acting("Device1_Process0_Camera_PixelClockX");
    linkReset_ = acting("Device1_Process0_Camera_CameraLinkCoreReset");
    cameraTrigger_ = acting("Device1_Process1_Trigger_OutputMapping_CamTrigger0_CC1_SelectSignal_Select");
    source_ = acting("Device1_Process0_CameraSimulator_Enable_SelectSource");
    freeRun_ = acting("Device1_Process0_CameraSimulator_TriggerValve_FreeRun_Select");
    clockMode_ = acting("Device1_Process0_CameraSimulator_ControlPixelClock_Mode");
    sequence_ = acting("Device1_Process0_CameraSimulator_PixelFrequency_SequenceLength_ImageWidth");
    active_ = acting("Device1_Process0_CameraSimulator_PixelFrequency_ActivePixel_Number");
    words_ = acting("Device1_Process0_CameraSimulator_Size_ImageWidth");
    clear_ = acting("Device1_Process1_Trigger_Analyzer_Clear_Value");
    difference_ = live("Device1_Process1_Trigger_Analyzer_Difference_Status");
    for (std::size_t i = 0; i < analyzers_.size(); ++i) {
        const std::string prefix = "Device1_Process1_Trigger_Analyzer_Analyzer" + std::to_string(i) + "_";
        analyzers_[i].select = acting(prefix + "Select_SelectSignal_Select");
        analyzers_[i].periodCurrent = live(prefix + "PeriodCurrent");
        analyzers_[i].periodMax = live(prefix + "PeriodMax");
        analyzers_[i].periodMin = live(prefix + "PeriodMin");
        analyzers_[i].count = live(prefix + "PulseCountSignal_Status");
    }
    restartTrains(now);
    for (Analyzer& analyzer : analyzers_) follow(analyzer, now);
}

const PulseTrain* SignalAnalyzers::trainOf(Number signal) const {
    switch (signal) {
        case kSignalExsync:
            return &exsync_;
        case kSignalExsync2:
            return &exsync2_;
        case kSignalLineStart:
        case kSignalLineEnd:
            return &lines_;
        default:
            return nullptr;
    }
}

void SignalAnalyzers::follow(Analyzer& analyzer, BoardTime now) {
    analyzer.train = trainOf(read(analyzer.select, 0));
    analyzer.counted = analyzer.train != nullptr ? analyzer.train->pulses(now) : 0;
    analyzer.seen = 0;
}

/// A train whose settings changed begins a new phase now; the others pulse on undisturbed.
void SignalAnalyzers::restartTrains(BoardTime now) {
    // The generator makes pulses by itself in the two grabber-controlled modes; in the external ones they
    // would come from an input, and the virtual board's inputs do not pulse.
    const Number mode = read(mode_, 0);
    const bool running = read(enable_, 0) == 1 && (mode == 0 || mode == 2);
    const PulseTrain old[] = {exsync_, exsync2_, lines_};

    const BoardTime period = running ? clocksOf(period_) * kClockPeriod : 0;
    if (period != exsync_.period) exsync_ = {.start = now, .period = period};
    const BoardTime delay = clocksOf(delay_) * kClockPeriod;
    if (exsync_.start != old[0].start || period != old[0].period || delay != exsync2Delay_) {
        exsync2_ = {.start = exsync_.start + delay, .period = period};
        exsync2Delay_ = delay;
    }

    if (read(source_, 0) == 0) {
        // A connected camera answers every ExSync pulse on its trigger line with a line.
        const bool connected = read(pixelClock_, 0) > 0 && read(linkReset_, 0) == 0;
        const PulseTrain* trigger = connected ? trainOf(read(cameraTrigger_, kSignalExsync)) : nullptr;
        lines_ = trigger == &exsync_ || trigger == &exsync2_ ? *trigger : PulseTrain{};
    } else {
        BoardTime clocks = 0;
        if (read(freeRun_, 1) == 1) {
            const auto pixelClocks = static_cast<BoardTime>(read(words_, 0)) * kPatternLength;
            clocks = read(clockMode_, 0) == 1
                         ? static_cast<BoardTime>(read(sequence_, 0))
                         : pixelClocks / std::max<BoardTime>(1, static_cast<BoardTime>(read(active_, 1)));
        }
        if (clocks * kClockPeriod != lines_.period) lines_ = {.start = now, .period = clocks * kClockPeriod};
    }

    const PulseTrain* trains[] = {&exsync_, &exsync2_, &lines_};
    for (std::size_t i = 0; i < std::size(trains); ++i) {
        if (trains[i]->start == old[i].start && trains[i]->period == old[i].period) continue;
        for (Analyzer& analyzer : analyzers_) {
            if (analyzer.train == trains[i]) follow(analyzer, now);
        }
    }
}

/// Takes fresh pulses into an analyzer's read-outs; `time` lies before the last of them.
void SignalAnalyzers::count(Analyzer& analyzer, std::int64_t pulses, BoardTime time) {
    analyzer.seen += pulses;
    if (analyzer.count != nullptr) {
        store(analyzer.count,
              static_cast<std::uint32_t>(analyzer.count->value + static_cast<Number>(pulses)));
    }
    if (analyzer.seen < 2) return;  // one pulse has no period
    const BoardTime clocks = time / kClockPeriod;
    const double period = static_cast<double>(clocks) / kClocksPerMicrosecond;
    store(analyzer.periodCurrent, fromDouble(period));
    const double longest = analyzer.periodMax != nullptr ? toDouble(analyzer.periodMax->value) : 0;
    store(analyzer.periodMax, fromDouble(std::max(longest, period)));
    const double shortest = analyzer.periodMin != nullptr ? toDouble(analyzer.periodMin->value) : 0;
    store(analyzer.periodMin, fromDouble(shortest > 0 ? std::min(shortest, period) : period));
}

void SignalAnalyzers::settle(BoardTime now) {
    bool counted = false;
    for (Analyzer& analyzer : analyzers_) {
        if (analyzer.train == nullptr) continue;
        const std::int64_t pulses = analyzer.train->pulses(now);
        const std::int64_t fresh = pulses - analyzer.counted;
        if (fresh <= 0) continue;
        counted = true;
        analyzer.counted = pulses;
        count(analyzer, fresh, analyzer.train->period);
    }
    if (counted) updateDifference();
}

void SignalAnalyzers::pulse(Number signal, BoardTime time) {
    bool counted = false;
    for (Analyzer& analyzer : analyzers_) {
        if (read(analyzer.select, 0) != signal) continue;
        counted = true;
        count(analyzer, 1, time - analyzer.lastPulse);
        analyzer.lastPulse = time;
    }
    if (counted) updateDifference();
}

void SignalAnalyzers::updateDifference() {
    const Number difference = read(analyzers_[0].count, 0) - read(analyzers_[1].count, 0);
    store(difference_, difference & 0x1FFFFFFFFU);
}

void SignalAnalyzers::clear(BoardTime now) {
    for (Analyzer& analyzer : analyzers_) {
        for (Slot* slot : {analyzer.periodCurrent, analyzer.periodMax, analyzer.periodMin, analyzer.count}) {
            if (slot == nullptr) continue;
            slot->pinned = false;
            slot->value = 0;  // the bits of 0.0 as well
        }
        follow(analyzer, now);
    }
    if (difference_ != nullptr) {
        difference_->pinned = false;
        difference_->value = 0;
    }
}

void SignalAnalyzers::changed(const Slot& slot, BoardTime now) {
    if (&slot == clear_) {
        if (slot.value == 1) clear(now);
        return;
    }
    for (Analyzer& analyzer : analyzers_) {
        if (&slot == analyzer.select) {
            follow(analyzer, now);
            return;
        }
    }
    // A count that the control interface set takes part in the difference.
    if (&slot == analyzers_[0].count || &slot == analyzers_[1].count) {
        updateDifference();
        return;
    }
    restartTrains(now);
}

}  // namespace virtualboard
