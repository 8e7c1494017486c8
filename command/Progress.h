#pragma once

/// A progress bar for work that takes a while.

#include <chrono>
#include <cstddef>
#include <string>

namespace marovine::host {

/// Draws on standard error, only on a terminal and only when the work takes longer than a moment; leaves an
/// empty line behind.
class Progress {
 public:
    /// `unit` is what is counted, "pictures".
    Progress(std::size_t total, std::string unit);
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress();

    void reached(std::size_t done);

 private:
    using Clock = std::chrono::steady_clock;

    std::size_t total_;
    std::string unit_;
    bool terminal_;
    bool drawn_ = false;
    Clock::time_point start_ = Clock::now();
    Clock::time_point last_ = start_;
};

/// The bar itself: `columns` characters, filled by eighths.
std::string progressBar(std::size_t done, std::size_t total, std::size_t columns);

}  // namespace marovine::host
