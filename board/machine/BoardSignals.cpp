#include "board/machine/BoardSignals.h"

#include <string>

namespace virtualboard {

namespace {

constexpr EventSource kTransfers[] = {EventSource::LineStart, EventSource::LineEnd, EventSource::FrameStart,
                                      EventSource::FrameEnd};
constexpr EventSource kCustom[] = {EventSource::CustomSignal0, EventSource::CustomSignal1};

}  // namespace

void BoardSignals::attach(const SignalAnalyzers::FindSlot& find) {
    analyzers_.attach(find);
    for (std::size_t i = 0; i < custom_.size(); ++i) {
        const std::string prefix =
            "Device1_Process1_Trigger_Events_SelectCustomSignalEvent" + std::to_string(i) + "_";
        custom_[i] = {find(prefix + "SelectSignal_Select"), find(prefix + "Polarity_Invert")};
        for (Slot* slot : {custom_[i].select, custom_[i].invert})
            if (slot != nullptr) slot->acts = true;
    }
}

BoardSignals::Edge BoardSignals::edgeOf(EventSource source) const {
    const auto number = static_cast<unsigned>(source);
    if (const unsigned input = number - static_cast<unsigned>(EventSource::FirstInputRising); input < kInputs)
        return {kFirstInput + input, true};
    if (const unsigned input = number - static_cast<unsigned>(EventSource::FirstInputFalling);
        input < kInputs)
        return {kFirstInput + input, false};
    for (std::size_t i = 0; i < std::size(kTransfers); ++i)
        if (source == kTransfers[i]) return {kLineStart + i, true};
    for (std::size_t i = 0; i < custom_.size(); ++i) {
        if (source != kCustom[i] || custom_[i].select == nullptr) continue;
        return {custom_[i].select->value, custom_[i].invert == nullptr || custom_[i].invert->value == 0};
    }
    return {};
}

void BoardSignals::edges(Number signal, bool up, const Pulses& pulses) {
    analyzers_.edges(signal, up, pulses);
    if (signal >= kLineStart && signal <= kFrameEnd && up) {
        std::int64_t& count = counts_[signal - kLineStart];
        post(kTransfers[signal - kLineStart], pulses, count, true);
        count += static_cast<std::int64_t>(pulses.count());
    }
    if (events_.wanted() == 0) return;
    if (signal >= kFirstInput && signal < kFirstInput + kInputs)
        post(inputEdge(static_cast<unsigned>(signal - kFirstInput), up), pulses, up ? 1 : 0, false);
    for (const EventSource source : kCustom) {
        const Edge edge = edgeOf(source);
        if (edge.signal == signal && edge.up == up && signal != 0) post(source, pulses, 1, false);
    }
}

void BoardSignals::post(EventSource source, const Pulses& pulses, std::int64_t payload, bool counted) {
    if (!events_.wants(source)) return;
    for (std::uint64_t i = pulses.begin; i < pulses.end; ++i) {
        if (events_.post(source, pulses.at(i), payload)) {
            payload += counted ? 1 : 0;
            continue;
        }
        if (i + 1 < pulses.end) events_.skip(source, static_cast<std::int64_t>(pulses.end - i - 1));
        return;
    }
}

std::uint32_t BoardSignals::inputs() const {
    std::uint32_t inputs = analyzers_.inputs();
    for (unsigned source = 0; source < kEventSources; ++source) {
        if (!events_.wants(static_cast<EventSource>(source))) continue;
        const Number input = edgeOf(static_cast<EventSource>(source)).signal - kFirstInput;
        if (input < kInputs) inputs |= std::uint32_t{1} << input;
    }
    return inputs;
}

}  // namespace virtualboard
