#pragma once

/// From the inputs to the lines: the one model of what the board's signals do. LineStreamSettings.cpp leads
/// to it what it follows from, LineStream.cpp goes through time.

#include <array>
#include <cstdint>
#include <memory>
#include <optional>

#include "board/imaging/Settings.h"
#include "board/lines/InputLevel.h"
#include "board/lines/LineLog.h"
#include "board/lines/ShaftEncoder.h"
#include "board/lines/Signals.h"

namespace virtualboard {

/// Who cuts lines into frames. Line numbers are those of the stream: a line counts once it has started.
class FrameCutter {
 public:
    FrameCutter() = default;
    FrameCutter(const FrameCutter&) = delete;
    FrameCutter& operator=(const FrameCutter&) = delete;
    virtual ~FrameCutter() = default;
    /// Lines that the frame still takes which is under way; 0 where there is none.
    virtual std::uint64_t linesLeft(std::uint64_t line) const = 0;
    /// Whether the image trigger's input matters.
    virtual bool listens() const = 0;
    /// The image trigger became active or ceased to be.
    virtual void imageTrigger(bool active, BoardTime at, std::uint64_t line) = 0;
    /// The image trigger is active as the frames begin to listen to it: a level, not an edge.
    virtual void imageTriggerStands(BoardTime at, std::uint64_t line) = 0;
};

/// Follows inputs, belt and settings over board time and tells what its signals do.
///
///     inputs -> debouncing -> polarity -> encoder filter -> downscaler --+
///                                          ExSync's own generator -------+-> gate -> ExSync -> CC1 -> camera
///
/// It takes time in steps: a steady source gives all its pulses up to a time in one, whatever their number;
/// an irregular one gives pulse by pulse. So no call takes long: where much has happened `advance` leaves the
/// rest to the next call.
///
/// What a signal does at a time comes in this order: lines that start then, the image trigger, a write.
class LineStream {
 public:
    LineStream(SignalListener& listener, FrameCutter& frames);

    // ---- what it follows from; to be changed only when it has advanced to `now` ----

    void configure(const imaging::LineSettings& settings, BoardTime now);
    /// Nothing pulses: the design lacks what lines need.
    void stop(BoardTime now);
    /// A new belt begins at position 0, or (`onward`) goes on where the old one is. `sceneStays`: the scene
    /// goes on under the camera without a jump, else its positions are those of the belt again.
    void setBelt(const imaging::Belt& belt, bool sceneStays, BoardTime now);
    void setEncoder(const imaging::Encoder& encoder, BoardTime now);
    /// `sceneRows`: the scene's length in pixels along the belt; the camera holds frame valid for one scene.
    void setCamera(const imaging::CameraTraits& camera, std::uint32_t sceneRows, BoardTime now);
    void setInput(unsigned input, std::shared_ptr<const InputLevel> level, BoardTime now);
    void wireInput(unsigned input, std::shared_ptr<const BeltPattern> pattern, BoardTime now);
    /// Inputs whose edges the listener wants to hear of, bit by bit.
    void watchInputs(std::uint32_t inputs, BoardTime now);
    /// A new acquisition: the source's own frames begin with the next line, and what the image trigger saw
    /// before is forgotten.
    void beginFrames(BoardTime now);
    /// Looks whether the settings made the image trigger active, or the frames begin to listen to it.
    void pollImageTrigger();

    // ---- time ----

    /// Takes the stream up to a time. False when that was too much for one call.
    bool advance(BoardTime until);
    BoardTime time() const { return now_; }
    /// The image trigger's input does not change before this time; nothing when it does not by itself.
    std::optional<BoardTime> imageTriggerNotBefore() const;
    /// Line `line` is complete at this time or later, exactly then as long as the source is steady; nothing
    /// when it does not come by itself.
    std::optional<BoardTime> completeNotBefore(std::uint64_t line) const;
    /// No edge of the watched inputs comes before this time; nothing when none does by itself.
    std::optional<BoardTime> inputNotBefore() const;
    /// The same of all other signals, as long as no frame begins by itself before.
    std::optional<BoardTime> lineNotBefore() const;

    // ---- what came of it ----

    std::uint64_t started() const { return log_.lines(); }
    std::uint64_t completed() const { return completed_; }
    /// Pulses that the camera missed because its last line was not read out.
    std::uint64_t lostLines() const { return lost_; }
    LineLog& log() { return log_; }
    const LineLog& log() const { return log_; }
    bool imageActive() const { return imageActive_; }
    /// Levels of all inputs, bit by bit.
    std::uint32_t levels(BoardTime time) const;
    const BeltTravel& travel() const { return *travel_; }
    Compensation& compensation() { return trigger_.compensation(); }
    /// Lines in one frame of the source's own.
    std::uint64_t linesPerFrame() const { return linesPerFrame_; }

 private:
    struct Output {
        Number signal;
        DelayLine up, down;
    };
    bool external() const { return settings_.lineTriggerMode == 1 || settings_.lineTriggerMode == 3; }
    bool gated() const { return settings_.lineTriggerMode >= 2; }
    bool runsItself() const { return running_ && settings_.exsyncEnable != 0 && !external(); }
    bool cameraListens() const { return cameraOnExsync() || cameraOnInput(); }
    bool hasCamera() const;
    bool cameraOnExsync() const;
    /// CC1 leads an input straight to the camera.
    bool cameraOnInput() const;
    bool freeGenerator() const;

    void rewire(bool anew);
    void rewireCamera();
    LineTrigger::Wiring wiring() const;
    std::shared_ptr<const InputLevel> levelOf(unsigned input) const;
    void setGenerators(bool wasRunning, BoardTime oldPeriod, bool sourceChanged);
    bool imageFromInput() const { return imageListens_ && settings_.imageSource != settings_.kFromSoftware; }
    void setImageActive(bool active);
    void step(BoardTime until);
    void restart();
    void take(BoardTime horizon);
    void fetch(BoardTime horizon);
    BoardTime fetchDirect(BoardTime horizon);
    std::uint64_t atOnce(const Pulses& in, std::uint64_t room) const;
    Pulses downscaled(const Pulses& in);
    void exsync(Pulses pulses);
    void output(Output& output, const Pulses& pulses, BoardTime width, bool inverted);
    void lines(const Pulses& triggers);
    void generatorLines(const Pulses& edges);
    BoardTime generatorLineWait() const;
    void start(const Pulses& starts);
    void flush();
    void followInputs();
    double linePeriod(const Pulses& starts) const;
    double exposureOf(const Pulses& starts) const;
    double framesOwnLines() const;
    double pixels(double millimetres) const { return millimetres / travel_->belt().objectPixel; }

    SignalListener& listener_;
    FrameCutter& frames_;
    imaging::LineSettings settings_;
    imaging::CameraTraits camera_;
    imaging::Encoder encoder_;
    std::shared_ptr<const BeltTravel> travel_ = std::make_shared<BeltTravel>();
    std::shared_ptr<const InputLevel> trackA_, trackB_;
    std::array<std::shared_ptr<const InputLevel>, kInputs> inputs_;  ///< null: nothing was given to it
    std::array<std::shared_ptr<const BeltPattern>, kInputs> patterns_;

    BoardTime now_ = 0;
    bool running_ = false;
    // Times of the present settings, ns.
    BoardTime period_ = 0, exposure_ = 0, delay_ = 0, readout_ = 0, lineTime_ = 0;

    LineTrigger trigger_;
    std::optional<std::uint32_t> directInput_;  ///< that CC1 leads to the camera
    LineTrigger direct_;                        ///< its edges
    BoardTime directSeen_ = 0;                  ///< followed up to here
    Pulses generator_;                          ///< of ExSync itself
    Pulses triggers_;                           ///< those up to `fetched_` that were not taken yet
    BoardTime fetched_ = 0;
    std::uint64_t skip_ = 0;  ///< pulses to come before the downscaler passes one
    bool open_ = false;       ///< the gate
    std::optional<BoardTime> lastExsync_;
    BoardTime exsyncBusy_ = 0;  ///< the last pulse lasts until then

    DebouncedInput image_;
    std::optional<DebouncedInput::Step> imageChange_;
    BoardTime imageSeen_ = 0;
    bool imageListens_ = false, imageActive_ = false;
    std::array<std::optional<DebouncedInput>, kInputs> watched_;

    DelayLine coming_;            ///< line triggers on their way to the camera
    std::uint64_t underWay_ = 0;  ///< how many
    BoardTime cameraBusy_ = 0, lastStart_ = 0;
    std::uint64_t lost_ = 0, completed_ = 0;
    Pulses freeLines_;                 ///< of the pattern generator in free run
    std::uint64_t generatorLine_ = 0;  ///< in its frame, gap included, where edges start lines
    BoardTime generatorBusy_ = 0;
    std::uint64_t frameOrigin_ = 0, linesPerFrame_ = 1;
    std::uint32_t sceneRows_ = 1;
    LineLog log_;
    DelayLine ends_;
    Output exsyncOut_{kExsync, {}, {}}, exsync2Out_{kExsync2, {}, {}};
    Output lineValid_{kLineValid, {}, {}}, frameValid_{kFrameValid, {}, {}};
    Output lineStart_{kLineStart, {}, {}}, lineEnd_{kLineEnd, {}, {}};
};

}  // namespace virtualboard
