#pragma once

#include <cstdint>
#include <deque>
#include <optional>

#include "board/imaging/Settings.h"

namespace virtualboard::imaging {

/// One picture's place in the stream of lines.
struct FramePosition {
    std::uint64_t number = 0;     ///< of the picture since the start, before the image selector; from 0
    std::uint64_t firstLine = 0;  ///< line trigger at which its first row is taken
    std::uint32_t lines = 0;      ///< line triggers that it lasts
    std::uint32_t rows = 0;       ///< rows that it has
    bool selected = true;         ///< the image selector passes it on
    bool opensWindow = true;      ///< the first one of its trigger window
    std::uint64_t trigger = 0;    ///< which of the triggers and gates since the start, from 1; 0: none
};

/// Cuts the stream of lines into pictures, as the image trigger says.
///
/// A trigger window begins YOffset lines after its frame's start and lasts YLength lines; it is cut into
/// pictures of ImageHeight lines, the last one shorter where the window does not divide evenly. A line brings
/// `rowsPerTrigger` rows; rows beyond the frame buffer's YLength are dropped. Frames start
/// - in free run (ImgTriggerMode 0, or ImgTriggerEnable 0): each where the last one ended, the first with the
/// acquisition;
/// - in free run with CameraFVALMode 1: with each of the source's own frames, and end with it at the latest;
/// - triggered (mode 1): ImgTrgDelay lines after a trigger that does not come while the last window lasts;
/// - gated (mode 2): ImgTrgDelay lines after the gate opens; they end as long after it closes, or after
///   YLength lines unless MaxGatedHeight is set. A gate closed before the window's first line makes no
///   picture.
///
/// With one row per line windows begin at even lines, one line later where need be, so that every picture
/// begins with the sensor's first Bayer row. The image selector lies behind the frame buffer: it passes on
/// picture n if n mod period equals the phase, and the others are pictures all the same.
///
/// Line numbers given by the caller never decrease. Not thread-safe.
class FrameSequencer {
 public:
    /// Takes over new settings at a line. Windows already begun keep their lines, unless the trigger mode
    /// changes: then they end here. In free run another window starts anew at this line; the same one goes on
    /// undisturbed. `linesPerFrame` is the source's, see `LineClock`.
    void configure(const DesignSettings& settings, std::uint64_t linesPerFrame, std::uint64_t line);

    /// Forgets everything triggered: the acquisition starts at this line with picture 0.
    void start(std::uint64_t line);

    /// The image trigger's edge. Returns whether it starts a frame; while one lasts it is missed.
    bool trigger(std::uint64_t line);
    /// The image trigger's level, in gated mode. Returns whether the gate starts a frame.
    bool openGate(std::uint64_t line);
    /// Triggers and gates that have started a frame.
    std::uint64_t triggers() const { return triggers_; }
    /// Whether frames wait for the image trigger.
    bool listens() const { return !freeRun(); }
    void closeGate(std::uint64_t line);

    /// Whether a triggered or gated window lasts at this line: what the busy flag shows.
    bool busy(std::uint64_t line) const;

    /// The line at which a frame can begin that was triggered at this line.
    std::uint64_t toRowPair(std::uint64_t line) const;

    /// Lines that the frame under way still takes at this line, those before its window counted; 0 where
    /// there is none.
    std::uint64_t linesLeft(std::uint64_t line) const;

    /// The number of lines that must have come for the next picture; nothing while a trigger is missing. A
    /// closing gate may bring it forward. The image selector may still drop that picture.
    std::optional<std::uint64_t> nextEnd() const;

    /// The next picture as it stands; a closing gate may make it shorter.
    std::optional<FramePosition> upcoming() const;
    /// The next picture, if it is complete after `lines` lines.
    std::optional<FramePosition> next(std::uint64_t lines);

 private:
    struct Window {
        std::uint64_t first = 0;
        std::uint64_t lines = 0;
        bool gateOpen = false;
        std::uint64_t trigger = 0;
        std::uint64_t end() const { return first + lines; }
    };

    bool freeRun() const { return mode_ == 0 || mode_ > 2; }
    bool begin(std::uint64_t line, std::uint64_t lines, bool gateOpen);
    std::optional<Window> current() const;
    std::uint64_t pieceLines(const Window& window) const;
    void consume(const Window& window, std::uint64_t lines);

    std::uint32_t mode_ = 0;
    bool sourceFrames_ = false, endlessGate_ = false;
    std::uint64_t delay_ = 0, yOffset_ = 0, yLength_ = 0, imageHeight_ = 1, bufferRows_ = 0;
    std::uint64_t rowsPerLine_ = 1, linesPerFrame_ = 1, selectPeriod_ = 1, selectPhase_ = 0;

    std::uint64_t cursor_ = 0;  // free run: the line at which the next frame may start
    std::uint64_t taken_ = 0;   // lines of the current window that pictures have taken
    std::uint64_t number_ = 0, triggers_ = 0;
    std::deque<Window> windows_;  // triggered, oldest first
};

}  // namespace virtualboard::imaging
