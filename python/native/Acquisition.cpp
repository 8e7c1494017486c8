#include "python/native/Acquisition.h"

#include <nanobind/ndarray.h>

#include <algorithm>
#include <chrono>
#include <utility>

#include "client/Failure.h"
#include "client/Grabber.h"
#include "marovine/BoardCodes.h"
#include "pictures/Png.h"

namespace marovine::python {

using std::chrono::milliseconds;
using virtualboard::FrameMemory;
using virtualboard::imaging::kBytesPerPixel;

namespace {

std::shared_ptr<FrameMemory> memoryFor(host::Applet& applet, std::uint32_t buffers) {
    const auto size = [&](const char* name) {
        return static_cast<std::size_t>(*host::numberOf(applet.get(name)));
    };
    const std::size_t width = size("FG_WIDTH"), height = size("FG_HEIGHT");
    try {
        return std::make_shared<FrameMemory>(buffers, width * height * kBytesPerPixel);
    } catch (const std::bad_alloc&) {
        throw host::Failure("no memory for " + std::to_string(buffers) + " pictures of " +
                            std::to_string(width) + " x " + std::to_string(height) +
                            " pixels; make FG_WIDTH or FG_HEIGHT smaller");
    }
}

/// A buffer that an array holds.
struct Held {
    std::shared_ptr<FrameMemory> memory;
    const std::uint8_t* pixels;
    Birthplace born;

    ~Held() {
        if (born.isHere()) {
            memory->giveBack(pixels);
        } else {
            abandon(std::move(memory));
        }
    }
};

nb::object arrayOf(const std::shared_ptr<FrameMemory>& memory, const FrameMemoryPicture& picture) {
    const nb::capsule owner(new Held{memory, picture.pixels, {}},
                            [](void* held) noexcept { delete static_cast<Held*>(held); });
    using Array = nb::ndarray<nb::numpy, const std::uint8_t, nb::ndim<3>>;
    return nb::cast(Array(picture.pixels, {picture.height, picture.width, kBytesPerPixel}, owner));
}

}  // namespace

AcquisitionState::AcquisitionState(AppletUse used, std::int64_t pictures, std::uint32_t buffers)
    : used_(std::move(used)), memory_(memoryFor(*used_, buffers)), pictures_(pictures) {
    const int code = used_->library().acquire(used_->record(), 0, pictures, 0, memory_->get());
    if (code < 0) {
        stopped_ = true;
        throw host::Refused(code, "taking pictures");
    }
}

std::optional<TakenPicture> AcquisitionState::next(milliseconds moment) {
    const std::unique_lock turn(turn_, moment);
    if (!turn || over_) return std::nullopt;
    const std::int64_t code = used_.board->board.control().waitForPicture(memory_->get(), taken_ + 1, moment);
    if (code == virtualboard::kTimeout) return std::nullopt;
    if (code == virtualboard::kNoMorePictures || code == virtualboard::kStopped) {
        over_ = true;
        return std::nullopt;
    }
    if (code < 0) throw host::Refused(static_cast<int>(code), "waiting for a picture");
    TakenPicture taken{.picture = {}, .info = memory_->info(taken_ + 1)};
    if (used_.board->hasWorld) taken.truth = used_.board->board.control().truth(memory_->get(), taken_ + 1);
    taken.picture = memory_->take(taken_ + 1);
    if (taken.picture.pixels == nullptr) throw std::bad_alloc();
    if (++taken_ == pictures_) stop();
    return taken;
}

void AcquisitionState::stop() {
    over_ = true;
    const std::lock_guard lock(stopping_);
    if (std::exchange(stopped_, true)) return;
    used_->library().stopAcquire(used_->record(), 0, memory_->get(), 0);
}

std::int64_t AcquisitionState::status(int what) const {
    return used_->library().status(used_->record(), what, 0, 0, memory_->get());
}

AcquisitionObject::~AcquisitionObject() {
    if (!born_.isHere()) {
        abandon(std::move(state_));
        return;
    }
    const nb::gil_scoped_release release;
    state_.reset();
}

AcquisitionState& AcquisitionObject::use() const {
    born_.check();
    return *state_;
}

nb::object AcquisitionObject::next(nb::handle timeout, const Interrupt* interrupt) {
    const auto seconds = timeoutFrom(timeout);
    static_cast<void>(use());
    const auto state = state_;
    const auto why = [&] {
        return host::whyNoPicture(state->applet(),
                                  {.seconds = *seconds,
                                   .realTime = state->inRealTime(),
                                   .attached = state->attached(),
                                   .belt = state->belt(),
                                   .words = {.timeout = "timeout=",
                                             .trigger = "applet.trigger()",
                                             .attach = "write_defaults=False",
                                             .withoutRealTime = "set board.clock to Clock.FAST"}});
    };
    const auto taken = waitFor(
        seconds, interrupt, [&](milliseconds slice) { return state->next(slice); },
        [&] { return state->isOver(); }, why);
    if (!taken) return nb::none();
    const auto& info = taken->info;
    return nb::make_tuple(arrayOf(state->memory(), taken->picture), info.number, info.frame, info.trigger,
                          info.firstLineTime, info.lastLineTime, info.triggerTime, info.firstLine,
                          info.encoderPosition, info.lostBefore, taken->truth);
}

std::unique_ptr<AcquisitionObject> acquire(AppletObject& applet, std::int64_t pictures,
                                           std::uint32_t buffers) {
    const auto used = applet.use();
    auto state = unlocked([&] { return std::make_shared<AcquisitionState>(used, pictures, buffers); });
    applet.follow(state);
    return std::make_unique<AcquisitionObject>(std::move(state));
}

namespace {

using Colours = nb::ndarray<const std::uint8_t, nb::shape<-1, -1, 3>, nb::c_contig, nb::device::cpu>;

nb::bytes encodePng(const Colours& picture) {
    const virtualboard::imaging::ImageView view{static_cast<std::uint32_t>(picture.shape(1)),
                                                static_cast<std::uint32_t>(picture.shape(0)),
                                                {picture.data(), picture.size()}};
    const auto bytes = unlocked([&] { return virtualboard::imaging::encodePng(view); });
    return nb::bytes(bytes.data(), bytes.size());
}

}  // namespace

void bindAcquisition(nb::module_& module) {
    nb::class_<AcquisitionObject>(module, "Acquisition", nb::is_weak_referenceable())
        .def("next", &AcquisitionObject::next, nb::arg("timeout").none(), nb::arg("interrupt").none())
        .def("stop",
             [](const AcquisitionObject& object) {
                 AcquisitionState& state = object.use();
                 unlocked([&] { state.stop(); });
             })
        .def_prop_ro("over", [](const AcquisitionObject& object) { return object.use().isOver(); })
        .def(
            "status",
            [](const AcquisitionObject& object, int what) {
                const AcquisitionState& state = object.use();
                return unlocked([&] { return state.status(what); });
            },
            nb::arg("what"));
    module.def("encode_png", &encodePng, nb::arg("picture"));
}

}  // namespace marovine::python
