#include "board/machine/Acquisition.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <exception>
#include <map>
#include <utility>

#include "board/imaging/Scene.h"
#include "marovine/BoardCodes.h"

namespace virtualboard {

namespace {

using imaging::DesignSettings;
using imaging::SensorScene;

void store(Slot* slot, Number value) {
    if (slot != nullptr && !slot->pinned) slot->value = value;
}

constexpr std::uint32_t kFromSoftware = 4;  // the image trigger's source

/// Bytes of the largest picture that the settings give.
std::uint64_t pictureBytes(const DesignSettings& settings) {
    const std::uint64_t rows = std::min<std::uint64_t>(
        std::uint64_t{settings.imageHeight} * rowsPerTrigger(settings), settings.yLength);
    return rows * settings.xLength * imaging::kBytesPerPixel;
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

void Acquisition::setScene(std::shared_ptr<const imaging::Image> scene, std::uint32_t fieldWidth) {
    if (scene != nullptr) SensorScene::checkField(*scene, fieldWidth);
    changeSurroundings([&](BoardTime) {
        world_ = nullptr;
        picture_ = std::move(scene);
        fieldWidth_ = fieldWidth;
        scene_ = nullptr;
    });
}

void Acquisition::setCamera(const imaging::CameraTraits& camera) {
    imaging::checkCamera(camera);
    changeSurroundings([&](BoardTime now) {
        camera_ = camera;
        scene_ = nullptr;
        stream_.setCamera(camera, sceneRows(), now);
    });
}

void Acquisition::setBelt(const imaging::Belt& belt) {
    // In a world the light barriers begin anew with the belt, and so do the parts.
    changeSurroundings([&](BoardTime now) { stream_.setBelt(belt, world_ == nullptr, now); });
}

void Acquisition::setEncoder(const imaging::Encoder& encoder) {
    changeSurroundings([&](BoardTime now) { stream_.setEncoder(encoder, now); });
}

void Acquisition::setInput(unsigned input, std::shared_ptr<const InputLevel> level) {
    changeSurroundings([&](BoardTime now) { stream_.setInput(input, std::move(level), now); });
}

void Acquisition::wireInput(unsigned input, std::shared_ptr<const BeltPattern> pattern) {
    changeSurroundings([&](BoardTime now) { stream_.wireInput(input, std::move(pattern), now); });
}

void Acquisition::setLight(const imaging::Light& light) {
    imaging::checkLight(light);
    changeSurroundings([&](BoardTime) {
        light_ = light;
        scene_ = nullptr;
    });
}

void Acquisition::setWorld(std::shared_ptr<const world::World> world) {
    // What may be refused comes first.
    std::map<unsigned, std::shared_ptr<const InputLevel>> played;
    for (const auto& [input, signal] : world->inputs)
        played[input] = std::make_shared<PlayedLevel>(signal, clock_.now());
    changeSurroundings([&](BoardTime now) {
        stream_.setBelt(world->belt, false, now);
        stream_.setEncoder(world->encoder, now);
        for (unsigned i = 0; i < kInputs; ++i) stream_.setInput(i, nullptr, now);
        for (const auto& [input, level] : played) stream_.setInput(input, level, now);
        for (const auto& [input, barrier] : world->barriers) stream_.wireInput(input, barrier, now);
        world_ = std::move(world);
        picture_ = nullptr;
        camera_ = world_->camera;
        light_ = world_->light;
        scene_ = nullptr;
        stream_.setCamera(camera_, sceneRows(), now);
    });
}

template <typename Change>
void Acquisition::changeSurroundings(Change change) {
    const BoardTime now = clock_.now();
    settle(now);
    change(now);
    if (running_) reconfigure(now);
    work_.notify_one();
}

// ---- the host's functions ----

int Acquisition::check(const dma_mem* memory) const {
    const auto ring = memory_.lock();
    if (ring == nullptr) return kNotAcquiring;
    if (memory == nullptr) return kNullPointer;
    return memory == reinterpret_cast<const dma_mem*>(ring.get()) ? kOk : kForeignMemory;
}

int Acquisition::acquire(std::int64_t pictures, std::shared_ptr<FrameRing> ring, const void* owner) {
    if (running_) return kAlreadyAcquiring;
    if (pictures == 0 || pictures < -1) return kOutOfRange;
    if (pictureBytes(readSettings_()) > ring->bytes()) return kMemoryTooSmall;
    if (!ring->claim()) return kMemoryInUse;
    memory_ = ring;
    ring_ = std::move(ring);
    owner_ = owner;
    pictures_ = pictures;
    accepted_ = delivered_ = lost_ = told_ = done_ = lostBefore_ = 0;
    stopping_ = failed_ = overflow_ = polled_ = thwarted_ = false;
    due_.clear();
    waiting_ = 0;
    shown_.clear();
    renderer_.reset();
    rendered_.reset();
    ++run_;
    try {
        crew_.emplace(renderThreads_);
        sequencer_ = {};
        if (scene_ == nullptr) scene_ = makeScene();
        // What takes its time is done: the acquisition begins now.
        const BoardTime now = clock_.now();
        settle(now);
        triggers_.clear();
        flashes_.clear();
        lit_.clear();
        frameTold_ = flashOn_ = false;
        base_ = stream_.started();
        origin_.reset();
        signals_.beginAcquisition();
        running_ = true;
        reconfigure(now);
        stream_.beginFrames(now);
        thread_ = std::thread([this] { work(); });
    } catch (...) {
        running_ = false;
        ring_->release();
        ring_.reset();
        throw;
    }
    updateReadOuts(clock_.now());
    return kOk;
}

int Acquisition::stop(Lock& lock, const dma_mem* memory) {
    if (!running_ || stopping_) return kNotAcquiring;
    const int code = check(memory);
    if (code == kOk) end(lock, nullptr);
    return code;
}

void Acquisition::end(Lock& lock, const void* owner) {
    if (!running_ || (owner != nullptr && owner != owner_)) return;
    if (!stopping_) {
        stopping_ = true;
        work_.notify_one();
        wake_.notify_all();
        lock.unlock();
        thread_.join();
        lock.lock();
        wake_.wait(lock, [this] { return !rendering_; });
        running_ = false;
        ring_->release();
        ring_.reset();
        rendered_.reset();
        renderer_.reset();
        crew_.reset();
        updateReadOuts(clock_.now());
        wake_.notify_all();
    } else {
        // Another thread may acquire again before this one gets the lock.
        wake_.wait(lock, [this, run = run_] { return !running_ || run_ != run; });
    }
}

std::int64_t Acquisition::lastPicture(const dma_mem* memory) {
    if (const int code = check(memory); code != kOk) return code;
    done_ = std::max(done_, told_);
    told_ = delivered_;
    polled_ = true;
    work_.notify_one();
    return delivered_;
}

std::int64_t Acquisition::lastPictureBlocking(Lock& lock, std::int64_t picture,
                                              std::chrono::milliseconds timeout, const dma_mem* memory) {
    if (const int code = check(memory); code != kOk) return code;
    if (picture < 1 || timeout.count() < 0) return kOutOfRange;
    if (pictures_ >= 0 && picture > pictures_) return kNoMorePictures;
    done_ = std::max(done_, picture - 1);
    const auto place = awaited_.insert(picture);
    const std::uint64_t run = run_;
    using Clock = std::chrono::steady_clock;
    const auto deadline = Clock::now() + timeout;
    const auto over = [&] {
        return run_ != run || delivered_ >= picture || !running_ || stopping_ || failed_;
    };
    for (bool told = false; !over();) {
        if (Clock::now() < deadline && renderHere(lock)) continue;
        if (failed_) break;
        if (!std::exchange(told, true)) work_.notify_one();
        if (wake_.wait_until(lock, deadline) == std::cv_status::timeout) break;
    }
    awaited_.erase(place);
    if (run_ == run && (thwarted_ || !due_.empty())) work_.notify_one();
    if (run_ != run) return kStopped;
    if (delivered_ >= picture) {
        told_ = std::max(told_, delivered_);
        return delivered_;
    }
    // The host may now wait for an earlier one, but what other threads still wait for keeps its room.
    const std::int64_t needed = awaited_.empty() ? 0 : *awaited_.rbegin() - 1;
    done_ = std::min(done_, std::max(delivered_, needed));
    if (failed_) return kInternalFailure;
    return !running_ || stopping_ ? kStopped : kTimeout;
}

std::int64_t Acquisition::status(int parameter, std::int64_t data, const dma_mem* memory) {
    if (const int code = check(memory); code != kOk) return code;
    settle(clock_.now());
    switch (parameter) {
        case FRAME_STATUS_PICTURES:
            return delivered_;
        case FRAME_STATUS_LOST:
            return lost_;
        case FRAME_STATUS_UNREAD:
            return unread();
        case FRAME_STATUS_BUFFER: {
            const auto ring = memory_.lock();
            const std::int64_t number = data == 0 ? delivered_ : data;
            FrameMemoryPicture picture{};
            const int code = ring->read(number, picture);
            return code == kOk ? static_cast<std::int64_t>(ring->bufferOf(number)) : code;
        }
        case FRAME_STATUS_RUNNING:
            return running_ ? 1 : 0;
        default:
            return kUnknownStatus;
    }
}

int Acquisition::truth(Lock& lock, std::int64_t number, const dma_mem* memory, PictureTruth& truth) const {
    if (const int code = check(memory); code != kOk) return code;
    const auto before = delivered_ - static_cast<std::int64_t>(shown_.size());
    if (number <= before || number > delivered_) return kPictureGone;
    const ShownPicture shown = shown_[static_cast<std::size_t>(number - before - 1)];
    lock.unlock();
    truth = {};
    if (shown.from.taken->world != nullptr) {
        imaging::FrameRenderer renderer(shown.from.taken->scene);
        renderer.configure(shown.from.taken->settings);
        truth = shown.from.taken->world->parts->truth(
            renderer.geometry(shown.from.position, shown.from.motion, shown.height));
    }
    truth.number = number;
    truth.width = shown.width;
    truth.height = shown.height;
    lock.lock();
    return kOk;
}

// ---- the stream of pictures ----

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

std::uint32_t Acquisition::sceneRows() const {
    if (scene_ != nullptr) return scene_->rows();
    return imaging::kChartSize;
}

std::shared_ptr<const SensorScene> Acquisition::makeScene() const {
    if (world_ != nullptr) {
        // A frame of the camera's own is as long as with the chart.
        return std::make_shared<const SensorScene>(world_->parts, camera_, light_, imaging::kChartSize);
    }
    if (picture_ != nullptr)
        return std::make_shared<const SensorScene>(*picture_, camera_, fieldWidth_, light_);
    return std::make_shared<const SensorScene>(imaging::testChart(), camera_, fieldWidth_, light_);
}

/// Takes over settings and surroundings as they are now.
void Acquisition::reconfigure(BoardTime now) {
    const DesignSettings settings = readSettings_();
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
    if (&slot == softwarePulse_ && slot.value == 1 && settings.imageSource == kFromSoftware)
        triggered(now, FRAME_TRIGGER_SOFTWARE, sequencer_.trigger(stream_.started() - base_));
    settle(now);
    work_.notify_one();
}

// ---- the thread ----

void Acquisition::work() {
    Lock lock(mutex_);
    try {
        while (!stopping_ && !failed_) {
            queueDue(clock_.now());
            thwarted_ = rendering_;
            if (rendering_) {
                work_.wait(lock);
            } else if (!due_.empty()) {
                renderNext(lock);
            } else if (!skipToNext()) {
                waitForWork(lock);
            }
        }
    } catch (const std::exception&) {  // no memory
        failed_ = true;
        wake_.notify_all();
    }
}

/// Brings the first picture of the queue into its buffer.
void Acquisition::renderNext(Lock& lock) {
    const DuePicture picture = due_.front();
    const std::int64_t number = delivered_ + 1;
    const std::span<std::uint8_t> buffer = ring_->begin(number);
    const std::shared_ptr<FrameRing> ring = ring_;
    rendering_ = true;
    lock.unlock();
    std::optional<std::uint32_t> rows;
    try {
        if (rendered_ != picture.taken) {
            rendered_.reset();
            renderer_.emplace(picture.taken->scene, &*crew_);
            renderer_->configure(picture.taken->settings);
            rendered_ = picture.taken;
        }
        rows = renderer_->render(picture.position, picture.motion, buffer);
    } catch (const std::exception&) {  // no memory
    }
    if (rows.value_or(0) != 0) {
        ring->finish(
            {.pixels = buffer.data(), .width = renderer_->width(), .height = *rows, .number = number},
            picture.info);
    }
    lock.lock();
    rendering_ = false;
    if (!rows.has_value()) failed_ = true;
    waiting_ -= due_.front().bytes;
    due_.pop_front();
    polled_ = false;
    if (rows.value_or(0) != 0) {
        delivered_ = number;
        shown_.push_back({picture, renderer_->width(), *rows});
        if (shown_.size() > kMostShown) shown_.pop_front();
        if (ring->isQueued()) done_ = told_ = number;  // the host has it
    } else {                                           // settings under way made a row longer than a buffer
        ++lost_;
        --accepted_;
    }
    wake_.notify_all();
}

/// Renders the next picture in the thread that waits for it; false when there is none, when it is so large
/// that a waiting time could not be kept or when another thread is at it.
bool Acquisition::renderHere(Lock& lock) {
    constexpr std::uint64_t kMost = 1 << 24;  // pixels; some hundredths of a second
    if (rendering_) return false;
    try {
        queueDue(clock_.now());
        if (due_.empty() && skipToNext()) queueDue(clock_.now());
    } catch (const std::exception&) {  // no memory
        failed_ = true;
        wake_.notify_all();
    }
    if (due_.empty() || failed_) return false;
    const DuePicture& picture = due_.front();
    if (std::uint64_t{picture.position.rows} * picture.taken->settings.xLength > kMost) {
        work_.notify_one();
        return false;
    }
    renderNext(lock);
    return true;
}

/// As fast as possible: moves the clock to the next picture that the host asks for. False when it asks for
/// none, when there is no room or when none will come by itself.
bool Acquisition::skipToNext() {
    if (clock_.mode() != ClockMode::AsFastAsPossible || unread() >= ring_->buffers()) return false;
    const bool awaited = !awaited_.empty() && *awaited_.rbegin() > delivered_;
    if (!awaited && !polled_ && !ring_->isQueued()) return false;
    const auto time = nextDue();
    if (!time.has_value() || *time > BoardClock::kLatest) return false;
    clock_.moveTo(*time);
    return true;
}

void Acquisition::waitForWork(Lock& lock) {
    const BoardTime now = clock_.now();
    const auto time = nextDue();
    if (time.has_value() && (*time <= now || clock_.mode() == ClockMode::RealTime)) {
        // A far future is slept through in parts, so that no addition of times overflows.
        constexpr BoardTime kHour = BoardTime{3600} * 1'000'000'000;
        work_.wait_for(lock, std::chrono::nanoseconds(std::clamp<BoardTime>(*time - now, 0, kHour)));
    } else {
        work_.wait(lock);
    }
}

}  // namespace virtualboard
