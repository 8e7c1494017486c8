#include "board/imaging/FrameSequencer.h"

#include <algorithm>

namespace virtualboard::imaging {
namespace {

// More lines than any acquisition has; sums of a few still fit.
constexpr std::uint64_t kEndless = std::uint64_t{1} << 60;

}  // namespace

void FrameSequencer::configure(const DesignSettings& settings, std::uint64_t linesPerFrame,
                               std::uint64_t line) {
    // An image trigger that is switched off leaves free run, whatever its mode.
    const std::uint32_t mode = settings.imageTriggerEnable != 0 ? settings.imageTriggerMode : 0;
    linesPerFrame = std::max<std::uint64_t>(linesPerFrame, 1);
    if (mode_ != mode || sourceFrames_ != (settings.cameraFval != 0)) {
        windows_.clear();
        taken_ = 0;
        cursor_ = std::max(cursor_, line);
    } else if (freeRun() &&
               (yOffset_ != settings.triggerYOffset || yLength_ != settings.triggerYLength ||
                imageHeight_ != settings.imageHeight || rowsPerLine_ != rowsPerTrigger(settings) ||
                (sourceFrames_ && linesPerFrame_ != linesPerFrame))) {
        // Lines that are past cannot become a picture only because the window shrank, and one that has taken
        // more than it is long now would never end.
        if (taken_ > 0) cursor_ = current()->first + taken_;
        cursor_ = std::max(cursor_, line);
        taken_ = 0;
    }
    mode_ = mode;
    sourceFrames_ = settings.cameraFval != 0;
    endlessGate_ = settings.maxGatedHeight != 0;
    delay_ = settings.imageTriggerDelay;
    yOffset_ = settings.triggerYOffset;
    yLength_ = settings.triggerYLength;
    imageHeight_ = settings.imageHeight;
    bufferRows_ = settings.yLength;
    rowsPerLine_ = rowsPerTrigger(settings);
    linesPerFrame_ = linesPerFrame;
    selectPeriod_ = std::max(settings.selectPeriod, 1u);
    selectPhase_ = settings.selectPhase;
}

void FrameSequencer::start(std::uint64_t line) {
    windows_.clear();
    cursor_ = line;
    taken_ = number_ = triggers_ = 0;
}

bool FrameSequencer::trigger(std::uint64_t line) {
    return mode_ == 1 && begin(line, yLength_, false);
}

bool FrameSequencer::openGate(std::uint64_t line) {
    return mode_ == 2 && begin(line, endlessGate_ ? kEndless : yLength_, true);
}

bool FrameSequencer::begin(std::uint64_t line, std::uint64_t lines, bool gateOpen) {
    if (lines == 0 || busy(line)) return false;
    windows_.push_back({toRowPair(line + delay_ + yOffset_), lines, gateOpen, ++triggers_});
    return true;
}

void FrameSequencer::closeGate(std::uint64_t line) {
    if (windows_.empty() || !windows_.back().gateOpen) return;
    Window& window = windows_.back();
    const std::uint64_t end = line + delay_;
    window.gateOpen = false;
    window.lines = std::min(window.lines, end > window.first ? end - window.first : 0);
    // Pictures already handed out keep their lines.
    const std::uint64_t taken = windows_.size() == 1 ? taken_ : 0;
    if (window.lines <= taken) {
        windows_.pop_back();
        taken_ = windows_.empty() ? 0 : taken_;
    }
}

bool FrameSequencer::busy(std::uint64_t line) const {
    return !windows_.empty() && (windows_.back().gateOpen || line < windows_.back().end());
}

std::uint64_t FrameSequencer::linesLeft(std::uint64_t line) const {
    if (freeRun()) return yLength_ != 0 ? kEndless : 0;
    return !windows_.empty() && line < windows_.back().end() ? windows_.back().end() - line : 0;
}

std::uint64_t FrameSequencer::toRowPair(std::uint64_t line) const {
    return rowsPerLine_ == 1 ? (line + 1) / 2 * 2 : line;
}

std::optional<FrameSequencer::Window> FrameSequencer::current() const {
    if (!freeRun()) return windows_.empty() ? std::nullopt : std::optional(windows_.front());
    if (!sourceFrames_) return Window{.first = toRowPair(cursor_ + yOffset_), .lines = yLength_};
    const std::uint64_t frame = (cursor_ + linesPerFrame_ - 1) / linesPerFrame_ * linesPerFrame_;
    if (yOffset_ >= linesPerFrame_) return std::nullopt;
    return Window{.first = frame + yOffset_, .lines = std::min(yLength_, linesPerFrame_ - yOffset_)};
}

std::uint64_t FrameSequencer::pieceLines(const Window& window) const {
    return window.lines > taken_ ? std::min(imageHeight_, window.lines - taken_) : 0;
}

void FrameSequencer::consume(const Window& window, std::uint64_t lines) {
    taken_ += lines;
    if (taken_ < window.lines) return;
    taken_ = 0;
    cursor_ = window.end();
    if (!windows_.empty()) windows_.pop_front();
}

std::optional<std::uint64_t> FrameSequencer::nextEnd() const {
    const auto window = current();
    const std::uint64_t lines = window ? pieceLines(*window) : 0;
    if (lines == 0 || selectPhase_ >= selectPeriod_) return std::nullopt;
    return window->first + taken_ + lines;
}

std::optional<FramePosition> FrameSequencer::upcoming() const {
    const auto window = current();
    const std::uint64_t lines = window ? pieceLines(*window) : 0;
    if (lines == 0) return std::nullopt;
    return FramePosition{.number = number_,
                         .firstLine = window->first + taken_,
                         .lines = static_cast<std::uint32_t>(lines),
                         .rows = static_cast<std::uint32_t>(std::min(lines * rowsPerLine_, bufferRows_)),
                         .selected = number_ % selectPeriod_ == selectPhase_,
                         .opensWindow = taken_ == 0,
                         .trigger = window->trigger};
}

std::optional<FramePosition> FrameSequencer::next(std::uint64_t lines) {
    const auto picture = upcoming();
    if (!picture || picture->firstLine + picture->lines > lines) return std::nullopt;
    consume(*current(), picture->lines);
    ++number_;
    return picture;
}

}  // namespace virtualboard::imaging
