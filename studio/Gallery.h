#pragma once

/// Live pictures for the pages: each gets the newest one, as small as it shows it, when it is done with the
/// last.

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <thread>

#include "studio/Camera.h"
#include "studio/Http.h"
#include "studio/Pictures.h"

namespace marovine::studio {

/// The message of a picture, with its header of `kFrameHeader` bytes.
std::string frameOf(const Shot& shot, const View& view);
inline constexpr std::uint16_t kFrameHeader = 64;

class Gallery {
 public:
    using Newest = std::function<std::shared_ptr<const Shot>()>;
    using Send = std::function<void(Peer, Message)>;

    Gallery(Newest newest, Send send)
        : newest_(std::move(newest)), send_(std::move(send)), thread_([this] { work(); }) {}
    Gallery(const Gallery&) = delete;
    Gallery& operator=(const Gallery&) = delete;
    ~Gallery() { stop(); }

    /// A page wants pictures; the newest comes at once, also one that it had.
    void show(Peer peer, const View& view);
    /// A page is done with what it was sent.
    void ready(Peer peer);
    void leave(Peer peer);
    /// There is a newer picture.
    void wake();
    void stop();

 private:
    struct Visitor {
        View view;
        bool ready = true;
        std::int64_t seen = 0;  ///< number of the last picture sent
    };

    void work();

    Newest newest_;
    Send send_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::map<Peer, Visitor> visitors_;
    bool awake_ = false;
    bool stopping_ = false;
    std::thread thread_;  ///< last: it uses the others
};

}  // namespace marovine::studio
