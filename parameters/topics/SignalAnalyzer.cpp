/// What the signal analyzers do and tell beyond their source and polarity.

#include "parameters/FgGxWrapperImpl.h"

using marovine::applySetting;
using marovine::designParameter;
using marovine::entriesOf;
using marovine::oneOf;

void FgGxWrapperImpl::set_sdk_param_FG_SIGNAL_ANALYZER_CLEAR_P0(int value, marovine::OnError onError) {
    applySetting(cache_.FG_SIGNAL_ANALYZER_CLEAR, value, oneOf(value, entriesOf("FG_SIGNAL_ANALYZER_CLEAR")),
                 onError, [&] {
                     // Each call gives the design one pulse, whatever was set before.
                     design().write(designParameter("Trigger_Analyzer_Clear_Value"), 1U);
                     design().write(designParameter("Trigger_Analyzer_Clear_Value"), 0U);
                 });
}

void FgGxWrapperImpl::get_sdk_param_FG_SIGNAL_ANALYZER_PULSE_COUNT_DIFFERENCE_P0(std::int64_t* destination) {
    requireDestination(destination);
    std::int64_t difference = 0;
    design().read(designParameter("Trigger_Analyzer_Difference_Status"), &difference);
    // The register holds a 33-bit two's complement number.
    constexpr std::int64_t signBit = 1LL << 32;
    if ((difference & signBit) != 0) difference |= -signBit;
    *destination = difference;
}
