#include "pictures/PictureStream.h"

#include <poll.h>

#include <algorithm>
#include <climits>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>

namespace virtualboard::imaging {

namespace {

[[noreturn]] void failOn(const std::filesystem::path& target, const std::string& reason) {
    const std::string name = target == "-" ? "standard output" : target.string();
    throw std::runtime_error(name + " cannot be written: " + reason);
}

[[noreturn]] void failOn(const std::filesystem::path& target, int reason) {
    failOn(target, std::generic_category().message(reason));
}

}  // namespace

PictureStream::PictureStream(std::filesystem::path target, Interrupted interrupted)
    : target_(std::move(target)), interrupted_(std::move(interrupted)) {
    if (target_ == "-") {
        descriptor_.emplace(fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0));
    } else if (isReplaceable(target_)) {
        file_.emplace(target_);
        descriptor_.emplace(file_->temporary(), O_WRONLY);
    } else {
        descriptor_.emplace(target_, O_WRONLY | O_APPEND);
    }
    if (descriptor_->number() < 0) failOn(target_, errno);
    if (isatty(descriptor_->number()) == 1)
        failOn(target_, "it is a terminal, which pictures would leave in disorder; name a file or a pipe");
    // Fewer changes between writer and reader; where it is refused the pipe stays as it is.
    constexpr int kPipeBytes = 1 << 20;
    fcntl(descriptor_->number(), F_SETPIPE_SZ, kPipeBytes);
    struct sigaction ignore {};
    ignore.sa_handler = SIG_IGN;
    sigaction(SIGPIPE, &ignore, &before_);
}

PictureStream::~PictureStream() {
    sigaction(SIGPIPE, &before_, nullptr);
}

bool PictureStream::waits() const {
    constexpr int kPatience = 1000;  // ms
    pollfd state{.fd = descriptor_->number(), .events = POLLOUT, .revents = 0};
    return poll(&state, 1, kPatience) > 0;
}

bool PictureStream::write(std::string_view piece) {
    whole_ = false;
    while (!piece.empty()) {
        std::string_view part = piece;
        if (interrupted_()) {
            // A pipe that takes anything takes so much without blocking.
            if (!waits()) return false;
            part = part.substr(0, PIPE_BUF);
        }
        const ssize_t count = ::write(descriptor_->number(), part.data(), part.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0 && errno == EPIPE) return false;
        if (count < 0) failOn(target_, errno);
        piece.remove_prefix(static_cast<std::size_t>(count));
    }
    whole_ = true;
    return true;
}

void PictureStream::finish() {
    if (!descriptor_.has_value()) return;
    const int error = descriptor_->close();
    descriptor_.reset();
    if (!whole_) return;
    if (error != 0) failOn(target_, error);
    if (file_.has_value()) file_->commit();
}

}  // namespace virtualboard::imaging
