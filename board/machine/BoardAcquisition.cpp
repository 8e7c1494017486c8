/// How a board takes pictures: its acquisition behind the board's lock, and the image path's view of its
/// values.

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "board/machine/Board.h"
#include "marovine/BoardCodes.h"

namespace virtualboard {

namespace {

void checkInput(unsigned input) {
    if (input >= kInputs) throw std::invalid_argument("the board has inputs 0 to 11");
}

/// Reads the image path's values from the slots. Whatever it has been asked for drives pictures.
class SlotReader : public imaging::ValueReader {
 public:
    using Find = std::function<Slot*(std::string_view)>;
    using Fields = std::vector<std::vector<std::uint32_t>>;

    SlotReader(const Find& find, const Fields& fields) : find_(find), fields_(fields) {}

    std::uint32_t u32(std::string_view name) const override {
        return static_cast<std::uint32_t>(slot(name, ParameterKind::UInt32).value);
    }
    double real(std::string_view name) const override {
        return toDouble(slot(name, ParameterKind::Double).value);
    }
    void field(std::string_view name, std::span<std::uint32_t> out) const override {
        const auto& elements = fields_[slot(name, ParameterKind::UInt32Field).store];
        std::copy_n(elements.begin(), std::min(elements.size(), out.size()), out.begin());
    }

 private:
    Slot& slot(std::string_view name, ParameterKind kind) const {
        Slot* found = find_(name);
        if (found == nullptr || found->kind != kind)
            throw std::out_of_range("the design has no fitting '" + std::string(name) + "'");
        found->drivesPictures = true;
        return *found;
    }

    const Find& find_;
    const Fields& fields_;
};

}  // namespace

void Board::attachAcquisition(const std::function<Slot*(std::string_view)>& find) {
    const auto read = [this, find] { return imaging::readSettings(SlotReader(find, fields_)); };
    acquisition_.attach(find, read);
    try {
        read();
    } catch (const std::out_of_range&) {
        // Such a design takes no pictures; `acquire` says so.
    }
}

void Board::settle() {
    acquisition_.settle(clock_.now());
}

int Board::acquire(const Design* design, std::int64_t pictures, std::shared_ptr<FrameRing> memory,
                   const void* handle) {
    const Lock lock(mutex_);
    if (design != design_.get()) return kReconfigured;
    try {
        const int code = acquisition_.acquire(pictures, std::move(memory), handle);
        events_.reconsider();
        return code;
    } catch (const std::out_of_range&) {
        return kNoPictureSource;
    }
}

int Board::stopAcquisition(const dma_mem* memory) {
    Lock lock(mutex_);
    return acquisition_.stop(lock, memory);
}

std::int64_t Board::lastPicture(const dma_mem* memory) {
    const Lock lock(mutex_);
    return acquisition_.lastPicture(memory);
}

std::int64_t Board::lastPictureBlocking(std::int64_t picture, std::chrono::milliseconds timeout,
                                        const dma_mem* memory) {
    Lock lock(mutex_);
    return acquisition_.lastPictureBlocking(lock, picture, timeout, memory);
}

std::int64_t Board::acquisitionStatus(int parameter, std::int64_t data, const dma_mem* memory) {
    const Lock lock(mutex_);
    return acquisition_.status(parameter, data, memory);
}

void Board::endAcquisition(const void* handle) {
    Lock lock(mutex_);
    acquisition_.end(lock, handle);
}

BoardTime Board::time() {
    const Lock lock(mutex_);
    return clock_.now();
}

void Board::setInput(unsigned input, bool high) {
    checkInput(input);
    const Lock lock(mutex_);
    acquisition_.setInput(input, std::make_shared<ConstantLevel>(high));
    events_.reconsider();
}

void Board::playInput(unsigned input, imaging::InputSignal signal) {
    checkInput(input);
    const Lock lock(mutex_);
    acquisition_.setInput(input, std::make_shared<PlayedLevel>(std::move(signal), clock_.now()));
    events_.reconsider();
}

void Board::wireInput(unsigned input, std::shared_ptr<const BeltPattern> pattern) {
    checkInput(input);
    const Lock lock(mutex_);
    acquisition_.wireInput(input, std::move(pattern));
    events_.reconsider();
}

void Board::setEncoder(const imaging::Encoder& encoder) {
    const Lock lock(mutex_);
    acquisition_.setEncoder(encoder);
    events_.reconsider();
}

void Board::setScene(std::shared_ptr<const imaging::Image> scene, std::uint32_t fieldWidth) {
    const Lock lock(mutex_);
    acquisition_.setScene(std::move(scene), fieldWidth);
}

void Board::setCamera(const imaging::CameraTraits& camera) {
    const Lock lock(mutex_);
    acquisition_.setCamera(camera);
    events_.reconsider();
}

void Board::setBelt(const imaging::Belt& belt) {
    const Lock lock(mutex_);
    acquisition_.setBelt(belt);
    events_.reconsider();
}

void Board::setLight(const imaging::Light& light) {
    const Lock lock(mutex_);
    acquisition_.setLight(light);
}

void Board::setWorld(std::shared_ptr<const world::World> world) {
    const Lock lock(mutex_);
    acquisition_.setWorld(std::move(world));
    events_.reconsider();
}

int Board::truth(const dma_mem* memory, std::int64_t number, PictureTruth& truth) {
    Lock lock(mutex_);
    return acquisition_.truth(lock, number, memory, truth);
}

void Board::setRenderThreads(unsigned threads) {
    const Lock lock(mutex_);
    acquisition_.setRenderThreads(threads);
}

}  // namespace virtualboard
