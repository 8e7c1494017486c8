#include "command/Progress.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <string_view>
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

namespace {

/// Whether standard error is a terminal on which a line can be drawn again.
bool canRedraw() {
    const char* kind = std::getenv("TERM");
    return isatty(STDERR_FILENO) == 1 && (kind == nullptr || std::string_view(kind) != "dumb");
}

}  // namespace

Progress::Progress(std::size_t total, std::string unit)
    : total_(total), unit_(std::move(unit)), terminal_(canRedraw()) {}

Progress::~Progress() {
    if (drawn_) std::fputs("\r\033[K", stderr);
}

void Progress::reached(std::size_t done) {
    constexpr std::chrono::milliseconds patience(500), interval(100);
    constexpr std::size_t columns = 32;
    const auto now = Clock::now();
    if (!terminal_ || now - start_ < patience || now - last_ < interval) return;
    last_ = now;
    drawn_ = true;
    const double rate = static_cast<double>(done) / std::chrono::duration<double>(now - start_).count();
    // Not through the stream of errors, which lets no control characters pass.
    std::fprintf(stderr, "\r[%s] %zu/%zu %s, %.1f/s\033[K", progressBar(done, total_, columns).c_str(), done,
                 total_, unit_.c_str(), rate);
}

}  // namespace marovine::host
