#pragma once

/// Pictures through the applet's acquisition functions, as a host takes them.

#include <cstdint>
#include <string>

#include "client/Client.h"
#include "marovine/FrameMemory.h"
#include "marovine/Image.h"
#include "marovine/World.h"

namespace marovine::host {

/// One acquisition, from its construction to its end. Codes of the applet arrive as `Refused`.
class Grabber {
 public:
    static constexpr std::uint32_t kBuffers = 4;

    /// Starts to take `pictures` pictures of the size that the applet is set to (-1: without end). Throws
    /// `Failure` when there is no memory for such pictures.
    /// A ring of more buffers outlasts longer pauses of this host.
    explicit Grabber(Applet& applet, std::int64_t pictures = -1, std::uint32_t buffers = kBuffers);
    /// Buffers for a camera that does not wait: for 128 pictures, or what fits into 256 MB.
    static std::uint32_t generousBuffers(Applet& applet);
    Grabber(const Grabber&) = delete;
    Grabber& operator=(const Grabber&) = delete;
    ~Grabber();

    /// Whether the next picture comes within `seconds`; with 0 it must be there already.
    bool comes(int seconds);
    /// The picture that has come. It stays until the next one is waited for.
    virtualboard::imaging::ImageView next();
    /// What is known of the picture that `next` gave.
    FrameMemoryPictureInfo info() const { return memory_.info(taken_); }
    /// The newest picture that has come, for a host that leaves out those in between.
    virtualboard::imaging::ImageView newest();
    /// Its number, or that of the one that `next` gave.
    std::int64_t number() const { return taken_; }
    /// Ends the acquisition; a wait in another thread ends with `Refused`.
    void stop();
    /// What the picture that `next` gave shows of the board's world, as JSON (`Control::truth`).
    std::string truth() const;
    /// Pictures that the board lost because this host was too slow.
    std::int64_t lost();

 private:
    Applet& applet_;
    virtualboard::FrameMemory memory_;
    std::int64_t taken_ = 0;
};

/// The first picture that an applet takes as it is set, as fast as it can.
virtualboard::imaging::Image firstPicture(Applet& applet);

/// Throws `Failure` when the pictures that the board is set to take are larger than any PNG file.
void refuseWhatNoPngHolds(Applet& applet);

/// What a host calls the things that would have helped: the command's options, unless it says otherwise.
struct WaitWords {
    std::string timeout = "--timeout";
    std::string trigger = "--trigger";
    std::string attach = "--attach";
    std::string withoutRealTime = "leave out --real-time";
};

/// What a host did that waited in vain for a picture.
struct Wait {
    double seconds = 0;
    bool sentTriggers = false;  ///< a software trigger for each picture
    bool realTime = false;      ///< the board's clock ran in real time
    bool attached = false;      ///< the applet was opened without writing the defaults
    virtualboard::imaging::Belt belt{};
    WaitWords words{};
};

/// Why no picture came, as far as the design's values tell. The acquisition still runs.
std::string whyNoPicture(Applet& applet, const Wait& wait);

}  // namespace marovine::host
