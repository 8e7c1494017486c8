#include "studio/Camera.h"

#include <algorithm>

namespace marovine::studio {

using virtualboard::imaging::Image;

namespace {

constexpr auto kRecent = std::chrono::seconds(2);

double rateOf(const auto& recent, auto now) {
    if (recent.size() < 2) return 0;
    const auto& [since, first] = recent.front();
    const double seconds = std::chrono::duration<double>(now - since).count();
    return seconds > 0 ? static_cast<double>(recent.back().second - first) / seconds : 0;
}

}  // namespace

void Camera::start(State state) {
    stop();
    auto grabber = std::make_unique<host::Grabber>(applet_, state == State::Single ? 1 : -1);
    {
        const std::lock_guard lock(mutex_);
        grabber_ = std::move(grabber);
        state_ = state;
        stopping_ = false;
        failure_.clear();
        heard_ = Clock::now();
        recent_.clear();
    }
    thread_ = std::thread([this, state] { pump(state == State::Single); });
}

void Camera::stop() {
    {
        const std::lock_guard lock(mutex_);
        stopping_ = true;
    }
    if (grabber_) grabber_->stop();
    if (thread_.joinable()) thread_.join();
    const std::lock_guard lock(mutex_);
    grabber_.reset();
    state_ = State::Stopped;
    before_ += std::exchange(pictures_, 0);
    lostBefore_ += std::exchange(lost_, 0);
}

Camera::Standing Camera::standing() const {
    const std::lock_guard lock(mutex_);
    const auto now = Clock::now();
    return {.state = state_,
            .pictures = before_ + pictures_,
            .lost = lostBefore_ + lost_,
            .rate = state_ == State::Running && now - heard_ < kRecent ? rateOf(recent_, now) : 0,
            .silence = std::chrono::duration<double>(now - heard_).count(),
            .failure = failure_};
}

std::shared_ptr<const Shot> Camera::newest() const {
    const std::lock_guard lock(mutex_);
    return newest_;
}

void Camera::take() {
    const auto picture = grabber_->newest();
    auto shot = std::make_shared<Shot>();
    shot->image = Image(picture.width, picture.height);
    std::ranges::copy(picture.bytes, shot->image.bytes().begin());
    const std::int64_t lost = grabber_->lost();

    const std::lock_guard lock(mutex_);
    heard_ = Clock::now();
    pictures_ = grabber_->number();
    lost_ = std::max<std::int64_t>(lost, 0);
    recent_.emplace_back(heard_, pictures_);
    while (heard_ - recent_.front().first > kRecent) recent_.pop_front();
    shot->number = before_ + pictures_;
    shot->lost = lostBefore_ + lost_;
    shot->rate = rateOf(recent_, heard_);
    newest_ = std::move(shot);
}

void Camera::pump(bool single) {
    constexpr int kPatience = 1;  // s
    try {
        for (;;) {
            const bool came = grabber_->comes(kPatience);
            {
                const std::lock_guard lock(mutex_);
                if (stopping_) return;
            }
            if (!came) continue;
            take();
            if (single) break;
            arrived_();
        }
        grabber_->stop();
        const std::lock_guard lock(mutex_);
        state_ = State::Stopped;
    } catch (const std::exception& error) {
        const std::lock_guard lock(mutex_);
        if (stopping_) return;  // that is what ended the wait
        failure_ = error.what();
        state_ = State::Stopped;
    }
    arrived_();
}

}  // namespace marovine::studio
