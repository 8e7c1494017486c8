#include "board/machine/Acquisition.h"

#include <algorithm>
#include <utility>

namespace virtualboard {

namespace {

void store(Slot* slot, Number value) {
    if (slot != nullptr && !slot->pinned) slot->value = value;
}

}  // namespace

Acquisition::~Acquisition() {
    Lock lock(mutex_);
    end(lock, nullptr);
}

void Acquisition::attach(const FindSlot& find, ReadSettings readSettings) {
    readSettings_ = std::move(readSettings);
    const BoardTime now = clock_.now();
    lineNumbers_.clear();
    lineReals_.clear();
    hasLines_ = true;
    const auto acting = [&](std::string_view name, ParameterKind kind) {
        Slot* slot = find(name);
        hasLines_ = hasLines_ && slot != nullptr && slot->kind == kind;
        if (slot != nullptr) slot->acts = true;
        return slot;
    };
    imaging::forEachLineNumber([&](std::string_view name, auto member) {
        lineNumbers_.push_back({acting(name, ParameterKind::UInt32), member});
    });
    imaging::forEachLineReal([&](std::string_view name, auto member) {
        lineReals_.push_back({acting(name, ParameterKind::Double), member});
    });
    softwarePulse_ = find("Device1_Process0_Trigger_Trigger_SoftwareTrgPulse");
    if (softwarePulse_ != nullptr) softwarePulse_->acts = true;
    const auto live = [&find](std::string_view name) {
        Slot* slot = find(name);
        if (slot != nullptr) slot->live = true;
        return slot;
    };
    inputStatus_ = live("Device1_Process1_Trigger_Inputs_InputStatus_Status");
    compensation_ = live("Device1_Process0_Trigger_Trigger_EncoderCompensationCount");
    if (compensation_ != nullptr) compensation_->acts = true;
    busy_ = live("Device1_Process0_Trigger_Trigger_ImgTrgIsBusy");
    overflowed_ = live("Device1_Process0_Overflow_OverflowOccurred");
    fillLevel_ = live("Device1_Process0_Buffer_0_DRAM_A_0_FillLevel");
    dmaStatus_ = live("FG_DMASTATUS");
    ramAddress_ = find("Device1_Process0_Buffer_0_DRAM_A_0_RamAddressWidth");
    ramData_ = find("Device1_Process0_Buffer_0_DRAM_A_0_RamDataWidth");
    stream_.stop(now);
    readLineSettings(now);
    updateReadOuts(now);
}

/// Leads what the slots hold into the line stream.
void Acquisition::readLineSettings(BoardTime now) {
    if (!hasLines_) return;
    imaging::LineSettings settings;
    for (const NumberSlot& number : lineNumbers_)
        settings.*number.member = static_cast<std::uint32_t>(number.slot->value);
    for (const RealSlot& real : lineReals_) settings.*real.member = toDouble(real.slot->value);
    stream_.configure(settings, now);
    stream_.watchInputs(signals_.inputs(), now);
}

// ---- as time goes on ----

void Acquisition::settle(BoardTime now) {
    const bool idle = due_.empty();
    queueDue(now);
    if (idle && !due_.empty()) work_.notify_one();
}

void Acquisition::queueDue(BoardTime now) {
    // A clock moved far ahead leaves the rest to the thread, so that nobody holds the lock for long.
    stream_.advance(now);
    if (running_ && !stopping_) {
        for (int left = 100'000; left > 0 && cutNext(); --left) {
        }
        const auto picture = sequencer_.upcoming();
        std::uint64_t needed = stream_.started() - base_;
        if (picture) needed = std::min(needed, picture->firstLine);
        if (!flashes_.empty()) needed = std::min(needed, flashes_.front());
        stream_.log().forget(base_ + (origin_ ? needed : 0));
    } else {
        stream_.log().forget(stream_.started());
    }
    updateReadOuts(now);
}

void Acquisition::updateReadOuts(BoardTime now) {
    const std::int64_t buffers = running_ ? ring_->buffers() : 0;
    std::int64_t fill = buffers != 0 ? filled() * 100 / buffers : running_ ? 100 : 0;
    if (running_) {
        const double share = static_cast<double>(waiting_) / static_cast<double>(memoryBytes());
        fill = std::max(fill, static_cast<std::int64_t>(std::min(share, 1.0) * 100));
    }
    store(busy_, running_ && sequencer_.busy(stream_.started() - base_) ? 1 : 0);
    store(overflowed_, running_ && overflow_ ? 1 : 0);
    store(fillLevel_, static_cast<Number>(std::min<std::int64_t>(fill, 100)));
    store(dmaStatus_, running_ ? 1 : 0);
    store(inputStatus_, stream_.levels(now));
    store(compensation_, stream_.compensation().count());
}

// ---- what changes ----

/// Takes over settings and surroundings as they are now.
void Acquisition::reconfigure(BoardTime now) {
    const imaging::DesignSettings settings = readSettings_();
    if (scene_ == nullptr) scene_ = makeScene();
    stream_.setCamera(camera_, scene_->rows(), now);
    const auto before =
        std::exchange(snapshot_, std::make_shared<const Snapshot>(Snapshot{settings, scene_, world_}));
    const std::uint64_t line = stream_.started() - base_;
    sequencer_.configure(settings, stream_.linesPerFrame(), line);
    const bool listens =
        before != nullptr && (settings.imageTriggerMode != before->settings.imageTriggerMode ||
                              settings.imageTriggerEnable != before->settings.imageTriggerEnable);
    // An edge is over, an open gate is not.
    if (listens && stream_.imageActive()) triggered(now, FRAME_TRIGGER_GATE, sequencer_.openGate(line));
    work_.notify_one();
}

std::optional<BoardTime> Acquisition::nextEdge(bool all) const {
    const auto input = stream_.inputNotBefore();
    const auto line = all ? stream_.lineNotBefore() : std::nullopt;
    return input && line ? std::min(input, line) : input ? input : line;
}

void Acquisition::listenersChanged() {
    const BoardTime now = clock_.now();
    settle(now);
    stream_.watchInputs(signals_.inputs(), now);
}

void Acquisition::changed(const Slot& slot, BoardTime now) {
    if (&slot == compensation_) stream_.compensation().set(static_cast<std::uint32_t>(slot.value));
    if (&slot == inputStatus_) {  // levels that somebody set as one number
        const std::uint32_t wanted = static_cast<std::uint32_t>(slot.value), levels = stream_.levels(now);
        for (unsigned i = 0; i < kInputs; ++i) {
            const bool high = (wanted >> i & 1) != 0;
            if (((levels >> i & 1) != 0) != high)
                stream_.setInput(i, std::make_shared<ConstantLevel>(high), now);
        }
        inputStatus_->pinned = false;
    }
    if (slot.acts || slot.live) signals_.changed(slot);
    if (slot.acts) {
        readLineSettings(now);
    }
    if (!running_ || stopping_) return;
    if (slot.drivesPictures) reconfigure(now);
    stream_.pollImageTrigger();
    const imaging::LineSettings& settings = snapshot_->settings;
    if (&slot == softwarePulse_ && slot.value == 1 && settings.imageSource == settings.kFromSoftware)
        triggered(now, FRAME_TRIGGER_SOFTWARE, sequencer_.trigger(stream_.started() - base_));
    settle(now);
    work_.notify_one();
}

}  // namespace virtualboard
