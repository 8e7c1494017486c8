/// What the line stream follows from: settings, belt, encoder, camera, inputs and the image trigger.

#include <algorithm>
#include <array>
#include <cmath>
#include <stdexcept>
#include <utility>

#include "board/lines/LineStream.h"

namespace virtualboard {

namespace {

using imaging::LineSettings;

/// ns that the generator takes for a line, in whole clock cycles; 0 when no line ever comes.
BoardTime generatorLineTime(const LineSettings& s) {
    double cycles = s.generatorSequence;
    if (s.generatorClockMode == 0)
        cycles = s.generatorActivePixel != 0 ? cycles * s.generatorLineWords / s.generatorActivePixel : 0;
    return cycles < 1e15 ? static_cast<BoardTime>(cycles) * kClockCycle : 0;
}

/// ns that a line of the camera takes on the link.
BoardTime readoutTime(const LineSettings& s, const imaging::CameraTraits& camera) {
    if (s.pixelClock == 0) return 0;
    const double lanes = s.fullMode == 1 ? 10 : 8;
    double clocks =
        std::ceil(double{1} * s.tapWidth * (s.tapCount <= 1 ? 1 : s.tapCount - s.dummyTaps) / lanes);
    if (camera.readout && camera.readout->taps != 0 && camera.readout->pixelsPerClock != 0) {
        const double width = std::floor(double{1} * camera.sensorWidth / camera.readout->taps);
        clocks = std::ceil(width / camera.readout->pixelsPerClock);
    }
    return std::max<BoardTime>(1, std::llround(std::ceil(clocks * 1000 / s.pixelClock)));
}

bool sameGenerator(const LineSettings& a, const LineSettings& b) {
    const auto key = [](const LineSettings& s) {
        return std::array{s.generatorEnable,     s.generatorFreeRun,     s.generatorValve,
                          s.generatorFrameLines, s.generatorActiveLines, s.generatorClockMode,
                          s.generatorSequence,   s.generatorActivePixel, s.generatorLineWords};
    };
    return key(a) == key(b);
}

bool sameDownscaler(const LineSettings& a, const LineSettings& b) {
    const auto key = [](const LineSettings& s) {
        return std::array{s.lineTriggerMode, s.exsyncEnable, s.lineDownscaler, s.linePhase};
    };
    return key(a) == key(b);
}

/// mm/s at which the belt goes at most; 0 when it always rests.
double fastest(const imaging::Belt& belt) {
    if (belt.profile.empty()) return std::abs(belt.speed);
    double speed = 0;
    for (const imaging::SpeedPoint& point : belt.profile) speed = std::max(speed, std::abs(point.speed));
    return speed;
}

}  // namespace

LineStream::LineStream(SignalListener& listener, FrameCutter& frames) : listener_(listener), frames_(frames) {
    setEncoder({}, 0);
}

bool LineStream::cameraOnExsync() const {
    const bool triggered = settings_.cc1Select == kExsync || settings_.cc1Select == kExsync2;
    return triggered && hasCamera();
}

bool LineStream::cameraOnInput() const {
    return settings_.cc1Select >= kFirstInput && settings_.cc1Select < kFirstInput + kInputs && hasCamera();
}

bool LineStream::hasCamera() const {
    return running_ && settings_.generatorEnable == 0 && settings_.coreReset == 0 &&
           settings_.pixelClock != 0;
}

bool LineStream::freeGenerator() const {
    return running_ && settings_.generatorEnable != 0 && settings_.generatorFreeRun != 0 && lineTime_ > 0;
}

void LineStream::configure(const LineSettings& settings, BoardTime now) {
    const bool wasRunning = runsItself(), began = !running_;
    const LineSettings old = std::exchange(settings_, settings);
    running_ = true;
    now_ = std::max(now_, now);
    const BoardTime oldPeriod = period_;
    period_ = std::max(kClockCycle, toCycles(settings.exsyncPeriod));
    exposure_ = toCycles(settings.exsyncExposure);
    delay_ = toCycles(settings.exsync2Delay);
    lineTime_ = generatorLineTime(settings);
    readout_ = settings.generatorEnable != 0 ? std::max<BoardTime>(1, lineTime_ - kClockCycle)
                                             : readoutTime(settings, camera_);
    if (began || !sameDownscaler(old, settings)) {
        skip_ = std::max(settings.linePhase, 1u) - 1;
        triggers_ = {};
    }
    setGenerators(wasRunning, oldPeriod, began || !sameGenerator(old, settings));
    if (!cameraListens() || settings.cc1Select != old.cc1Select || settings.cc1Invert != old.cc1Invert) {
        coming_.clear();
        underWay_ = 0;
    }
    linesPerFrame_ = static_cast<std::uint64_t>(std::clamp(framesOwnLines(), 1.0, 1e9));
    rewire(external() && (began || old.lineTriggerMode == 0 || old.lineTriggerMode == 2));
}

void LineStream::setGenerators(bool wasRunning, BoardTime oldPeriod, bool sourceChanged) {
    if (runsItself() && (!wasRunning || oldPeriod != period_)) {
        // A new period counts from the last pulse, but nothing comes before the next clock cycle.
        BoardTime first = now_ + kClockCycle;
        if (wasRunning && lastExsync_) first = std::max(first, *lastExsync_ + period_);
        generator_ = {
            .origin = first, .time = {.step = static_cast<double>(period_)}, .end = Pulses::kEndless};
        triggers_ = {};
        fetched_ = now_;
    }
    if (!freeGenerator()) freeLines_ = {};
    if (!sourceChanged) return;
    generatorLine_ = 0;
    generatorBusy_ = 0;
    if (!freeGenerator()) return;
    freeLines_ = {.origin = now_ + kClockCycle,
                  .time = {.step = static_cast<double>(lineTime_)},
                  .end = Pulses::kEndless};
    const std::uint64_t lines = std::max(settings_.generatorActiveLines, 1u);
    if (settings_.generatorFrameLines > lines) {
        freeLines_.time.group = freeLines_.way.group = lines;
        freeLines_.time.groupStep = static_cast<double>(lineTime_) * settings_.generatorFrameLines;
    }
}

/// Lines in one frame of the source: the generator's frame, or one scene of the camera. By the belt's highest
/// speed, not by that of the moment: a write that has nothing to do with frames must not change them.
double LineStream::framesOwnLines() const {
    if (settings_.generatorEnable != 0) return settings_.generatorActiveLines;
    double way = pixels(fastest(travel_->belt()) * static_cast<double>(period_) / 1e9);
    if (external()) {
        constexpr double kPulsesPerPitch[] = {1, 1, 2, 4};
        way = pixels(travel_->belt().encoderPitch) * std::max(settings_.lineDownscaler, 1u) /
              kPulsesPerPitch[std::min(settings_.encoderMode, 3u)];
    }
    // Whole row pairs; on a belt at rest the scene never ends.
    return way > 0 ? std::max(2.0, std::round(sceneRows_ / way / 2) * 2) : 1e9;
}

void LineStream::stop(BoardTime now) {
    running_ = false;
    now_ = std::max(now_, now);
    generator_ = triggers_ = freeLines_ = {};
    coming_.clear();
    underWay_ = 0;
}

void LineStream::setBelt(const imaging::Belt& belt, bool sceneStays, BoardTime now) {
    const auto usable = [](double value) { return value >= 1e-6 && value <= 1e6; };
    const auto fast = [](double speed) { return !(std::abs(speed) <= 1e6); };
    if (!usable(belt.objectPixel)) throw std::invalid_argument("a belt's pixel is 1e-6 to 1e6 mm wide");
    if (!usable(belt.encoderPitch)) throw std::invalid_argument("an encoder's pitch is 1e-6 to 1e6 mm");
    if (fast(belt.speed) || std::ranges::any_of(belt.profile, fast, &imaging::SpeedPoint::speed))
        throw std::invalid_argument("a belt moves at up to 1e6 mm/s, forwards or backwards");
    double last = 0;
    for (const imaging::SpeedPoint& point : belt.profile) {
        if (!(point.at >= last && point.at <= 4e9))
            throw std::invalid_argument(
                "the points of a belt's speed profile lie at ascending times, 0 to 4e9 s");
        last = point.at;
    }
    if (belt.profilePeriod != 0 && !(belt.profilePeriod >= 1e-6 && belt.profilePeriod <= 4e9))
        throw std::invalid_argument("a belt's speed profile repeats after 1e-6 to 4e9 s, or (0) never");
    const double before = pixels(travel_->position(now));
    travel_ = std::make_shared<BeltTravel>(belt, now);
    if (sceneStays) {
        log_.moveOrigin(before, 0);
    } else {
        log_.resetOrigin();
    }
    now_ = std::max(now_, now);
    for (unsigned i = 0; i < kInputs; ++i)
        if (patterns_[i] != nullptr) inputs_[i] = std::make_shared<PatternLevel>(patterns_[i], travel_);
    triggers_ = {};
    fetched_ = now_;
    linesPerFrame_ = static_cast<std::uint64_t>(std::clamp(framesOwnLines(), 1.0, 1e9));
    setEncoder(encoder_, now);
}

void LineStream::setEncoder(const imaging::Encoder& encoder, BoardTime now) {
    for (const auto& input : {encoder.inputA, encoder.inputB})
        if (input && *input >= kInputs) throw std::invalid_argument("the board has inputs 0 to 11");
    if (encoder.inputA && encoder.inputA == encoder.inputB)
        throw std::invalid_argument("an encoder's two tracks are wired to two inputs");
    if (!(encoder.jitter >= 0 && encoder.jitter <= 0.1) || !(encoder.missing >= 0 && encoder.missing <= 1))
        throw std::invalid_argument("an encoder's jitter is 0 to 0.1, its missing share 0 to 1");
    encoder_ = encoder;
    now_ = std::max(now_, now);
    const double pitch = travel_->belt().encoderPitch;
    const auto track = [&](double phase) {
        return std::make_shared<PatternLevel>(std::make_shared<EncoderTrack>(encoder, pitch, phase), travel_);
    };
    trackA_ = track(0);
    trackB_ = track(0.25);
    rewire(true);
}

void LineStream::setCamera(const imaging::CameraTraits& camera, std::uint32_t sceneRows, BoardTime now) {
    camera_ = camera;
    sceneRows_ = sceneRows;
    now_ = std::max(now_, now);
    if (running_) configure(settings_, now);
}

void LineStream::setInput(unsigned input, std::shared_ptr<const InputLevel> level, BoardTime now) {
    now_ = std::max(now_, now);
    patterns_[input].reset();
    inputs_[input] = std::move(level);
    rewire(false);
}

void LineStream::wireInput(unsigned input, std::shared_ptr<const BeltPattern> pattern, BoardTime now) {
    setInput(input, std::make_shared<PatternLevel>(pattern, travel_), now);
    patterns_[input] = std::move(pattern);
}

std::shared_ptr<const InputLevel> LineStream::levelOf(unsigned input) const {
    static const auto kLow = std::make_shared<const ConstantLevel>(false);
    if (input >= kInputs) return kLow;
    if (inputs_[input] != nullptr) return inputs_[input];
    // Without wires of its own the encoder reaches the inputs that the line trigger listens to.
    const auto wired = [&](const std::optional<std::uint32_t>& wire, std::uint32_t listening) {
        return wire ? *wire == input : running_ && external() && listening == input;
    };
    if (wired(encoder_.inputA, settings_.lineSourceA)) return trackA_;
    if (wired(encoder_.inputB, settings_.lineSourceB)) return trackB_;
    return kLow;
}

LineTrigger::Wiring LineStream::wiring() const {
    LineTrigger::Wiring wiring{
        .a = levelOf(settings_.lineSourceA), .b = levelOf(settings_.lineSourceB), .travel = travel_};
    // The filter keeps a track away whose levels last too short.
    const bool lasts = travel_->belt().encoderPitch / 2 / fastest(travel_->belt()) * 1e9 >=
                       static_cast<double>(lineDebounce(settings_));
    const bool tracks = wiring.a == trackA_ && (settings_.encoderMode == 0 || wiring.b == trackB_);
    wiring.straightFromEncoder = tracks && lasts && encoder_.jitter == 0 && encoder_.missing == 0;
    return wiring;
}

/// Leads the inputs' levels to those that listen to them. `anew`: the line trigger begins now.
void LineStream::rewire(bool anew) {
    if (anew) {
        trigger_.start(settings_, wiring(), now_);
    } else {
        trigger_.configure(settings_, wiring(), now_);
    }
    if (external()) {
        triggers_ = {};
        fetched_ = now_;
    }
    rewireCamera();
    image_.change(levelOf(settings_.imageSelect), toCycles(settings_.imageDebouncing));
    imageSeen_ = now_;
    imageChange_.reset();
    for (unsigned i = 0; i < kInputs; ++i)
        if (watched_[i]) watched_[i]->change(levelOf(i), lineDebounce(settings_));
}

/// Leads an input to the camera where CC1 does. The camera sees it as it is: no filter lies before a control
/// line.
void LineStream::rewireCamera() {
    const auto before = std::exchange(
        directInput_, cameraOnInput() ? std::optional(settings_.cc1Select - kFirstInput) : std::nullopt);
    if (!directInput_) return;
    LineSettings plain = settings_;
    plain.encoderMode = 0;
    plain.lineDebouncing = 0;
    plain.linePolarity = settings_.cc1Invert;
    const auto level = levelOf(*directInput_);
    const LineTrigger::Wiring straight{.a = level, .b = level, .travel = travel_};
    if (before == directInput_) {
        direct_.configure(plain, straight, now_);
    } else {
        direct_.start(plain, straight, now_);
    }
    directSeen_ = now_;
}

void LineStream::watchInputs(std::uint32_t inputs, BoardTime now) {
    for (unsigned i = 0; i < kInputs; ++i) {
        const bool wanted = (inputs >> i & 1) != 0;
        if (wanted == watched_[i].has_value()) continue;
        watched_[i].reset();
        if (wanted) watched_[i].emplace().start(levelOf(i), lineDebounce(settings_), now);
    }
}

std::uint32_t LineStream::levels(BoardTime time) const {
    std::uint32_t levels = 0;
    for (unsigned i = 0; i < kInputs; ++i) levels |= std::uint32_t{levelOf(i)->high(time)} << i;
    return levels;
}

void LineStream::beginFrames(BoardTime now) {
    now_ = std::max(now_, now);
    frameOrigin_ = started();
    open_ = false;
    imageListens_ = false;
    setGenerators(true, period_, true);
    pollImageTrigger();
}

void LineStream::pollImageTrigger() {
    const bool listened = std::exchange(imageListens_, frames_.listens());
    if (imageFromInput() && !listened) {
        image_.start(levelOf(settings_.imageSelect), toCycles(settings_.imageDebouncing), now_);
        imageSeen_ = now_;
        imageChange_.reset();
    }
    if (!imageListens_) {
        imageActive_ = false;
        return;
    }
    const bool level = imageFromInput() ? image_.high() : settings_.softwareLevel != 0;
    const bool active = level != (settings_.imagePolarity != 0);
    if (listened) {
        setImageActive(active);
        return;
    }
    imageActive_ = active;
    if (active) frames_.imageTriggerStands(now_, started());
}

void LineStream::setImageActive(bool active) {
    if (std::exchange(imageActive_, active) != active) frames_.imageTrigger(active, now_, started());
}

}  // namespace virtualboard
