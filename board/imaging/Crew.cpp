#include "board/imaging/Crew.h"

#include <immintrin.h>
#include <sched.h>

#include <algorithm>
#include <chrono>
#include <system_error>

namespace virtualboard::imaging {
namespace {

unsigned usableCores() {
    constexpr int kMost = 16;  // more would wait for memory
    cpu_set_t cores;
    if (sched_getaffinity(0, sizeof cores, &cores) != 0) return 1;
    return static_cast<unsigned>(std::clamp(CPU_COUNT(&cores), 1, kMost));
}

/// Waits a short while without sleeping: falling asleep and being woken takes as long, and more in a virtual
/// machine.
template <typename Condition>
void spinUntil(Condition condition) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::microseconds(50);
    while (!condition() && std::chrono::steady_clock::now() < end) _mm_pause();
}

}  // namespace

Crew::Crew(unsigned size) : size_(size != 0 ? size : usableCores()) {}

Crew::~Crew() {
    {
        const std::lock_guard lock(mutex_);
        dismissed_ = true;
    }
    begin_.notify_all();
    for (auto& helper : helpers_) helper.join();
}

void Crew::start() {
    try {
        helpers_.reserve(size_ - 1);
        while (helpers_.size() + 1 < size_)
            helpers_.emplace_back(
                [this, member = static_cast<unsigned>(helpers_.size()) + 1] { help(member); });
    } catch (const std::system_error&) {
        // Those that could be started do.
        size_ = static_cast<unsigned>(helpers_.size()) + 1;
    }
}

void Crew::run(unsigned parts, const Part& part) {
    next_ = 0;
    if (size_ == 1 || parts < 2) {
        work(part, parts, 0);
        return;
    }
    if (helpers_.empty()) start();
    {
        const std::lock_guard lock(mutex_);
        part_ = &part;
        parts_ = parts;
        ++calls_;
    }
    begin_.notify_all();
    work(part, parts, 0);
    spinUntil([this] { return busy_ == 0; });
    // A helper that has not begun by now has nothing left to do.
    std::unique_lock lock(mutex_);
    part_ = nullptr;
    end_.wait(lock, [this] { return busy_ == 0; });
}

void Crew::help(unsigned member) {
    std::unique_lock lock(mutex_);
    for (;;) {
        begin_.wait(lock, [this] { return dismissed_ || part_ != nullptr; });
        if (dismissed_) return;
        const Part& part = *part_;
        const unsigned parts = parts_, call = calls_;
        ++busy_;
        lock.unlock();
        work(part, parts, member);
        lock.lock();
        part_ = nullptr;  // all parts are taken
        if (--busy_ == 0) end_.notify_one();
        lock.unlock();
        spinUntil([&] { return calls_ != call; });
        lock.lock();
    }
}

void Crew::work(const Part& part, unsigned parts, unsigned member) {
    for (unsigned i = next_++; i < parts; i = next_++) part(i, member);
}

}  // namespace virtualboard::imaging
