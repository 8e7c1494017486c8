#pragma once

#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace virtualboard::imaging {

/// Threads that share a piece of work that falls into parts. The caller works, too; helpers begin with the
/// first work and sleep in between, after a short while in which they look out for more.
class Crew {
 public:
    /// What to do for a part; `member`, below `size()`, differs between those who work at the same time. Must
    /// not throw.
    using Part = std::function<void(unsigned part, unsigned member)>;

    /// Of `size` threads with the caller's; 0: one for each core that the process may use, at most 16.
    explicit Crew(unsigned size = 1);
    Crew(const Crew&) = delete;
    Crew& operator=(const Crew&) = delete;
    ~Crew();

    unsigned size() const { return size_; }

    /// Does parts 0 to `parts` - 1 in any order and returns when all are done. One call at a time.
    void run(unsigned parts, const Part& part);

 private:
    void start();
    void help(unsigned member);
    void work(const Part& part, unsigned parts, unsigned member);

    unsigned size_;
    std::mutex mutex_;
    std::condition_variable begin_, end_;
    const Part* part_ = nullptr;  ///< null while there is nothing to begin with
    unsigned parts_ = 0;
    bool dismissed_ = false;
    // Changed under the lock, watched without it.
    std::atomic<unsigned> calls_ = 0, busy_ = 0;  ///< calls of `run`; helpers at work
    std::atomic<unsigned> next_ = 0;              ///< the next part that nobody has taken
    std::vector<std::thread> helpers_;
};

}  // namespace virtualboard::imaging
