#include "pictures/PictureFormats.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numeric>
#include <stdexcept>

#include "pictures/Png.h"

namespace virtualboard::imaging {

namespace {

std::optional<PictureFormat> find(std::string_view text, const char* PictureFormatName::*member) {
    const auto same = [text](const char* other) {
        const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
        return std::ranges::equal(text, std::string_view(other), {}, lower);
    };
    const auto* found = std::ranges::find_if(kPictureFormats, same, member);
    return found != kPictureFormats.end() ? std::optional(found->format) : std::nullopt;
}

std::string sizeOf(std::uint32_t width, std::uint32_t height, const char* between) {
    return std::to_string(width) + between + std::to_string(height);
}

/// "F25:1": pictures per second as a fraction, to the microsecond.
std::string rateOf(double secondsPerPicture) {
    constexpr double kMost = 2000;  // s, so that both numbers fit into 32 bits
    if (!(secondsPerPicture > 0 && secondsPerPicture < kMost)) return "F25:1";
    const auto microseconds = std::max<std::int64_t>(1, std::llround(secondsPerPicture * 1e6));
    const std::int64_t common = std::gcd<std::int64_t>(1'000'000, microseconds);
    return "F" + std::to_string(1'000'000 / common) + ":" + std::to_string(microseconds / common);
}

}  // namespace

std::optional<PictureFormat> pictureFormatNamed(std::string_view name) {
    return find(name, &PictureFormatName::name);
}

std::optional<PictureFormat> pictureFormatOf(const std::filesystem::path& file) {
    return find(file.extension().string(), &PictureFormatName::ending);
}

void toYCbCr(const ImageView& picture, std::span<std::uint8_t> planes) {
    const std::size_t pixels = planes.size() / 3;
    const std::uint8_t* in = picture.bytes.data();
    std::uint8_t* y = planes.data();
    std::uint8_t* cb = y + pixels;
    std::uint8_t* cr = cb + pixels;
    constexpr std::int32_t half = (128 << 16) + 32767;
    for (std::size_t i = 0; i < pixels; ++i) {
        const std::int32_t blue = in[3 * i];
        const std::int32_t green = in[3 * i + 1];
        const std::int32_t red = in[3 * i + 2];
        y[i] = static_cast<std::uint8_t>((19595 * red + 38470 * green + 7471 * blue + 32768) >> 16);
        cb[i] = static_cast<std::uint8_t>((32768 * blue - 11059 * red - 21709 * green + half) >> 16);
        cr[i] = static_cast<std::uint8_t>((32768 * red - 27439 * green - 5329 * blue + half) >> 16);
    }
}

/// Makes room for a header and so many bytes behind it.
void PictureEncoder::begin(const std::string& header, std::size_t bytes) {
    bytes_.resize(header.size() + bytes);
    std::ranges::copy(header, bytes_.begin());
    header_ = header.size();
}

void PictureEncoder::encodeY4m(const ImageView& picture) {
    std::string header = "FRAME\n";
    if (width_ == 0) {
        width_ = picture.width;
        height_ = picture.height;
        header = "YUV4MPEG2 W" + sizeOf(width_, height_, " H") + " " + rateOf(secondsPerPicture_) +
                 " Ip A1:1 C444 XCOLORRANGE=FULL\n" + header;
    }
    if (picture.width != width_ || picture.height != height_) {
        throw std::runtime_error("a Y4M stream of pictures of " + sizeOf(width_, height_, " x ") +
                                 " pixels cannot take one of " +
                                 sizeOf(picture.width, picture.height, " x "));
    }
    begin(header, picture.bytes.size());
    toYCbCr(picture, {reinterpret_cast<std::uint8_t*>(bytes_.data()) + header_, picture.bytes.size()});
}

std::string_view PictureEncoder::encode(const ImageView& picture) {
    if (picture.bytes.empty()) throw std::runtime_error("the picture is empty");
    switch (format_) {
        case PictureFormat::Png:
            bytes_ = encodePng(picture);
            break;
        case PictureFormat::Ppm:
            begin("P6\n" + sizeOf(picture.width, picture.height, " ") + "\n255\n", picture.bytes.size());
            for (std::size_t i = 0; i < picture.bytes.size(); i += kBytesPerPixel) {
                for (std::size_t channel = 0; channel < kBytesPerPixel; ++channel)
                    bytes_[header_ + i + channel] =
                        static_cast<char>(picture.bytes[i + kBytesPerPixel - 1 - channel]);
            }
            break;
        case PictureFormat::Raw:
            return {reinterpret_cast<const char*>(picture.bytes.data()), picture.bytes.size()};
        case PictureFormat::Y4m:
            encodeY4m(picture);
            break;
    }
    return {bytes_.data(), bytes_.size()};
}

}  // namespace virtualboard::imaging
