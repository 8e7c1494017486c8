#pragma once

/// One file, pipe or open descriptor that takes many pictures.

#include <csignal>
#include <filesystem>
#include <functional>
#include <optional>
#include <string_view>

#include "pictures/Descriptor.h"
#include "pictures/SafeFile.h"

namespace virtualboard::imaging {

/// Writes on, piece by piece. A regular file appears under its name only when the stream is finished. While
/// the stream lives a closed pipe raises no SIGPIPE. Every `std::runtime_error` names the target and the
/// reason.
class PictureStream {
 public:
    /// Whether whoever waits wants to wait no more.
    using Interrupted = std::function<bool()>;

    /// Opens the target; "-" is standard output. A pipe is waited for until somebody reads from it. Throws
    /// when it cannot be opened or is a terminal.
    PictureStream(std::filesystem::path target, Interrupted interrupted);
    PictureStream(const PictureStream&) = delete;
    PictureStream& operator=(const PictureStream&) = delete;
    ~PictureStream();

    /// Writes a piece. False when the reader has gone, or when after an interrupt it does not take the rest
    /// within a second. Throws when the piece cannot be written; the stream is over then.
    bool write(std::string_view piece);
    /// Ends the stream: a regular file gets its name unless a piece of it is missing. Throws when it cannot.
    void finish();

 private:
    /// True when a blocked reader takes more.
    bool waits() const;

    std::filesystem::path target_;
    Interrupted interrupted_;
    struct sigaction before_ {};
    std::optional<SafeFile> file_;  ///< of a regular file
    std::optional<Descriptor> descriptor_;
    bool whole_ = true;
};

}  // namespace virtualboard::imaging
