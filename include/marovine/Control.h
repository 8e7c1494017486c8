#pragma once

/// The control interface of the virtual board: what a developer can see and do that a real board does not
/// offer. It watches writes, reads and forces design values, injects faults and sets the read-outs. It covers
/// the C interface of VirtualBoard.h with C++ types; codes arrive as exceptions with the text that says what
/// was wrong: `std::out_of_range` for a name that is not there, `std::runtime_error` where there is no
/// memory, else `std::invalid_argument`.
///
/// Names are full names: "Device1_Process0_Trigger_Trigger_ExsyncPeriod" for a parameter of the design,
/// "FG_TIMEOUT" (600), "FG_CAMSTATUS_EXTENDED" (2050) and so on for the runtime's own parameters.

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "marovine/ClockMode.h"
#include "marovine/Image.h"
#include "marovine/Truth.h"
#include "marovine/VirtualBoard.h"
#include "marovine/World.h"
#include "marovine/WorldError.h"
#include "marovine/marovine.h"

#pragma GCC visibility push(default)

namespace virtualboard {

/// A value of a design parameter in the parameter's own type; a field is the vector of its elements.
using Value = std::variant<std::uint32_t, std::int32_t, std::int64_t, std::uint64_t, double, std::string,
                           std::vector<std::uint32_t>>;

/// One write that reached the runtime, accepted or refused.
struct Write {
    std::string name;              ///< full name of the parameter
    int id = 0;                    ///< the runtime's id
    FgParamTypes type{};           ///< the type code of the call
    Value value;                   ///< what was written; for a field the elements of this write
    std::uint32_t firstIndex = 0;  ///< first element of a field write, else 0
    int result = 0;                ///< what the runtime answered: 0 or a negative code
};

/// An event that happened. Its own header says what the payload is.
using Event = VirtualBoardEvent;

/// Waits for events from its construction to its destruction, or has a function called with them. May be
/// moved, also when the board is gone.
class EventSubscription {
 public:
    EventSubscription() = default;
    /// Takes over a subscription of the C interface.
    explicit EventSubscription(VirtualBoardSubscription* subscription) : subscription_(subscription) {}

    /// The next event, waited for at most `seconds` of the machine's time, without end where they are
    /// infinite; nothing when none came in time. Throws `std::invalid_argument` when nothing comes any more,
    /// because the board is gone, or when a function is called instead.
    std::optional<Event> next(double seconds);
    /// Ends it. A call that is under way has returned then, unless it is that one which ends it.
    void end() { subscription_.reset(); }

 private:
    struct End {
        void operator()(VirtualBoardSubscription* subscription) const {
            VirtualBoardUnsubscribe(subscription);
        }
    };
    std::unique_ptr<VirtualBoardSubscription, End> subscription_;
};

/// Puts a new board into the machine; it holds no design yet. Boards are independent of each other.
GXdevice* insertBoard();
/// The same with a clock that stands at 0, so that every run on it is like the other.
GXdevice* insertStandingBoard();
/// Takes a board out and ends its acquisition. No applet may still be open on it.
void removeBoard(GXdevice* board);

/// Handle to one board's control interface; copies refer to the same board. Thread-safe. Every function
/// throws `std::invalid_argument` when the board is not (or no longer) in the machine.
class Control {
 public:
    explicit Control(GXdevice* board);

    // ---- journal of writes ----

    /// Starts (or stops) keeping a journal of writes; a stopped journal costs a write nothing.
    void recordWrites(bool on);
    /// The journal so far, oldest first; empties it.
    std::vector<Write> takeWrites();
    /// Calls `watcher` at each write after it was carried out; an empty function ends that. When it throws,
    /// whatever it throws, the write answers -31020; what was written stays.
    void watchWrites(std::function<void(const Write&)> watcher);

    // ---- values ----

    /// Value of a parameter; throws `std::out_of_range` naming it when the design has none of that name.
    Value value(std::string_view name) const;
    /// Sets a value past all range checks, the journal and the faults: also how read-outs such as
    /// temperature, fill level or input levels are set. A forced read-out of an analyzer stays until the
    /// analyzers are cleared, one that follows the acquisition until the board is opened anew. Throws
    /// `std::out_of_range` for an unknown name and `std::invalid_argument` for a text, a field or a number
    /// where the parameter is of another sort.
    void force(std::string_view name, const Value& value);
    /// Names of all parameters of the design, in the design's order.
    std::vector<std::string> parameterNames() const;

    // ---- faults ----

    /// Makes every write of one parameter fail with `code` (0 ends that). Throws `std::out_of_range` for a
    /// name that the design lacks; a board without design takes any name and heeds it once it has one.
    void refuseWrites(std::string_view name, int code);
    /// Makes every read of one parameter fail with `code` (0 ends that).
    void refuseReads(std::string_view name, int code);
    /// Makes the n-th write from now (1 is the next one), whatever its parameter, fail once with `code`.
    void refuseNthWrite(unsigned n, int code);
    /// Makes the n-th read from now fail once with `code`.
    void refuseNthRead(unsigned n, int code);
    /// Ends all faults of this board.
    void clearFaults();

    // ---- the board's clock ----

    /// How the clock runs; in real time at first. Lines, pictures, pulse counts and periods follow this
    /// clock.
    void setClockMode(ClockMode mode);
    /// Stops the board's clock, so that it moves only with `advanceClock`; false lets it run on.
    void setClockManual(bool manual = true) {
        setClockMode(manual ? ClockMode::Manual : ClockMode::RealTime);
    }
    /// Moves the clock forward by 0 to 1e9 seconds; throws `std::invalid_argument` for anything else. After
    /// 4e9 seconds in all further steps move it no more.
    void advanceClock(double seconds);
    /// Board time: nanoseconds since the board was inserted.
    std::int64_t time() const;

    // ---- pictures ----

    /// What Fg_getLastPicNumberBlockingEx does and answers, with a finer timeout: for hosts that must look
    /// after something else while they wait.
    std::int64_t waitForPicture(dma_mem* memory, std::int64_t picture, std::chrono::milliseconds timeout);

    // ---- what stands around the board; a running acquisition follows from its next picture on ----

    /// What lies on the belt, endlessly repeated. `fieldWidth` is the number of sensor pixels over which the
    /// optics spread it; 0 shows one scene pixel per sensor pixel. Throws `std::invalid_argument` for a field
    /// of more than 65536 pixels in width or 2^28 in all.
    void setScene(const imaging::Image& scene, std::uint32_t fieldWidth = 0);
    /// Lays the built-in chart on the belt, as at first.
    void showTestChart();
    /// The belt's speed, the pixel pitch on it and the encoder on its drive. The scene goes on from where it
    /// is. Throws `std::invalid_argument`, and changes nothing, for a pixel or pitch outside of 1e-6 to 1e6
    /// mm, a speed beyond 1e6 mm/s or a profile whose times do not ascend.
    void setBelt(const imaging::Belt& belt);
    /// How the encoder's tracks reach the board, and what it gets wrong. Throws `std::invalid_argument` for
    /// an input that is not there and for values outside of their ranges.
    void setEncoder(const imaging::Encoder& encoder);
    /// The camera. Throws `std::invalid_argument` for values outside of their ranges.
    void setCamera(const imaging::CameraTraits& camera);
    /// The light on the belt. Throws `std::invalid_argument` for values outside of their ranges.
    void setLight(const imaging::Light& light);
    /// Everything at once, from a world file: belt, encoder, inputs, parts, camera and light (docs/WORLD.md).
    /// Throws `WorldError`, whose text has a line for each fault; then all stays as it was. A scene that is
    /// set later takes the place of the parts, a camera or light that of the world's; with another belt the
    /// parts come anew.
    void loadWorld(const std::filesystem::path& file);
    /// Likewise from the text of a world file; names of files in it are relative to `folder`.
    void setWorld(std::string_view json, const std::filesystem::path& folder);
    /// The ground truth of one of the last 4096 pictures that the acquisition brought into `memory`: the
    /// parts and defects in it, in its own pixels, of the world that it was taken in. Without a world and
    /// with the pattern generator there are none. Throws `std::out_of_range` for another picture and
    /// `std::invalid_argument` for another memory.
    PictureTruth pictureTruth(dma_mem* memory, std::int64_t number) const;
    /// Likewise as JSON (docs/WORLD.md).
    std::string truth(dma_mem* memory, std::int64_t number) const;
    /// Threads that render a large picture, from the next acquisition on; 0, as at first: one for each core
    /// that the process may use. Pictures look the same and come in order, whatever their number.
    void setRenderThreads(unsigned threads);
    /// The level at an input from now on: 0 to 7 are the inputs, 8 to 11 the front inputs. Throws
    /// `std::invalid_argument` for another input.
    void setInput(unsigned input, bool high);
    /// A signal at an input, in the place of what was there. Throws `std::invalid_argument`, saying why, for
    /// another input, for edges whose times do not ascend and for trains that are none.
    void playInput(unsigned input, const imaging::InputSignal& signal);

    // ---- events; a board whose clock does not run in real time has them when its clock is moved ----

    /// Number of an event of the design, by the design's name; its mask, as Fg_getEventMask gives it, is 1
    /// shifted left by it. Throws `std::out_of_range` naming it.
    unsigned eventNumber(std::string_view name) const;
    /// Collects from now on the events of a mask, or of several joined by "or". Up to `room` events wait;
    /// while there is no room further ones are lost and counted.
    EventSubscription waitEvents(std::uint64_t mask, std::uint32_t room = 1024);
    /// Calls a function with each event, from a thread of its own. Should it throw, it gets no more events.
    EventSubscription onEvents(std::uint64_t mask, std::function<void(const Event&)> function,
                               std::uint32_t room = 1024);
    /// Lets an event happen now, such as an alarm that nothing on the board brings about.
    void raiseEvent(unsigned number, std::int64_t payload = 0);

    // ---- how the next opening behaves, on whichever board of this process ----

    /// The design runtime refuses to load any design.
    void refuseDesign(bool on);
    /// The host runtime opens no handle and reports `code` as its last error (`on` false ends that).
    void refuseHandle(bool on, int code = 0);
    /// Designs loaded from now on lack this parameter, event or register.
    void hide(std::string_view name);
    /// Ends `refuseDesign`, `refuseHandle` and `hide`.
    void clearOpeningFaults();

 private:
    GXdevice* board_;
};

}  // namespace virtualboard

#pragma GCC visibility pop
