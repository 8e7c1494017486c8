#include "board/lines/SignalAnalyzers.h"

#include <algorithm>
#include <string>

namespace virtualboard {

namespace {

Number read(const Slot* slot, Number otherwise) {
    return slot != nullptr ? slot->value : otherwise;
}

void store(Slot* slot, Number value) {
    if (slot != nullptr && !slot->pinned) slot->value = value;
}

/// A time between two edges as the analyzers count it, in whole clock cycles; µs.
double period(double nanoseconds) {
    const BoardTime cycles = static_cast<BoardTime>(nanoseconds) / kClockCycle;
    return static_cast<double>(cycles) / 125;
}

}  // namespace

void SignalAnalyzers::attach(const FindSlot& find) {
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
    clear_ = acting("Device1_Process1_Trigger_Analyzer_Clear_Value");
    difference_ = live("Device1_Process1_Trigger_Analyzer_Difference_Status");
    for (std::size_t i = 0; i < analyzers_.size(); ++i) {
        const std::string prefix = "Device1_Process1_Trigger_Analyzer_Analyzer" + std::to_string(i) + "_";
        analyzers_[i] = {.select = acting(prefix + "Select_SelectSignal_Select"),
                         .invert = acting(prefix + "Select_Polarity_Invert"),
                         .periodCurrent = live(prefix + "PeriodCurrent"),
                         .periodMax = live(prefix + "PeriodMax"),
                         .periodMin = live(prefix + "PeriodMin"),
                         .count = live(prefix + "PulseCountSignal_Status")};
    }
}

void SignalAnalyzers::edges(Number signal, bool up, const Pulses& pulses) {
    bool counted = false;
    for (Analyzer& analyzer : analyzers_) {
        if (read(analyzer.select, 0) != signal || (read(analyzer.invert, 0) == 0) != up) continue;
        take(analyzer, pulses);
        counted = true;
    }
    if (counted) updateDifference();
}

void SignalAnalyzers::take(Analyzer& analyzer, const Pulses& pulses) {
    if (analyzer.count != nullptr) {
        store(analyzer.count, static_cast<std::uint32_t>(analyzer.count->value + pulses.count()));
    }
    const auto measured = [&](double gap) {
        store(analyzer.periodCurrent, fromDouble(gap));
        const double longest = analyzer.periodMax != nullptr ? toDouble(analyzer.periodMax->value) : 0;
        store(analyzer.periodMax, fromDouble(std::max(longest, gap)));
        const double shortest = analyzer.periodMin != nullptr ? toDouble(analyzer.periodMin->value) : 0;
        store(analyzer.periodMin, fromDouble(shortest > 0 ? std::min(shortest, gap) : gap));
    };
    // One edge has no period.
    if (analyzer.follows) measured(period(static_cast<double>(pulses.first() - analyzer.last)));
    const Rhythm& time = pulses.time;
    if (time.group > 1 && pulses.count() > time.group)
        measured(period(time.groupStep - time.step * static_cast<double>(time.group - 1)));
    if (pulses.count() > 1) measured(period(static_cast<double>(pulses.last() - pulses.at(pulses.end - 2))));
    if (time.group > 1 && pulses.count() > 2) {  // the other distance of the two
        const double last = static_cast<double>(pulses.last() - pulses.at(pulses.end - 2));
        measured(period(static_cast<double>(pulses.at(pulses.end - 2) - pulses.at(pulses.end - 3))));
        measured(period(last));
    }
    analyzer.follows = true;
    analyzer.last = pulses.last();
}

void SignalAnalyzers::updateDifference() {
    const Number difference = read(analyzers_[0].count, 0) - read(analyzers_[1].count, 0);
    store(difference_, difference & 0x1FFFFFFFFU);
}

void SignalAnalyzers::clear() {
    for (Analyzer& analyzer : analyzers_) {
        for (Slot* slot : {analyzer.periodCurrent, analyzer.periodMax, analyzer.periodMin, analyzer.count}) {
            if (slot == nullptr) continue;
            slot->pinned = false;
            slot->value = 0;  // the bits of 0.0 as well
        }
        analyzer.follows = false;
    }
    if (difference_ != nullptr) {
        difference_->pinned = false;
        difference_->value = 0;
    }
}

void SignalAnalyzers::changed(const Slot& slot) {
    if (&slot == clear_) {
        if (slot.value == 1) clear();
        return;
    }
    for (Analyzer& analyzer : analyzers_)
        if (&slot == analyzer.select || &slot == analyzer.invert) analyzer.follows = false;
    // A count that the control interface set takes part in the difference.
    if (&slot == analyzers_[0].count || &slot == analyzers_[1].count) updateDifference();
}

std::uint32_t SignalAnalyzers::inputs() const {
    std::uint32_t inputs = 0;
    for (const Analyzer& analyzer : analyzers_) {
        const Number input = read(analyzer.select, 0) - kFirstInput;
        if (input < kInputs) inputs |= std::uint32_t{1} << input;
    }
    return inputs;
}

}  // namespace virtualboard
