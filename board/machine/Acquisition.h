#pragma once

/// The acquisition side of a board: cuts the line stream into pictures and brings them into the host's ring.
/// Sources by topic: Acquisition.cpp follows time and settings, AcquisitionSurroundings.cpp what stands
/// around the board, AcquisitionHost.cpp the host's calls, AcquisitionFrames.cpp cuts frames,
/// AcquisitionThread.cpp renders them.

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string_view>
#include <thread>
#include <vector>

#include "board/imaging/FrameRenderer.h"
#include "board/imaging/FrameSequencer.h"
#include "board/imaging/Settings.h"
#include "board/lines/BoardClock.h"
#include "board/lines/LineStream.h"
#include "board/machine/BoardSignals.h"
#include "board/machine/FrameRing.h"
#include "board/world/World.h"
#include "marovine/Image.h"
#include "marovine/Truth.h"

namespace virtualboard {

/// One acquisition at a time, with one thread that takes its pictures. When a picture is due it is queued, or
/// lost when the ring has no room (see FrameMemory.h); the thread renders what is queued, straight into the
/// ring, with helpers for a large picture. Where a thread of the host waits for a picture that is due it
/// renders it itself, as long as that takes no time to speak of: waking another one takes longer than a small
/// picture.
///
/// The board's lock guards all of it; the caller holds it. Functions that take the lock give it up while
/// they wait.
class Acquisition : private FrameCutter {
 public:
    using Lock = std::unique_lock<std::mutex>;
    using FindSlot = std::function<Slot*(std::string_view)>;
    using ReadSettings = std::function<imaging::DesignSettings()>;

    Acquisition(std::mutex& mutex, BoardClock& clock, BoardSignals& signals)
        : mutex_(mutex), clock_(clock), signals_(signals), stream_(signals, *this) {}
    ~Acquisition() override;

    /// Takes the slots of a newly configured board and marks those that are live and those of the image
    /// trigger. `readSettings` is asked whenever a slot that drives pictures changes. No acquisition may run.
    void attach(const FindSlot& find, ReadSettings readSettings);

    // ---- what stands around the board ----

    /// A null scene is the built-in chart.
    void setScene(std::shared_ptr<const imaging::Image> scene, std::uint32_t fieldWidth);
    void setCamera(const imaging::CameraTraits& camera);
    /// Throw `std::invalid_argument` for values that make no sense, and change nothing then.
    void setBelt(const imaging::Belt& belt);
    void setEncoder(const imaging::Encoder& encoder);
    void setInput(unsigned input, std::shared_ptr<const InputLevel> level);
    void wireInput(unsigned input, std::shared_ptr<const BeltPattern> pattern);
    void setLight(const imaging::Light& light);
    /// Camera, light, belt and all that lies on it at once.
    void setWorld(std::shared_ptr<const world::World> world);
    /// Threads that render a large picture, from the next acquisition on; 0: one for each usable core.
    void setRenderThreads(unsigned threads) { renderThreads_ = threads; }

    // ---- the host's functions; results are those of the runtime, refusals are codes of Codes.h ----

    /// Starts to take `pictures` pictures (-1: until stopped). `owner` is the handle that asks. Throws what
    /// reading the settings throws.
    int acquire(std::int64_t pictures, std::shared_ptr<FrameRing> ring, const void* owner);
    int stop(Lock& lock, const dma_mem* memory);
    std::int64_t lastPicture(const dma_mem* memory);
    std::int64_t lastPictureBlocking(Lock& lock, std::int64_t picture, std::chrono::milliseconds timeout,
                                     const dma_mem* memory);
    std::int64_t status(int parameter, std::int64_t data, const dma_mem* memory);
    /// What one of the last `kMostShown` pictures shows of the world that it was taken in: nothing without a
    /// world. 0 or a code.
    int truth(Lock& lock, std::int64_t number, const dma_mem* memory, PictureTruth& truth) const;

    /// Ends what `owner` started, or whatever runs when it is null.
    void end(Lock& lock, const void* owner);

    // ---- the board's side ----

    bool running() const { return running_; }
    /// Follows the lines up to now, queues the pictures that are due and brings the read-outs up to date.
    void settle(BoardTime now);
    /// Follows a change of a slot that acts or drives pictures.
    void changed(const Slot& slot, BoardTime now);
    /// Somebody began or ceased to wait for events.
    void listenersChanged();
    /// No edge of an input that somebody listens to comes before this time by itself; with `all`, none of any
    /// signal.
    std::optional<BoardTime> nextEdge(bool all) const;
    /// The clock was moved or changed its mode.
    void clockChanged() { work_.notify_one(); }

 private:
    /// What decides how a picture looks.
    struct Snapshot {
        imaging::DesignSettings settings;
        std::shared_ptr<const imaging::SensorScene> scene;
        std::shared_ptr<const world::World> world;  ///< null where a picture lies on the belt
    };
    struct DuePicture {
        imaging::FramePosition position{};
        std::shared_ptr<const Snapshot> taken{};  ///< as things stood when it was complete
        imaging::Motion motion{};
        FrameMemoryPictureInfo info{};
        std::uint64_t bytes = 0;  ///< that it takes of the board's memory
    };

    struct ShownPicture {
        DuePicture from;
        std::uint32_t width, height;
    };
    static constexpr std::size_t kMostShown = 4096;

    int check(const dma_mem* memory) const;
    std::int64_t unread() const { return std::max<std::int64_t>(0, delivered_ - done_); }
    /// Buffers that hold pictures which the host has not done with, or wait for one.
    std::int64_t filled() const { return static_cast<std::int64_t>(due_.size()) + unread(); }
    bool isComplete() const { return pictures_ >= 0 && accepted_ >= pictures_; }
    std::optional<BoardTime> nextDue() const;
    // As the lines' own numbers have it.
    std::uint64_t linesLeft(std::uint64_t line) const override;
    bool listens() const override { return running_ && sequencer_.listens(); }
    void imageTrigger(bool active, BoardTime at, std::uint64_t line) override;
    void imageTriggerStands(BoardTime at, std::uint64_t line) override;

    void triggered(BoardTime at, FramePictureTrigger cause, bool begun);
    bool cutNext();
    void tellFlashes();
    void accept(const imaging::FramePosition& position);
    std::uint64_t memoryBytes() const;
    imaging::Motion motionOf(const imaging::FramePosition& position) const;
    FrameMemoryPictureInfo describe(const imaging::FramePosition& position);
    std::uint32_t sceneRows() const;
    void readLineSettings(BoardTime now);
    BoardTime startOf(std::uint64_t line) const;
    BoardTime endOf(std::uint64_t line) const;
    template <typename Change>
    void changeSurroundings(Change change);
    std::shared_ptr<const imaging::SensorScene> makeScene() const;
    void reconfigure(BoardTime now);
    void updateReadOuts(BoardTime now);
    void queueDue(BoardTime now);
    void work();
    void renderNext(Lock& lock);
    bool renderHere(Lock& lock);
    bool skipToNext();
    void waitForWork(Lock& lock);

    std::mutex& mutex_;
    BoardClock& clock_;
    BoardSignals& signals_;
    LineStream stream_;
    std::condition_variable work_;  ///< for the board's thread
    std::condition_variable wake_;  ///< for the host's threads: they look for themselves what happened

    ReadSettings readSettings_;
    struct NumberSlot {
        const Slot* slot;
        std::uint32_t imaging::LineSettings::*member;
    };
    struct RealSlot {
        const Slot* slot;
        double imaging::LineSettings::*member;
    };
    std::vector<NumberSlot> lineNumbers_;  ///< what the line stream follows, found once
    std::vector<RealSlot> lineReals_;
    bool hasLines_ = false;  ///< the design has all of it
    Slot* softwarePulse_ = nullptr;
    Slot* inputStatus_ = nullptr;
    Slot* compensation_ = nullptr;
    Slot* busy_ = nullptr;
    Slot* overflowed_ = nullptr;
    Slot* fillLevel_ = nullptr;
    Slot* dmaStatus_ = nullptr;
    const Slot* ramAddress_ = nullptr;
    const Slot* ramData_ = nullptr;

    std::shared_ptr<const world::World> world_;      ///< or nothing, then
    std::shared_ptr<const imaging::Image> picture_;  ///< on the belt; without either it is the chart
    std::uint32_t fieldWidth_ = 0;
    imaging::CameraTraits camera_;
    imaging::Light light_;
    std::shared_ptr<const imaging::SensorScene> scene_;  ///< made when first needed
    std::shared_ptr<const Snapshot> snapshot_;           ///< a new one for each change

    // ---- the present acquisition, or the last one ----

    std::shared_ptr<FrameRing> ring_;  ///< while it runs
    std::weak_ptr<FrameRing> memory_;  ///< as long as the host has it
    const void* owner_ = nullptr;
    bool running_ = false;    ///< from acquire until the thread has ended
    bool stopping_ = false;   ///< the thread shall end
    bool failed_ = false;     ///< no memory to render
    bool rendering_ = false;  ///< some thread does, without the lock
    bool thwarted_ = false;   ///< the board's thread would like to
    std::uint64_t run_ = 0;   ///< counts acquisitions
    std::int64_t pictures_ = -1;
    std::int64_t accepted_ = 0;   ///< pictures that found room
    std::int64_t delivered_ = 0;  ///< finished pictures; the last one's number
    std::int64_t lost_ = 0;
    std::int64_t told_ = 0;                ///< the last number that the host was given
    std::int64_t done_ = 0;                ///< up to here the host has done with pictures
    std::multiset<std::int64_t> awaited_;  ///< pictures that threads of the host wait for
    bool polled_ = false;                  ///< the host has asked since the last picture whether there is one
    bool overflow_ = false;
    imaging::FrameSequencer sequencer_;
    std::uint64_t base_ = 0;              ///< the stream's number of the acquisition's first line
    std::optional<std::int64_t> origin_;  ///< where the belt was then: there the scene begins
    bool frameTold_ = false;              ///< the frame under way was told to have started
    struct Trigger {
        std::uint64_t number;
        BoardTime at;
        FramePictureTrigger cause;
    };
    std::deque<Trigger> triggers_;       ///< of frames that are not complete
    std::deque<std::uint64_t> flashes_;  ///< lines with a flash that are not over
    std::deque<std::uint64_t> lit_;      ///< lines with a flash that a picture may still hold
    bool flashOn_ = false;               ///< the first of `flashes_` has begun
    std::int64_t lostBefore_ = 0;        ///< pictures lost since the last that found room
    std::uint64_t waiting_ = 0;          ///< bytes of the pictures in `due_`
    std::deque<DuePicture> due_;         ///< the first one is being rendered
    std::deque<ShownPicture> shown_;     ///< the last ones delivered
    unsigned renderThreads_ = 0;
    std::optional<imaging::Crew> crew_;
    std::optional<imaging::FrameRenderer> renderer_;  ///< belongs to whoever is rendering
    std::shared_ptr<const Snapshot> rendered_;        ///< what the renderer is set up for
    std::thread thread_;
};

}  // namespace virtualboard
