#include "command/Progress.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <iostream>
#include <utility>

namespace marovine::host {

std::string progressBar(std::size_t done, std::size_t total, std::size_t columns) {
    constexpr std::array parts{"", "▏", "▎", "▍", "▌", "▋", "▊", "▉"};
    const std::size_t eighths = total > 0 ? std::min(done, total) * columns * parts.size() / total : 0;
    std::string bar;
    for (std::size_t i = 0; i < eighths / parts.size(); ++i) bar += "█";
    const std::size_t part = eighths % parts.size();
    bar += parts[part];
    bar.append(columns - eighths / parts.size() - (part != 0 ? 1 : 0), ' ');
    return bar;
}

Progress::Progress(std::size_t total, std::string unit)
    : total_(total), unit_(std::move(unit)), terminal_(isatty(STDERR_FILENO) == 1) {}

Progress::~Progress() {
    if (drawn_) std::cerr << "\r\033[K" << std::flush;
}

void Progress::reached(std::size_t done) {
    constexpr std::chrono::milliseconds patience(500), interval(100);
    constexpr std::size_t columns = 32;
    const auto now = Clock::now();
    if (!terminal_ || now - start_ < patience || now - last_ < interval) return;
    last_ = now;
    drawn_ = true;
    const double rate = static_cast<double>(done) / std::chrono::duration<double>(now - start_).count();
    std::array<char, 64> speed{};
    std::snprintf(speed.data(), speed.size(), "%.1f/s", rate);
    std::cerr << '\r' << '[' << progressBar(done, total_, columns) << "] " << done << '/' << total_ << ' '
              << unit_ << ", " << speed.data() << "\033[K" << std::flush;
}

}  // namespace marovine::host
