#include "studio/Gallery.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>
#include <vector>

namespace marovine::studio {

using virtualboard::imaging::Image;

namespace {

static_assert(std::endian::native == std::endian::little, "numbers go out as they lie in memory");

template <class T>
void put(std::string& header, std::size_t at, T value) {
    std::memcpy(header.data() + at, &value, sizeof value);
}

}  // namespace

std::string frameOf(const Shot& shot, const View& view) {
    const Region region = regionOf(view, shot.image);
    const Image image = shown(shot.image, region, view.fit);
    std::string frame(kFrameHeader, '\0');
    constexpr std::size_t kPixelBytes = 4;
    frame.reserve(kFrameHeader + image.pixels.size() * kPixelBytes);
    constexpr std::uint16_t kRgba = 1;
    frame.replace(0, 4, "MVF1");
    put(frame, 4, kFrameHeader);
    put(frame, 6, kRgba);
    put(frame, 8, static_cast<std::uint64_t>(shot.number));
    put(frame, 16, image.width);
    put(frame, 20, image.height);
    put(frame, 24, shot.image.width);
    put(frame, 28, shot.image.height);
    put(frame, 32, region);
    put(frame, 48, static_cast<std::uint64_t>(shot.lost));
    put(frame, 56, shot.rate);
    appendRgba(frame, image);
    return frame;
}

void Gallery::show(Peer peer, const View& view) {
    const std::lock_guard lock(mutex_);
    visitors_[peer] = {.view = view};
    awake_ = true;
    changed_.notify_one();
}

void Gallery::ready(Peer peer) {
    const std::lock_guard lock(mutex_);
    const auto found = visitors_.find(peer);
    if (found == visitors_.end()) return;
    found->second.ready = true;
    awake_ = true;
    changed_.notify_one();
}

void Gallery::leave(Peer peer) {
    const std::lock_guard lock(mutex_);
    visitors_.erase(peer);
}

void Gallery::wake() {
    const std::lock_guard lock(mutex_);
    awake_ = true;
    changed_.notify_one();
}

void Gallery::stop() {
    {
        const std::lock_guard lock(mutex_);
        stopping_ = true;
        changed_.notify_one();
    }
    if (thread_.joinable()) thread_.join();
}

void Gallery::work() {
    std::unique_lock lock(mutex_);
    while (!stopping_) {
        changed_.wait(lock, [this] { return awake_ || stopping_; });
        awake_ = false;
        const auto shot = newest_();
        if (!shot) continue;
        std::map<Peer, View> waiting;
        for (auto& [peer, visitor] : visitors_) {
            if (!visitor.ready || visitor.seen == shot->number) continue;
            waiting[peer] = visitor.view;
            visitor.ready = false;
            visitor.seen = shot->number;
        }
        lock.unlock();
        // Pages that show alike share one message.
        std::vector<std::pair<View, Message>> made;
        for (const auto& [peer, view] : waiting) {
            auto known = std::ranges::find(made, view, &std::pair<View, Message>::first);
            if (known == made.end()) {
                const Message frame{std::make_shared<const std::string>(frameOf(*shot, view)), true};
                known = made.insert(known, {view, frame});
            }
            send_(peer, known->second);
        }
        lock.lock();
    }
}

}  // namespace marovine::studio
