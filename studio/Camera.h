#pragma once

/// Pictures of the studio's board, taken as a host takes them; only the newest is kept.

#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>

#include "client/Grabber.h"
#include "marovine/Image.h"

namespace marovine::studio {

/// A picture that stays as it is.
struct Shot {
    virtualboard::imaging::Image image;
    std::int64_t number = 0;  ///< from 1, over all acquisitions
    std::int64_t lost = 0;
    double rate = 0;  ///< pictures a second
};

class Camera {
 public:
    enum class State { Stopped, Running, Single };

    struct Standing {
        State state = State::Stopped;
        std::int64_t pictures = 0;  ///< over all acquisitions
        std::int64_t lost = 0;
        double rate = 0;
        double silence = 0;  ///< s since the last picture, or since the start
        std::string failure{};
    };

    /// `arrived` is called at each picture and when an acquisition has ended by itself, in a thread of this
    /// object's; it must not call back.
    Camera(host::Applet& applet, std::function<void()> arrived)
        : applet_(applet), arrived_(std::move(arrived)) {}
    Camera(const Camera&) = delete;
    Camera& operator=(const Camera&) = delete;
    ~Camera() { stop(); }

    /// Begins anew. To be called, as `stop`, by the thread that owns the board. Throws as `Grabber` does.
    void start(State state);
    void stop();

    // From any thread.
    Standing standing() const;
    /// The newest picture; null before the first one.
    std::shared_ptr<const Shot> newest() const;

 private:
    using Clock = std::chrono::steady_clock;

    void pump(bool single);
    void take();

    host::Applet& applet_;
    std::function<void()> arrived_;
    std::unique_ptr<host::Grabber> grabber_;
    std::thread thread_;

    mutable std::mutex mutex_;
    State state_ = State::Stopped;
    bool stopping_ = false;
    std::shared_ptr<const Shot> newest_;
    std::int64_t before_ = 0;      ///< pictures of earlier acquisitions
    std::int64_t pictures_ = 0;    ///< of this one
    std::int64_t lostBefore_ = 0;  ///< in earlier ones
    std::int64_t lost_ = 0;
    std::string failure_;
    Clock::time_point heard_ = Clock::now();
    std::deque<std::pair<Clock::time_point, std::int64_t>> recent_;  ///< numbers of the last two seconds
};

}  // namespace marovine::studio
