#pragma once

/// The kinds of picture files and streams.

#include <array>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "marovine/Image.h"

namespace virtualboard::imaging {

/// - PNG;
/// - PPM (PNM, "P6"): a short header, then red, green, blue;
/// - raw: rows without padding, blue, green, red, and nothing else: as the board's memory holds them;
/// - Y4M (YUV4MPEG2): a video stream of pictures of one size, 4:4:4 and full range.
///
/// Pictures of the first three kinds stand in a stream one behind the other.
enum class PictureFormat { Png, Ppm, Raw, Y4m };

struct PictureFormatName {
    PictureFormat format;
    const char* name;    ///< as users write it
    const char* ending;  ///< of its files
};

inline constexpr std::array kPictureFormats{PictureFormatName{PictureFormat::Png, "png", ".png"},
                                            PictureFormatName{PictureFormat::Ppm, "ppm", ".ppm"},
                                            PictureFormatName{PictureFormat::Ppm, "pnm", ".pnm"},
                                            PictureFormatName{PictureFormat::Raw, "raw", ".raw"},
                                            PictureFormatName{PictureFormat::Y4m, "y4m", ".y4m"}};

/// The format of a name or of a file's ending; nothing for any other.
std::optional<PictureFormat> pictureFormatNamed(std::string_view name);
std::optional<PictureFormat> pictureFormatOf(const std::filesystem::path& file);

/// A picture's three components, each as a plane: BT.601 at full range, as JPEG has it, in 16 bits of
/// fraction:
///
///     Y  = (19595 R + 38470 G +  7471 B + 32768) / 65536
///     Cb = (32768 B - 11059 R - 21709 G + 32767) / 65536 + 128
///     Cr = (32768 R - 27439 G -  5329 B + 32767) / 65536 + 128
///
/// rounded down, so that greys have Y = grey and Cb = Cr = 128. `planes` holds three times the pixels.
void toYCbCr(const ImageView& picture, std::span<std::uint8_t> planes);

/// Turns pictures into the bytes of one stream or of one file each.
class PictureEncoder {
 public:
    /// `secondsPerPicture` stands in a video's header; 0 where nobody knows: 25 pictures per second.
    explicit PictureEncoder(PictureFormat format, double secondsPerPicture = 0)
        : format_(format), secondsPerPicture_(secondsPerPicture) {}

    PictureFormat format() const { return format_; }

    /// The bytes of the next picture, until the next call. Throws `std::runtime_error` with the reason: a
    /// picture without pixels, too large for a PNG, or of another size than the ones before in a video.
    std::string_view encode(const ImageView& picture);

 private:
    void begin(const std::string& header, std::size_t bytes);
    void encodeY4m(const ImageView& picture);

    PictureFormat format_;
    double secondsPerPicture_;
    std::uint32_t width_ = 0;  ///< of a video once it has begun
    std::uint32_t height_ = 0;
    std::vector<char> bytes_;
    std::size_t header_ = 0;  ///< bytes before the pixels
};

}  // namespace virtualboard::imaging
