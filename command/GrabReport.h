#pragma once

/// What `marovine grab` tells of the pictures it took.

#include <cstdint>
#include <string>
#include <vector>

#include "command/Console.h"
#include "command/Json.h"
#include "marovine/FrameMemory.h"
#include "marovine/Image.h"

namespace marovine::host {

/// Collects what is told in the end. Of an endless run it keeps little.
class GrabReport {
 public:
    /// `everything`: each picture is told of by itself.
    GrabReport(bool everything) : everything_(everything) {}

    /// A picture was taken; its file is empty where it has none.
    void add(const std::string& file, const virtualboard::imaging::ImageView& picture,
             const FrameMemoryPictureInfo& info);
    /// Pictures lost in all.
    void lost(std::int64_t pictures) { lost_ = pictures; }
    std::int64_t taken() const { return taken_; }

    void print(const Console& console) const;
    /// Width and height stand for all pictures; they are null where those differ.
    Json json() const;

 private:
    /// Pictures of one size in a row.
    struct Run {
        std::uint32_t width;
        std::uint32_t height;
        std::int64_t pictures;
        std::string first, last;  ///< their files
    };

    bool everything_;
    std::int64_t taken_ = 0;
    std::int64_t lost_ = 0;
    std::vector<Run> runs_;
    std::vector<std::string> files_;
    Json told_ = Json::array();
};

/// One picture: its file (null without one), size, and what the board knows of it. Times are ns of board
/// time.
Json jsonOf(const std::string& file, const virtualboard::imaging::ImageView& picture,
            const FrameMemoryPictureInfo& info);

}  // namespace marovine::host
