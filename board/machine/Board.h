#pragma once

/// One virtual board: the configured design with its values, the registers, the clock and what the control
/// interface has asked for.

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "board/design/Slot.h"
#include "board/lines/BoardClock.h"
#include "board/machine/Acquisition.h"
#include "board/machine/BoardSignals.h"
#include "board/machine/Design.h"
#include "board/machine/EventQueue.h"
#include "board/machine/Faults.h"
#include "marovine/Control.h"

namespace virtualboard {

/// Every function takes the board's lock; watchers are called without it.
class Board {
 public:
    explicit Board(ClockMode clock) : clock_(clock) {}

    /// Puts a design onto the board and sets its start values; with `keepValues` a board that already carries
    /// the same design keeps its values. Returns the design the board now carries.
    std::shared_ptr<const Design> configure(std::shared_ptr<const Design> design, bool keepValues);

    // ---- typed access of the host runtime; `design` is the one the caller's handle was opened on ----

    /// 0 or a code of Codes.h. `value` points to a value of the type's width; null is refused.
    int set(const Design* design, int id, const void* value, FgParamTypes type);
    int get(const Design* design, int id, void* value, FgParamTypes type);
    /// Reads a text parameter whatever its length.
    int getText(const Design* design, int id, std::string& text);
    /// The type code that fits a parameter best; 0 when there is no such parameter.
    FgParamTypes nativeType(const Design* design, int id);

    // ---- registers; 64-bit values whatever the register's width ----

    int readRegister(int number, std::uint64_t& value);
    int writeRegister(int number, std::uint64_t value);

    // ---- acquisition; `handle` stands for the host's handle, `memory` for what the host hands over ----

    int acquire(const Design* design, std::int64_t pictures, std::shared_ptr<FrameRing> memory,
                const void* handle);
    int stopAcquisition(const dma_mem* memory);
    std::int64_t lastPicture(const dma_mem* memory);
    std::int64_t lastPictureBlocking(std::int64_t picture, std::chrono::milliseconds timeout,
                                     const dma_mem* memory);
    std::int64_t acquisitionStatus(int parameter, std::int64_t data, const dma_mem* memory);
    /// Ends what this handle started, or whatever runs when it is null.
    void endAcquisition(const void* handle);

    // ---- control interface; the functions that take a name throw std::out_of_range naming it ----

    void recordWrites(bool on);
    std::vector<Write> takeWrites();
    void watchWrites(std::function<void(const Write&)> watcher);
    Value value(std::string_view name);
    void force(std::string_view name, const Value& value);
    std::vector<std::string> parameterNames();
    void refuseWrites(std::string_view name, int code);
    void refuseReads(std::string_view name, int code);
    void refuseNthWrite(unsigned n, int code);
    void refuseNthRead(unsigned n, int code);
    void clearFaults();
    void setClockMode(ClockMode mode);
    void advanceClock(double seconds);
    void setInput(unsigned input, bool high);
    void setScene(std::shared_ptr<const imaging::Image> scene, std::uint32_t fieldWidth);
    void setCamera(const imaging::CameraTraits& camera);
    void setBelt(const imaging::Belt& belt);
    void setEncoder(const imaging::Encoder& encoder);
    void playInput(unsigned input, imaging::InputSignal signal);
    void wireInput(unsigned input, std::shared_ptr<const BeltPattern> pattern);
    void setLight(const imaging::Light& light);
    void setWorld(std::shared_ptr<const world::World> world);
    /// 0 or a code of BoardCodes.h.
    int truth(const dma_mem* memory, std::int64_t number, PictureTruth& truth);
    void setRenderThreads(unsigned threads);
    BoardTime time();

    // ---- events ----

    /// Begins to collect the events of a mask, `room` of them at most.
    std::shared_ptr<PendingEvents> subscribe(std::uint64_t mask, std::size_t room);
    void unsubscribe(const std::shared_ptr<PendingEvents>& pending);
    /// Ends all subscriptions.
    void endEvents();
    /// The next event, waited for at most `seconds` of the machine's time: 0, `kTimeout`, or
    /// `kUnknownSubscription` once the subscription has ended.
    int waitEvent(PendingEvents& pending, double seconds, VirtualBoardEvent& event);
    /// Lets an event happen now. `kUnknownEvent` when the design has none of this number.
    int raiseEvent(unsigned number, std::int64_t payload);
    /// Number of an event by the design's name; nothing when it has none of that name.
    std::optional<unsigned> eventNumber(std::string_view name);

 private:
    using Lock = std::unique_lock<std::mutex>;

    Slot* find(int id);
    Slot& named(std::string_view name);
    void reset();
    void attachAcquisition(const std::function<Slot*(std::string_view)>& find);
    std::size_t indexOf(const Slot& slot) const { return static_cast<std::size_t>(&slot - slots_.data()); }

    int write(Slot* slot, const void* value, FgParamTypes type);
    int store(Slot& slot, const void* value, FgParamTypes type);
    int storeText(Slot& slot, const char* text);
    int storeField(Slot& slot, const void* value, FgParamTypes type);
    int setNoticed(Lock& lock, int id, Slot* slot, const void* value, FgParamTypes type);
    Write describe(int id, const Slot* slot, const void* value, FgParamTypes type) const;
    int load(const Slot& slot, void* value, FgParamTypes type) const;
    int loadField(const Slot& slot, void* value, FgParamTypes type) const;
    void applyNamedFaults();
    std::optional<unsigned> findEvent(std::string_view name) const;
    /// When one of these sources may next have an event, as things stand.
    std::optional<BoardTime> nextEvent(std::uint64_t sources) const;
    void setNamedFault(std::map<std::string, int, std::less<>>& faults, std::string_view name, int code);
    /// Brings the values that the board itself changes up to date.
    void settle();
    /// Checks a read and brings a live value up to date.
    int prepareRead(const Design* design, Slot* slot);
    /// Changes a slot by `store`, with everything that follows from it; not when `store` returns a code.
    template <typename Store>
    int change(Slot& slot, Store store) {
        const BoardTime now = clock_.now();
        acquisition_.settle(now);
        const int code = store();
        if (code != 0) return code;
        acquisition_.changed(slot, now);
        events_.reconsider();
        return code;
    }
    void updateNoticed() { noticed_ = recording_ || watcher_ != nullptr || faults_.any(); }

    std::mutex mutex_;
    std::shared_ptr<const Design> design_;
    std::vector<Slot> slots_;
    std::uint32_t designSlots_ = 0;  ///< the slots of the design come first, in id order
    std::vector<std::string> texts_;
    std::vector<std::vector<std::uint32_t>> fields_;
    std::vector<std::uint64_t> registers_;
    BoardClock clock_;
    EventQueue events_;
    BoardSignals signals_{events_};
    Acquisition acquisition_{mutex_, clock_, signals_};

    bool noticed_ = false;  ///< somebody records, watches or refuses: a write takes the long way
    bool recording_ = false;
    std::vector<Write> journal_;
    std::shared_ptr<const std::function<void(const Write&)>> watcher_;
    Faults faults_;
};

}  // namespace virtualboard
