/// The control for C++: every function is one of the C interface, with its codes thrown as exceptions.

#include "marovine/Control.h"

#include <algorithm>
#include <limits>
#include <new>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "board/machine/ValueRecords.h"
#include "board/machine/WorldRecords.h"
#include "marovine/VirtualBoard.h"

namespace virtualboard {

namespace {

void must(int code) {
    if (code == kOk) return;
    const std::string why = VirtualBoardLastError();
    switch (code) {
        case kUnknownParameter:
        case kUnknownEvent:
        case kPictureGone:
            throw std::out_of_range(why);
        case kInternalFailure:
            throw std::runtime_error(why);
        default:
            throw std::invalid_argument(why);
    }
}

/// What was handed out, until the end of the block.
template <typename T>
class HandedOut {
 public:
    explicit HandedOut(const T* block) : block_(block) {}
    HandedOut(const HandedOut&) = delete;
    HandedOut& operator=(const HandedOut&) = delete;
    ~HandedOut() { VirtualBoardFree(block_); }

    const T* get() const { return block_; }

 private:
    const T* block_;
};

/// A function on its way through the C interface, which says when it is needed no more.
template <typename Function>
void* sent(Function&& function) {
    return std::make_unique<std::decay_t<Function>>(std::forward<Function>(function)).release();
}
template <typename Function>
const Function& received(void* context) {
    return *static_cast<const Function*>(context);
}
template <typename Function>
void release(void* context) {
    const std::unique_ptr<Function> last(static_cast<Function*>(context));
}

using WriteFunction = std::function<void(const Write&)>;
using EventFunction = std::function<void(const Event&)>;

/// A name as text that ends in a zero.
struct Name {
    explicit Name(std::string_view name) : text(name) {}
    operator const char*() const { return text.c_str(); }
    std::string text;
};

}  // namespace

GXdevice* insertBoard() {
    GXdevice* board = VirtualBoardInsert();
    if (board == nullptr) throw std::bad_alloc();
    return board;
}
GXdevice* insertStandingBoard() {
    GXdevice* board = VirtualBoardInsertStanding();
    if (board == nullptr) throw std::bad_alloc();
    return board;
}
void removeBoard(GXdevice* board) {
    VirtualBoardRemove(board);
}

Control::Control(GXdevice* board) : board_(board) {
    time();
}

void Control::recordWrites(bool on) {
    must(VirtualBoardRecordWrites(board_, on));
}
std::vector<Write> Control::takeWrites() {
    const VirtualBoardWrite* first = nullptr;
    must(VirtualBoardTakeWrites(board_, &first));
    const HandedOut block(first);
    std::vector<Write> writes;
    for (const auto* write = first; write != nullptr; write = write->next)
        writes.push_back(fromRecord(*write));
    return writes;
}
void Control::watchWrites(WriteFunction watcher) {
    if (!watcher) return must(VirtualBoardWatchWrites(board_, nullptr, nullptr, nullptr));
    const auto call = [](const VirtualBoardWrite* write, void* context) {
        received<WriteFunction>(context)(fromRecord(*write));
    };
    must(VirtualBoardWatchWrites(board_, call, sent(std::move(watcher)), release<WriteFunction>));
}

Value Control::value(std::string_view name) const {
    VirtualBoardValue value{};
    value.size = sizeof(value);
    must(VirtualBoardReadValue(board_, Name(name), &value));
    const HandedOut text(value.text);
    const HandedOut elements(value.elements);
    return fromRecord(value);
}
void Control::force(std::string_view name, const Value& value) {
    const VirtualBoardValue record = recordOf(value);
    must(VirtualBoardForceValue(board_, Name(name), &record));
}
std::vector<std::string> Control::parameterNames() const {
    const char* text = nullptr;
    must(VirtualBoardParameterNames(board_, &text));
    const HandedOut block(text);
    std::vector<std::string> names;
    std::istringstream lines(text);
    for (std::string name; std::getline(lines, name);) names.push_back(std::move(name));
    return names;
}

void Control::refuseWrites(std::string_view name, int code) {
    must(VirtualBoardRefuseWrites(board_, Name(name), code));
}
void Control::refuseReads(std::string_view name, int code) {
    must(VirtualBoardRefuseReads(board_, Name(name), code));
}
void Control::refuseNthWrite(unsigned n, int code) {
    must(VirtualBoardRefuseNthWrite(board_, n, code));
}
void Control::refuseNthRead(unsigned n, int code) {
    must(VirtualBoardRefuseNthRead(board_, n, code));
}
void Control::clearFaults() {
    must(VirtualBoardClearFaults(board_));
}

void Control::setClockMode(ClockMode mode) {
    must(VirtualBoardSetClockMode(board_, static_cast<int>(mode)));
}
void Control::advanceClock(double seconds) {
    must(VirtualBoardAdvanceClock(board_, seconds));
}
std::int64_t Control::time() const {
    std::int64_t now = 0;
    must(VirtualBoardTime(board_, &now));
    return now;
}

std::int64_t Control::waitForPicture(dma_mem* memory, std::int64_t picture,
                                     std::chrono::milliseconds timeout) {
    std::int64_t last = 0;
    const auto milliseconds =
        std::clamp<std::int64_t>(timeout.count(), 0, std::numeric_limits<std::uint32_t>::max());
    const int code =
        VirtualBoardWaitForPicture(board_, memory, picture, static_cast<std::uint32_t>(milliseconds), &last);
    if (code == kUnknownBoard) must(code);
    return code == kOk ? last : code;
}

void Control::setScene(const imaging::Image& scene, std::uint32_t fieldWidth) {
    must(VirtualBoardSetScene(board_, scene.bytes().data(), scene.width, scene.height, fieldWidth));
}
void Control::showTestChart() {
    must(VirtualBoardShowTestChart(board_));
}
void Control::setCamera(const imaging::CameraTraits& camera) {
    const CameraRecord packed(camera);
    must(VirtualBoardSetCamera(board_, &packed.record));
}
void Control::setBelt(const imaging::Belt& belt) {
    const BeltRecord packed(belt);
    must(VirtualBoardSetBelt(board_, &packed.record));
}
void Control::setLight(const imaging::Light& light) {
    const LightRecord packed(light);
    must(VirtualBoardSetLight(board_, &packed.record));
}

namespace {

/// Throws the faults of a world that was refused.
void checkWorld(int code, const VirtualBoardWorldFault* first) {
    const HandedOut block(first);
    if (code != kWrongWorld) return must(code);
    WorldFaults faults;
    for (const auto* fault = first; fault != nullptr; fault = fault->next)
        faults.push_back({static_cast<int>(fault->line), fault->path, fault->reason});
    throw WorldError(std::move(faults));
}

}  // namespace

void Control::loadWorld(const std::filesystem::path& file) {
    const VirtualBoardWorldFault* faults = nullptr;
    const int code = VirtualBoardLoadWorld(board_, file.c_str(), &faults);
    checkWorld(code, faults);
}
void Control::setWorld(std::string_view json, const std::filesystem::path& folder) {
    const VirtualBoardWorldFault* faults = nullptr;
    const int code = VirtualBoardSetWorld(board_, Name(json), folder.c_str(), &faults);
    checkWorld(code, faults);
}
PictureTruth Control::pictureTruth(dma_mem* memory, std::int64_t number) const {
    PictureTruth truth{.number = number};
    const VirtualBoardTruth* first = nullptr;
    must(VirtualBoardPictureTruth(board_, memory, number, &truth.width, &truth.height, &first));
    const HandedOut block(first);
    for (const auto* thing = first; thing != nullptr; thing = thing->next) {
        const TruthBox box{thing->left, thing->top, thing->width, thing->height};
        if (thing->isDefect != 0) {
            truth.parts.back().defects.push_back({thing->name, thing->severity, box, thing->complete != 0});
        } else {
            truth.parts.push_back({thing->name, thing->stream, thing->number, box, thing->complete != 0});
        }
    }
    return truth;
}
std::string Control::truth(dma_mem* memory, std::int64_t number) const {
    const char* json = nullptr;
    must(VirtualBoardPictureTruthJson(board_, memory, number, &json));
    const HandedOut block(json);
    return json;
}
void Control::setRenderThreads(unsigned threads) {
    must(VirtualBoardSetRenderThreads(board_, threads));
}
void Control::setEncoder(const imaging::Encoder& encoder) {
    const EncoderRecord packed(encoder);
    must(VirtualBoardSetEncoder(board_, &packed.record));
}
void Control::playInput(unsigned input, const imaging::InputSignal& signal) {
    const SignalRecord packed(signal);
    must(VirtualBoardPlayInput(board_, input, &packed.record));
}
void Control::setInput(unsigned input, bool high) {
    must(VirtualBoardSetInput(board_, input, high));
}

void Control::refuseDesign(bool on) {
    must(VirtualBoardRefuseDesign(on));
}
void Control::refuseHandle(bool on, int code) {
    must(VirtualBoardRefuseHandle(on, code));
}
void Control::hide(std::string_view name) {
    must(VirtualBoardHide(Name(name)));
}
void Control::clearOpeningFaults() {
    must(VirtualBoardClearOpeningFaults());
}

// ---- events ----

unsigned Control::eventNumber(std::string_view name) const {
    std::uint32_t number = 0;
    must(VirtualBoardEventNumber(board_, Name(name), &number));
    return number;
}
void Control::raiseEvent(unsigned number, std::int64_t payload) {
    must(VirtualBoardRaiseEvent(board_, number, payload));
}
EventSubscription Control::waitEvents(std::uint64_t mask, std::uint32_t room) {
    VirtualBoardSubscription* subscription = nullptr;
    must(VirtualBoardSubscribe(board_, mask, room, &subscription));
    return EventSubscription(subscription);
}
EventSubscription Control::onEvents(std::uint64_t mask, EventFunction function, std::uint32_t room) {
    if (!function) throw std::invalid_argument("there is no function to call");
    const auto call = [](const VirtualBoardEvent* event, void* context) {
        received<EventFunction>(context)(*event);
    };
    VirtualBoardSubscription* subscription = nullptr;
    must(VirtualBoardOnEvents(board_, mask, room, call, sent(std::move(function)), release<EventFunction>,
                              &subscription));
    return EventSubscription(subscription);
}

std::optional<Event> EventSubscription::next(double seconds) {
    Event event{};
    event.size = sizeof(event);
    const int code = VirtualBoardWaitEvent(subscription_.get(), seconds, &event);
    if (code == kTimeout) return std::nullopt;
    must(code);
    return event;
}

}  // namespace virtualboard
