#pragma once

/// The input of the design's image trigger: where its level comes from.

#include <limits>

#include "board/design/Slot.h"

namespace virtualboard {

/// Reads the level from the slots. A slot that the design lacks counts as 0.
class ImageTriggerInput {
 public:
    template <typename FindSlot>
    void attach(const FindSlot& find) {
        source_ = find("Device1_Process0_Trigger_Trigger_ImgTrgInSource");
        select_ = find("Device1_Process0_Trigger_InputSignal_ImgTrgInSource_Input_Select");
        polarity_ = find("Device1_Process0_Trigger_Trigger_ImgTrgInPolarity");
        inputs_ = find("Device1_Process1_Trigger_Inputs_InputStatus_Status");
        software_ = find("Device1_Process0_Trigger_Trigger_SoftwareTrgInput");
        pulse_ = find("Device1_Process0_Trigger_Trigger_SoftwareTrgPulse");
    }

    /// Whether the trigger is active: the selected input or the software's level, turned round where the
    /// polarity says so.
    bool active() const {
        const Number level = fromSoftware() ? read(software_) : selectedInput();
        return ((level ^ read(polarity_)) & 1) != 0;
    }

    /// Whether a write to this slot was a software pulse that reaches the trigger.
    bool isPulse(const Slot& written) const {
        return &written == pulse_ && written.value == 1 && fromSoftware();
    }

 private:
    static constexpr Number kFromSoftware = 4;

    static Number read(const Slot* slot) { return slot != nullptr ? slot->value : 0; }
    /// The selected input in bit 0; a forced selection behind the last bit finds none.
    Number selectedInput() const {
        const Number select = read(select_);
        return select < std::numeric_limits<Number>::digits ? read(inputs_) >> select : 0;
    }
    bool fromSoftware() const { return read(source_) == kFromSoftware; }

    const Slot* source_ = nullptr;
    const Slot* select_ = nullptr;
    const Slot* polarity_ = nullptr;
    const Slot* inputs_ = nullptr;
    const Slot* software_ = nullptr;
    const Slot* pulse_ = nullptr;
};

}  // namespace virtualboard
