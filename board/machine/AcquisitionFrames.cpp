/// The stream of pictures: frames begin, and are cut off the lines once these are complete.

#include <algorithm>
#include <cmath>
#include <utility>

#include "board/machine/Acquisition.h"

namespace virtualboard {

BoardTime Acquisition::startOf(std::uint64_t line) const {
    const LineRun* run = stream_.log().find(base_ + line);
    return run != nullptr ? run->startOf(base_ + line) : stream_.time();
}

BoardTime Acquisition::endOf(std::uint64_t line) const {
    const LineRun* run = stream_.log().find(base_ + line);
    return run != nullptr ? run->startOf(base_ + line) + run->readout : stream_.time();
}

/// A time before which no picture is complete; nothing when none will be by itself.
std::optional<BoardTime> Acquisition::nextDue() const {
    if (isComplete()) return std::nullopt;
    const auto trigger = stream_.imageTriggerNotBefore();
    const auto end = sequencer_.nextEnd();
    const auto lines = end.has_value() ? stream_.completeNotBefore(base_ + *end - 1) : std::nullopt;
    return lines && trigger ? std::min(lines, trigger) : lines ? lines : trigger;
}

std::uint64_t Acquisition::linesLeft(std::uint64_t line) const {
    return running_ && line >= base_ ? sequencer_.linesLeft(line - base_) : 0;
}

void Acquisition::imageTrigger(bool active, BoardTime at, std::uint64_t line) {
    if (!running_ || line < base_) return;
    if (!active) {
        sequencer_.closeGate(line - base_);
        return;
    }
    const bool begun = sequencer_.trigger(line - base_);
    triggered(at, FRAME_TRIGGER_INPUT, begun);
    triggered(at, FRAME_TRIGGER_GATE, !begun && sequencer_.openGate(line - base_));
}

void Acquisition::imageTriggerStands(BoardTime at, std::uint64_t line) {
    if (running_ && line >= base_) triggered(at, FRAME_TRIGGER_GATE, sequencer_.openGate(line - base_));
}

/// Remembers what began a frame.
void Acquisition::triggered(BoardTime at, FramePictureTrigger cause, bool begun) {
    if (!begun) return;
    triggers_.push_back({sequencer_.triggers(), at, cause});
    if (snapshot_->settings.flashEnable != 0)
        flashes_.push_back(sequencer_.toRowPair(stream_.started() - base_) + snapshot_->settings.flashDelay);
}

/// Tells of flashes: each lasts from one line to the next.
void Acquisition::tellFlashes() {
    const bool low = snapshot_->settings.flashPolarity != 0;
    const std::uint64_t started = stream_.started() - base_;
    while (!flashes_.empty() && started > flashes_.front()) {
        if (!std::exchange(flashOn_, true)) {
            signals_.edges(kFlash, !low, Pulses::one(startOf(flashes_.front())));
            lit_.push_back(flashes_.front());
        }
        if (started <= flashes_.front() + 1) return;
        signals_.edges(kFlash, low, Pulses::one(startOf(flashes_.front() + 1)));
        flashOn_ = false;
        flashes_.pop_front();
    }
}

/// Cuts the next picture off the lines that are complete; false when there is none.
bool Acquisition::cutNext() {
    const std::uint64_t started = stream_.started() - base_;
    const std::uint64_t completed = std::max(stream_.completed(), base_) - base_;
    const auto picture = sequencer_.upcoming();
    if (picture && !frameTold_ && started > picture->firstLine) {
        frameTold_ = true;
        strobe(signals_, kFrameStart, Pulses::one(startOf(picture->firstLine)));
        if (picture->opensWindow && picture->trigger == 0 && snapshot_->settings.flashEnable != 0)
            flashes_.push_back(picture->firstLine + snapshot_->settings.flashDelay);
    }
    tellFlashes();
    if (!origin_ && started > 0) origin_ = stream_.log().find(base_)->positionOf(base_);
    const auto complete = sequencer_.next(completed);
    if (!complete) return false;
    frameTold_ = false;
    strobe(signals_, kFrameEnd, Pulses::one(endOf(complete->firstLine + complete->lines - 1)));
    if (complete->selected && !isComplete()) accept(*complete);
    // What no picture needs any more.
    const std::uint64_t over = complete->firstLine + complete->lines;
    while (!lit_.empty() && lit_.front() < over) lit_.pop_front();
    while (!triggers_.empty() && triggers_.front().number < complete->trigger) triggers_.pop_front();
    return true;
}

/// How the belt moved while a picture was taken.
imaging::Motion Acquisition::motionOf(const imaging::FramePosition& position) const {
    const imaging::CameraTraits& camera = snapshot_->scene->camera();
    const imaging::Light& light = snapshot_->scene->light();
    imaging::Motion motion{.runs = {}, .rowsPerExposure = rowsPerTrigger(snapshot_->settings)};
    const std::uint64_t end = position.firstLine + position.lines;
    // A picture on the belt begins under the camera with the first line; a world's belt has places of its
    // own.
    const std::int64_t origin = snapshot_->world != nullptr ? 0 : origin_.value_or(0);
    auto lit = lit_.begin();
    for (std::uint64_t line = position.firstLine; line < end;) {
        const LineRun* run = stream_.log().find(base_ + line);
        if (run == nullptr) break;
        while (lit != lit_.end() && *lit < line) ++lit;
        const bool flash = lit != lit_.end() && *lit == line;
        const double share = flash ? 1 : 1 - light.flashShare;
        motion.runs.push_back(
            {.first = line,
             .position = run->positionOf(base_ + line) - origin,
             .step = run->positionOf(base_ + line + 1) - run->positionOf(base_ + line),
             .way = run->way,
             .gain = imaging::exposureGain(run->exposure / camera.neutralExposure * light.level * share)});
        const bool uneven = run->starts.way.group > 1 && run->starts.way.step != 0;
        line = flash || uneven ? line + 1 : std::min(end, run->end() - base_);
        if (lit != lit_.end() && !flash) line = std::min(line, std::max(*lit, motion.runs.back().first + 1));
    }
    if (motion.runs.empty()) motion.runs.emplace_back();
    return motion;
}

FrameMemoryPictureInfo Acquisition::describe(const imaging::FramePosition& position) {
    const BoardTime first = startOf(position.firstLine);
    const imaging::Belt& belt = stream_.travel().belt();
    const double pulses = stream_.travel().position(first) / belt.encoderPitch;
    FrameMemoryPictureInfo info{
        .size = sizeof(FrameMemoryPictureInfo),
        .trigger = snapshot_->settings.cameraFval != 0 ? FRAME_TRIGGER_CAMERA : FRAME_TRIGGER_NONE,
        .number = 0,
        .frame = static_cast<std::int64_t>(position.number),
        .firstLineTime = first,
        .lastLineTime = endOf(position.firstLine + position.lines - 1),
        .triggerTime = first,
        .firstLine = static_cast<std::int64_t>(position.firstLine),
        .encoderPosition = static_cast<std::int64_t>(std::floor(pulses + 1e-6)),
        .lostBefore = std::exchange(lostBefore_, 0)};
    for (const Trigger& trigger : triggers_) {
        if (trigger.number != position.trigger) continue;
        info.triggerTime = trigger.at;
        info.trigger = trigger.cause;
    }
    if (!position.opensWindow) info.trigger = FRAME_TRIGGER_BEFORE;
    return info;
}

/// What the board's memory holds, of raw pixels of one byte.
std::uint64_t Acquisition::memoryBytes() const {
    if (ramAddress_ == nullptr || ramData_ == nullptr) return std::uint64_t{1} << 62;
    const unsigned address = static_cast<unsigned>(std::min<Number>(ramAddress_->value, 48));
    return std::max<std::uint64_t>(
        1, (std::uint64_t{1} << address) * std::min<Number>(ramData_->value, 1024) / 8);
}

void Acquisition::accept(const imaging::FramePosition& position) {
    const std::uint64_t bytes = std::uint64_t{position.rows} * snapshot_->settings.xLength;
    overflow_ = filled() >= ring_->buffers() || waiting_ + bytes > memoryBytes();
    if (overflow_) {
        ++lost_;
        ++lostBefore_;
        signals_.overflow(endOf(position.firstLine + position.lines - 1), lost_);
        return;
    }
    due_.push_back({position, snapshot_, motionOf(position), describe(position), bytes});
    waiting_ += bytes;
    ++accepted_;
}

}  // namespace virtualboard
