#include "board/imaging/Crew.h"

#include <sched.h>

#include <algorithm>
#include <system_error>

namespace virtualboard::imaging {
namespace {

unsigned usableCores() {
    constexpr int kMost = 16;  // more would wait for memory
    cpu_set_t cores;
    if (sched_getaffinity(0, sizeof cores, &cores) != 0) return 1;
    return static_cast<unsigned>(std::clamp(CPU_COUNT(&cores), 1, kMost));
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
    }
    begin_.notify_all();
    work(part, parts, 0);
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
        const unsigned parts = parts_;
        ++busy_;
        lock.unlock();
        work(part, parts, member);
        lock.lock();
        // All parts are taken.
        part_ = nullptr;
        if (--busy_ == 0) end_.notify_one();
    }
}

void Crew::work(const Part& part, unsigned parts, unsigned member) {
    for (unsigned i = next_++; i < parts; i = next_++) part(i, member);
}

}  // namespace virtualboard::imaging
