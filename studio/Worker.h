#pragma once

/// A thread that does one job after the other.

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <utility>

namespace marovine::studio {

class Worker {
 public:
    using Job = std::function<void()>;

    /// `most` jobs may wait.
    explicit Worker(std::size_t most) : most_(most), thread_([this] { work(); }) {}
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;
    /// Ends after the job under way; jobs that wait are dropped.
    ~Worker() { stop(); }

    /// False when too many wait already, or the worker ends. A job must not throw.
    bool post(Job job) {
        const std::lock_guard lock(mutex_);
        if (stopping_ || jobs_.size() >= most_) return false;
        jobs_.push_back(std::move(job));
        changed_.notify_one();
        return true;
    }

    void stop() {
        {
            const std::lock_guard lock(mutex_);
            stopping_ = true;
            changed_.notify_one();
        }
        if (thread_.joinable()) thread_.join();
    }

 private:
    void work() {
        std::unique_lock lock(mutex_);
        for (;;) {
            changed_.wait(lock, [this] { return stopping_ || !jobs_.empty(); });
            if (stopping_) return;
            Job job = std::move(jobs_.front());
            jobs_.pop_front();
            lock.unlock();
            job();
            job = {};
            lock.lock();
        }
    }

    std::size_t most_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Job> jobs_;
    bool stopping_ = false;
    std::thread thread_;  ///< last: it uses the others
};

}  // namespace marovine::studio
