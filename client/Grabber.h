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
    /// Starts to take `pictures` pictures of the size that the applet is set to (-1: without end). Throws
    /// `Failure` when there is no memory for such pictures.
    explicit Grabber(Applet& applet, std::int64_t pictures = -1);
    Grabber(const Grabber&) = delete;
    Grabber& operator=(const Grabber&) = delete;
    ~Grabber();

    /// Whether the next picture comes within `seconds`; with 0 it must be there already.
    bool comes(int seconds);
    /// The picture that has come. It stays until the next one is waited for.
    virtualboard::imaging::ImageView next();
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

/// What a host did that waited in vain for a picture.
struct Wait {
    int seconds = 0;
    bool sentTriggers = false;  ///< a software trigger for each picture
    bool realTime = false;      ///< the board's clock ran in real time
    bool attached = false;      ///< the applet was opened without writing the defaults
    virtualboard::imaging::Belt belt{};
};

/// Why no picture came, as far as the design's values tell. The acquisition still runs.
std::string whyNoPicture(Applet& applet, const Wait& wait);

}  // namespace marovine::host
